// Importing a bank statement into a bank account of the chart: the file is read (format given
// or found from its content), the statement of this account chosen among those of the file (by
// the bank account number the account remembers in "BankAccountId", or the only one), checked
// (opening balance plus movements must give the closing balance), its lines stored in the
// account's statement lines without those imported before (accounts/banklines.h), and every
// line still open matched against the account's ledger (accounts/bankmatch.h).
//
// A CSV statement is read through the column mapping given, else the one the account
// remembers ("BankCSVMap"), else one guessed from its headings; the mapping used is remembered.
//
// Runs as a long process:
//     LBankImportData data{&profile, request};
//     LProcessResult result = Process(process, data);   // data.error set when it failed
#pragma once

#include <string>
#include <vector>

#include "accounts/banklines.h"
#include "accounts/statementfile.h"
#include "llib/gen/process.h"

class LProfile;

inline constexpr std::string_view kBankAccountIdField = "BankAccountId";  // on the account record
inline constexpr std::string_view kBankCsvMapField = "BankCSVMap";        // on the account record

struct LBankImportRequest {
  std::string account;           // the bank account's number in the chart
  std::string path;              // the statement file
  LStatementFormat format = LStatementFormat::kUnknown;  // kUnknown: found from the content
  std::string csvMap;            // column mapping text; empty: remembered or guessed
  std::string statementAccount;  // the bank's account number to take; empty: remembered or only one
};

// One line of the statement as the import left it.
struct LBankImportedLine {
  LBankLine line;      // as stored (status and pairing after matching)
  bool known = false;  // imported before: nothing was added for it
};

struct LBankImportData {
  LProfile* profile = nullptr;
  LBankImportRequest request;
  // Results.
  LStatementFormat format = LStatementFormat::kUnknown;  // the format read
  std::string statementAccount;             // the bank's account number of the statement taken
  std::vector<std::string> otherAccounts;   // the file's other accounts, not imported
  std::vector<LBankImportedLine> lines;     // in the statement's order
  std::string error;                        // French message when the process failed
};

// Status lines: "Lecture du relevé", "Rapprochement avec le grand livre"; progress over the
// lines. Failed (error set, nothing stored) for: an account not in the chart, a file that
// cannot be read or holds no statement of the account, a line that cannot be read, balances
// that do not add up, statement lines that cannot be written.
LProcessResult Process(LProcessInterface& process, LBankImportData& data);

// Matches again every open line (new or suggested) of the account against its ledger; the
// others stay as they are. false when the store could not be written.
[[nodiscard]] bool LBankRematch(LProfile& profile, std::string_view account);

// Whether two account numbers as banks write them name the same account: equal once blanks and
// punctuation are dropped, or one the end of the other (an IBAN ending in the account number).
bool LBankSameAccountId(std::string_view a, std::string_view b);
