// The suppliers on the web:
//   "supplierlist"        every supplier with what the business owes it (its "Balance");
//   "supplierprop"        the supplier dialog (parameter "id"; none: a new supplier): name,
//                         address, contact, e-mail, phone, SIREN, VAT number, default expense
//                         account (its number) and payment terms;
//   "supplierdelete"      deletes the supplier "id"; one that a bill, a payment or a purchase
//                         order names is not deleted and the browser goes to
//   "suppliercantdelete"  which says why;
//   "supplierinfo"        one supplier at a glance: its details, balance, open bills and payments;
// and the small answers of the purchase dialogs' scripts:
//   "getSupplierBalance"  ("id") the balance as the business writes amounts, plain text;
//   "cbsupselchange"      ("supplier", else "id") script that shows the chosen supplier's summary
//                         in the element "supinfo" of the page;
//   "vendorchange"        ("id", "date", "due") script for the bill dialog: the due date the
//                         supplier's terms give, into the element named by "due" ("billdue" by
//                         default), and its default expense account on the lines that have none
//                         yet (selects of class "billaccount").
// Changes go through the purchase book (suppliers.h); a user who may only view the data changes
// nothing.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "accounts/webpagemainex.h"
#include "invoice/shared/webpartydialog.h"

class LProfile;

class LWebSuppliersPage : public LWebPageMainEx {
 public:
  explicit LWebSuppliersPage(LWebletForm& form);
  void Generate() override;
};

class LWebSupplierDialog : public LWebPartyDialog {
 public:
  explicit LWebSupplierDialog(LWebletForm& form);

 protected:
  bool CheckValues(LRecord& record) override;
};

class LWebSupplierCantDeletePage : public LWebPageMainEx {
 public:
  explicit LWebSupplierCantDeletePage(LWebletForm& form);
  void Generate() override;
};

class LWebSupplierInfoPage : public LWebPageMainEx {
 public:
  explicit LWebSupplierInfoPage(LWebletForm& form);
  void Generate() override;
};

void WLSupplierDelete(LWebletForm& form);
void VWAJAXSupplierBalance(LWebletForm& form);
void VWAJAXSupplierSelChange(LWebletForm& form);
void VWAJAXVendorChange(LWebletForm& form);

// The suppliers as a pull-down's texts ("KEY - Name") and values (keys), by key, after an empty
// choice.
void LWebSupplierChoices(LProfile& profile, std::vector<std::string>& texts, std::vector<std::string>& values);
// A pull-down of the suppliers named name, chosen selected; the empty choice reads "Tous" when
// forFilter.
std::string LWebSupplierSelect(LProfile& profile, std::string_view name, std::string_view chosen, bool forFilter);
