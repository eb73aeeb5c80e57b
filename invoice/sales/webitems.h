// The items of the business on the web: the list ("itemlist") with each item's kind, price and
// stock (quantity, average cost, value, reorder level; an item to reorder is marked), the stock of
// one item with its movements ("itemstock", parameter "id"), the item dialog ("itemprop",
// parameter "id" = item code; no id: a new item) and the delete action ("itemdelete").
#pragma once

#include "accounts/webpagemainex.h"
#include "invoice/shared/webpartydialog.h"

class LWebItemsPage : public LWebPageMainEx {
 public:
  explicit LWebItemsPage(LWebletForm& form);
  void Generate() override;
};

class LWebItemStockPage : public LWebPageMainEx {
 public:
  explicit LWebItemStockPage(LWebletForm& form);
  void Generate() override;
};

class LWebItemDialog : public LWebPartyDialog {
 public:
  explicit LWebItemDialog(LWebletForm& form);
};

// Route "itemdelete": deletes the item named by "id" and goes back to "itemlist". A user who may
// only view the data deletes nothing.
void WLItemDelete(LWebletForm& form);
