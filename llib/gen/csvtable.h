// Tables that spreadsheet programs save as CSV, read whole for the imports of customers, items
// and suppliers, and written back by the exports. Unlike the ledger's own day files (csv.h: one
// line a row, "," only, UTF-8), such files come in every form a spreadsheet writes, so the reader
// finds out from the content:
//   - the encoding: a byte-order mark (UTF-8, UTF-16 little or big endian); else UTF-16 when
//     every other byte of the beginning is NUL; else UTF-8 when the bytes are valid UTF-8; else
//     Windows-1252 (what a French spreadsheet saves as "CSV"). Everything is turned into UTF-8;
//   - the separator: the one of ",", ";" and tab that occurs most often, outside quotes, on the
//     first non-empty line (tab, then ";", then "," on a tie);
//   - rows as RFC 4180 says: a quoted cell may hold separators, doubled quotes and line ends; a
//     line ends at LF, CR LF or a lone CR. Empty lines are skipped.
// The first non-empty row is the header. Each row remembers the line of the file it starts on,
// for error reports.
//
// What is not a table is refused whole, with a French message naming the line: NUL bytes in
// text that is not UTF-16, a quote left open up to the end of the file, a row longer than
// kCsvTableMaxRowBytes, a file larger than kCsvTableMaxFileBytes. Nothing is returned then.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

inline constexpr std::size_t kCsvTableMaxRowBytes = 1 << 20;            // 1 MB
inline constexpr std::size_t kCsvTableMaxFileBytes = 256u * (1u << 20);  // 256 MB

enum class LCsvEncoding { kUtf8, kUtf8Bom, kUtf16Le, kUtf16Be, kWindows1252 };

// "UTF-8", "UTF-8 (BOM)", "UTF-16 LE", "UTF-16 BE", "Windows-1252".
std::string_view LCsvEncodingName(LCsvEncoding encoding);

struct LCsvTableRow {
  int line = 0;                    // 1-based line of the file where the row begins
  std::vector<std::string> cells;  // UTF-8
};

struct LCsvTable {
  LCsvEncoding encoding = LCsvEncoding::kUtf8;
  char separator = ',';
  LCsvTableRow header;              // the first non-empty row
  std::vector<LCsvTableRow> rows;   // the rows after it, empty ones left out
};

// Reads bytes as a table. false with the reason in *error (table left empty) when they are not
// one; a file without any row is a table without header cells.
bool LCsvTableParse(std::string_view bytes, LCsvTable& table, std::string* error);
// The same from a file; false also when it cannot be read or is too large.
bool LCsvTableRead(const std::string& path, LCsvTable& table, std::string* error);
// The bytes of a file for LCsvTableParse; false with the reason when it cannot be read or is
// larger than kCsvTableMaxFileBytes (bytes left empty).
bool LCsvTableReadBytes(const std::string& path, std::string& bytes, std::string* error);

// Appends one row in UTF-8 with "," between cells: a cell holding ",", a quote, a line end or
// leading or trailing blanks is quoted (inner quotes doubled); the row ends with CR LF.
void LCsvTableAppendRow(std::string& out, const std::vector<std::string>& cells);
