// CFONB 120, the French banks' account statement of fixed 120-character records (Latin-1):
//
//   pos  1-2   record code: 01 old balance, 04 movement, 05 complement, 07 new balance
//   pos  3-7   bank code          pos 12-16  branch code       pos 17-19  currency
//   pos 20     number of decimals pos 22-32  account number    pos 33-34  interbank operation code
//   pos 35-40  date (DDMMYY)      pos 43-48  value date        pos 49-79  label (31)
//   pos 82-88  entry number       pos 91-104 amount: 13 digits and a last character that carries
//              the sign and the last digit ("{" "A".."I" for +0..+9, "}" "J".."R" for -0..-9)
//   pos 105-120 reference (04)    05: pos 46-48 qualifier, pos 49-118 further text
//
// Records are cut from the file by line ends when it has them, otherwise every 120 bytes.
#include <cctype>

#include "accounts/statementreaders.h"
#include "accounts/statementtext.h"
#include "llib/gen/money.h"
#include "llib/gen/moneybounds.h"
#include "llib/gen/date.h"

namespace {

constexpr std::size_t kRecordBytes = 120;
constexpr std::string_view kChequeOperation = "01";  // interbank code of cheques paid

std::vector<std::string_view> Records(std::string_view bytes) {
  std::vector<std::string_view> records;
  if (bytes.find_first_of("\r\n") != std::string_view::npos) {
    while (!bytes.empty()) {
      std::size_t end = bytes.find_first_of("\r\n");
      std::string_view record = bytes.substr(0, end);
      if (!record.empty()) records.push_back(record);
      if (end == std::string_view::npos) break;
      bytes.remove_prefix(end + 1);
    }
  } else {
    for (std::size_t at = 0; at < bytes.size(); at += kRecordBytes) records.push_back(bytes.substr(at, kRecordBytes));
  }
  return records;
}

std::string_view Field(std::string_view record, std::size_t from, std::size_t to) {  // positions, 1-based
  return from - 1 >= record.size() ? std::string_view() : record.substr(from - 1, to - from + 1);
}

enum class LCfonbAmount { kRead, kUnreadable, kBeyondCeiling };

// The signed amount of positions 91-104 in minor units of the currency. plain receives it as
// decimal text ("-1234.56"), for the refusal of an amount beyond the ceiling.
LCfonbAmount Amount(std::string_view record, int currencyDigits, long long& out, std::string& plain) {
  std::string_view field = Field(record, 91, 104);
  char decimals = record.size() >= 20 ? record[19] : '?';
  if (field.size() != 14 || !std::isdigit(static_cast<unsigned char>(decimals))) return LCfonbAmount::kUnreadable;
  char last = field[13];
  int lastDigit = 0;
  bool negative = false;
  if (last == '{') lastDigit = 0;
  else if (last >= 'A' && last <= 'I') lastDigit = last - 'A' + 1;
  else if (last == '}') negative = true;
  else if (last >= 'J' && last <= 'R') negative = true, lastDigit = last - 'J' + 1;
  else return LCfonbAmount::kUnreadable;
  std::string digits(field.substr(0, 13));
  if (digits.find_first_not_of("0123456789") != std::string::npos) return LCfonbAmount::kUnreadable;
  digits.push_back(static_cast<char>('0' + lastDigit));
  std::size_t point = digits.size() - static_cast<std::size_t>(decimals - '0');
  plain = (negative ? "-" : "") + digits.substr(0, point) + (point < digits.size() ? "." + digits.substr(point) : "");
  // Fourteen digits scaled to six currency digits would pass 64 bits: the ceiling is checked first.
  if (LAmountTextIsBeyondCeiling(plain, currencyDigits)) return LCfonbAmount::kBeyondCeiling;
  long long value = 0;
  for (char c : digits) value = value * 10 + (c - '0');
  int scale = currencyDigits - (decimals - '0');
  for (; scale > 0; --scale) value *= 10;
  for (; scale < 0; ++scale) {
    if (value % 10 != 0) return LCfonbAmount::kUnreadable;  // more precision than the currency keeps
    value /= 10;
  }
  out = negative ? -value : value;
  return LCfonbAmount::kRead;
}

bool Date(std::string_view field, std::string& out) {
  if (field.size() != 6) return false;
  for (char c : field)
    if (!std::isdigit(static_cast<unsigned char>(c))) return false;
  int day = (field[0] - '0') * 10 + field[1] - '0';
  int month = (field[2] - '0') * 10 + field[3] - '0';
  int year = 2000 + (field[4] - '0') * 10 + field[5] - '0';
  LDate date(year, month, day);
  if (!date.IsValid()) return false;
  out = date.ToText();
  return true;
}

std::string Text(std::string_view field) { return LStatementCleanText(LStatementTextToUtf8(field)); }

}  // namespace

bool LStatementReadCFONB(std::string_view bytes, const LCurrencyFormat& currency, std::vector<LStatementAccount>& statements,
                         std::string& error) {
  std::vector<std::string_view> records = Records(bytes);
  LStatementAccount* current = nullptr;  // the statement the movements go to
  bool closed = true;                    // current saw its 07
  for (std::size_t i = 0; i < records.size(); ++i) {
    std::string_view record = records[i];
    std::string_view code = Field(record, 1, 2);
    std::string where = "enregistrement " + std::to_string(i + 1) + " (" + std::string(code) + ")";
    auto refuse = [&](std::string_view what) {
      error = "Relevé CFONB refusé : " + where + ", " + std::string(what) + ".";
      return false;
    };
    if (code == "05") {
      if (current == nullptr || current->lines.empty()) return refuse("complément sans opération");
      std::string more = Text(Field(record, 49, 118));
      if (!more.empty()) current->lines.back().text += " " + more;
      continue;
    }
    if (code != "01" && code != "04" && code != "07") return refuse("code d'enregistrement inconnu");
    if (record.size() < 104) return refuse("enregistrement trop court");
    std::string account = std::string(LStatementCleanText(Field(record, 22, 32)));
    long long amount = 0;
    std::string plain;
    switch (Amount(record, currency.digits, amount, plain)) {
      case LCfonbAmount::kRead: break;
      case LCfonbAmount::kUnreadable: return refuse("montant illisible");
      case LCfonbAmount::kBeyondCeiling:
        error = "Relevé CFONB refusé : " + where + " : " + LAmountRefusal("", plain, plain, currency);
        return false;
    }
    std::string date;
    if (!Date(Field(record, 35, 40), date)) return refuse("date illisible");
    if (code == "01") {
      // A statement that follows on from the one before (same account, its balance carried
      // over) continues it.
      bool followsOn = current != nullptr && closed && current->accountId == account && current->closing == amount;
      if (!followsOn) {
        statements.push_back({});
        current = &statements.back();
        current->accountId = account;
        current->opening = amount;
      }
      closed = false;
    } else if (current == nullptr || current->accountId != account || closed) {
      return refuse("hors d'un relevé ouvert par un enregistrement 01 du même compte");
    } else if (code == "04") {
      LStatementEntry line;
      line.date = date;
      line.amount = amount;
      line.text = Text(Field(record, 49, 79));
      std::string reference = Text(Field(record, 105, 120));
      if (Field(record, 33, 34) == kChequeOperation) {
        line.chequeNumber = LStatementDigits(line.text);
        if (line.chequeNumber.empty()) line.chequeNumber = LStatementDigits(reference);
      }
      if (!reference.empty()) line.text += " " + reference;
      current->lines.push_back(std::move(line));
    } else {
      current->closing = amount;
      current->closingDate = date;
      closed = true;
    }
  }
  if (statements.empty()) {
    error = "Le fichier ne contient aucun relevé CFONB (enregistrement 01).";
    return false;
  }
  return true;
}
