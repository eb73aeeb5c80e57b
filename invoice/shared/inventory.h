// The stock of every item as lists and reports show it: LInventoryAt reads the item list once and
// gives each item's kind, reorder figures and stock at a date (from its movements,
// invoice/shared/stock.h). The reports of the inventory are built on it:
//   "Inventaire" (LReportInventory)        stocked items at a date: quantity, average cost, value;
//   "Articles à commander" (LReportReorder) stocked items at or under their reorder level;
//   "Mouvements de stock" (LReportItemMovements) each item's movements over a period, between its
//                                          stock before and after.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "invoice/shared/stock.h"
#include "llib/gen/date.h"
#include "llib/gen/reporttable.h"

class LProfile;

struct LInventoryItem {
  std::string code;
  std::string description;
  LItemKind kind = LItemKind::kStocked;
  long long price = 0;         // "Price", cents
  long long cost = 0;          // "Cost", cents
  bool hasCost = false;        // "Cost" is set
  bool hasReorderLevel = false;
  double reorderLevel = 0;     // "ReorderLevel", units
  double reorderQuantity = 0;  // "ReorderQty", units
  LStockPosition stock;        // at the date asked
  std::vector<LStockMove> moves;  // every movement, in date order
  // Stocked, with a reorder level, and its stock at or under it.
  bool IsToReorder() const;
};

// Every item in code order, its stock at the end of date (today's stock for an empty date).
std::vector<LInventoryItem> LInventoryAt(LProfile& profile, std::string_view date);
// One item; false when code is not an item (item left as it was).
bool LInventoryItemAt(LProfile& profile, std::string_view code, std::string_view date, LInventoryItem& item);

// The French title of a movement's document: "Facture 12", "Avoir 3", "Bon de commande 7", or the
// identifier itself for another list.
std::string LStockDocumentTitle(std::string_view document);

// "Inventaire au D": one row per stocked item (code; "Description", "Quantité", "Coût moyen",
// "Valeur"), then "Total :" of the values.
class LReportInventory {
 public:
  LReportInventory(LProfile& profile, LDate date) : profile_(profile), date_(date) {}
  void GenerateReport(LReportTable& table);

 private:
  LProfile& profile_;
  LDate date_;  // invalid: today's stock
};

// "Articles à commander": the items to reorder today ("Description", "Quantité", "Seuil",
// "À commander").
class LReportReorder {
 public:
  explicit LReportReorder(LProfile& profile) : profile_(profile) {}
  void GenerateReport(LReportTable& table);

 private:
  LProfile& profile_;
};

// "Mouvements de stock": for each stocked item that moved in the period, a heading, the row
// "Stock initial" (before from), one row per movement ("Date", "Document", "Quantité",
// "Coût unitaire", "Valeur") and "Stock final" (at to).
class LReportItemMovements {
 public:
  LReportItemMovements(LProfile& profile, LDate from, LDate to) : profile_(profile), from_(from), to_(to) {}
  void GenerateReport(LReportTable& table);

 private:
  LProfile& profile_;
  LDate from_;  // invalid: from the first movement
  LDate to_;    // invalid: up to the last
};
