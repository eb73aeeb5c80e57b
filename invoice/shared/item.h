// Items (LItem, list "Items", key = the item code that document lines carry in "Item<n>Code"):
// a description, a unit price and the income account, by description, that sales of the item
// are posted to ("PLAccount"), and the quantity in stock ("Quantity").
//
// When the business's "Options" record has "ClientEnabled" set, stock movements are also queued
// in the item synchronisation list "ItemSync" for the linked client to pick up: one record per
// movement, "Name" = the item code, "Qty" = the change.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "llib/gen/record.h"

class LProfile;
class LSalesDocument;

inline constexpr std::string_view kItemsList = "Items";
inline constexpr std::string_view kItemSyncList = "ItemSync";

class LItem : public LRecord {
 public:
  std::string GetDescription() const { return GetString("Description"); }
  // "Price": unit price in minor currency units, 0 when absent.
  long long GetPrice() const { return GetInt64("Price", 0); }
  // "PLAccount": the description of the item's income account; empty when not set.
  std::string GetPLAccount() const { return GetString("PLAccount"); }
  // "Quantity": units in stock, 0 when absent.
  double GetQuantity() const { return GetFloat("Quantity", 0); }
};

// Calls visit(index, item) for each line (0-based index) of the document whose code is a record
// of "Items", with that record open; what visit changes in the item is saved.
void LForEachLineItem(LProfile& profile, const LSalesDocument& document,
                      const std::function<void(int index, LItem& item)>& visit);

// Moves the stock of every item a document's lines name by sign × the line's quantity (-1 when
// the items leave with an invoice). Lines whose code is not a record of "Items" are skipped.
void LInvoiceChangeQuantity(LProfile& profile, const LSalesDocument& document, int sign);

// When "ClientEnabled" is set in "Options": queues in "ItemSync" (under the first free numbers)
// one record per line of the document, "Name" = the line's item code (empty for a line without
// one), "Qty" = sign × the line's quantity. Does nothing otherwise.
void LItemSyncDocument(LProfile& profile, const LSalesDocument& document, int sign);
