#include "llib/gen/csv.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "llib/gen/file.h"
#include "llib/gen/utf16.h"

namespace {

constexpr std::size_t kMaxLineBytes = kCsvLineBytes - 1;  // 8,191 bytes of a line are kept
constexpr std::size_t kUtf16BlockBytes = 2048;            // UTF-16 is converted block by block
constexpr std::size_t kEditorCopyBytes = 32768;           // the editor copies back in blocks
constexpr unsigned kTempCopyLockTimeoutMs = 500;          // our own UTF-8 copy: nobody else has it

// A blank, for the parser, is any byte of value 32 or less: spaces, tabs, control characters.
bool IsBlank(char c) { return static_cast<unsigned char>(c) <= 32; }

// Creates a new file "0XXXXXX" (unique name, mode 0666) in the temporary folder and opens it
// read-write. Returns the descriptor, or -1 with path left empty.
int CreateTempFile(std::string& path) {
  std::string pattern = LFile::GetTempFolder() + "/0XXXXXX";
  int fd;
  do {
    fd = ::mkostemp(pattern.data(), O_CLOEXEC);
  } while (fd < 0 && errno == EINTR);
  if (fd < 0) {
    path.clear();
    return -1;
  }
  ::fchmod(fd, 0666);  // mkostemp creates 0600; the copy is as open as the files it mirrors
  path = pattern;
  return fd;
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// Reader: opening, byte-order marks, UTF-16 conversion

LCSVFileReader::LCSVFileReader(const std::string& path, unsigned lockTimeoutMs) {
  Open(path, lockTimeoutMs);
}

LCSVFileReader::~LCSVFileReader() { Close(); }

bool LCSVFileReader::Open(const std::string& path, unsigned lockTimeoutMs) {
  Close();
  return OpenFile(path, O_RDONLY, LOCK_SH, lockTimeoutMs, true);
}

void LCSVFileReader::Close() {
  file_.Close();
  if (!tempPath_.empty()) ::unlink(tempPath_.c_str());
  tempPath_.clear();
  bufferPos_ = bufferFill_ = 0;
  line_.clear();
}

bool LCSVFileReader::OpenFile(const std::string& path, int flags, int lockOperation,
                              unsigned lockTimeoutMs, bool checkByteOrderMark, bool currentFile) {
  file_ = currentFile ? LLockedFile::OpenCurrent(path, flags, lockOperation, lockTimeoutMs)
                      : LLockedFile(path, flags, lockOperation, lockTimeoutMs);
  if (!file_.IsOpen()) return false;
  if (checkByteOrderMark && !CheckByteOrderMark()) {
    Close();
    return false;
  }
  Next();
  return true;
}

bool LCSVFileReader::CheckByteOrderMark() {
  FillBuffer();
  const auto* bytes = reinterpret_cast<const unsigned char*>(buffer_);
  if (bufferFill_ >= 3 && bytes[0] == 0xEF && bytes[1] == 0xBB && bytes[2] == 0xBF) {
    bufferPos_ = 3;
    return true;
  }
  if (bufferFill_ >= 2 && bytes[0] == 0xFF && bytes[1] == 0xFE) return ConvertUtf16ToTemp();
  // No mark we know (a UTF-16 big-endian one included): the bytes are read as they are.
  return true;
}

// Writes the text after the mark, as UTF-8, to a new temporary file and goes on reading that
// copy. The first block decides the Excel reader's tab rule: a tab there (before any NUL) means
// a tab-separated export, and every tab of every block becomes a comma.
bool LCSVFileReader::ConvertUtf16ToTemp() {
  LFileDescriptor temp(CreateTempFile(tempPath_));
  if (!temp.IsOpen() || ::lseek(file_.Get(), 2, SEEK_SET) != 2) return false;
  LUtf16LeDecoder decoder;
  std::string utf8;
  char block[kUtf16BlockBytes];
  bool firstBlock = true, tabsToCommas = false;
  for (;;) {
    long long nRead = LRobustRead(file_.Get(), block, sizeof block);
    if (nRead < 0) return false;
    std::size_t nBytes = static_cast<std::size_t>(nRead) & ~std::size_t{1};  // odd byte dropped
    if (firstBlock && ConvertTabsInUtf16()) {
      for (std::size_t i = 0; i < nBytes && (block[i] != 0 || block[i + 1] != 0); i += 2) {
        if (block[i] == '\t' && block[i + 1] == 0) {
          tabsToCommas = true;
          break;
        }
      }
    }
    firstBlock = false;
    if (tabsToCommas) {
      for (std::size_t i = 0; i < nBytes; i += 2)
        if (block[i] == '\t' && block[i + 1] == 0) block[i] = ',';
    }
    utf8.clear();
    decoder.Append(std::string_view(block, nBytes), utf8);
    if (static_cast<std::size_t>(nRead) < sizeof block) decoder.Finish(utf8);
    if (!LRobustWrite(temp.Get(), utf8.data(), utf8.size())) return false;
    if (static_cast<std::size_t>(nRead) < sizeof block) break;
  }
  temp.Close();
  file_ = LLockedFile(tempPath_, O_RDONLY, LOCK_SH, kTempCopyLockTimeoutMs);
  bufferPos_ = bufferFill_ = 0;
  return file_.IsOpen();
}

// ---------------------------------------------------------------------------------------------
// Reader: lines

bool LCSVFileReader::FillBuffer() {
  bufferPos_ = bufferFill_ = 0;
  if (!file_.IsOpen()) return false;
  long long nRead = LRobustRead(file_.Get(), buffer_, sizeof buffer_);
  if (nRead <= 0) return false;
  bufferFill_ = static_cast<std::size_t>(nRead);
  return true;
}

// Reads one line (possibly empty) into line_, keeping at most 8,191 of its bytes. false when
// the file was already at its end. CR and LF each end a line; a CR LF pair thus leaves an empty
// line between them, which Next skips like every empty line: the pair counts as one end.
bool LCSVFileReader::ReadLine() {
  line_.clear();
  bool anyByte = false;
  for (;;) {
    if (bufferPos_ == bufferFill_ && !FillBuffer()) return anyByte;
    anyByte = true;
    const char* start = buffer_ + bufferPos_;
    const char* end = buffer_ + bufferFill_;
    const char* lineEnd = start;
    while (lineEnd < end && *lineEnd != '\n' && *lineEnd != '\r') ++lineEnd;
    std::size_t room = kMaxLineBytes - line_.size();
    line_.append(start, std::min(room, static_cast<std::size_t>(lineEnd - start)));
    bufferPos_ = static_cast<std::size_t>(lineEnd - buffer_);
    if (lineEnd < end) {
      ++bufferPos_;
      return true;
    }
  }
}

bool LCSVFileReader::Next() {
  while (ReadLine()) {
    if (!line_.empty()) return true;
  }
  line_.clear();
  return false;
}

ExcelCSVFileReader::ExcelCSVFileReader(const std::string& path, unsigned lockTimeoutMs) {
  // Opened here, not by the base constructor, so that the tab rule of this class applies.
  Open(path, lockTimeoutMs);
}

// ---------------------------------------------------------------------------------------------
// Row parser

LCSVReaderRow::LCSVReaderRow(std::string_view rowText) : text_(rowText) {
  while (pos_ < text_.size() && IsBlank(text_[pos_])) ++pos_;
  ParseColumn();
}

void LCSVReaderRow::ParseColumn() {
  column_.clear();
  if (pos_ >= text_.size()) {
    atEnd_ = true;
    return;
  }
  if (text_[pos_] == '"') ParseQuoted();
  else ParseUnquoted();
  while (pos_ < text_.size() && IsBlank(text_[pos_])) ++pos_;
}

// The value runs to the next lone double quote ("" stands for one); whatever follows the
// closing quote up to the next comma is ignored. No closing quote: the value runs to the end.
void LCSVReaderRow::ParseQuoted() {
  std::size_t from = pos_ + 1;
  for (;;) {
    std::size_t quote = text_.find('"', from);
    if (quote == std::string_view::npos) {
      column_.append(text_.substr(from));
      pos_ = text_.size();
      return;
    }
    column_.append(text_.substr(from, quote - from));
    if (quote + 1 < text_.size() && text_[quote + 1] == '"') {
      column_.push_back('"');
      from = quote + 2;
      continue;
    }
    std::size_t comma = text_.find(',', quote + 1);
    pos_ = comma == std::string_view::npos ? text_.size() : comma + 1;
    return;
  }
}

void LCSVReaderRow::ParseUnquoted() {
  std::size_t comma = text_.find(',', pos_);
  std::size_t end = comma == std::string_view::npos ? text_.size() : comma;
  std::size_t valueEnd = end;
  while (valueEnd > pos_ && IsBlank(text_[valueEnd - 1])) --valueEnd;
  column_.assign(text_.substr(pos_, valueEnd - pos_));
  pos_ = comma == std::string_view::npos ? text_.size() : comma + 1;
}

void LCSVReaderRow::CopyCol(char* out, std::size_t outSize) {
  LCopyTruncated(out, outSize, column_);
  ParseColumn();
}

void LCSVReaderRow::GetCol(LTextBuffer& out) { CopyCol(out, sizeof out); }

void LCSVReaderRow::GetCol(std::string& out) {
  out = column_;
  ParseColumn();
}

std::string LCSVReaderRow::GetCol() {
  std::string out;
  GetCol(out);
  return out;
}

void LCSVGetCols(LCSVReaderRow& row, std::initializer_list<char*> buffers) {
  for (char* buffer : buffers) row.CopyCol(buffer, kTextBufferSize);
}

// ---------------------------------------------------------------------------------------------
// Writer

void LCSVWriterRow::AddCol(std::string_view text) {
  if (nColumns_ > 0) text_.push_back(',');
  text_.push_back('"');
  for (char c : text) {
    if (c == '"') text_.append("\"\"");
    else if (c != 0 && IsBlank(c)) text_.push_back(' ');  // a value never breaks its line
    else text_.push_back(c);
  }
  text_.push_back('"');
  ++nColumns_;
}

bool LCSVWriteRow(const std::string& path, const std::vector<std::string_view>& columns) {
  LCSVWriterRow row;
  for (std::string_view column : columns) row.AddCol(column);
  std::string text = row.GetText();
  text.append("\r\n");
  // O_APPEND and one write: the row lands whole at the end even if the lock timed out. An editor
  // may have replaced the file while this appender waited: the lock is taken on the current one.
  LLockedFile file = LLockedFile::OpenCurrent(path, O_WRONLY | O_CREAT | O_APPEND, LOCK_EX, kCsvWriteLockTimeoutMs);
  if (!file.IsOpen()) return false;
  if (LRobustWrite(file.Get(), text.data(), text.size())) return true;
  LLogWriteFailure("write", path, errno);
  return false;
}

// ---------------------------------------------------------------------------------------------
// Editor

LCSVFileEditor::LCSVFileEditor(const std::string& path, unsigned lockTimeoutMs) : path_(path) {
  // Edited files are those the appender writes: no byte-order mark is looked for. The file is
  // replaced by renaming when the editor ends, so the lock is taken on the current file.
  reader_.OpenFile(path, O_RDWR | O_CREAT, LOCK_EX, lockTimeoutMs, false, true);
  int fd = CreateTempFile(tempPath_);
  if (fd >= 0) tempFile_ = LLockedFile(fd, flocktimed(fd, LOCK_EX, lockTimeoutMs));
}

void LCSVFileEditor::RowAccept() {
  if (!tempFile_.IsOpen() || !reader_.HasRow()) return;
  rowOut_.assign(reader_.GetLine());
  rowOut_.push_back('\n');
  if (!LRobustWrite(tempFile_.Get(), rowOut_.data(), rowOut_.size())) outputFailed_ = true;
}

// Replaces the file by the kept rows: they are copied to a new file beside it, which is then
// renamed over it, so a failed write (a full disk) leaves the file as it was. Without a
// temporary output there is nothing to copy, and the file is replaced by an empty one.
LCSVFileEditor::~LCSVFileEditor() { (void)Finish(); }

bool LCSVFileEditor::Finish() {
  if (finished_) return !outputFailed_;
  finished_ = true;
  bool replaced = !reader_.file_.IsOpen() || ReplaceWithOutput();
  if (!replaced) outputFailed_ = true;
  reader_.Close();
  tempFile_.Close();
  if (!tempPath_.empty()) ::unlink(tempPath_.c_str());
  return replaced;
}

bool LCSVFileEditor::ReplaceWithOutput() {
  if (outputFailed_) return false;
  std::string beside = LTempPathBeside(path_);
  LFileDescriptor out(LRobustOpen(beside, O_WRONLY | O_CREAT | O_EXCL, 0666));
  bool copied = out.IsOpen();
  int err = errno;
  if (copied && tempFile_.IsOpen()) {
    copied = ::lseek(tempFile_.Get(), 0, SEEK_SET) == 0;
    char block[kEditorCopyBytes];
    while (copied) {
      long long nRead = LRobustRead(tempFile_.Get(), block, sizeof block);
      if (nRead <= 0) {
        copied = nRead == 0;
        break;
      }
      copied = LRobustWrite(out.Get(), block, static_cast<std::size_t>(nRead));
    }
    err = errno;
  }
  out.Close();
  if (copied && !LRobustRename(beside, path_)) {
    copied = false;
    err = errno;
  }
  if (!copied) {
    LLogWriteFailure("rewrite", path_, err);
    ::unlink(beside.c_str());
  }
  return copied;
}
