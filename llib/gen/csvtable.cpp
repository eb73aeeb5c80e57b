#include "llib/gen/csvtable.h"

#include <algorithm>
#include <sys/stat.h>

#include "llib/gen/file.h"
#include "llib/gen/optionalerror.h"
#include "llib/gen/trim.h"
#include "llib/gen/utf16.h"

namespace {

// ---- Encodings --------------------------------------------------------------------------------

void AppendUtf8(std::string& out, char32_t code) {
  if (code < 0x80) {
    out.push_back(static_cast<char>(code));
  } else if (code < 0x800) {
    out.push_back(static_cast<char>(0xC0 | (code >> 6)));
    out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
  } else {
    out.push_back(static_cast<char>(0xE0 | (code >> 12)));
    out.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
  }
}

// Windows-1252 bytes 0x80 to 0x9F; the five undefined ones keep their C1 code.
constexpr char16_t kWindows1252High[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

std::string FromWindows1252(std::string_view bytes) {
  std::string out;
  out.reserve(bytes.size() + bytes.size() / 8);
  for (unsigned char c : bytes) {
    if (c < 0x80) out.push_back(static_cast<char>(c));
    else if (c < 0xA0) AppendUtf8(out, kWindows1252High[c - 0x80]);
    else AppendUtf8(out, c);
  }
  return out;
}

bool IsValidUtf8(std::string_view text) {
  const auto* p = reinterpret_cast<const unsigned char*>(text.data());
  const auto* end = p + text.size();
  while (p < end) {
    if (*p < 0x80) {
      ++p;
      continue;
    }
    int more = (*p & 0xE0) == 0xC0 ? 1 : (*p & 0xF0) == 0xE0 ? 2 : (*p & 0xF8) == 0xF0 ? 3 : -1;
    if (more < 0 || *p == 0xC0 || *p == 0xC1 || end - p <= more) return false;
    for (int i = 1; i <= more; ++i)
      if ((p[i] & 0xC0) != 0x80) return false;
    p += more + 1;
  }
  return true;
}

std::string FromUtf16(std::string_view bytes, bool bigEndian) {
  std::string out;
  LUtf16LeDecoder decoder;
  if (!bigEndian) {
    decoder.Append(bytes, out);
  } else {
    std::string swapped(bytes.substr(0, bytes.size() & ~std::size_t{1}));
    for (std::size_t i = 0; i + 1 < swapped.size(); i += 2) std::swap(swapped[i], swapped[i + 1]);
    decoder.Append(swapped, out);
  }
  decoder.Finish(out);
  return out;
}

// UTF-16 without a mark: text of the Latin alphabet has a NUL in every other byte.
bool LooksLikeUtf16(std::string_view bytes, bool& bigEndian) {
  std::size_t n = std::min<std::size_t>(bytes.size(), 4096) / 2;
  if (n < 2) return false;
  std::size_t zeroEven = 0, zeroOdd = 0;
  for (std::size_t i = 0; i < n; ++i) {
    zeroEven += bytes[2 * i] == '\0';
    zeroOdd += bytes[2 * i + 1] == '\0';
  }
  if (zeroOdd * 10 >= n * 4 && zeroEven * 20 < n) return bigEndian = false, true;
  if (zeroEven * 10 >= n * 4 && zeroOdd * 20 < n) return bigEndian = true, true;
  return false;
}

int LineOf(std::string_view text, std::size_t pos) {
  int line = 1;
  for (std::size_t i = 0; i < pos && i < text.size(); ++i)
    if (text[i] == '\n' || (text[i] == '\r' && (i + 1 >= text.size() || text[i + 1] != '\n'))) ++line;
  return line;
}

bool RefuseNul(std::string_view text, std::string* error) {
  std::size_t nul = text.find('\0');
  if (nul == std::string_view::npos) return false;
  LSetError(error, "Ligne " + std::to_string(LineOf(text, nul)) +
                       " : le fichier contient un octet nul ; ce n'est pas un fichier CSV texte.");
  return true;
}

// The text of bytes in UTF-8, its encoding in encoding; false when it holds NUL characters.
bool Decode(std::string_view bytes, std::string& text, LCsvEncoding& encoding, std::string* error) {
  bool bigEndian = false;
  if (bytes.substr(0, 3) == "\xEF\xBB\xBF") {
    encoding = LCsvEncoding::kUtf8Bom;
    bytes.remove_prefix(3);
    if (!IsValidUtf8(bytes)) {
      encoding = LCsvEncoding::kWindows1252;  // a mark put before text of another encoding
      text = FromWindows1252(bytes);
    } else {
      text.assign(bytes);
    }
  } else if (bytes.substr(0, 2) == "\xFF\xFE" || bytes.substr(0, 2) == "\xFE\xFF") {
    bigEndian = bytes[0] == '\xFE';
    encoding = bigEndian ? LCsvEncoding::kUtf16Be : LCsvEncoding::kUtf16Le;
    text = FromUtf16(bytes.substr(2), bigEndian);
  } else if (LooksLikeUtf16(bytes, bigEndian)) {
    encoding = bigEndian ? LCsvEncoding::kUtf16Be : LCsvEncoding::kUtf16Le;
    text = FromUtf16(bytes, bigEndian);
  } else if (IsValidUtf8(bytes)) {
    encoding = LCsvEncoding::kUtf8;
    text.assign(bytes);
  } else {
    encoding = LCsvEncoding::kWindows1252;
    if (RefuseNul(bytes, error)) return false;
    text = FromWindows1252(bytes);
  }
  // A second byte-order mark (a program that marked text already marked) is no part of the
  // first cell.
  while (text.compare(0, 3, "\xEF\xBB\xBF") == 0) text.erase(0, 3);
  return !RefuseNul(text, error);
}

// ---- Rows -------------------------------------------------------------------------------------

bool IsLineEnd(char c) { return c == '\n' || c == '\r'; }

// The separator that occurs most often outside quotes on the first non-empty line.
char FindSeparator(std::string_view text) {
  std::size_t pos = text.find_first_not_of("\r\n");
  std::size_t commas = 0, semicolons = 0, tabs = 0;
  bool quoted = false;
  for (; pos < text.size(); ++pos) {
    char c = text[pos];
    if (c == '"') quoted = !quoted;
    else if (quoted) continue;
    else if (IsLineEnd(c)) break;
    else if (c == ',') ++commas;
    else if (c == ';') ++semicolons;
    else if (c == '\t') ++tabs;
  }
  if (tabs > 0 && tabs >= semicolons && tabs >= commas) return '\t';
  if (semicolons > 0 && semicolons >= commas) return ';';
  return ',';
}

class RowParser {
 public:
  RowParser(std::string_view text, char separator) : text_(text), separator_(separator) {}

  bool AtEnd() const { return pos_ >= text_.size(); }

  // Reads the row at the cursor; false with the reason when it is not a row.
  bool Next(LCsvTableRow& row, std::string* error) {
    row.line = rowLine_ = line_;
    row.cells.clear();
    rowStart_ = pos_;
    while (true) {
      std::string& cell = row.cells.emplace_back();
      if (!Cell(cell, error)) return false;
      if (AtEnd()) return true;
      char c = text_[pos_++];
      if (c == separator_) continue;
      if (c == '\r' && pos_ < text_.size() && text_[pos_] == '\n') ++pos_;
      ++line_;
      return true;
    }
  }

 private:
  bool TooLong(std::string* error) const {
    if (pos_ - rowStart_ <= kCsvTableMaxRowBytes) return false;
    LSetError(error,
              "Ligne " + std::to_string(rowLine_) + " : une ligne dépasse 1 Mo ; ce fichier n'est pas un tableau CSV.");
    return true;
  }

  bool Cell(std::string& cell, std::string* error) {
    if (pos_ < text_.size() && text_[pos_] == '"') return Quoted(cell, error);
    std::size_t start = pos_;
    while (pos_ < text_.size() && text_[pos_] != separator_ && !IsLineEnd(text_[pos_])) ++pos_;
    if (TooLong(error)) return false;
    cell.assign(LTrim(text_.substr(start, pos_ - start), " "));
    return true;
  }

  // A quoted cell; what follows its closing quote up to the separator is kept as typed.
  bool Quoted(std::string& cell, std::string* error) {
    int openLine = line_;
    ++pos_;
    while (true) {
      if (pos_ >= text_.size()) {
        return LFail(error, "Ligne " + std::to_string(openLine) + " : un guillemet ouvert n'est jamais refermé.");
      }
      if (TooLong(error)) return false;
      char c = text_[pos_++];
      if (c == '"') {
        if (pos_ < text_.size() && text_[pos_] == '"') {
          cell.push_back('"');
          ++pos_;
          continue;
        }
        break;
      }
      if (c == '\n' || (c == '\r' && (pos_ >= text_.size() || text_[pos_] != '\n'))) ++line_;
      cell.push_back(c);
    }
    std::size_t start = pos_;
    while (pos_ < text_.size() && text_[pos_] != separator_ && !IsLineEnd(text_[pos_])) ++pos_;
    if (TooLong(error)) return false;
    cell.append(LTrim(text_.substr(start, pos_ - start), " "));
    return true;
  }

  std::string_view text_;
  char separator_;
  std::size_t pos_ = 0;       // next byte to read
  std::size_t rowStart_ = 0;  // first byte of the row being read
  int rowLine_ = 1;           // line where the row being read begins
  int line_ = 1;              // line of the file at pos_
};

bool IsEmptyRow(const LCsvTableRow& row) {
  return std::all_of(row.cells.begin(), row.cells.end(), [](const std::string& cell) { return cell.empty(); });
}

}  // namespace

std::string_view LCsvEncodingName(LCsvEncoding encoding) {
  switch (encoding) {
    case LCsvEncoding::kUtf8: return "UTF-8";
    case LCsvEncoding::kUtf8Bom: return "UTF-8 (BOM)";
    case LCsvEncoding::kUtf16Le: return "UTF-16 LE";
    case LCsvEncoding::kUtf16Be: return "UTF-16 BE";
    case LCsvEncoding::kWindows1252: return "Windows-1252";
  }
  return "UTF-8";
}

bool LCsvTableParse(std::string_view bytes, LCsvTable& table, std::string* error) {
  table = LCsvTable();
  LCsvTable read;
  std::string text;
  if (!Decode(bytes, text, read.encoding, error)) return false;
  read.separator = FindSeparator(text);
  RowParser parser(text, read.separator);
  bool haveHeader = false;
  LCsvTableRow row;
  while (!parser.AtEnd()) {
    if (!parser.Next(row, error)) return false;
    if (IsEmptyRow(row)) continue;
    if (!haveHeader) {
      read.header = std::move(row);
      haveHeader = true;
    } else {
      read.rows.push_back(std::move(row));
    }
    row = LCsvTableRow();
  }
  table = std::move(read);
  return true;
}

bool LCsvTableReadBytes(const std::string& path, std::string& bytes, std::string* error) {
  bytes.clear();
  struct stat status;
  if (::stat(path.c_str(), &status) == 0 && static_cast<unsigned long long>(status.st_size) > kCsvTableMaxFileBytes) {
    return LFail(error, "Le fichier " + path + " dépasse 256 Mo.");
  }
  if (!LFile::ReadAll(path, bytes)) return LFail(error, "Impossible de lire le fichier " + path + ".");
  return true;
}

bool LCsvTableRead(const std::string& path, LCsvTable& table, std::string* error) {
  table = LCsvTable();
  std::string bytes;
  return LCsvTableReadBytes(path, bytes, error) && LCsvTableParse(bytes, table, error);
}

void LCsvTableAppendRow(std::string& out, const std::vector<std::string>& cells) {
  for (std::size_t i = 0; i < cells.size(); ++i) {
    if (i > 0) out.push_back(',');
    const std::string& cell = cells[i];
    // A cell that begins with U+FEFF is quoted so that, first in a file, it is not read as a mark.
    bool quote = cell.find_first_of(",;\t\"\r\n") != std::string::npos ||
                 (!cell.empty() && (cell.front() == ' ' || cell.back() == ' ')) ||
                 cell.compare(0, 3, "\xEF\xBB\xBF") == 0;
    if (!quote) {
      out.append(cell);
      continue;
    }
    out.push_back('"');
    for (char c : cell) {
      if (c == '"') out.push_back('"');
      out.push_back(c);
    }
    out.push_back('"');
  }
  out.append("\r\n");
}
