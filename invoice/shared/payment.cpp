#include "invoice/shared/payment.h"

#include <algorithm>
#include <cstdlib>

#include "invoice/shared/customer.h"
#include "invoice/shared/profile.h"

// ---- The two parallel lists -------------------------------------------------------------------

namespace {

std::vector<std::string> SplitCommas(const std::string& text) {
  std::vector<std::string> parts;
  if (text.empty()) return parts;
  std::size_t start = 0;
  for (;;) {
    std::size_t comma = text.find(',', start);
    parts.push_back(text.substr(start, comma == std::string::npos ? std::string::npos : comma - start));
    if (comma == std::string::npos) return parts;
    start = comma + 1;
  }
}

}  // namespace

std::vector<LAppliedAmount> LReadAppliedAmounts(const LRecord& applier, std::string_view keysField,
                                                std::string_view amountsField) {
  std::vector<std::string> keys = SplitCommas(applier.GetString(keysField));
  std::vector<std::string> amounts = SplitCommas(applier.GetString(amountsField));
  std::vector<LAppliedAmount> entries;
  entries.reserve(keys.size());
  for (std::size_t i = 0; i < keys.size(); ++i)
    entries.push_back({keys[i], i < amounts.size() ? std::strtoll(amounts[i].c_str(), nullptr, 10) : 0});
  return entries;
}

void LWriteAppliedAmounts(LRecord& applier, const std::vector<LAppliedAmount>& entries, std::string_view keysField,
                          std::string_view amountsField) {
  std::string keys, amounts;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if (i > 0) {
      keys += ',';
      amounts += ',';
    }
    keys += entries[i].invoice;
    amounts += std::to_string(entries[i].amount);
  }
  applier.SetString(keysField, keys);
  applier.SetString(amountsField, amounts);
}

long long LAppliedAmountOf(const std::vector<LAppliedAmount>& entries, std::string_view invoice) {
  for (const auto& entry : entries)
    if (entry.invoice == invoice) return entry.amount;
  return 0;
}

// ---- LPayment ---------------------------------------------------------------------------------

bool LPayment::UpdateInvoiceAmounts(LProfile& profile) {
  if (TestFieldExists("InvoiceAmounts") || GetString("InvoiceNumber").empty()) return false;
  const LFileStoreListBase& invoices = profile.MainList(LSalesDocumentKindOf(LSalesDocumentType::kInvoice).recordedList);
  std::string_view cached = IsRefund() ? "AmountRefunded" : "AmountPaid";
  long long remaining = GetAmount();
  std::vector<LAppliedAmount> rebuilt;
  for (const auto& entry : LReadAppliedAmounts(*this)) {
    LSalesDocument invoice;
    if (!invoices.Open(invoice, entry.invoice)) continue;
    bool ours = invoice.GetCustomer() == GetCustomer();
    // The invoice's own cached figure, as stored: recomputing it would ask this very payment.
    long long shown = invoice.GetInt64(cached, 0);
    invoice.DetachWithoutSave();
    if (!ours) continue;
    long long amount = std::clamp(shown, 0LL, std::max(remaining, 0LL));
    rebuilt.push_back({entry.invoice, amount});
    remaining -= amount;
  }
  LWriteAppliedAmounts(*this, rebuilt);
  return true;
}

void LPayment::GetAppliedToInvoices(std::string& list, LProfile& profile) {
  UpdateInvoiceAmounts(profile);
  list = GetString("InvoiceNumber");
}

void LPayment::GetAppliedToInvoiceAmounts(std::string& list, LProfile& profile) {
  UpdateInvoiceAmounts(profile);
  list = GetString("InvoiceAmounts");
}

long long LPayment::GetAppliedAmount(std::string_view invoice, LProfile& profile) {
  UpdateInvoiceAmounts(profile);
  return LAppliedAmountOf(LReadAppliedAmounts(*this), invoice);
}

long long LPayment::GetUnappliedAmount(LProfile& profile) {
  UpdateInvoiceAmounts(profile);
  long long applied = 0;
  for (const auto& entry : LReadAppliedAmounts(*this)) applied += entry.amount;
  return GetAmount() - applied;
}

// ---- Customer balance -------------------------------------------------------------------------

bool LCoreDataPaymentApply(LProfile& profile, const LPayment& payment, int sign) {
  long long received = payment.IsRefund() ? -payment.GetAmount() : payment.GetAmount();
  return LCustomerChangeBalance(profile, payment.GetCustomer(), -sign * received);
}

bool LCoreDataPaymentReverse(LProfile& profile, LPayment& payment, bool flag) {
  return LCoreDataPaymentApply(profile, payment, flag ? +1 : -1) && payment.Flush();
}
