// QIF: sections opened by "!Type:..." lines, records of one-letter fields ending with "^":
// D date, T (or U) amount, P payee, M memo, N number (a cheque's), L category. Dates are
// written day first by European banks and month first by American ones ("12/31'24"); the file
// decides: a first number above 12 somewhere means day first, a second one above 12 month
// first, and day first otherwise.
#include <cctype>
#include <cstdlib>

#include "accounts/statementreaders.h"
#include "accounts/statementtext.h"
#include "llib/gen/money.h"

namespace {

struct LQifRecord {
  std::string date, amount, payee, memo, number;
  std::size_t lineNumber = 0;  // where the record starts
};

bool IsBankSection(std::string_view type) {
  return type == "Bank" || type == "Cash" || type == "CCard" || type == "Oth A" || type == "Oth L";
}

// Which of the first two numbers of a date is the day.
bool DayFirst(const std::vector<LQifRecord>& records) {
  for (const LQifRecord& record : records) {
    int first = std::atoi(record.date.c_str());
    std::size_t mark = record.date.find_first_of("/-.");
    int second = mark == std::string::npos ? 0 : std::atoi(record.date.c_str() + mark + 1);
    if (mark == 4) continue;  // year first
    if (first > 12) return true;
    if (second > 12) return false;
  }
  return true;
}

std::string Cleaned(std::string date) {
  for (char& c : date)
    if (c == '\'') c = '/';
  std::string out;
  for (char c : date)
    if (c != ' ') out += c;
  return out;
}

}  // namespace

bool LStatementReadQIF(std::string_view bytes, const LCurrencyFormat& currency, std::vector<LStatementAccount>& statements,
                       std::string& error) {
  std::string text = LStatementTextToUtf8(bytes);
  std::vector<std::pair<std::string, std::vector<LQifRecord>>> sections;  // account name, records
  std::string accountName;
  bool inAccountBlock = false, inBankSection = false, sawType = false;
  LQifRecord record;
  bool recordHasData = false;
  std::size_t lineNumber = 0;
  std::string_view rest = text;
  while (!rest.empty()) {
    std::size_t end = rest.find('\n');
    std::string_view line = rest.substr(0, end);
    rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
    ++lineNumber;
    while (!line.empty() && (line.back() == '\r' || line.back() == ' ')) line.remove_suffix(1);
    if (line.empty()) continue;
    if (line[0] == '!') {
      std::string_view header = line.substr(1);
      inAccountBlock = header == "Account";
      if (header.starts_with("Type:")) {
        sawType = true;
        inBankSection = IsBankSection(header.substr(5));
        if (inBankSection) sections.push_back({accountName, {}});
      } else if (!inAccountBlock) {
        inBankSection = false;  // "!Option:...", "!Clear:..."
      }
      recordHasData = false;
      continue;
    }
    char field = line[0];
    std::string value(line.substr(1));
    if (field == '^') {
      if (inBankSection && recordHasData) sections.back().second.push_back(record);
      record = {};
      recordHasData = false;
      continue;
    }
    if (inAccountBlock) {
      if (field == 'N') accountName = LStatementCleanText(value);
      continue;
    }
    if (!inBankSection) continue;
    if (!recordHasData) record.lineNumber = lineNumber;
    recordHasData = true;
    switch (field) {
      case 'D': record.date = Cleaned(value); break;
      case 'T': record.amount = value; break;
      case 'U': if (record.amount.empty()) record.amount = value; break;
      case 'P': record.payee = LStatementCleanText(value); break;
      case 'M': record.memo = LStatementCleanText(value); break;
      case 'N': record.number = LStatementCleanText(value); break;
      default: break;  // category, cleared status, address, splits: not the bank's
    }
  }
  if (!sawType) {
    error = "Le fichier n'est pas un fichier QIF : aucune section « !Type: » n'y figure.";
    return false;
  }
  for (auto& [name, records] : sections) {
    bool dayFirst = DayFirst(records);
    LStatementAccount account;
    account.accountId = name;
    for (const LQifRecord& qif : records) {
      std::string where = "Fichier QIF refusé : l'opération de la ligne " + std::to_string(qif.lineNumber);
      LStatementEntry line;
      if (!LStatementParseDate(qif.date, dayFirst, line.date)) {
        error = where + " n'a pas de date valide (« " + qif.date + " »).";
        return false;
      }
      if (!LStatementParseAmount(qif.amount, 0, currency.digits, line.amount)) {
        std::string beyond = LStatementAmountBeyondCeiling("", qif.amount, 0, currency);
        error = where + (beyond.empty() ? " n'a pas de montant valide (« " + qif.amount + " »)." : " : " + beyond);
        return false;
      }
      line.text = qif.payee.empty() ? qif.memo : qif.memo.empty() ? qif.payee : qif.payee + " " + qif.memo;
      bool numeric = !qif.number.empty() &&
                     qif.number.find_first_not_of("0123456789") == std::string::npos;
      if (numeric) line.chequeNumber = qif.number;
      account.lines.push_back(std::move(line));
    }
    statements.push_back(std::move(account));
  }
  if (statements.empty()) {
    error = "Le fichier QIF ne contient aucune section de compte bancaire, de caisse ou de carte.";
    return false;
  }
  return true;
}
