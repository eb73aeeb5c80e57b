// Customer payments (LPayment, list "Payments") and what they are applied to.
//
// A payment carries the "Amount" received from its "Customer" or, when "IsRefund" is set, paid
// back to it. Its applications are two parallel comma-separated lists: "InvoiceNumber", the
// invoice keys in order of application, and "InvoiceAmounts", the cents applied to each ("%lld").
// Applying and unapplying keep three things in step: these lists, the invoice's cached
// "AmountPaid" (refunds: "AmountRefunded") and, through LCoreDataPaymentApply when a payment is
// recorded or deleted, the customer's "Balance".
//
// A recorded credit note keeps the same two lists and is applied to invoices the way a refund
// is: over their "AmountRefunded".
//
// Payments written before "InvoiceAmounts" existed hold only "InvoiceNumber"; every query below
// first rebuilds both lists for them (UpdateInvoiceAmounts).
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "invoice/shared/salesdocument.h"
#include "llib/gen/record.h"

class LProfile;

inline constexpr std::string_view kPaymentsList = "Payments";

// One entry of the application lists.
struct LAppliedAmount {
  std::string invoice;  // invoice key
  long long amount = 0; // cents
};

// The application lists of a payment or credit note as they are stored, in order; a key without
// an amount (lists of unequal length) reads 0. Nothing is rebuilt. A bill payment keeps the same
// pair of lists under its own names ("BillNumber", "BillAmounts").
std::vector<LAppliedAmount> LReadAppliedAmounts(const LRecord& applier, std::string_view keysField = "InvoiceNumber",
                                                std::string_view amountsField = "InvoiceAmounts");
// Writes both lists from entries (empty lists are stored as empty fields).
void LWriteAppliedAmounts(LRecord& applier, const std::vector<LAppliedAmount>& entries,
                          std::string_view keysField = "InvoiceNumber", std::string_view amountsField = "InvoiceAmounts");
// The amount of the first entry whose key is invoice exactly; 0 when none.
long long LAppliedAmountOf(const std::vector<LAppliedAmount>& entries, std::string_view invoice);

class LPayment : public LRecord {
 public:
  std::string GetCustomer() const { return GetString("Customer"); }
  std::string GetDate() const { return GetString("Date"); }
  long long GetAmount() const { return GetInt64("Amount", 0); }
  bool IsRefund() const { return GetBool("IsRefund", false); }

  // "InvoiceNumber" and "InvoiceAmounts" into list.
  void GetAppliedToInvoices(std::string& list, LProfile& profile);
  void GetAppliedToInvoiceAmounts(std::string& list, LProfile& profile);
  // The amount applied to invoice (first entry of that exact key); 0 when not applied.
  long long GetAppliedAmount(std::string_view invoice, LProfile& profile);
  // "Amount" minus the sum of "InvoiceAmounts".
  long long GetUnappliedAmount(LProfile& profile);
  // For a payment without "InvoiceAmounts": the invoices of "InvoiceNumber" that belong to the
  // payment's customer are given, in order, what their own "AmountPaid" (refunds:
  // "AmountRefunded") shows, as long as the payment's "Amount" lasts; unknown invoices and
  // invoices of other customers leave the lists. true when the lists were rebuilt; false (and
  // nothing written) when "InvoiceAmounts" exists or the payment was never applied.
  bool UpdateInvoiceAmounts(LProfile& profile);
};

// Applies amount cents of the payment to the invoice (isRefund: to its "AmountRefunded"): an
// earlier amount of the payment on this invoice is unapplied first, the entry is appended to
// the lists, the invoice's amount grows by amount and is flushed, and any excess over the
// invoice's "Total" is then removed from the invoice's latest applications (RemoveExcessPayments).
// The payment itself is written when the caller flushes it (or the record goes). Returns amount.
long long LPaymentApplyToInvoice(LPayment& payment, LSalesDocument& invoice, long long amount, LProfile& profile,
                                 bool isRefund);
// Removes the invoice's entry from the payment and takes its amount off the invoice (isRefund:
// off "AmountRefunded"), flushing the invoice. Returns the amount removed, 0 when the payment
// was not applied to it.
long long LPaymentUnapply(LPayment& payment, LSalesDocument& invoice, LProfile& profile, bool isRefund);
// The same for every invoice of the payment; entries naming no existing invoice are dropped.
// Returns the total removed.
long long LPaymentUnapply(LPayment& payment, LProfile& profile, bool isRefund);

// The same three operations for a recorded credit note (list "CreditNotes"), always over the
// invoices' "AmountRefunded".
long long LCreditNoteApplyToInvoice(LSalesDocument& creditNote, LSalesDocument& invoice, long long amount,
                                    LProfile& profile);
long long LCreditNoteUnapply(LSalesDocument& creditNote, LSalesDocument& invoice, LProfile& profile);
long long LCreditNoteUnapply(LSalesDocument& creditNote, LProfile& profile);

// A run of changes of one payment's or credit note's lists (a payment spread over thousands of
// invoices) kept in memory and written once: Write sets the entries of the invoices the run
// changed into the lists as stored, under the record's lock, and keeps every other entry as it is
// stored. Without a run, each change writes the lists under the lock at once; with one open, the
// operations above change the applier in memory until Write. A run written or gone ends.
class LApplierListsRun {
 public:
  LApplierListsRun(LProfile& profile, LRecord& applier, bool isCreditNote);
  ~LApplierListsRun();
  LApplierListsRun(const LApplierListsRun&) = delete;
  LApplierListsRun& operator=(const LApplierListsRun&) = delete;
  // false when the lists could not be written (the applier then holds them, to be saved).
  [[nodiscard]] bool Write();

  struct State;

 private:
  std::unique_ptr<State> state_;
};

// Told of each payment or credit note (stored in list) whose applications a removal of excess
// changes, before it is saved: before as it is stored, after as it is about to be.
using LApplierChangeNote = std::function<void(std::string_view list, const LRecord& before, const LRecord& after)>;
// RemoveExcessPayments then RemoveExcessCreditNotes of invoice, telling note of each applier
// changed. true when any was.
bool LInvoiceRemoveExcess(LProfile& profile, LSalesDocument& invoice, const LApplierChangeNote& note);

// Customer balance effects. A payment lowers what its customer owes by "Amount" and a refund
// raises it: the balance moves by -sign × "Amount" (+sign × "Amount" for a refund); sign +1
// when a payment is recorded, -1 when it is taken back. false when the customer could not be written.
[[nodiscard]] bool LCoreDataPaymentApply(LProfile& profile, const LPayment& payment, int sign);
// LCoreDataPaymentApply with sign +1 when flag is set, -1 otherwise; then flushes the payment.
// false when either could not be written.
[[nodiscard]] bool LCoreDataPaymentReverse(LProfile& profile, LPayment& payment, bool flag);
