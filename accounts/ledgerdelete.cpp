#include "accounts/ledgerdelete.h"

#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "accounts/billpayments.h"
#include "accounts/bills.h"
#include "accounts/cashtxn.h"
#include "accounts/cheques.h"
#include "accounts/ledger.h"
#include "accounts/ledgerintent.h"
#include "accounts/ledgerlock.h"
#include "invoice/shared/profile.h"
#include "llib/gen/csv.h"
#include "llib/gen/file.h"
#include "llib/gen/record.h"
#include "llib/gen/textcase.h"

namespace {

// Drops the reconciliation rows of one removed line: same date and reference (any letter case)
// and the same amount.
void RemoveReconciledRow(const LProfile& profile, const LLedgerJournalLine& line, std::string_view reference) {
  LTextBuffer path;
  LReconcileGetCSVFilePath(profile, path, line.account);
  if (!LFile::Exists(path)) return;
  LCSVFileEditor editor(path, kLedgerLockTimeoutMs);
  for (; editor.HasRow(); editor.Next()) {
    LCSVReaderRow row(editor.GetLine());
    LTextBuffer date, ref, amount;
    row.GetCol(date);
    row.GetCol(ref);
    row.GetCol(amount);
    bool isLine = LSameText(date, line.date) && LSameText(ref, reference) &&
                  LLedgerReadAmountFromTheLedger(amount) == line.amount;
    if (!isLine) editor.RowAccept();
  }
}

struct LRouteTable {
  std::mutex mutex;
  std::map<std::string, LDocumentDeleteRoute, std::less<>> routes{
      {std::string(kTxnTypePurchase), LBillDeleteForLedger},
      {std::string(kTxnTypeBillPayment), LBillPaymentDeleteForLedger},
  };
  // Documents keyed by their own reference, whatever the type of their transactions: they are
  // asked first, since a cheque that pays bills is also a bill payment.
  std::vector<LDocumentDeleteRoute> byReference{LChequeDeleteForLedger, LCashTxnDeleteForLedger};
};

LRouteTable& Routes() {
  static LRouteTable table;
  return table;
}

LDocumentDeleteRoute FindRoute(std::string_view type) {
  LRouteTable& table = Routes();
  std::lock_guard<std::mutex> guard(table.mutex);
  auto it = table.routes.find(type);
  return it == table.routes.end() ? nullptr : it->second;
}

}  // namespace

bool LAccountTransactionDelete(LProfile& profile, std::string_view date, std::string_view reference) {
  LLedgerLock lock(profile);
  LLedgerTransaction txn;
  if (!LLedgerTransactionLoad(profile, txn, date, reference)) return false;
  LLedgerIntent intent(profile);
  intent.AddTransaction(txn, -1);
  if (!intent.BeginDeleting(txn)) return false;
  // The trail keeps the rows before they go; a deletion it cannot record is refused.
  if (!intent.RecordInTrail()) {
    intent.End();
    return false;
  }
  if (!LLedgerTransactionLoadAndReverse(profile, txn, date, reference)) {
    intent.Refuse();  // the day file could not be rewritten: it still holds the transaction
    return false;
  }
  for (const auto& line : txn.Lines()) RemoveReconciledRow(profile, line, reference);
  // Balances not saved keep the intent, which the next holder of the ledger lock settles.
  if (intent.ApplyBalances()) intent.End();
  return true;
}

bool LDocumentPostedAs(const LProfile& profile, std::string_view listName, std::string_view key,
                       std::string_view reference) {
  LRecord document;
  if (!profile.List(listName).Open(document, key)) return false;
  bool posted = document.GetString("JournalTxnRef") == reference;
  document.DetachWithoutSave();  // only read
  return posted;
}

void LLedgerSetDocumentDeleteRoute(std::string_view type, LDocumentDeleteRoute route) {
  LRouteTable& table = Routes();
  std::lock_guard<std::mutex> guard(table.mutex);
  if (route == nullptr) table.routes.erase(std::string(type));
  else table.routes[std::string(type)] = route;
}

bool LedgerTransactionDelete(LProfile& profile, std::string_view date, std::string_view reference) {
  LLedgerTransaction txn;
  if (!LLedgerTransactionLoad(profile, txn, date, reference)) return false;
  std::string document;
  for (const auto& line : txn.Lines()) {
    if (!line.document.empty()) {
      document = line.document;
      break;
    }
  }
  for (LDocumentDeleteRoute route : Routes().byReference)
    if (route(profile, document, reference)) return true;
  if (!document.empty()) {
    if (LDocumentDeleteRoute route = FindRoute(txn.GetType()); route != nullptr && route(profile, document, reference))
      return true;
  }
  return LAccountTransactionDelete(profile, date, reference);
}
