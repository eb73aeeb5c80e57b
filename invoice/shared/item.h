// Items (LItem, list "Items", key = the item code that document lines carry in "Item<n>Code"):
// a description, a unit price and the income account, by description, that sales of the item
// are posted to ("PLAccount"), and its stock (invoice/shared/stock.h).
//
// When the business's "Options" record has "ClientEnabled" set, stock movements are also queued
// in the item synchronisation list "SyncItems" for the linked client to pick up: one record per
// movement, "Name" = the item code, "Qty" = the change.
//
// The list is written, read and emptied only under the ledger lock, like the stock it mirrors. A
// change queues under numbers it fixes and notes before it moves any stock (salesstock.h), and a
// change killed midway is settled by the next holder of the lock before anything else: so a noted
// number without its record was never written, and the settler writes exactly the missing ones.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "invoice/shared/stock.h"
#include "llib/gen/record.h"

class LProfile;
class LSalesDocument;

inline constexpr std::string_view kItemsList = "Items";
inline constexpr std::string_view kSyncItemsList = "SyncItems";

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

// One record of "SyncItems": the stock of an item changes by a quantity.
struct LSyncItemMove {
  std::string number;   // its key in "SyncItems", fixed before anything is written
  std::string code;     // "Name": the item code, empty for a document line without one
  double quantity = 0;  // "Qty": units, negative for goods out
};

// Whether "ClientEnabled" is set in "Options": a linked client picks up the stock movements.
bool LItemSyncEnabled(LProfile& profile);

// Appends to moves one movement per line of the document, the line's item code and sign × its
// quantity, numbers left empty.
void LItemSyncAddDocument(const LSalesDocument& document, int sign, std::vector<LSyncItemMove>& moves);

// Gives each of moves the lowest number free in "SyncItems", in order. Under the ledger lock.
void LItemSyncFixNumbers(LProfile& profile, std::vector<LSyncItemMove>& moves);

// Writes each of moves whose number holds no record yet, adding one to *nWritten (may be null)
// for each written. false when one could not be written (those before it stay).
[[nodiscard]] bool LItemSyncWriteMissing(LProfile& profile, const std::vector<LSyncItemMove>& moves, int* nWritten);

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
