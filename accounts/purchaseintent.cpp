#include "accounts/purchaseintent.h"

#include <map>
#include <string>
#include <vector>

#include "accounts/bills.h"
#include "accounts/check.h"
#include "accounts/ledger.h"
#include "accounts/ledgerdelete.h"
#include "accounts/suppliers.h"
#include "invoice/shared/profile.h"
#include "llib/gen/log.h"
#include "llib/gen/system.h"

namespace {

constexpr std::string_view kNoteBill = "bill";

// Brings the bill key's posting in step with its record: posted as the record stands, on its date
// only; a bill without its record (a recording cut short before it, or a deletion after) has no
// posting left on either date noted.
void SettleBill(LProfile& profile, const std::string& key, const std::vector<std::string>& dates) {
  LBill bill;
  LLedgerTransaction wanted;
  bool present = profile.List(kBillsList).Open(bill, key);
  if (present) {
    LBillBuildTransaction(profile, bill, key, LGetPostingUserName(), wanted);
    bill.DetachWithoutSave();
  }
  bool changed = false;
  for (const std::string& date : dates) {
    if (date.empty() || (present && date == wanted.GetDate())) continue;
    if (LLedgerTransactionTestExists(profile, date, key)) changed = LAccountTransactionDelete(profile, date, key) || changed;
  }
  if (present) {
    LLedgerTransaction current;
    bool loaded = LLedgerTransactionLoad(profile, current, wanted.GetDate(), key);
    if (!loaded || !LLedgerTransactionEqual(current, wanted)) {
      if (loaded) (void)LAccountTransactionDelete(profile, wanted.GetDate(), key);
      changed = LAccountTransactionRecord(profile, wanted) || changed;
    }
  }
  if (changed)
    LLogWarning("Facture fournisseur %s : son écriture, interrompue, a été remise en accord avec le document.", key.c_str());
}

void SettlePurchaseChange(const LProfile& profile, const std::vector<std::string>& notes) {
  LProfile books(profile.GetDataStore().GetFolder());
  std::map<std::string, std::vector<std::string>> bills;  // key: the dates its posting was or was to be on
  for (const std::string& note : notes) {
    std::vector<std::string_view> parts = LIntentNoteParts(note);
    if (parts.size() == 4 && parts[0] == kNoteBill)
      bills[std::string(parts[1])].insert(bills[std::string(parts[1])].end(), {std::string(parts[2]), std::string(parts[3])});
  }
  for (const auto& [key, dates] : bills) SettleBill(books, key, dates);
  LCheckReport report;
  LCheckSupplierBalances(books, true, report);
  for (const LCheckDifference& difference : report.differences)
    LLogWarning("Achats interrompus : %s/%s « %s » remis à %lld (au lieu de %lld).", difference.list.c_str(), difference.key.c_str(),
                difference.field.c_str(), difference.computed, difference.stored);
}

}  // namespace

void LPurchaseChangeIntent::NoteBill(std::string_view key, std::string_view oldDate, std::string_view date) {
  (void)Note(std::string(kNoteBill) + "\t" + std::string(key) + "\t" + std::string(oldDate) + "\t" + std::string(date));
}

void LPurchaseLedgerInstall() { LLedgerAddIntentSettler(kPurchaseChangeIntentExtension, SettlePurchaseChange); }
