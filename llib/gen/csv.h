// Comma-separated files: the ledger's day files and every import and export. Writer, reader
// and in-place filter agree on one format:
//   - a row is one line; a line ends at LF, CR or CR LF; empty lines are skipped; at most
//     8,191 bytes of a line are kept;
//   - the only separator is ","; a column that begins with a double quote runs to the next
//     lone double quote ("" inside stands for one) and anything after it up to the next "," is
//     ignored; an unquoted column loses its trailing blanks; blanks before a column are skipped;
//   - the writer quotes every column, doubles inner double quotes, writes bytes 1 to 32 as
//     blanks (so a value never breaks its line) and ends each row with CR LF.
// A UTF-8 byte-order mark is skipped; a UTF-16LE file (FF FE) is read through a UTF-8 copy in
// the temporary folder, deleted when the reader closes.
//
// Locks: a reader holds a shared lock from opening to closing, LCSVWriteRow an exclusive one for
// its append (5,000 ms), an editor an exclusive one for its whole life. As everywhere, a lock
// not obtained in time is not an error: the operation proceeds without it.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "llib/gen/filelock.h"
#include "llib/gen/text.h"

inline constexpr std::size_t kCsvLineBytes = 8192;  // line buffer; 8,191 bytes of a line are kept

class LCSVFileReader {
 public:
  LCSVFileReader() = default;
  // Opens path (shared lock, lockTimeoutMs) and reads the first row. A file that cannot be
  // opened gives a reader with no rows.
  LCSVFileReader(const std::string& path, unsigned lockTimeoutMs);
  virtual ~LCSVFileReader();
  LCSVFileReader(const LCSVFileReader&) = delete;
  LCSVFileReader& operator=(const LCSVFileReader&) = delete;

  // Closes any open file (deleting its temporary copy), then opens path as the constructor does.
  // true when the file was opened (it may still hold no row); false when it could not be, or
  // when a UTF-16 file could not be converted: the reader then has no rows.
  bool Open(const std::string& path, unsigned lockTimeoutMs);
  // Releases the lock, closes the file and deletes its temporary copy; the reader has no row.
  void Close();
  // Reads the next non-empty line. false at the end of the file (the current line is empty).
  bool Next();
  // The reader has a row while the current line is non-empty.
  bool HasRow() const { return !line_.empty(); }
  // The current row's text without its line end.
  const std::string& GetLine() const { return line_; }

 protected:
  // Whether a UTF-16 file's tabs become commas (the Excel reader's rule).
  virtual bool ConvertTabsInUtf16() const { return false; }

 private:
  LLockedFile file_;            // the file read (or the UTF-8 copy), with its lock
  char buffer_[kCsvLineBytes];  // read buffer
  std::size_t bufferPos_ = 0;   // next unread byte in buffer_
  std::size_t bufferFill_ = 0;  // bytes of buffer_ holding file data
  std::string line_;            // current row, at most 8,191 bytes
  std::string tempPath_;        // converted UTF-8 copy of a UTF-16 file; empty when none

  // currentFile: the lock is taken on the file the path names once locked (an editor's file,
  // which is replaced by renaming).
  bool OpenFile(const std::string& path, int flags, int lockOperation, unsigned lockTimeoutMs,
                bool checkByteOrderMark, bool currentFile = false);
  bool CheckByteOrderMark();
  bool ConvertUtf16ToTemp();
  bool FillBuffer();
  bool ReadLine();
  friend class LCSVFileEditor;
};

// The same reader; a UTF-16 file whose first block holds a tab is read as tab-separated (tabs
// become commas; values are not re-quoted, so a comma inside a value splits it).
class ExcelCSVFileReader : public LCSVFileReader {
 public:
  ExcelCSVFileReader() = default;
  ExcelCSVFileReader(const std::string& path, unsigned lockTimeoutMs);

 protected:
  bool ConvertTabsInUtf16() const override { return true; }
};

// A column iterator over one row.
//     LCSVReaderRow row(reader.GetLine());
//     LTextBuffer date, ref;
//     row.GetCol(date);
//     row.GetCol(ref);
class LCSVReaderRow {
 public:
  explicit LCSVReaderRow(std::string_view rowText);
  // Copies the current column (at most 259 bytes) and moves to the next.
  void GetCol(LTextBuffer& out);
  // Copies the whole current column and moves to the next.
  void GetCol(std::string& out);
  std::string GetCol();
  // The column after the last reads as empty.
  bool AtEnd() const { return atEnd_; }

 private:
  std::string_view text_;  // the row, owned by the caller
  std::size_t pos_ = 0;    // start of the column after the current one
  std::string column_;     // current column's value
  bool atEnd_ = false;     // the current column lies past the row's end
  void ParseColumn();
  void ParseQuoted();
  void ParseUnquoted();
  void CopyCol(char* out, std::size_t outSize);
  friend void LCSVGetCols(LCSVReaderRow& row, std::initializer_list<char*> buffers);
};

// Fills each buffer (260 bytes, kTextBufferSize) with one column, in order, cut at 259 bytes;
// columns beyond the row's end are empty.
void LCSVGetCols(LCSVReaderRow& row, std::initializer_list<char*> buffers);

class LCSVWriterRow {
 public:
  // Appends one column: "," before all but the first, always quoted, inner quotes doubled,
  // bytes 1 to 32 written as blanks.
  void AddCol(std::string_view text);
  // The row without its line end.
  const std::string& GetText() const { return text_; }
  int GetColumnCount() const { return nColumns_; }
  void Clear() {
    text_.clear();
    nColumns_ = 0;
  }

 private:
  std::string text_;
  int nColumns_ = 0;
};

// Appends one row of columns, ended by CR LF, under an exclusive lock (5,000 ms); true when the
// whole row was written, false when the file cannot be opened.
[[nodiscard]] bool LCSVWriteRow(const std::string& path, const std::vector<std::string_view>& columns);

// Filters a file in place: walk its rows with Next, RowAccept the ones to keep; the destructor
// replaces the file by the kept rows (each ended by LF), written beside it and renamed over it,
// so a failed write leaves the file as it was (Failed() tells, the failure is logged). If the
// temporary output could not be created the file is left empty, as it always has been.
class LCSVFileEditor {
 public:
  LCSVFileEditor(const std::string& path, unsigned lockTimeoutMs);
  ~LCSVFileEditor();
  LCSVFileEditor(const LCSVFileEditor&) = delete;
  LCSVFileEditor& operator=(const LCSVFileEditor&) = delete;

  bool Next() { return reader_.Next(); }
  bool HasRow() const { return reader_.HasRow(); }
  const std::string& GetLine() const { return reader_.GetLine(); }
  // Writes the current line as read, then LF, to the temporary output.
  void RowAccept();
  // Replaces the file now instead of at destruction; false when it could not be replaced (the
  // file is then unchanged). The editor must not be used afterwards but to be destroyed.
  [[nodiscard]] bool Finish();

 private:
  std::string path_;             // the file edited
  bool outputFailed_ = false;    // a write to the temporary output failed: the file is kept
  bool finished_ = false;        // Finish has replaced the file
  bool ReplaceWithOutput();
  LCSVFileReader reader_;  // opened read-write with the exclusive lock
  std::string tempPath_;   // temporary output in the temporary folder; empty when not created
  LLockedFile tempFile_;   // the temporary output, exclusively locked
  std::string rowOut_;     // scratch: one accepted row and its LF, written in one call
};
