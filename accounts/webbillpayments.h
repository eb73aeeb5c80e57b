// Bill payments on the web:
//   "billpaymentlist"   the payments of a period and optionally of one supplier, with what each
//                       leaves unapplied; with its period dialog and refilters
//                       ("billpaymentlistperiod", "...periodchange", "...datechange",
//                       "...supplierchange": invoice/shared/weblistperiod.h);
//   "billpaymentprop"   the payment dialog (parameter "id"; none: a new payment, "supplier" chosen
//                       beforehand): supplier, date, amount, paying account, method, notes, and the
//                       supplier's bills still owed with the amount the payment settles on each
//                       (or spread over them, first due first). OK saves through the purchase book
//                       (billpayments.h), as `billpayment add` does;
//                       A cheque to a supplier shows the same table of bills (LWebAddBillsToPay);
//   "billpaymentdelete" deletes the payment "id": its applications undone, its posting out of the
//                       ledger, its amount back onto the supplier's balance;
//   "applybillpayment"  ("id" the payment, "bill", "amount" typed the business's way, "back" the
//                       page to return to) sets what the payment settles on one bill.
#pragma once

#include "accounts/webpagemainex.h"
#include "accounts/webpostingdialog.h"
#include "accounts/websuppliers.h"
#include "invoice/shared/weblistperiod.h"

#include <string>
#include <vector>

#include "invoice/shared/payment.h"

class LProfile;
class LWebDialog;
struct LBillPaymentRequest;

// The amount settled on the supplier's first bill, in the dialogs that pay bills; the next bills
// follow.
inline constexpr int kWebBillsToPayFirstControl = 30000;

// Adds to dialog the supplier's bills a payment may settle: a box spreading the amount over them
// (control spreadId) and a table with the amount settled on each; the share of the payment
// paymentKey (empty: a new payment) counts as still owed.
void LWebAddBillsToPay(LWebDialog& dialog, LWebletForm& form, LProfile& profile, const std::string& supplier,
                       const std::string& paymentKey, int spreadId);
// The amounts typed in that table, appended to applications; false after the refusal at its control.
bool LWebReadBillsToPay(LWebDialog& dialog, LWebletForm& form, LProfile& profile,
                        std::vector<LAppliedAmount>& applications);

inline constexpr LWebPeriodList kLWebBillPaymentPeriodList{"billpaymentlist", "supplier", "Fournisseur",
                                                           LWebSupplierChoices};

class LWebBillPaymentsPage : public LWebPageMainEx {
 public:
  explicit LWebBillPaymentsPage(LWebletForm& form);
  void Generate() override;
  const LWebPeriodList& PeriodList() const { return kLWebBillPaymentPeriodList; }
  // The table of the request's filter, its pager and summary.
  void WriteListBlock(LWebletForm& out);
};

class LWebBillPaymentDialog : public LWebPostingDialog {
 public:
  explicit LWebBillPaymentDialog(LWebletForm& form);
  void InitDialog() override;
  void Generate() override;
  bool CmOk() override;

 private:
  // The payment as the controls describe it; false after the error at the offending control.
  bool BuildRequest(LBillPaymentRequest& request);
  std::string Supplier() const;  // the supplier the dialog shows the bills of
};

void WLBillPaymentDelete(LWebletForm& form);
void WLApplyBillPayment(LWebletForm& form);
