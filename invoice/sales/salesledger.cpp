#include "invoice/sales/salesledger.h"

#include <mutex>

#include "accounts/accounts.h"
#include "accounts/bankpost.h"
#include "accounts/check.h"
#include "accounts/ledger.h"
#include "accounts/ledgerdelete.h"
#include "invoice/sales/bankpayment.h"
#include "invoice/sales/salesbook.h"
#include "invoice/sales/taxaccounts.h"
#include "invoice/shared/customer.h"
#include "invoice/shared/documentdateindex.h"
#include "invoice/shared/profile.h"
#include "llib/gen/filestore.h"
#include "llib/gen/filestoreindex.h"

namespace {

// A sales change killed midway may have saved a document without moving its customer's balance,
// or the other way round: every balance is computed again from the documents.
void SettleSalesChange(const LProfile& profile) {
  LProfile books(profile.GetDataStore().GetFolder());
  LCheckReport report;
  LCheckCustomerBalances(books, true, report);
}

}  // namespace

void LSalesLedgerInstall() {
  static std::once_flag installed;
  std::call_once(installed, [] {
    LLedgerSetDocumentDeleteRoute(kTxnTypeSales, LSalesDeleteForLedger);
    LLedgerSetDocumentDeleteRoute(kTxnTypeReceipt, LPaymentDeleteForLedger);
    LCheckAddBookCheck(LCheckCustomerBalances);
    LCheckAddBookCheck(LCheckDocumentDateIndexes);
    LLedgerAddIntentSettler(kSalesChangeIntentExtension, SettleSalesChange);
    LAccountsSetTaxAccountsCreator(LTaxOptionsCreateDefaultTaxAccounts);
    LBankSetCustomerPaymentPoster(LBankPostCustomerPayment);
  });
}

void LCheckCustomerBalances(LProfile& profile, bool fix, LCheckReport& report) {
  std::map<std::string, long long> computed = LCustomerBalancesFromDocuments(profile);
  const LFileStoreListBase& customers = profile.MainList(kCustomersList);
  LCustomer customer;
  for (LFileStoreIteratorBase it(customers, customer); customer.IsAttached(); it.Next(customer)) {
    long long stored = customer.GetBalance();
    long long expected = computed[customer.GetPrimaryKey()];
    if (stored == expected) continue;
    report.differences.push_back({std::string(kCustomersList), customer.GetPrimaryKey(), "Balance", stored, expected, fix});
    if (fix) customer.SetInt64("Balance", expected);  // saved as the iterator moves on
  }
}

void LCheckDocumentDateIndexes(LProfile& profile, bool fix, LCheckReport& report) {
  for (std::string_view listName : LDocumentDateIndexedLists()) {
    for (const LFileStoreIndexMismatch& mismatch :
         LFileStoreIndexVerify(profile.MainList(listName), kDocumentDateField, fix)) {
      if (fix) continue;  // rebuilt
      report.problems.push_back({std::string(listName) + "/.index." + std::string(kDocumentDateField), 0,
                                 "L'index des dates ne suit pas le document « " + mismatch.key +
                                     " » (kontavo check --fix le reconstruit)",
                                 "index « " + mismatch.indexed + " », document « " + mismatch.actual + " »"});
    }
  }
}
