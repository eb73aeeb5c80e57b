#include "invoice/shared/itemsreport.h"

#include <charconv>
#include <map>

#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/salesdocument.h"
#include "invoice/shared/totals.h"

namespace {

struct ItemSums {
  std::string description;  // of the earliest invoice's line
  std::string descriptionDate;
  std::string descriptionKey;  // the invoice it was taken from; empty: none yet
  double quantity = 0;
  long long amount = 0;
  // Whether the invoice comes before the one the description was taken from.
  bool Earlier(const std::string& date, const std::string& key) const {
    if (descriptionKey.empty()) return true;
    return date != descriptionDate ? date < descriptionDate : LDocumentKeyLess(key, descriptionKey);
  }
};
using ItemTable = std::map<std::string, ItemSums>;  // by item code

// The shortest text that reads back as the quantity ("3", "2.5"), whatever the locale.
std::string QuantityText(double quantity) {
  char text[32];
  auto result = std::to_chars(text, text + sizeof text, quantity);
  return std::string(text, result.ptr);
}

// Adds every line of the invoice but the fixed-percentage discount line to items.
void AddLines(const LSalesDocument& invoice, bool ignoreDiscount, int currencyDigits, ItemTable& items) {
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
  }
}

// One row per item, at indent; returns the amounts summed.
long long ItemRows(LReportTable& table, const ItemTable& items, int indent) {
  long long total = 0;
  for (const auto& [code, sums] : items) {
    LSalesReportAddRow(table, LReportRowKind::kAccount, code,
                       {sums.description, QuantityText(sums.quantity), sums.amount})
        .indent = indent;
    total += sums.amount;
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
  report.WalkDocuments("Invoices", [&](const LSalesDocument& invoice) {
    AddLines(invoice, ignoreDiscount, currencyDigits, groups[perCustomer ? invoice.GetCustomer() : std::string()]);
  });
  return groups;
}

void StartItemsTable(LReportTable& table, std::string title, std::string subtitle) {
  table = LReportTable();
  table.title = std::move(title);
  table.subtitle = std::move(subtitle);
  table.columns = {"Description", "Quantité", "Montant"};
}

}  // namespace

void LReportItems::GenerateReport(LReportTable& table) {
  std::map<std::string, ItemTable> groups = ItemsBy(*this, false);
  StartItemsTable(table, "Ventes par article", PeriodText());
  long long total = ItemRows(table, groups[std::string()], 0);
  LSalesReportAddRow(table, LReportRowKind::kTotal, "Total :", {"", "", total});
}

void LReportItemsPerCustomer::GenerateReport(LReportTable& table) {
  std::map<std::string, ItemTable> groups = ItemsBy(*this, true);
  StartItemsTable(table, "Articles par client", PeriodText());
  long long total = 0;
  for (const auto& [customer, items] : groups) {
    table.AddHeading(customer);
    long long customerTotal = ItemRows(table, items, 1);
    LSalesReportAddRow(table, LReportRowKind::kTotal, "Total " + customer + " :", {"", "", customerTotal});
    total += customerTotal;
  }
  LSalesReportAddRow(table, LReportRowKind::kTotal, "Total :", {"", "", total});
}
