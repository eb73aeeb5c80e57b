#include "invoice/shared/stock.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <set>

#include "invoice/shared/item.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "llib/gen/filestore.h"
#include "llib/gen/money.h"
#include "llib/gen/optionalerror.h"
#include "llib/gen/textnum.h"

namespace {

constexpr std::string_view kMoveCount = "MoveCount";

std::string MoveField(int index) { return "Move" + std::to_string(index + 1); }

std::string MoveText(const LStockMove& move) {
  return move.date + "|" + move.document + "|" + LQuantityText(move.quantity) + "|" + std::to_string(move.unitCost);
}

// The document may itself hold a bar: the date is first, quantity and cost are last.
bool ParseMove(std::string_view text, LStockMove& move) {
  std::size_t first = text.find('|');
  std::size_t last = text.rfind('|');
  if (first == std::string_view::npos || last == first) return false;
  std::size_t middle = text.rfind('|', last - 1);
  if (middle == first) return false;
  std::string_view quantity = text.substr(middle + 1, last - middle - 1);
  std::string_view cost = text.substr(last + 1);
  move.date.assign(text.substr(0, first));
  move.document.assign(text.substr(first + 1, middle - first - 1));
  auto q = std::from_chars(quantity.data(), quantity.data() + quantity.size(), move.quantity);
  auto c = std::from_chars(cost.data(), cost.data() + cost.size(), move.unitCost);
  return move.date.size() == 10 && q.ec == std::errc() && q.ptr == quantity.data() + quantity.size() &&
         c.ec == std::errc() && c.ptr == cost.data() + cost.size();
}

// Writes moves into the item, in date order (a document recorded later but dated earlier takes
// its place among them), with "Quantity" and "AverageCost" after the last one.
void WriteMoves(LRecord& item, std::vector<LStockMove>& moves) {
  std::stable_sort(moves.begin(), moves.end(),
                   [](const LStockMove& a, const LStockMove& b) { return a.date < b.date; });
  int oldCount = item.GetInt(kMoveCount, 0);
  for (int i = static_cast<int>(moves.size()); i < oldCount; ++i) item.DeleteField(MoveField(i));
  for (std::size_t i = 0; i < moves.size(); ++i) item.SetString(MoveField(static_cast<int>(i)), MoveText(moves[i]));
  item.SetInt(kMoveCount, static_cast<int>(moves.size()));
  LStockPosition now = LStockAt(moves, {});
  item.SetString("Quantity", ftotl(now.quantity));
  item.SetInt64("AverageCost", now.AverageCost());
}

// The cost a movement out of stock (or a return) takes on date: the average of the stock held
// just before it, else the item's "Cost".
long long AverageCostOn(const LRecord& item, const std::vector<LStockMove>& moves, std::string_view date) {
  LStockPosition before = LStockAt(moves, date);
  if (before.quantity > 0 && before.value > 0) return before.AverageCost();
  return item.GetInt64("Cost", 0);
}

}  // namespace

LItemKind LItemGetKind(const LRecord& item) {
  LItemKind kind = LItemKind::kStocked;
  (void)LItemKindParse(item.GetString("Kind"), kind);
  return kind;
}

std::string_view LItemKindWord(LItemKind kind) {
  switch (kind) {
    case LItemKind::kStocked: return "stock";
    case LItemKind::kProduct: return "product";
    case LItemKind::kService: return "service";
  }
  return "stock";
}

bool LItemKindParse(std::string_view word, LItemKind& kind) {
  if (word == "stock" || word == "stocké") kind = LItemKind::kStocked;
  else if (word == "product" || word == "produit") kind = LItemKind::kProduct;
  else if (word == "service") kind = LItemKind::kService;
  else return false;
  return true;
}

std::string_view LItemKindTitle(LItemKind kind) {
  switch (kind) {
    case LItemKind::kStocked: return "Produit stocké";
    case LItemKind::kProduct: return "Produit non stocké";
    case LItemKind::kService: return "Service";
  }
  return "Produit stocké";
}

std::vector<LStockMove> LStockReadMoves(const LRecord& item) {
  std::vector<LStockMove> moves;
  if (!item.TestFieldExists(kMoveCount)) {
    // An item kept before movements were: its "Quantity" is its opening stock.
    double quantity = item.GetFloat("Quantity", 0);
    if (quantity != 0) moves.push_back({std::string(kOpeningDate), std::string(kOpeningDocument), quantity,
                                        item.GetInt64("Cost", 0)});
    return moves;
  }
  int count = item.GetInt(kMoveCount, 0);
  moves.reserve(count > 0 ? count : 0);
  for (int i = 0; i < count; ++i) {
    LStockMove move;
    if (ParseMove(item.GetString(MoveField(i)), move)) moves.push_back(std::move(move));
  }
  return moves;
}

long long LStockPosition::AverageCost() const {
  if (quantity <= 0) return 0;
  return LRoundHalfAwayFromZero(static_cast<double>(value) / quantity);
}

bool LParseQuantity(std::string_view text, double& quantity) {
  constexpr int kQuantityDigits = 6;
  long long scaled = 0;
  if (!LParseAmount(text, kQuantityDigits, scaled)) return false;
  quantity = static_cast<double>(scaled) / 1e6;
  return true;
}

long long LStockMoveValue(double quantity, long long unitCost) {
  return LRoundHalfAwayFromZero(quantity * static_cast<double>(unitCost));
}

namespace {

// The movements kept by keep, summed.
template <class Keep>
LStockPosition Sum(const std::vector<LStockMove>& moves, const Keep& keep) {
  LStockPosition position;
  for (const LStockMove& move : moves) {
    if (!keep(move)) continue;
    position.quantity += move.quantity;
    position.value += LStockMoveValue(move.quantity, move.unitCost);
  }
  // Quantities are decimal: what is left of a sum of tenths is not stock.
  if (std::fabs(position.quantity) < 1e-9) position.quantity = 0;
  return position;
}

}  // namespace

LStockPosition LStockAt(const std::vector<LStockMove>& moves, std::string_view date) {
  return Sum(moves, [&](const LStockMove& move) { return date.empty() || move.date <= date; });
}

LStockPosition LStockBefore(const std::vector<LStockMove>& moves, std::string_view date) {
  return Sum(moves, [&](const LStockMove& move) { return move.date < date; });
}

std::string LQuantityText(double quantity) {
  char text[400];  // the widest double in fixed notation
  // Fixed notation: "0.000001", never "1e-06", so the text reads back as a quantity.
  auto result = std::to_chars(text, text + sizeof text, quantity, std::chars_format::fixed);
  return std::string(text, result.ptr);
}

bool LStockReplaceDocumentMoves(LProfile& profile, std::string_view document, std::string_view date,
                                const std::vector<LStockLine>& lines, const std::vector<std::string>& previousCodes,
                                std::string* error) {
  const LFileStoreListBase& items = profile.MainList(kItemsList);
  std::set<std::string> codes(previousCodes.begin(), previousCodes.end());
  for (const LStockLine& line : lines) codes.insert(line.code);
  for (const std::string& code : codes) {
    LItem item;
    if (code.empty() || !items.Open(item, code)) continue;
    std::vector<LStockMove> moves = LStockReadMoves(item);
    std::size_t before = moves.size();
    std::erase_if(moves, [&](const LStockMove& move) { return move.document == document; });
    bool changed = moves.size() != before;
    if (LItemGetKind(item) == LItemKind::kStocked) {
      for (const LStockLine& line : lines) {
        if (line.code != code || line.quantity == 0) continue;
        long long cost = line.unitCost >= 0 ? line.unitCost : AverageCostOn(item, moves, date);
        moves.push_back({std::string(date), std::string(document), line.quantity, cost});
        changed = true;
      }
    }
    if (!changed) {
      item.DetachWithoutSave();
      continue;
    }
    WriteMoves(item, moves);
    if (!item.Flush()) return LFail(error, "Impossible d'enregistrer le stock de l'article « " + code + " ».");
  }
  return true;
}

long long LStockDocumentCost(LProfile& profile, std::string_view document, const std::vector<std::string>& codes) {
  const LFileStoreListBase& items = profile.MainList(kItemsList);
  std::set<std::string> seen;
  long long cost = 0;
  for (const std::string& code : codes) {
    LItem item;
    if (code.empty() || !seen.insert(code).second || !items.Open(item, code)) continue;
    for (const LStockMove& move : LStockReadMoves(item))
      if (move.document == document) cost -= LStockMoveValue(move.quantity, move.unitCost);
    item.DetachWithoutSave();
  }
  return cost;
}

LPerpetualInventory LPerpetualInventoryOf(LProfile& profile) {
  LOptions options;
  options.OpenFrom(profile);
  LPerpetualInventory inventory;
  inventory.enabled = options.GetBool("PerpetualInventory", false);
  inventory.stockAccount = options.GetString("StockAccount", "Stock");
  inventory.costOfSalesAccount = options.GetString("CostOfSalesAccount", "Achats de produits généraux");
  options.DetachWithoutSave();
  return inventory;
}
