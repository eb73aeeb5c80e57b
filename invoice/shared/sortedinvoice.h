// The candidate invoices of a payment being entered, in the order a payment settles them, and
// the spreading of a payment's amount over them.
//
//     LSortedInvoiceList list(profile);
//     list.LoadUnpaidInvoices("C1");
//     list.ApplyPayment(100000, false);
//     LPaymentApplyList(profile, payment, list);   // writes what each entry received
//
// Order (LSortedInvoice::operator<), first rule that decides: invoices already holding an amount
// of the payment first; unpaid before fully paid; equal due dates by key (byte order); two
// unpaid ones by earlier due date, two paid ones by later due date.
//
// LPrioritySortedInvoiceList keeps that order but caps each entry at an amount set on it (the
// amounts asked for by the user) instead of its outstanding balance.
#pragma once

#include <ctime>
#include <string>
#include <string_view>
#include <vector>

class LPayment;
class LProfile;
class LSalesDocument;

class LSortedInvoice {
 public:
  // An entry for invoice; applied is this payment's amount on it already (a refund's amount
  // when isRefund), kept also as the initially applied amount.
  LSortedInvoice(LProfile& profile, LSalesDocument& invoice, long long applied, bool isRefund);

  const std::string& GetKey() const { return key_; }
  time_t GetDate() const { return date_; }
  time_t GetDueDate() const { return dueDate_; }
  long long GetTotal() const { return total_; }
  long long GetAmountPaid() const { return amountPaid_; }
  long long GetAmountRefunded() const { return amountRefunded_; }
  long long GetAppliedAmount() const { return applied_; }
  long long GetRefundedAppliedAmount() const { return refundApplied_; }
  long long GetInitiallyAppliedAmount() const { return initiallyApplied_; }
  bool IsUnpaid() const { return amountPaid_ < total_; }

  void SetAppliedAmount(long long amount) { applied_ = amount; }
  void SetRefundedAppliedAmount(long long amount) { refundApplied_ = amount; }

  bool operator<(const LSortedInvoice& other) const;

 private:
  std::string key_;
  time_t date_ = 0;               // "Date" at 00:00:00
  time_t dueDate_ = 0;            // LInvoiceCalculateDueDate
  long long total_ = 0;
  long long amountPaid_ = 0;
  long long amountRefunded_ = 0;
  long long applied_ = 0;          // by this payment
  long long initiallyApplied_ = 0; // applied_ at construction
  long long refundApplied_ = 0;    // refund by this payment
};

class LSortedInvoiceList {
 public:
  explicit LSortedInvoiceList(LProfile& profile) : profile_(profile) {}
  virtual ~LSortedInvoiceList() = default;

  // The recorded invoices of customer (exact key) whose amount paid is below their total,
  // sorted; nothing applied.
  void LoadUnpaidInvoices(std::string_view customer);
  // The recorded invoices of the payment's customer that still have something to settle (for a
  // refund: total above the amount refunded) or that hold an amount of this payment, each with
  // that amount as its initially applied one, sorted.
  void LoadInvoices(LPayment& payment);
  // Spreads amount over the entries in order: each gets min(what is left, total - amount paid)
  // (refund: total - amount refunded, into the refund-applied amount); once nothing is left
  // every further entry gets 0 for both.
  virtual void ApplyPayment(long long amount, bool isRefund);

  const std::vector<LSortedInvoice>& Entries() const { return entries_; }

 protected:
  // What an entry may receive at most.
  virtual long long Cap(const LSortedInvoice& entry, bool isRefund) const;
  LProfile& profile_;
  std::vector<LSortedInvoice> entries_;

 private:
  void Load(std::string_view customer, LPayment* payment, bool isRefund);
};

class LPrioritySortedInvoiceList : public LSortedInvoiceList {
 public:
  using LSortedInvoiceList::LSortedInvoiceList;
  // Takes the entries (and their order) of sortedList.
  void Initialise(const LSortedInvoiceList& sortedList);
  // Sets the amount an entry may receive; false when no entry has that key.
  bool SetAppliedAmount(std::string_view key, long long amount);
  bool SetRefundedAppliedAmount(std::string_view key, long long amount);

 protected:
  long long Cap(const LSortedInvoice& entry, bool isRefund) const override;
};

// Makes the payment hold on each invoice of list what the entry received (refund-applied
// amounts for a refund): changed amounts are applied again, entries that received 0 are
// unapplied, and the payment is flushed. false when the payment or an invoice could not be written.
[[nodiscard]] bool LPaymentApplyList(LProfile& profile, LPayment& payment, const LSortedInvoiceList& list);
