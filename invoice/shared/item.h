// Items (LItem, list "Items", key = the item code that document lines carry in "Item<n>Code"):
// a description, a unit price and the income account, by description, that sales of the item
// are posted to ("PLAccount"), and its stock (invoice/shared/stock.h).
//
// When the business's "Options" record has "ClientEnabled" set, stock movements are also queued
// in the item synchronisation list "ItemSync" for the linked client to pick up: one record per
// movement, "Name" = the item code, "Qty" = the change.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "invoice/shared/stock.h"
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
// of "Items", with that record read.
void LForEachLineItem(LProfile& profile, const LSalesDocument& document,
                      const std::function<void(int index, const LItem& item)>& visit);

// When "ClientEnabled" is set in "Options": queues in "ItemSync" (under the first free numbers)
// one record per line of the document, "Name" = the line's item code (empty for a line without
// one), "Qty" = sign × the line's quantity. Does nothing otherwise. false when a record could not
// be written.
[[nodiscard]] bool LItemSyncDocument(LProfile& profile, const LSalesDocument& document, int sign);

// What a form, the command line or an import sets on an item; what is not given is left as it
// is.
struct LItemInput {
  std::optional<std::string> description;
  std::optional<long long> price;          // cents
  std::optional<std::string> account;      // "PLAccount", by description
  std::optional<LItemKind> kind;
  std::optional<long long> cost;           // cents
  std::optional<double> reorderLevel;      // units
  std::optional<double> reorderQuantity;   // units
};

// Creates the item code (create: refused with "L'article « X » existe déjà." when it exists) or
// changes it (refused with "Article introuvable : X." when it does not). false with the message
// in *error; nothing is written then.
bool LItemSave(LProfile& profile, std::string_view code, const LItemInput& input, bool create, std::string* error);
