// Reconciling a bank account with its statement: the user gives the statement's date and
// closing balance and ticks the ledger lines the statement shows (those paired with statement
// lines are ticked for them); the difference between the statement's balance and the cleared
// balance (the account's opening balance plus every cleared line) must be zero before the
// reconciliation can be finished.
//
// A reconciliation in progress lives in the account record: "ReconcileDate", "ReconcileBalance"
// (cents) and "ReconcileCleared" (the ticked transactions, one "DATE REFERENCE" a line).
// Finishing appends the ticked lines to the account's reconciliation file
// ("Reconcile/<number>.csv", rows "date","reference","amount","statement date"), which the
// ledger's delete keeps right; rolling back takes out the rows of the last statement date.
#pragma once

#include <string>
#include <string_view>
#include <vector>

class LProfile;
class LReportTable;

// One ledger line of the bank account, as the reconciliation shows it.
struct LReconcileItem {
  std::string date;
  std::string reference;
  std::string description;
  long long amount = 0;        // cents, money in positive
  bool reconciled = false;     // cleared by a finished reconciliation
  bool ticked = false;         // cleared in the reconciliation in progress
};

struct LReconcileState {
  std::string account;
  std::string statementDate;        // of the reconciliation in progress (or the last finished)
  long long statementBalance = 0;
  bool inProgress = false;
  std::string lastFinishedDate;     // statement date of the last finished reconciliation; empty: none
  long long openingBalance = 0;     // the account's
  long long clearedBalance = 0;     // opening + reconciled + ticked
  long long bookBalance = 0;        // opening + every line up to the statement date
  long long difference = 0;         // statementBalance - clearedBalance
  std::vector<LReconcileItem> items;  // lines up to the statement date not reconciled before,
                                      // and, for a finished one, those it cleared; date order
};

// Starts or updates the reconciliation in progress of account: statement date and balance, then
// ticks every transaction in clear (references, any letter case) and unticks those in unclear.
// A new reconciliation ticks at once the lines held by statement lines (matched, accepted,
// posted) up to its date. Refused: an account not in the chart, a date not after the last
// finished reconciliation, a reference that names no open line of the account.
[[nodiscard]] bool LReconcileUpdate(LProfile& profile, std::string_view account, std::string_view date,
                                    long long balance, const std::vector<std::string>& clear,
                                    const std::vector<std::string>& unclear, std::string& error);

// The state of account's reconciliation: the one in progress, else the last finished one (its
// items those it cleared), else an empty one at date. asOf (may be empty) picks the last
// finished reconciliation on or before that date when none is in progress.
[[nodiscard]] bool LReconcileLoad(LProfile& profile, std::string_view account, std::string_view asOf,
                                  LReconcileState& state, std::string& error);

// Finishes the reconciliation in progress: refused while the difference is not zero (the
// message gives it) or when none is in progress.
[[nodiscard]] bool LReconcileFinish(LProfile& profile, std::string_view account, std::string& error);

// Takes back the last finished reconciliation: its rows leave the reconciliation file. Refused
// when there is none, or while a reconciliation is in progress.
[[nodiscard]] bool LReconcileRollback(LProfile& profile, std::string_view account, std::string& statementDate,
                                      std::string& error);

// Abandons the reconciliation in progress (nothing of it is kept). Refused when there is none.
[[nodiscard]] bool LReconcileCancel(LProfile& profile, std::string_view account, std::string& error);

// The reconciliation report: statement balance, cleared and uncleared items, cleared balance,
// book balance and the difference.
void LReconcileReport(const LReconcileState& state, std::string_view accountName, LReportTable& table);
