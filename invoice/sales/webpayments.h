// Customer payments on the web, through the payment book (paymentbook.h) as on the command line:
//   "paymentlist"          the payments and refunds of a period (invoice/shared/weblistperiod.h),
//                          with what each has not yet applied;
//   "paymentprop"          a new payment (no "id"): customer, date, amount, deposit account,
//                          refund, and either spread over the customer's unpaid invoices in the
//                          order payments settle them or applied to the invoices given amounts in
//                          the table under it; with "id", the recorded payment and its
//                          applications (a payment is changed by deleting it and entering it
//                          again);
//   "invoicepay"           the same dialog for one invoice ("id"): what it still owes, applied to
//                          it;
//   "applypayment"         what is left of the payment "id" applied to its customer's invoices;
//   "invoiceapplypayment"  what is left of the customer's payments and credit notes applied to
//                          the invoice "id";
//   "paymentdelete"        the payment "id" unapplied, unposted and deleted.
// An "Afficheur" sees all of it and changes nothing.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "accounts/webpagemainex.h"
#include "invoice/sales/webcustomers.h"
#include "invoice/shared/payment.h"
#include "invoice/shared/weblistperiod.h"

class LProfile;

inline constexpr LWebPeriodList kLWebPaymentPeriodList{"paymentlist", "customer", "Client", LWebCustomerChoices};

class LWebPaymentsPage : public LWebPageMainEx {
 public:
  explicit LWebPaymentsPage(LWebletForm& form);
  void Generate() override;
  const LWebPeriodList& PeriodList() const { return kLWebPaymentPeriodList; }
  void WriteListBlock(LWebletForm& out);
};

// The dialogs of this module: the business of the session, the table of amounts to apply.
class LWebPaymentDialogBase : public LWebDialogEx {
 public:
  LWebPaymentDialogBase(LWebletForm& form, std::string_view routeName);
  ~LWebPaymentDialogBase() override;
  void PrintHeader() override;

 protected:
  // One line of the table of amounts: what an invoice (or, for "invoiceapplypayment", a payment
  // or credit note) may receive.
  struct Candidate {
    std::string key;       // the invoice, payment or credit note
    std::string kind;      // "Facture", "Paiement", "Avoir"
    std::string date;      // "YYYY-MM-DD"
    std::string due;       // due date of an invoice; "" otherwise
    long long total = 0;   // its amount
    long long open = 0;    // what it still owes (invoice) or has left (payment, credit note)
    long long applied = 0;  // what the payment being applied already gives it
    std::string ref;       // what the amount's row posts back ("applykey<n>"); "" for key
  };
  // Writes the table: one amount control per candidate (kFirstAmountControl + n) and its key as
  // a hidden field, the amounts of the request or else each candidate's applied amount.
  std::string CandidatesHtml(const std::vector<Candidate>& candidates, const std::string& amountTitle);
  // The amounts typed in the table, in the business's format: the candidates given a non-empty
  // amount, in table order. false after the error script at the faulty control.
  bool ReadAmounts(std::vector<LAppliedAmount>& amounts, bool quiet);
  // An amount control's text in the business's format; false after the error at control.
  bool ReadAmount(int control, long long& amount, bool required, bool quiet);
  std::string Money(long long amount);
  std::string AmountText(long long amount);
  LProfile& Profile();

  static constexpr int kFirstAmountControl = 2000;
  static constexpr int kMaxCandidates = 900;

 private:
  std::unique_ptr<LProfile> profile_;
};

// "paymentprop" and "invoicepay".
class LWebPaymentDialog : public LWebPaymentDialogBase {
 public:
  LWebPaymentDialog(LWebletForm& form, std::string_view routeName = "paymentprop");
  void InitDialog() override;
  void Generate() override;
  bool CmOk() override;
  // The table of the customer's invoices, when the customer or the refund box changes.
  void CommandAJAX(int controlId, const std::string& controlIdText) override;

 private:
  // The invoice "id" of "invoicepay"; "" for "paymentprop".
  std::string PaidInvoice() const;
  void GenerateRecorded(const std::string& key);
  std::vector<Candidate> Invoices(const std::string& customer, bool refund);
};

class LWebInvoicePayDialog : public LWebPaymentDialog {
 public:
  explicit LWebInvoicePayDialog(LWebletForm& form) : LWebPaymentDialog(form, "invoicepay") {}
};

// "applypayment" and "invoiceapplypayment".
class LWebApplyPaymentDialog : public LWebPaymentDialogBase {
 public:
  LWebApplyPaymentDialog(LWebletForm& form, std::string_view routeName);
  void Generate() override;
  bool CmOk() override;

 private:
  bool ToInvoice() const;  // "invoiceapplypayment": the invoice takes from payments and credit notes
  std::vector<Candidate> Candidates(std::string& heading);
};

class LWebPaymentApplyDialog : public LWebApplyPaymentDialog {
 public:
  explicit LWebPaymentApplyDialog(LWebletForm& form) : LWebApplyPaymentDialog(form, "applypayment") {}
};
class LWebInvoiceApplyPaymentDialog : public LWebApplyPaymentDialog {
 public:
  explicit LWebInvoiceApplyPaymentDialog(LWebletForm& form) : LWebApplyPaymentDialog(form, "invoiceapplypayment") {}
};

void WLPaymentDelete(LWebletForm& form);
