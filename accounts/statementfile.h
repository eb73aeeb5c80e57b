// A bank statement as any of the formats banks send it becomes one model: the statements of
// the file (one per account, sometimes several), each with its account identifier, its opening
// and closing balances when the format gives them, and its lines in the file's order. The
// import (accounts/bankimport.h) then takes the statement of the chosen bank account, checks
// that it adds up and matches its lines against the ledger.
//
// Formats: OFX and QFX, in the SGML form as in the XML form of OFX 2 (every transaction read,
// whatever the form of its end tags); CSV with a column mapping (accounts/statementcsv.h);
// CFONB 120 (the French banks' fixed records); camt.053 (ISO 20022 XML); QIF; MT940. The format
// is found from the content when the caller does not name it.
//
// Amounts are minor units of the business's currency: positive money in, negative money out.
// Texts are UTF-8 whatever the file's character set (Windows-1252 and Latin-1 bytes converted).
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

enum class LStatementFormat { kUnknown, kOFX, kCSV, kCamt, kCFONB, kQIF, kMT940 };

struct LStatementEntry {
  std::string date;          // posting date "YYYY-MM-DD"
  long long amount = 0;      // minor units, positive money in
  std::string text;          // payee, label and memo as one text
  std::string bankId;        // the bank's own identifier of the line; empty when none
  std::string chequeNumber;  // digits of a cheque's number; empty when not a cheque

  friend bool operator==(const LStatementEntry&, const LStatementEntry&) = default;
};

struct LStatementAccount {
  std::string accountId;                 // the bank's account number; empty when not given
  std::optional<long long> opening;      // balance before the first line, minor units
  std::optional<long long> closing;      // balance after the last line
  std::string closingDate;               // "YYYY-MM-DD" of the closing balance; may be empty
  std::vector<LStatementEntry> lines;     // in the file's order
};

// The names the command line and the pages use: "ofx", "csv", "camt", "cfonb", "qif",
// "mt940". false for any other text.
bool LStatementFormatFromName(std::string_view name, LStatementFormat& format);
std::string_view LStatementFormatName(LStatementFormat format);

// The format of a file from its first bytes; kUnknown when none fits. A CSV file is the
// fallback for text whose lines hold separators.
LStatementFormat LStatementGuessFormat(std::string_view bytes);

// Opening balance plus the lines' amounts must give the closing balance, when both are given.
// false with error naming both figures otherwise.
[[nodiscard]] bool LStatementAddsUp(const LStatementAccount& statement, int currencyDigits, std::string& error);
