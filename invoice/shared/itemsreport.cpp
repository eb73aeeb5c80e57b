#include "invoice/shared/itemsreport.h"

#include <map>
#include <optional>

#include "invoice/shared/inventory.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/salesdocument.h"
#include "invoice/shared/stock.h"
#include "invoice/shared/totals.h"

namespace {

struct ItemSums {
  std::string description;  // of the earliest invoice's line
  std::string descriptionDate;
  std::string descriptionKey;  // the invoice it was taken from; empty: none yet
  double quantity = 0;
  long long amount = 0;
  long long cost = 0;       // of the lines whose cost is known
  bool costKnown = true;    // every line's cost is known
  void Add(const ItemSums& other) {
    amount += other.amount;
    cost += other.cost;
    costKnown = costKnown && other.costKnown;
  }
  // Whether the invoice comes before the one the description was taken from.
  bool Earlier(const std::string& date, const std::string& key) const {
    if (descriptionKey.empty()) return true;
    return date != descriptionDate ? date < descriptionDate : LDocumentKeyLess(key, descriptionKey);
  }
};
using ItemTable = std::map<std::string, ItemSums>;  // by item code

// What the items sold cost: for a stocked product, the cost at which the invoice took it out of
// stock; for other items, their "Cost"; unknown for a line without an item or cost.
class LineCosts {
 public:
  explicit LineCosts(LProfile& profile) : profile_(profile) {}

  std::optional<long long> Cost(const std::string& code, double quantity, const std::string& invoiceKey) {
    const std::optional<LInventoryItem>& item = Item(code);
    if (!item) return std::nullopt;
    if (item->kind == LItemKind::kStocked) {
      std::string document = std::string(LSalesDocumentKindOf(LSalesDocumentType::kInvoice).recordedList) + "/" +
                             invoiceKey;
      LStockPosition out;
      for (const LStockMove& move : item->moves)
        if (move.document == document) {
          out.quantity -= move.quantity;
          out.value -= LStockMoveValue(move.quantity, move.unitCost);
        }
      if (out.quantity > 0) return LStockMoveValue(quantity, out.AverageCost());
    }
    if (!item->hasCost) return std::nullopt;
    return LStockMoveValue(quantity, item->cost);
  }

 private:
  const std::optional<LInventoryItem>& Item(const std::string& code) {
    auto found = items_.find(code);
    if (found != items_.end()) return found->second;
    std::optional<LInventoryItem>& item = items_[code];
    LInventoryItem read;
    if (LInventoryItemAt(profile_, code, {}, read)) item = std::move(read);
    return item;
  }

  LProfile& profile_;
  std::map<std::string, std::optional<LInventoryItem>> items_;  // by code; empty: not an item
};

// Adds every line of the invoice but the fixed-percentage discount line to items.
void AddLines(const LSalesDocument& invoice, bool ignoreDiscount, int currencyDigits, LineCosts& costs,
              ItemTable& items) {
  LFKItemCollectionRecord lines = invoice.Items();
  int discountLine = lines.GetFixedPercentageDiscountItem();
  std::string date = invoice.GetDate();
  for (int i = 0; i < lines.GetItemCount(); ++i) {
    if (i == discountLine) continue;
    std::string code = lines.GetItemCode(i);
    ItemSums& sums = items[code.empty() ? std::string("Sans code") : code];
    if (sums.Earlier(date, invoice.GetPrimaryKey())) {
      sums.description = lines.GetItemDescription(i);
      sums.descriptionDate = date;
      sums.descriptionKey = invoice.GetPrimaryKey();
    }
    sums.quantity += lines.GetItemQty(i);
    sums.amount += LFKDocumentLineTotal(lines, i, ignoreDiscount, currencyDigits);
    std::optional<long long> cost = costs.Cost(code, lines.GetItemQty(i), invoice.GetPrimaryKey());
    if (cost) sums.cost += *cost;
    else sums.costKnown = false;
  }
}

// The cells "Montant", "Coût", "Marge" of sums; cost and margin empty when a cost is unknown.
std::vector<LSalesReportCell> AmountCells(const ItemSums& sums) {
  if (!sums.costKnown) return {sums.amount, "", ""};
  return {sums.amount, sums.cost, sums.amount - sums.cost};
}

void AddTotalRow(LReportTable& table, std::string_view label, const ItemSums& sums) {
  std::vector<LSalesReportCell> cells = {"", ""};
  for (LSalesReportCell& cell : AmountCells(sums)) cells.push_back(std::move(cell));
  LSalesReportAddRow(table, LReportRowKind::kTotal, label, cells);
}

// One row per item, at indent; returns the amounts and costs summed.
ItemSums ItemRows(LReportTable& table, const ItemTable& items, int indent) {
  ItemSums total;
  for (const auto& [code, sums] : items) {
    std::vector<LSalesReportCell> cells = {sums.description, LQuantityText(sums.quantity)};
    for (LSalesReportCell& cell : AmountCells(sums)) cells.push_back(std::move(cell));
    LSalesReportAddRow(table, LReportRowKind::kAccount, code, cells).indent = indent;
    total.Add(sums);
  }
  return total;
}

// The lines of the invoices the report covers, per customer or all in one group "".
std::map<std::string, ItemTable> ItemsBy(const LSalesReport& report, bool perCustomer) {
  LOptions options;
  options.OpenFrom(report.Profile());
  bool ignoreDiscount = options.GetBool("DontShowDiscountColumn", true);
  int currencyDigits = report.Profile().GetCurrencyDigits();
  std::map<std::string, ItemTable> groups;
  LineCosts costs(report.Profile());
  report.WalkDocuments("Invoices", [&](const LSalesDocument& invoice) {
    AddLines(invoice, ignoreDiscount, currencyDigits, costs, groups[perCustomer ? invoice.GetCustomer() : std::string()]);
  });
  return groups;
}

void StartItemsTable(LReportTable& table, std::string title, std::string subtitle) {
  table = LReportTable();
  table.title = std::move(title);
  table.subtitle = std::move(subtitle);
  table.columns = {"Description", "Quantité", "Montant", "Coût", "Marge"};
}

}  // namespace

void LReportItems::GenerateReport(LReportTable& table) {
  std::map<std::string, ItemTable> groups = ItemsBy(*this, false);
  StartItemsTable(table, "Ventes par article", PeriodText());
  AddTotalRow(table, "Total :", ItemRows(table, groups[std::string()], 0));
}

void LReportItemsPerCustomer::GenerateReport(LReportTable& table) {
  std::map<std::string, ItemTable> groups = ItemsBy(*this, true);
  StartItemsTable(table, "Articles par client", PeriodText());
  ItemSums total;
  for (const auto& [customer, items] : groups) {
    table.AddHeading(customer);
    ItemSums customerTotal = ItemRows(table, items, 1);
    AddTotalRow(table, "Total " + customer + " :", customerTotal);
    total.Add(customerTotal);
  }
  AddTotalRow(table, "Total :", total);
}
