// The customers on the web: the list ("customerlist", with what each customer owes and since
// when), the customer dialog ("customerprop", parameter "id"; none: a new customer) and the delete
// action ("customerdelete", refused while a document names the customer). The customer choices
// that the document pages offer are in invoice/shared/webcustomerchoice.h.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "accounts/webpagemainex.h"
#include "invoice/shared/webcustomerchoice.h"
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

