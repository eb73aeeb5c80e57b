// Sales persons and customer groups on the web, each a list with a dialog and a delete action:
//   "salespersonlist", "salespersonprop" (parameter "id"), "salespersondelete": code, name,
//   e-mail and commission rate (percent of the sales before tax);
//   "grouplist", "groupprop", "groupdelete": code, description and price level (percent off the
//   items' list prices on the documents of the group's customers).
#pragma once

#include <string>

#include "accounts/webpagemainex.h"
#include "invoice/shared/weblistcells.h"
#include "invoice/shared/webpartydialog.h"


// The records of one kind, one row each: the key (a link to its dialog), then each field.
class LWebPartyListPage : public LWebPageMainEx {
 public:
  LWebPartyListPage(LWebletForm& form, LPartyKind kind, std::string_view route, std::string_view title,
                    std::string_view addText);
  void Generate() override;

 private:
  LPartyKind kind_;
  std::string route_;    // "salesperson": the list is route_ + "list", the dialog route_ + "prop"
  std::string addText_;  // "Ajouter un vendeur"
};

class LWebSalesPersonsPage : public LWebPartyListPage {
 public:
  explicit LWebSalesPersonsPage(LWebletForm& form);
};
class LWebGroupsPage : public LWebPartyListPage {
 public:
  explicit LWebGroupsPage(LWebletForm& form);
};

class LWebSalesPersonDialog : public LWebPartyDialog {
 public:
  explicit LWebSalesPersonDialog(LWebletForm& form);
};
class LWebGroupDialog : public LWebPartyDialog {
 public:
  explicit LWebGroupDialog(LWebletForm& form);
};

// Delete the record named by "id" and go back to the list; a viewer deletes nothing.
void WLSalesPersonDelete(LWebletForm& form);
void WLGroupDelete(LWebletForm& form);
