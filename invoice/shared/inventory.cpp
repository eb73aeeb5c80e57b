#include "invoice/shared/inventory.h"

#include <algorithm>

#include "invoice/shared/item.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/salesdocument.h"
#include "invoice/shared/salesreport.h"
#include "llib/gen/filestore.h"

namespace {

void Fill(const LItem& record, std::string_view date, LInventoryItem& item) {
  item.code = record.GetPrimaryKey();
  item.description = record.GetDescription();
  item.kind = LItemGetKind(record);
  item.price = record.GetPrice();
  item.cost = record.GetInt64("Cost", 0);
  item.hasCost = record.TestFieldExists("Cost");
  item.hasReorderLevel = record.TestFieldExists("ReorderLevel");
  item.reorderLevel = record.GetFloat("ReorderLevel", 0);
  item.reorderQuantity = record.GetFloat("ReorderQty", 0);
  item.moves = LStockReadMoves(record);
  item.stock = LStockAt(item.moves, date);
}

}  // namespace

bool LInventoryItem::IsToReorder() const {
  return kind == LItemKind::kStocked && hasReorderLevel && stock.quantity <= reorderLevel;
}

std::vector<LInventoryItem> LInventoryAt(LProfile& profile, std::string_view date) {
  std::vector<LInventoryItem> items;
  LItem record;
  for (LFileStoreIteratorBase it(profile.MainList(kItemsList), record); record.IsAttached(); it.Next(record)) {
    Fill(record, date, items.emplace_back());
  }
  std::sort(items.begin(), items.end(),
            [](const LInventoryItem& a, const LInventoryItem& b) { return a.code < b.code; });
  return items;
}

bool LInventoryItemAt(LProfile& profile, std::string_view code, std::string_view date, LInventoryItem& item) {
  LItem record;
  if (code.empty() || !profile.MainList(kItemsList).Open(record, code)) return false;
  Fill(record, date, item);
  record.DetachWithoutSave();
  return true;
}

std::string LStockDocumentTitle(std::string_view document) {
  std::size_t slash = document.find('/');
  if (slash != std::string_view::npos) {
    std::string_view list = document.substr(0, slash);
    for (LSalesDocumentType type : {LSalesDocumentType::kInvoice, LSalesDocumentType::kCreditNote,
                                    LSalesDocumentType::kPOrder}) {
      const LSalesDocumentKind& kind = LSalesDocumentKindOf(type);
      if (kind.recordedList == list) return std::string(kind.title) + " " + std::string(document.substr(slash + 1));
    }
  }
  return std::string(document);
}

void LReportInventory::GenerateReport(LReportTable& table) {
  std::string date = date_.IsValid() ? date_.ToText() : std::string();
  table = LReportTable();
  table.title = "Inventaire";
  table.subtitle = date.empty() ? "Stock actuel" : "Au " + date;
  table.columns = {"Description", "Quantité", "Coût moyen", "Valeur"};
  long long total = 0;
  for (const LInventoryItem& item : LInventoryAt(profile_, date)) {
    if (item.kind != LItemKind::kStocked) continue;
    LSalesReportAddRow(table, LReportRowKind::kAccount, item.code,
                       {item.description, LQuantityText(item.stock.quantity), item.stock.AverageCost(),
                        item.stock.value});
    total += item.stock.value;
  }
  LSalesReportAddRow(table, LReportRowKind::kTotal, "Total :", {"", "", "", total});
}

void LReportReorder::GenerateReport(LReportTable& table) {
  table = LReportTable();
  table.title = "Articles à commander";
  table.columns = {"Description", "Quantité", "Seuil", "À commander"};
  for (const LInventoryItem& item : LInventoryAt(profile_, {})) {
    if (!item.IsToReorder()) continue;
    LSalesReportAddRow(table, LReportRowKind::kAccount, item.code,
                       {item.description, LQuantityText(item.stock.quantity), LQuantityText(item.reorderLevel),
                        LQuantityText(item.reorderQuantity)});
  }
}

void LReportItemMovements::GenerateReport(LReportTable& table) {
  std::string from = from_.IsValid() ? from_.ToText() : std::string();
  std::string to = to_.IsValid() ? to_.ToText() : std::string();
  table = LReportTable();
  table.title = "Mouvements de stock";
  table.subtitle = LSalesReportPeriodText(from_, to_);
  table.columns = {"Date", "Document", "Quantité", "Coût unitaire", "Valeur"};
  for (const LInventoryItem& item : LInventoryAt(profile_, to)) {
    if (item.kind != LItemKind::kStocked) continue;
    auto inPeriod = [&](const LStockMove& move) {
      return (from.empty() || move.date >= from) && (to.empty() || move.date <= to);
    };
    if (std::none_of(item.moves.begin(), item.moves.end(), inPeriod)) continue;
    table.AddHeading(item.code + " " + item.description);
    LStockPosition opening = from.empty() ? LStockPosition() : LStockBefore(item.moves, from);
    LSalesReportAddRow(table, LReportRowKind::kAccount, "Stock initial",
                       {"", "", LQuantityText(opening.quantity), opening.AverageCost(), opening.value})
        .indent = 1;
    for (const LStockMove& move : item.moves) {
      if (!inPeriod(move)) continue;
      LSalesReportAddRow(table, LReportRowKind::kAccount, "",
                         {move.date, LStockDocumentTitle(move.document), LQuantityText(move.quantity), move.unitCost,
                          LStockMoveValue(move.quantity, move.unitCost)})
          .indent = 1;
    }
    LSalesReportAddRow(table, LReportRowKind::kTotal, "Stock final",
                       {"", "", LQuantityText(item.stock.quantity), item.stock.AverageCost(), item.stock.value})
        .indent = 1;
  }
}
