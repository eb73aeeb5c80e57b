#include "accounts/suppliers.h"

#include <algorithm>

#include "accounts/billpayments.h"
#include "accounts/bills.h"
#include "accounts/check.h"
#include "invoice/shared/payment.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/salesdocument.h"
#include "llib/gen/date.h"
#include "llib/gen/filestore.h"
#include "llib/gen/optionalerror.h"

namespace {

constexpr int kDefaultTermsDays = 30;

}  // namespace

bool LSupplierChangeBalance(LProfile& profile, std::string_view supplier, long long delta) {
  if (supplier.empty() || delta == 0) return true;
  LRecord record;
  if (!profile.List(kSuppliersList).Open(record, supplier)) return true;
  record.SetInt64("Balance", record.GetInt64("Balance", 0) + delta);
  return record.Flush();
}

std::map<std::string, long long> LSupplierBalancesFromDocuments(LProfile& profile) {
  std::map<std::string, long long> sums;
  LRecord record;
  for (LFileStoreIteratorBase it(profile.List(kBillsList), record); record.IsAttached(); it.Next(record))
    sums[record.GetString("Supplier")] += record.GetInt64("Total", 0);
  for (LFileStoreIteratorBase it(profile.List(kBillPaymentsList), record); record.IsAttached(); it.Next(record))
    sums[record.GetString("Supplier")] -= LBillPaymentCountedAmount(record);
  return sums;
}

void LCheckSupplierBalances(LProfile& profile, bool fix, LCheckReport& report) {
  std::map<std::string, long long> balances = LSupplierBalancesFromDocuments(profile);
  LRecord record;
  for (LFileStoreIteratorBase it(profile.List(kSuppliersList), record); record.IsAttached(); it.Next(record)) {
    long long stored = record.GetInt64("Balance", 0), expected = balances[record.GetPrimaryKey()];
    if (stored == expected) continue;
    report.differences.push_back({std::string(kSuppliersList), record.GetPrimaryKey(), "Balance", stored, expected, fix});
    if (fix) record.SetInt64("Balance", expected);  // saved as the iterator moves on
  }
  std::map<std::string, long long> paid;
  for (LFileStoreIteratorBase it(profile.List(kBillPaymentsList), record); record.IsAttached(); it.Next(record))
    for (const LAppliedAmount& entry : LReadAppliedAmounts(record, kBillPaymentKeysField, kBillPaymentAmountsField))
      paid[entry.invoice] += entry.amount;
  for (LFileStoreIteratorBase it(profile.List(kBillsList), record); record.IsAttached(); it.Next(record)) {
    long long stored = record.GetInt64("AmountPaid", 0), expected = paid[record.GetPrimaryKey()];
    if (stored == expected) continue;
    report.differences.push_back({std::string(kBillsList), record.GetPrimaryKey(), "AmountPaid", stored, expected, fix});
    if (fix) record.SetInt64("AmountPaid", expected);
  }
}

std::string LSupplierFirstDocument(LProfile& profile, std::string_view supplier) {
  struct Source {
    std::string_view list;
    std::string_view words;  // how the refusal names one of them
  };
  const LSalesDocumentKind& porders = LSalesDocumentKindOf(LSalesDocumentType::kPOrder);
  for (Source source : {Source{kBillsList, "la facture "}, Source{kBillPaymentsList, "le règlement "},
                        Source{porders.recordedList, "le bon de commande "},
                        Source{porders.draftsList, "le bon de commande "}}) {
    // Purchase orders name their supplier where sales documents name their customer.
    std::string_view field = source.list == kBillsList || source.list == kBillPaymentsList ? "Supplier" : "Customer";
    LRecord record;
    for (LFileStoreIteratorBase it(profile.List(source.list), record); record.IsAttached(); it.Next(record))
      if (record.GetString(field) == supplier) return std::string(source.words) + record.GetPrimaryKey();
  }
  return {};
}

bool LSupplierDelete(LProfile& profile, std::string_view supplier, std::string* error) {
  LFileStoreListBase suppliers = profile.List(kSuppliersList);
  if (supplier.empty() || !suppliers.TestRecordExists(supplier)) {
    return LFail(error, "Le fournisseur « " + std::string(supplier) + " » n'existe pas.");
  }
  std::string document = LSupplierFirstDocument(profile, supplier);
  if (!document.empty()) {
    return LFail(error, "Le fournisseur « " + std::string(supplier) + " » ne peut pas être supprimé : " + document +
                            " le nomme.");
  }
  if (suppliers.Delete(supplier)) return true;
  return LFail(error, "Impossible de supprimer le fournisseur « " + std::string(supplier) + " ».");
}

std::string LBillDueDate(LProfile& profile, const LRecord& bill) { return LBillDueDates(profile).Of(bill); }

std::string LBillDueDates::Of(const LRecord& bill) {
  LDate due;
  if (LDate::Parse(bill.GetString("DueDate"), due)) return due.ToText();
  LDate date;
  std::string text = bill.GetString("Date");
  if (!LDate::Parse(text.substr(0, 10), date)) return text;
  std::string key = bill.GetString("Supplier");
  auto [days, unread] = termsDays_.try_emplace(key, kDefaultTermsDays);
  LRecord supplier;
  if (unread && profile_.List(kSuppliersList).Open(supplier, key)) {
    days->second = supplier.GetInt("PaymentTermsDays", kDefaultTermsDays);
    supplier.DetachWithoutSave();
  }
  return date.AddDays(days->second).ToText();
}

std::vector<LOpenBill> LOpenBills(LProfile& profile, std::string_view supplier) {
  std::vector<LOpenBill> open;
  LBillDueDates dueDates(profile);
  LRecord bill;
  for (LFileStoreIteratorBase it(profile.List(kBillsList), bill); bill.IsAttached(); it.Next(bill)) {
    if (!supplier.empty() && bill.GetString("Supplier") != supplier) continue;
    LOpenBill entry{bill.GetPrimaryKey(), bill.GetString("Supplier"), bill.GetString("Date").substr(0, 10), "",
                    bill.GetInt64("Total", 0), bill.GetInt64("AmountPaid", 0)};
    if (entry.Outstanding() <= 0) continue;
    entry.due = dueDates.Of(bill);
    open.push_back(std::move(entry));
  }
  std::sort(open.begin(), open.end(), [](const LOpenBill& a, const LOpenBill& b) {
    return a.due != b.due ? a.due < b.due : a.key < b.key;
  });
  return open;
}
