// The items of the business on the web: the list ("itemlist"), the item dialog ("itemprop",
// parameter "id" = item code; no id: a new item) and the delete action ("itemdelete"). An item is
// a code, a description, a unit price and the income account its sales go to.
#pragma once

#include "accounts/webpagemainex.h"
#include "invoice/shared/webdialogkv.h"

class LWebItemsPage : public LWebPageMainEx {
 public:
  explicit LWebItemsPage(LWebletForm& form);
  void Generate() override;
};

class LWebItemDialog : public LWebDialogExKv {
 public:
  explicit LWebItemDialog(LWebletForm& form);
};

// Route "itemdelete": deletes the item named by "id" and goes back to "itemlist". A user who may
// only view the data deletes nothing.
void WLItemDelete(LWebletForm& form);
