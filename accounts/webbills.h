// Supplier bills on the web:
//   "billlist"    the bills of a period and optionally of one supplier: total, still owed; with
//                 its period dialog and refilters ("billlistperiod", "billlistperiodchange",
//                 "billlistdatechange", "billlistsupplierchange": invoice/shared/weblistperiod.h);
//   "billprop"    the bill dialog (parameter "id" = its reference; none: a new bill, "supplier"
//                 chosen beforehand): supplier, date, due date, the supplier's own number, notes,
//                 the lines (expense account, item, description, quantity, unit price, tax) and
//                 the tax paid per tax (worked out from the lines when left empty). OK saves the
//                 bill through LBillSave, as `bill add` does: posted, the supplier's balance and
//                 the stock moved;
//   "billdelete"  deletes the bill "id" (LBillDelete);
//   "getBillInfo" ("id") the bill's figures as JSON text: reference, supplier, date, due date,
//                 total, paid and still owed in cents;
//   "accpayable"  what is owed to whom by due date: each supplier's open bills in age brackets,
//                 then every open bill, first due first.
#pragma once

#include "accounts/webpagemainex.h"
#include "accounts/webpostingdialog.h"
#include "accounts/websuppliers.h"
#include "invoice/shared/weblistperiod.h"

class LBill;

inline constexpr LWebPeriodList kLWebBillPeriodList{"billlist", "supplier", "Fournisseur", LWebSupplierChoices};

class LWebBillsPage : public LWebPageMainEx {
 public:
  explicit LWebBillsPage(LWebletForm& form);
  void Generate() override;
  const LWebPeriodList& PeriodList() const { return kLWebBillPeriodList; }
  // The table of the request's filter, its pager and summary.
  void WriteListBlock(LWebletForm& out);
};

class LWebBillDialog : public LWebPostingDialog {
 public:
  explicit LWebBillDialog(LWebletForm& form);
  void InitDialog() override;
  void Generate() override;
  bool CmOk() override;

 private:
  // The bill as the controls describe it; false after the error at the offending control.
  bool BuildBill(LBill& bill);
  int LineRows() const;  // how many line rows the grid shows
};

class LWebAccPayablePage : public LWebPageMainEx {
 public:
  explicit LWebAccPayablePage(LWebletForm& form);
  void Generate() override;
};

void WLBillDelete(LWebletForm& form);
void VWAJAXBillInfo(LWebletForm& form);
