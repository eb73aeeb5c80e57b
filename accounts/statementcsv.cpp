#include "accounts/statementcsv.h"

#include <algorithm>
#include <cstdlib>

#include "accounts/statementreaders.h"
#include "accounts/statementtext.h"
#include "llib/gen/money.h"
#include "llib/gen/textcase.h"

namespace {

std::string Decode(std::string_view bytes, const LStatementCsvMap& map) {
  if (map.encoding == "windows-1252") return LWindows1252ToUtf8(bytes);
  return LStatementTextToUtf8(bytes);  // UTF-8 and UTF-16 are recognised from the bytes
}

std::vector<std::string_view> Lines(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    std::size_t end = text.find_first_of("\r\n");
    std::string_view line = text.substr(0, end);
    if (!LStatementCleanText(line).empty()) lines.push_back(line);
    if (end == std::string_view::npos) break;
    text.remove_prefix(end + 1);
  }
  return lines;
}

// The separator that splits the first line most: ";" is tried first, as French banks use it.
char FindSeparator(std::string_view firstLine) {
  char best = ',';
  std::size_t bestCount = 0;
  for (char candidate : {';', '\t', ',', '|'}) {
    std::size_t count = LStatementCsvSplit(firstLine, candidate).size();
    if (count > bestCount && count > 1) {
      best = candidate;
      bestCount = count;
    }
  }
  return best;
}

// The column of a mapping entry: a number from 1, or the heading's text (any letter case).
int ColumnIndex(const std::string& entry, const std::vector<std::string>& headings) {
  if (entry.empty()) return -1;
  if (entry.find_first_not_of("0123456789") == std::string::npos) return std::atoi(entry.c_str()) - 1;
  for (std::size_t i = 0; i < headings.size(); ++i)
    if (LLowerText(LStatementCleanText(headings[i])) == LLowerText(entry)) return static_cast<int>(i);
  return -2;
}

std::string Cell(const std::vector<std::string>& cells, int column) {
  return column >= 0 && static_cast<std::size_t>(column) < cells.size() ? cells[column] : std::string();
}

bool HasAny(std::string_view heading, std::initializer_list<std::string_view> words) {
  std::string lower = LLowerText(heading);
  for (std::string_view word : words)
    if (lower.find(word) != std::string::npos) return true;
  return false;
}

struct LCsvPrepared {
  std::vector<std::string_view> lines;
  char separator = ',';
  std::vector<std::string> headings;
};

LCsvPrepared Prepare(const std::string& text, const LStatementCsvMap& map) {
  LCsvPrepared prepared;
  prepared.lines = Lines(text);
  if (prepared.lines.empty()) return prepared;
  prepared.separator = map.separator != 0 ? map.separator : FindSeparator(prepared.lines[0]);
  std::size_t headingLine = map.skip > 0 ? static_cast<std::size_t>(map.skip - 1) : 0;
  if (headingLine < prepared.lines.size())
    prepared.headings = LStatementCsvSplit(prepared.lines[headingLine], prepared.separator);
  return prepared;
}

}  // namespace

std::vector<std::string> LStatementCsvSplit(std::string_view line, char separator) {
  std::vector<std::string> cells;
  std::string cell;
  bool quoted = false, wasQuoted = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    char c = line[i];
    if (quoted) {
      if (c != '"') cell += c;
      else if (i + 1 < line.size() && line[i + 1] == '"') cell += '"', ++i;
      else quoted = false;
    } else if (c == '"' && LStatementCleanText(cell).empty()) {
      quoted = wasQuoted = true;
      cell.clear();
    } else if (c == separator) {
      cells.push_back(wasQuoted ? cell : LStatementCleanText(cell));
      cell.clear();
      wasQuoted = false;
    } else if (!wasQuoted) {
      cell += c;
    }
  }
  cells.push_back(wasQuoted ? cell : LStatementCleanText(cell));
  return cells;
}

bool LStatementCsvMapParse(std::string_view mapText, LStatementCsvMap& map, std::string& error) {
  while (!mapText.empty()) {
    // "sep=," holds the separator itself: a value is one character when the next is a comma.
    std::size_t equals = mapText.find('=');
    if (equals == std::string_view::npos) {
      error = "Correspondance des colonnes invalide : « " + std::string(mapText) + " ».";
      return false;
    }
    std::string name(mapText.substr(0, equals));
    std::string_view rest = mapText.substr(equals + 1);
    std::size_t comma = name == "sep" && rest.starts_with(",") ? 1 : rest.find(',');
    std::string value(rest.substr(0, comma));
    mapText = comma == std::string_view::npos ? std::string_view() : rest.substr(comma + 1);
    if (name == "date") map.date = value;
    else if (name == "text") map.text = value;
    else if (name == "amount") map.amount = value;
    else if (name == "debit") map.debit = value;
    else if (name == "credit") map.credit = value;
    else if (name == "ref") map.ref = value;
    else if (name == "sep" && (value == ";" || value == "," || value == "|" || value == "tab"))
      map.separator = value == "tab" ? '\t' : value[0];
    else if (name == "decimal" && (value == "comma" || value == "point")) map.decimalMark = value == "comma" ? ',' : '.';
    else if (name == "dates" && (value == "dmy" || value == "mdy")) map.dates = value;
    else if (name == "skip" && !value.empty() && value.find_first_not_of("0123456789") == std::string::npos)
      map.skip = std::atoi(value.c_str());
    else if (name == "encoding" && (value == "utf-8" || value == "utf-16" || value == "windows-1252"))
      map.encoding = value;
    else {
      error = "Correspondance des colonnes invalide : « " + name + "=" + value + " ».";
      return false;
    }
  }
  return true;
}

std::string LStatementCsvMapText(const LStatementCsvMap& map) {
  std::string mapText;
  auto add = [&](std::string_view name, std::string_view value) {
    if (value.empty()) return;
    if (!mapText.empty()) mapText += ',';
    mapText += std::string(name) + "=" + std::string(value);
  };
  add("date", map.date);
  add("text", map.text);
  add("amount", map.amount);
  add("debit", map.debit);
  add("credit", map.credit);
  add("ref", map.ref);
  if (map.separator != 0) add("sep", map.separator == '\t' ? "tab" : std::string(1, map.separator));
  if (map.decimalMark != 0) add("decimal", map.decimalMark == ',' ? "comma" : "point");
  add("dates", map.dates);
  if (map.skip >= 0) add("skip", std::to_string(map.skip));
  add("encoding", map.encoding);
  return mapText;
}

std::vector<std::string> LStatementCsvHeadings(std::string_view bytes, const LStatementCsvMap& map) {
  std::string text = Decode(bytes, map);
  return Prepare(text, map).headings;
}

bool LStatementCsvMapGuess(std::string_view bytes, LStatementCsvMap& map) {
  LStatementCsvMap guess;
  std::vector<std::string> headings = LStatementCsvHeadings(bytes, guess);
  for (std::size_t i = 0; i < headings.size(); ++i) {
    std::string column = std::to_string(i + 1);
    const std::string& heading = headings[i];
    if (guess.date.empty() && HasAny(heading, {"date", "datum"}) && !HasAny(heading, {"valeur", "value"}))
      guess.date = column;
    else if (guess.text.empty() && HasAny(heading, {"libell", "text", "description", "intitul", "payee", "memo"}))
      guess.text = column;
    else if (guess.debit.empty() && HasAny(heading, {"débit", "debit"})) guess.debit = column;
    else if (guess.credit.empty() && HasAny(heading, {"crédit", "credit"})) guess.credit = column;
    else if (guess.amount.empty() && HasAny(heading, {"montant", "amount", "betrag", "somme"})) guess.amount = column;
    else if (guess.ref.empty() && HasAny(heading, {"référence", "reference", "ref"})) guess.ref = column;
  }
  if (!guess.IsComplete()) return false;
  guess.skip = 1;
  map = guess;
  return true;
}

bool LStatementReadCSV(std::string_view bytes, const LCurrencyFormat& currency, const LStatementCsvMap& map,
                       std::vector<LStatementAccount>& statements, std::string& error) {
  if (!map.IsComplete()) {
    error = "Indiquez la correspondance des colonnes du relevé CSV : date, libellé et montant (ou débit et crédit).";
    return false;
  }
  std::string text = Decode(bytes, map);
  LCsvPrepared prepared = Prepare(text, map);
  const std::vector<std::string>& headings = prepared.headings;
  struct Column { const std::string* entry; std::string_view label; int index; };
  Column columns[] = {{&map.date, "date", 0}, {&map.text, "libellé", 0}, {&map.amount, "montant", 0},
                      {&map.debit, "débit", 0}, {&map.credit, "crédit", 0}, {&map.ref, "référence", 0}};
  for (Column& column : columns) {
    column.index = ColumnIndex(*column.entry, headings);
    if (column.index == -2 || (column.index < 0 && !column.entry->empty())) {
      error = "Relevé CSV refusé : la colonne « " + *column.entry + " » (" + std::string(column.label) +
              ") est introuvable.";
      return false;
    }
  }
  bool dayFirst = map.dates != "mdy";
  LStatementAccount account;
  std::size_t first = map.skip >= 0 ? static_cast<std::size_t>(map.skip) : 0;
  for (std::size_t i = first; i < prepared.lines.size(); ++i) {
    std::vector<std::string> cells = LStatementCsvSplit(prepared.lines[i], prepared.separator);
    std::string where = "Relevé CSV refusé : ligne de données " + std::to_string(i + 1);
    LStatementEntry line;
    std::string dateText = Cell(cells, columns[0].index);
    if (!LStatementParseDate(dateText, dayFirst, line.date)) {
      if (i == 0 && map.skip < 0) continue;  // the headings
      error = where + " : date invalide (« " + dateText + " »).";
      return false;
    }
    long long amount = 0, part = 0;
    bool any = false;
    for (int k : {2, 3, 4}) {
      std::string cell = Cell(cells, columns[k].index);
      if (columns[k].index < 0 || LStatementCleanText(cell).empty()) continue;
      if (!LStatementParseAmount(cell, map.decimalMark, currency.digits, part)) {
        std::string beyond = LStatementAmountBeyondCeiling("", cell, map.decimalMark, currency);
        error = where + " : " + (beyond.empty() ? "montant invalide (« " + cell + " »)." : beyond);
        return false;
      }
      amount += k == 3 ? -std::llabs(part) : k == 4 ? std::llabs(part) : part;
      any = true;
    }
    if (!any) {
      error = where + " : aucun montant.";
      return false;
    }
    line.amount = amount;
    line.text = LStatementCleanText(Cell(cells, columns[1].index));
    std::string reference = LStatementCleanText(Cell(cells, columns[5].index));
    if (!reference.empty()) line.text += (line.text.empty() ? "" : " ") + reference;
    account.lines.push_back(std::move(line));
  }
  statements.push_back(std::move(account));
  return true;
}
