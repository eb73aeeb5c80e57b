// Checking the books: the balances cached in the records are recomputed from what they cache and
// every difference is reported; with "fix" the recomputed values are written. The ledger side
// recomputes each account's "TotalBalance" (opening balance plus every journal line), its month
// buckets "Balance%d", "BalanceFirst" and "IsAccountUsed" from the day files. On the way it
// reports what it cannot repair: rows it cannot read as the ledger writes them, rows naming no
// account, transactions whose lines do not sum to zero. Every problem is reported with its file
// and row, and the walk carries on, so one run shows everything. Then the purchase book: each
// supplier's "Balance" and each bill's "AmountPaid" against the documents (suppliers.h), and
// each cheque that pays bills against its bill payment (cheques.h).
//
// Other parts of the books (customer balances on the sales side) add their own checks with
// LCheckAddBookCheck; they run after the accounts, in the order added, with the same report.
//
// The whole check runs under the ledger lock, so it never sees a posting half done.
#pragma once

#include <string>
#include <vector>

#include "llib/gen/process.h"

class LProfile;

// A cached value that differs from what it caches.
struct LCheckDifference {
  std::string list;        // the record's list ("Accounts")
  std::string key;         // the record's key ("1110")
  std::string field;       // the field ("TotalBalance", "Balance24290", ...)
  long long stored = 0;    // what the record holds (0 when absent)
  long long computed = 0;  // what it should hold
  bool fixed = false;      // the computed value was written
};

// Something wrong that a fix cannot repair.
struct LCheckProblem {
  std::string file;     // relative to the business folder ("Ledger/2024-03-31.csv"), or a record
  long row = 0;         // row in the file (1 for the first non-empty line), 0 when not a row
  std::string message;  // what is wrong, in French
  std::string text;     // the offending text
};

struct LCheckReport {
  std::vector<LCheckDifference> differences;
  std::vector<LCheckProblem> problems;
  long long nRows = 0;  // journal rows read

  // Something remains wrong: a problem, or a difference that was not fixed.
  bool HasUnresolved() const;
};

// A check of one part of the books; with fix it writes what it recomputed and marks the
// differences fixed.
using LBookCheck = void (*)(LProfile& profile, bool fix, LCheckReport& report);
void LCheckAddBookCheck(LBookCheck check);

// The data of the long operation "check the books".
struct LBookCheckProcess {
  LProfile* profile = nullptr;
  bool fix = false;
  LCheckReport report;
};

// The account check alone, fixing what differs: for a change cut short whose balances cannot be
// told from what it noted. Callers hold the ledger lock.
void LCheckFixAccountBalances(const LProfile& profile, LCheckReport& report);

// Runs the account check, then every added check. Cancelled (nothing written) when asked to stop
// while the day files are read.
LProcessResult Process(LProcessInterface& process, LBookCheckProcess& data);
