#include "invoice/shared/customer.h"

#include <algorithm>
#include <unordered_map>

#include "invoice/shared/profile.h"
#include "invoice/shared/salesdocument.h"
#include "llib/gen/date.h"
#include "llib/gen/datastore.h"
#include "llib/gen/file.h"
#include "llib/gen/textcase.h"

std::string LCustomerNotFoundMessage(std::string_view key) { return "Client introuvable : " + std::string(key) + "."; }

// ---- Balance ----------------------------------------------------------------------------------

bool LCustomerChangeBalance(LProfile& profile, std::string_view customer, long long delta) {
  if (customer.empty()) return true;
  LCustomer record;
  if (!profile.MainList(kCustomersList).Open(record, customer)) return true;
  return LCustomerChangeBalance(profile, record, delta);
}

bool LCustomerChangeBalance(LProfile&, LCustomer& customer, long long delta) {
  customer.SetInt64("Balance", customer.GetBalance() + delta);
  return customer.Flush();
}

namespace {

// Adds sign × field of every record of the list to its customer's sum; with refunds, a record
// flagged "IsRefund" (money paid back) counts the other way.
void AddField(LProfile& profile, std::string_view listName, std::string_view field, long long sign,
              std::map<std::string, long long>& sums, bool refunds = false) {
  LDataStoreList<LFileStoreDataStore, LRecord> list(profile.GetDataStore(), listName);
  for (LDataStoreListIterator<LFileStoreDataStore, LRecord> it(list); it.IsValid(); it.Next()) {
    long long recordSign = refunds && it->GetBool("IsRefund", false) ? -sign : sign;
    sums[it->GetString("Customer")] += recordSign * it->GetInt64(field, 0);
  }
}

}  // namespace

std::map<std::string, long long> LCustomerBalancesFromDocuments(LProfile& profile) {
  std::map<std::string, long long> sums;
  AddField(profile, "Invoices", "Total", 1, sums);
  AddField(profile, "CreditNotes", "Total", -1, sums);
  AddField(profile, "Payments", "Amount", -1, sums, true);
  return sums;
}

long long LCustomerBalanceFromDocuments(LProfile& profile, std::string_view customer) {
  std::map<std::string, long long> sums = LCustomerBalancesFromDocuments(profile);
  auto found = sums.find(std::string(customer));
  return found == sums.end() ? 0 : found->second;
}

// ---- Oldest due date --------------------------------------------------------------------------

namespace {

constexpr std::string_view kRetotalTitle = "Nouveau total client";
constexpr std::string_view kRetotalMessage = "Veuillez patienter...";

struct DueInvoice {
  time_t due;        // LInvoiceCalculateDueDate
  long long total;   // "Total", minor units
};

struct CustomerToRetotal {
  std::string key;
  long long balance;  // "Balance" when the process started
};

// The due moment of the oldest invoice the balance still covers; empty when none.
std::string OldestDue(std::vector<DueInvoice> invoices, long long balance) {
  long long sum = 0;
  for (const auto& invoice : invoices) sum += invoice.total;
  if (invoices.empty() || sum < balance) return {};
  std::stable_sort(invoices.begin(), invoices.end(),
                   [](const DueInvoice& a, const DueInvoice& b) { return a.due < b.due; });
  for (const auto& invoice : invoices) {
    sum -= invoice.total;
    if (sum < balance) return LDateTimeText(invoice.due);
  }
  return {};
}

LProcessResult Fail(LProcessInterface& process) {
  process.SetError(kRecordNotSavedMessage);
  return kProcessFailed;
}

bool StoreOldestDue(LProfile& profile, std::string_view key, std::string_view oldestDue) {
  LCustomer customer;
  if (!profile.MainList(kCustomersList).Open(customer, key)) return true;
  customer.SetString("OldestDue", oldestDue);
  return customer.Flush();
}

}  // namespace

LProcessResult Process(LProcessInterface& process, LCoreDataRetotalCustomerData& data) {
  process.SetStatus(kRetotalTitle, 0);
  process.SetStatus(kRetotalMessage, 1);
  LProfile& profile = *data.profile;
  const LFileStoreListBase& customers = profile.MainList(kCustomersList);

  std::vector<std::string> keys = data.customers;
  if (keys.empty()) {
    LCustomer customer;
    for (LFileStoreIteratorBase it(customers, customer); customer.IsAttached(); it.Next(customer))
      keys.push_back(customer.GetPrimaryKey());
  }
  std::vector<CustomerToRetotal> pending;
  std::unordered_map<std::string, std::vector<DueInvoice>> invoicesByCustomer;  // by folded key
  for (const auto& key : keys) {
    LCustomer customer;
    if (!customers.Open(customer, key)) continue;
    long long balance = customer.GetBalance();
    if (balance < 1) {
      customer.SetString("OldestDue", "");
      if (!customer.Flush()) return Fail(process);
      continue;
    }
    pending.push_back({key, balance});
    invoicesByCustomer.emplace(LLowerText(key), std::vector<DueInvoice>());
  }
  if (pending.empty()) return kProcessFinished;

  const LFileStoreListBase& invoices = profile.MainList("Invoices");
  double invoiceCount = static_cast<double>(std::max<std::size_t>(1, LFile::ListFolder(invoices.GetFolder()).size()));
  double walked = 0;
  LInvoice invoice;
  for (LFileStoreIteratorBase it(invoices, invoice); invoice.IsAttached(); it.Next(invoice)) {
    if (process.IsToStop()) return kProcessCancelled;
    process.SetProgress(++walked / invoiceCount);
    long long total = invoice.GetTotal();
    if (total == 0) continue;
    auto found = invoicesByCustomer.find(LLowerText(invoice.GetCustomer()));
    if (found != invoicesByCustomer.end()) found->second.push_back({LInvoiceCalculateDueDate(invoice), total});
  }
  for (const auto& customer : pending)
    if (!StoreOldestDue(profile, customer.key, OldestDue(invoicesByCustomer[LLowerText(customer.key)], customer.balance)))
      return Fail(process);
  process.SetProgress(1.0);
  return kProcessFinished;
}
