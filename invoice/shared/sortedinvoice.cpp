#include "invoice/shared/sortedinvoice.h"

#include <algorithm>
#include <unordered_map>

#include "invoice/shared/payment.h"
#include "invoice/shared/profile.h"
#include "llib/gen/date.h"
#include "llib/gen/filestore.h"

namespace {

time_t StartOfDay(const std::string& text) {
  LDate date;
  return LDate::Parse(text, date) ? date.ToLocalTime() : 0;
}

}  // namespace

LSortedInvoice::LSortedInvoice(LProfile& profile, LSalesDocument& invoice, long long applied, bool isRefund)
    : key_(invoice.GetPrimaryKey()),
      date_(StartOfDay(invoice.GetDate())),
      dueDate_(LInvoiceCalculateDueDate(invoice)),
      total_(invoice.GetTotal()),
      amountPaid_(invoice.GetAmountPaid(profile)),
      amountRefunded_(invoice.GetAmountRefunded(profile)),
      initiallyApplied_(applied) {
  if (isRefund) refundApplied_ = applied;
  else applied_ = applied;
}

bool LSortedInvoice::operator<(const LSortedInvoice& other) const {
  bool held = initiallyApplied_ != 0, otherHeld = other.initiallyApplied_ != 0;
  if (held != otherHeld) return held;
  if (IsUnpaid() != other.IsUnpaid()) return IsUnpaid();
  if (dueDate_ == other.dueDate_) return key_ < other.key_;
  return IsUnpaid() ? dueDate_ < other.dueDate_ : dueDate_ > other.dueDate_;
}

// ---- LSortedInvoiceList -----------------------------------------------------------------------

void LSortedInvoiceList::Load(std::string_view customer, LPayment* payment, bool isRefund) {
  entries_.clear();
  std::vector<LAppliedAmount> held;
  if (payment != nullptr) {
    payment->UpdateInvoiceAmounts(profile_);
    held = LReadAppliedAmounts(*payment);
  }
  const LFileStoreListBase& invoices = profile_.MainList(LSalesDocumentKindOf(LSalesDocumentType::kInvoice).recordedList);
  LSalesDocument invoice;
  for (LFileStoreIteratorBase it(invoices, invoice); invoice.IsAttached(); it.Next(invoice)) {
    if (invoice.GetCustomer() != customer || invoice.IsDraft()) continue;
    long long applied = LAppliedAmountOf(held, invoice.GetPrimaryKey());
    long long settled = isRefund ? invoice.GetAmountRefunded(profile_) : invoice.GetAmountPaid(profile_);
    if (settled < invoice.GetTotal() || applied != 0) entries_.emplace_back(profile_, invoice, applied, isRefund);
  }
  std::sort(entries_.begin(), entries_.end());
}

void LSortedInvoiceList::LoadUnpaidInvoices(std::string_view customer) { Load(customer, nullptr, false); }

void LSortedInvoiceList::LoadInvoices(LPayment& payment) { Load(payment.GetCustomer(), &payment, payment.IsRefund()); }

long long LSortedInvoiceList::Cap(const LSortedInvoice& entry, bool isRefund) const {
  return entry.GetTotal() - (isRefund ? entry.GetAmountRefunded() : entry.GetAmountPaid());
}

void LSortedInvoiceList::ApplyPayment(long long amount, bool isRefund) {
  long long remaining = amount;
  for (auto& entry : entries_) {
    if (remaining <= 0) {
      entry.SetAppliedAmount(0);
      entry.SetRefundedAppliedAmount(0);
      continue;
    }
    // An invoice already settled beyond its total takes nothing rather than giving back.
    long long applied = std::min(remaining, std::max(Cap(entry, isRefund), 0LL));
    if (isRefund) entry.SetRefundedAppliedAmount(applied);
    else entry.SetAppliedAmount(applied);
    remaining -= applied;
  }
}

// ---- LPrioritySortedInvoiceList ---------------------------------------------------------------

void LPrioritySortedInvoiceList::Initialise(const LSortedInvoiceList& sortedList) { entries_ = sortedList.Entries(); }

bool LPrioritySortedInvoiceList::SetAppliedAmount(std::string_view key, long long amount) {
  for (auto& entry : entries_)
    if (entry.GetKey() == key) return entry.SetAppliedAmount(amount), true;
  return false;
}

bool LPrioritySortedInvoiceList::SetRefundedAppliedAmount(std::string_view key, long long amount) {
  for (auto& entry : entries_)
    if (entry.GetKey() == key) return entry.SetRefundedAppliedAmount(amount), true;
  return false;
}

long long LPrioritySortedInvoiceList::Cap(const LSortedInvoice& entry, bool isRefund) const {
  return isRefund ? entry.GetRefundedAppliedAmount() : entry.GetAppliedAmount();
}

// ---- Writing the result -----------------------------------------------------------------------

bool LPaymentApplyList(LProfile& profile, LPayment& payment, const LSortedInvoiceList& list) {
  bool isRefund = payment.IsRefund();
  const LFileStoreListBase& invoices = profile.MainList(LSalesDocumentKindOf(LSalesDocumentType::kInvoice).recordedList);
  payment.UpdateInvoiceAmounts(profile);
  std::unordered_map<std::string, long long> before;
  for (const auto& entry : LReadAppliedAmounts(payment)) before.emplace(entry.invoice, entry.amount);
  bool written = true;
  LApplierListsRun run(profile, payment, false);  // one write of the lists for the whole spread
  for (const auto& entry : list.Entries()) {
    long long wanted = isRefund ? entry.GetRefundedAppliedAmount() : entry.GetAppliedAmount();
    auto found = before.find(entry.GetKey());
    if (wanted == (found == before.end() ? 0 : found->second)) continue;
    LSalesDocument invoice;
    if (!invoices.Open(invoice, entry.GetKey())) continue;
    if (wanted > 0) LPaymentApplyToInvoice(payment, invoice, wanted, profile, isRefund);
    else LPaymentUnapply(payment, invoice, profile, isRefund);
    written = invoice.Flush() && written;
  }
  written = run.Write() && written;
  return payment.Flush() && written;
}
