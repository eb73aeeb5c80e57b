#include "invoice/sales/salesstock.h"

#include <vector>

#include "accounts/ledgerlock.h"
#include "invoice/shared/item.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/stock.h"
#include "invoice/shared/totals.h"

namespace {

constexpr std::string_view kReceivedDate = "ReceivedDate";

// The date the document moves stock on; empty when it moves none.
std::string MoveDate(const LSalesDocumentKind& kind, const LSalesDocument& document) {
  switch (kind.type) {
    case LSalesDocumentType::kInvoice:
    case LSalesDocumentType::kCreditNote: return document.GetDate();
    case LSalesDocumentType::kPOrder: return document.GetString(kReceivedDate);
    default: return {};
  }
}

std::vector<std::string> Codes(const LSalesDocument& document) {
  LFKItemCollectionRecord lines = document.Items();
  std::vector<std::string> codes;
  for (int i = 0; i < lines.GetItemCount(); ++i) codes.push_back(lines.GetItemCode(i));
  return codes;
}

// The lines as stock sees them. A purchase order's goods come in at their net unit price.
std::vector<LStockLine> StockLines(LProfile& profile, const LSalesDocumentKind& kind, const LSalesDocument& document) {
  LFKItemCollectionRecord lines = document.Items();
  std::vector<LStockLine> out;
  int discountLine = lines.GetFixedPercentageDiscountItem();
  int currencyDigits = profile.GetCurrencyDigits();
  for (int i = 0; i < lines.GetItemCount(); ++i) {
    if (i == discountLine || lines.GetItemCode(i).empty()) continue;
    LStockLine line{lines.GetItemCode(i), lines.GetItemQty(i), -1};
    if (kind.type == LSalesDocumentType::kInvoice) line.quantity = -line.quantity;
    if (kind.type == LSalesDocumentType::kPOrder && line.quantity != 0)
      line.unitCost = LStockMoveValue(1 / line.quantity, LFKDocumentLineTotal(lines, i, false, currencyDigits));
    out.push_back(std::move(line));
  }
  return out;
}

}  // namespace

std::string LSalesStockDocument(const LSalesDocumentKind& kind, std::string_view key) {
  return std::string(kind.recordedList) + "/" + std::string(key);
}

bool LSalesDocumentMoveStock(LProfile& profile, const LSalesDocumentKind& kind, std::string_view key,
                             const LSalesDocument* before, const LSalesDocument* after, std::string* error) {
  std::string date = after != nullptr ? MoveDate(kind, *after) : std::string();
  std::vector<std::string> previous;
  if (before != nullptr && !MoveDate(kind, *before).empty()) previous = Codes(*before);
  std::vector<LStockLine> lines;
  if (!date.empty()) lines = StockLines(profile, kind, *after);
  if (previous.empty() && lines.empty()) return true;
  LLedgerLock lock(profile);
  bool moved = LStockReplaceDocumentMoves(profile, LSalesStockDocument(kind, key), date, lines, previous, error);
  if (kind.type == LSalesDocumentType::kInvoice &&
      !((previous.empty() || LItemSyncDocument(profile, *before, +1)) &&
        (date.empty() || LItemSyncDocument(profile, *after, -1)))) {
    if (moved && error != nullptr) *error = "Impossible d'enregistrer les mouvements à synchroniser.";
    return false;
  }
  return moved;
}

bool LPOrderReceive(LProfile& profile, std::string_view key, std::string_view date, std::string* error) {
  const LSalesDocumentKind& kind = LSalesDocumentKindOf(LSalesDocumentType::kPOrder);
  LSalesDocument order;
  if (!profile.MainList(kind.recordedList).Open(order, key)) {
    if (error != nullptr) *error = "Bon de commande introuvable : " + std::string(key) + ".";
    return false;
  }
  LSalesDocument before;
  before.CopyRecord(order);
  order.SetString(kReceivedDate, date);
  if (!order.Flush()) {
    if (error != nullptr) *error = "Impossible d'enregistrer le document.";
    return false;
  }
  return LSalesDocumentMoveStock(profile, kind, key, &before, &order, error);
}
