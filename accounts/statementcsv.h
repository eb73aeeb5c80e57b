// CSV statements: every bank lays its export out its own way, so a bank account remembers the
// column mapping chosen for it once ("BankCSVMap" of its account record) and later imports use
// it. A mapping is written as text, comma-separated NAME=VALUE pairs:
//
//     date=1,text=3,debit=4,credit=5,ref=2,sep=;,decimal=comma,dates=dmy,skip=1
//
//   date, text, amount, debit, credit, ref   a column: its number from 1, or its heading's text
//   sep        ";" "," "tab" or "|"; found from the first line when not given
//   decimal    "comma" or "point"; each amount's last mark when not given
//   dates      "dmy" (default) or "mdy"; dates written year first are read as such anyway
//   skip       lines before the first line of data; when not given, a first line whose date
//              cell is not a date is taken as headings
//   encoding   "utf-8", "utf-16" or "windows-1252"; found from the bytes when not given
// A mapping needs date, text, and amount or (debit and credit, or one of them). A debit column
// holds money out whatever its sign; a credit column money in.
#pragma once

#include <string>
#include <string_view>
#include <vector>

struct LStatementCsvMap {
  std::string date, text, amount, debit, credit, ref;  // column numbers or headings
  char separator = 0;    // 0: found from the content
  char decimalMark = 0;  // '.' or ','; 0: each amount's last mark
  std::string dates = "dmy";
  int skip = -1;         // -1: a heading line is found from the content
  std::string encoding;  // empty: found from the bytes

  bool IsComplete() const { return !date.empty() && !text.empty() && (!amount.empty() || !debit.empty() || !credit.empty()); }
};

// Reads a mapping text into map (fields not named keep their value). false with error for an unknown
// name or a bad value.
[[nodiscard]] bool LStatementCsvMapParse(std::string_view mapText, LStatementCsvMap& map, std::string& error);
// The mapping text of map, as LStatementCsvMapParse reads it back.
std::string LStatementCsvMapText(const LStatementCsvMap& map);
// A mapping guessed from the headings of the first line ("Date", "Libellé", "Montant", "Débit",
// "Crédit", "Référence" and their English forms); false when no complete mapping fits.
[[nodiscard]] bool LStatementCsvMapGuess(std::string_view bytes, LStatementCsvMap& map);

// The cells of one line split at separator, double quotes honoured ("" is a quote inside them).
std::vector<std::string> LStatementCsvSplit(std::string_view line, char separator);
// The headings (first line) of a CSV statement, its character set and separator found as the
// reader finds them, for the page that lets the user choose the columns.
std::vector<std::string> LStatementCsvHeadings(std::string_view bytes, const LStatementCsvMap& map);
