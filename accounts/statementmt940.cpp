// MT940, the SWIFT customer statement: fields ":TAG:" at the start of a line, continued on the
// lines after. :25: account, :60F: or :60M: opening balance ("C240101EUR1234,56": credit or
// debit mark, date YYMMDD, currency, amount with a decimal comma), :61: a line, :86: its text,
// :62F: or :62M: closing balance. A :61: line is
//   YYMMDD [MMDD] (C|D|RC|RD) [funds letter] amount N|F|S type(3) customer-ref [//bank-ref]
// where the optional MMDD is the booking date, RC a reversed credit (money out) and RD a
// reversed debit (money in). SWIFT envelopes ("{1:...}{4:" and "-}") are read past.
#include <cctype>

#include "accounts/statementreaders.h"
#include "accounts/statementtext.h"
#include "llib/gen/money.h"
#include "llib/gen/date.h"

namespace {

struct LMt940Field {
  std::string tag;    // "61", "86", ...
  std::string value;  // continuation lines joined by "\n"
  std::size_t lineNumber = 0;
};

std::vector<LMt940Field> Fields(std::string_view text) {
  std::vector<LMt940Field> fields;
  std::size_t lineNumber = 0;
  while (!text.empty()) {
    std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    ++lineNumber;
    while (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (line.starts_with("{")) {  // envelope blocks before the text block
      std::size_t text4 = line.find("{4:");
      if (text4 == std::string_view::npos) continue;
      line.remove_prefix(text4 + 3);
    }
    if (line == "-}" || line == "-") continue;
    std::size_t close = line.size() > 1 && line[0] == ':' ? line.find(':', 1) : std::string_view::npos;
    if (close != std::string_view::npos && close <= 4) {
      fields.push_back({std::string(line.substr(1, close - 1)), std::string(line.substr(close + 1)), lineNumber});
    } else if (!fields.empty() && !line.empty()) {
      fields.back().value += "\n" + std::string(line);
    }
  }
  return fields;
}

bool YyMmDd(std::string_view text, LDate& out) {
  if (text.size() < 6) return false;
  for (char c : text.substr(0, 6))
    if (!std::isdigit(static_cast<unsigned char>(c))) return false;
  auto two = [&](std::size_t at) { return (text[at] - '0') * 10 + text[at + 1] - '0'; };
  out = LDate(2000 + two(0), two(2), two(4));
  return out.IsValid();
}

// An amount with a decimal comma; when it is a number beyond the ceiling, beyond receives the
// refusal that names the ceiling, as the other statement readers give it.
bool Amount(std::string_view text, const LCurrencyFormat& currency, long long& amount, std::string& beyond) {
  if (LStatementParseAmount(text, ',', currency.digits, amount)) return true;
  beyond = LStatementAmountBeyondCeiling("", text, ',', currency);
  return false;
}

// "C240101EUR1234,56".
bool Balance(std::string_view value, const LCurrencyFormat& currency, long long& amount, std::string& date,
             std::string& beyond) {
  if (value.size() < 11 || (value[0] != 'C' && value[0] != 'D')) return false;
  LDate day;
  if (!YyMmDd(value.substr(1), day) || !Amount(value.substr(10), currency, amount, beyond)) return false;
  if (value[0] == 'D') amount = -amount;
  date = day.ToText();
  return true;
}

bool StatementLine(std::string_view value, const LCurrencyFormat& currency, LStatementEntry& line, std::string& beyond) {
  std::size_t firstLineEnd = value.find('\n');
  std::string_view head = value.substr(0, firstLineEnd);
  LDate valueDate;
  if (!YyMmDd(head, valueDate)) return false;
  std::size_t at = 6;
  LDate booking = valueDate;
  if (head.size() >= at + 4 && std::isdigit(static_cast<unsigned char>(head[at]))) {
    int month = (head[at] - '0') * 10 + head[at + 1] - '0';
    int day = (head[at + 2] - '0') * 10 + head[at + 3] - '0';
    booking = LDate(valueDate.year, month, day);
    // A booking in December of a value date in January (or the reverse) crosses the year.
    if (month == 12 && valueDate.month == 1) booking.year -= 1;
    if (month == 1 && valueDate.month == 12) booking.year += 1;
    if (!booking.IsValid()) return false;
    at += 4;
  }
  bool negative = false;
  if (head.substr(at).starts_with("RC")) negative = true, at += 2;
  else if (head.substr(at).starts_with("RD")) at += 2;
  else if (at < head.size() && head[at] == 'D') negative = true, ++at;
  else if (at < head.size() && head[at] == 'C') ++at;
  else return false;
  if (at < head.size() && std::isalpha(static_cast<unsigned char>(head[at]))) ++at;  // funds code
  std::size_t amountEnd = head.find_first_not_of("0123456789,", at);
  if (amountEnd == std::string_view::npos || amountEnd == at) return false;
  if (!Amount(head.substr(at, amountEnd - at), currency, line.amount, beyond)) return false;
  if (negative) line.amount = -line.amount;
  std::string_view rest = head.substr(amountEnd);
  std::string_view type = rest.substr(1, std::min<std::size_t>(3, rest.size() > 0 ? rest.size() - 1 : 0));
  rest = rest.size() > 4 ? rest.substr(4) : std::string_view();
  std::size_t slashes = rest.find("//");
  std::string_view customerRef = rest.substr(0, slashes);
  if (slashes != std::string_view::npos) line.bankId = LStatementCleanText(rest.substr(slashes + 2));
  if (type == "CHK") line.chequeNumber = LStatementDigits(customerRef);
  if (customerRef != "NONREF") line.text = LStatementCleanText(customerRef);
  if (firstLineEnd != std::string_view::npos) {
    std::string more = LStatementCleanText(value.substr(firstLineEnd + 1));
    if (!more.empty()) line.text += (line.text.empty() ? "" : " ") + more;
  }
  line.date = booking.ToText();
  return true;
}

// The text of :86:, its structured sub-fields ("?20", "?32", ...) made blanks.
std::string Information(std::string_view value) {
  std::string text;
  for (std::size_t i = 0; i < value.size(); ++i) {
    if (value[i] == '?' && i + 2 < value.size() && std::isdigit(static_cast<unsigned char>(value[i + 1])) &&
        std::isdigit(static_cast<unsigned char>(value[i + 2]))) {
      text += ' ';
      i += 2;
    } else if (value[i] == '\n') {
      continue;  // a continuation line goes on the same words
    } else {
      text += value[i];
    }
  }
  return LStatementCleanText(text);
}

}  // namespace

bool LStatementReadMT940(std::string_view bytes, const LCurrencyFormat& currency, std::vector<LStatementAccount>& statements,
                         std::string& error) {
  std::vector<LMt940Field> fields = Fields(LStatementTextToUtf8(bytes));
  LStatementAccount* current = nullptr;
  std::string account;
  bool pendingInformation = false;  // the last :61: may still get its :86:
  for (const LMt940Field& field : fields) {
    std::string beyond;
    auto refuse = [&](std::string_view what) {
      std::string where = "Relevé MT940 refusé : ligne " + std::to_string(field.lineNumber) + " (:" + field.tag + ":)";
      error = beyond.empty() ? where + ", " + std::string(what) + "." : where + " : " + beyond;
      return false;
    };
    long long amount = 0;
    std::string date;
    if (field.tag == "25") {
      account = LStatementCleanText(field.value);
    } else if (field.tag == "60F" || field.tag == "60M") {
      if (!Balance(field.value, currency, amount, date, beyond)) return refuse("solde d'ouverture illisible");
      bool followsOn = current != nullptr && current->accountId == account && current->closing == amount;
      if (!followsOn) {
        statements.push_back({});
        current = &statements.back();
        current->accountId = account;
        current->opening = amount;
      }
    } else if (field.tag == "61") {
      if (current == nullptr) return refuse("opération avant le solde d'ouverture");
      LStatementEntry line;
      if (!StatementLine(field.value, currency, line, beyond)) return refuse("opération illisible");
      current->lines.push_back(std::move(line));
      pendingInformation = true;
      continue;
    } else if (field.tag == "86") {
      if (pendingInformation && current != nullptr) {
        std::string info = Information(field.value);
        LStatementEntry& line = current->lines.back();
        if (!info.empty()) line.text = line.text.empty() ? info : info + " " + line.text;
      }
    } else if (field.tag == "62F" || field.tag == "62M") {
      if (current == nullptr) return refuse("solde de clôture sans solde d'ouverture");
      if (!Balance(field.value, currency, amount, date, beyond)) return refuse("solde de clôture illisible");
      current->closing = amount;
      current->closingDate = date;
    }
    pendingInformation = false;
  }
  if (statements.empty()) {
    error = "Le fichier n'est pas un relevé MT940 : aucun solde d'ouverture (:60F:) n'y figure.";
    return false;
  }
  return true;
}
