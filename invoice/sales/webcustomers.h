// The customers on the web: the list ("customerlist", with what each customer owes and since
// when), the customer dialog ("customerprop", parameter "id"; none: a new customer) and the delete
// action ("customerdelete", refused while a document names the customer). Also the customer
// choices that the document pages offer.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "accounts/webpagemainex.h"
#include "invoice/shared/webdialogkv.h"

class LProfile;

class LWebCustomersPage : public LWebPageMainEx {
 public:
  explicit LWebCustomersPage(LWebletForm& form);
  void Generate() override;
};

class LWebCustomerDialog : public LWebDialogExKv {
 public:
  explicit LWebCustomerDialog(LWebletForm& form);

 protected:
  bool CheckValues(LRecord& record) override;
};

void WLCustomerDelete(LWebletForm& form);

// The customers as a pull-down's texts ("KEY - Name") and values (keys), by key, after an empty
// choice (the party choices of the document lists: invoice/shared/weblistperiod.h).
void LWebCustomerChoices(LProfile& profile, std::vector<std::string>& texts, std::vector<std::string>& values);
// The sales persons ("SalesPerson") the same way.
void LWebSalesPersonChoices(LProfile& profile, std::vector<std::string>& texts, std::vector<std::string>& values);
