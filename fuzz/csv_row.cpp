// Fuzz target: the CSV row parser and the file readers over arbitrary bytes. Imported files come
// from anywhere, so no input may crash the parser, loop it, or break the promises the ledger
// relies on: a column read into a fixed buffer is the start of the whole column, and whatever the
// parser reads, the writer writes and the parser reads back unchanged (bytes 1 to 32 blanked).
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "llib/gen/csv.h"
#include "llib/gen/file.h"

namespace {

void Check(bool condition) {
  if (!condition) __builtin_trap();
}

std::string Blanked(std::string text) {
  for (char& c : text)
    if (c >= 1 && c <= 32) c = ' ';
  return text;
}

void FuzzRow(std::string_view text) {
  LCSVReaderRow row(text);
  LCSVReaderRow fixedRow(text);
  LCSVWriterRow written;
  std::vector<std::string> columns;
  while (!row.AtEnd()) {
    Check(columns.size() <= text.size());  // every column moves the parser forward
    std::string column = row.GetCol();
    LTextBuffer fixed;
    fixedRow.GetCol(fixed);
    std::size_t nFixed = std::min(column.size(), kMaxTextBytes);
    Check(std::memcmp(fixed, column.data(), nFixed) == 0 && fixed[nFixed] == '\0');
    written.AddCol(column);
    columns.push_back(std::move(column));
  }
  Check(fixedRow.AtEnd() && row.GetCol().empty());

  LCSVReaderRow again(written.GetText());
  for (const std::string& column : columns) Check(again.GetCol() == Blanked(column));
  Check(again.AtEnd());
}

template <class Reader>
void FuzzFile(const std::string& path, std::size_t nBytes) {
  Reader reader(path, 0);
  std::size_t nRows = 0;
  for (; reader.HasRow(); reader.Next()) {
    const std::string& line = reader.GetLine();
    Check(!line.empty() && line.size() < kCsvLineBytes);
    Check(line.find_first_of("\r\n") == std::string::npos);
    Check(++nRows <= nBytes);  // a row takes at least one byte of the file
    FuzzRow(line);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view bytes(reinterpret_cast<const char*>(data), size);
  FuzzRow(bytes);

  // One scratch file per fuzzing process, removed when it exits.
  static const struct ScratchFile {
    std::string path =
        LFile::GetTempFolder() + "/kontavo-fuzz-csv-" + std::to_string(::getpid()) + ".csv";
    ~ScratchFile() { ::unlink(path.c_str()); }
  } scratch;
  const std::string& path = scratch.path;
  // A new file each time: truncating one that holds data makes ext4 flush it to disk.
  ::unlink(path.c_str());
  LFileDescriptor file(LRobustOpen(path, O_WRONLY | O_CREAT | O_EXCL, 0600));
  if (!file.IsOpen() || !LRobustWrite(file.Get(), bytes.data(), bytes.size())) return 0;
  file.Close();
  FuzzFile<LCSVFileReader>(path, size);
  FuzzFile<ExcelCSVFileReader>(path, size);
  return 0;
}
