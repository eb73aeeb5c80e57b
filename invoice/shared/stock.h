// Stock of the items. An item ("Items" record) is of one kind ("Kind"): a stocked product
// ("stock", also what an item without "Kind" is), a product not kept in stock ("product") or a
// service ("service"). Only stocked products have stock: every recorded document that delivers
// or receives them leaves a movement in the item's own record, so the item file alone tells its
// stock at any date:
//
//     Move<n> = "2026-03-05|Invoices/12|-3|1250"      n from 1, "MoveCount" of them
//               date       document     qty unit cost in cents
//
// The document is "<list>/<key>" of the record that moved the goods. Receipts (purchase orders
// received, credit notes taking goods back) carry their unit cost; an issue (an invoice) carries
// the weighted average cost of the item on its date, fixed when it is recorded, so the value of
// the stock at a date is the sum of qty × cost of the movements up to it, and the average cost the
// value over the quantity. "Quantity" and "AverageCost" (cents) hold the figures after every
// movement, for lists that do not need a date.
//
// An item that has "Quantity" but no "MoveCount" (kept before movements were) reads as holding
// that quantity since kOpeningDate, document kOpeningDocument, at its "Cost".
//
// Other item fields of the stock: "Cost" (cents, the purchase cost used while no receipt gave an
// average, and the cost of non-stocked products for margins), "ReorderLevel" and "ReorderQty"
// (units; an item at or under its level is to be reordered, by its quantity).
//
// A document replaces its movements as a whole: edits take the old ones out and put the new ones
// in, deletes take them out. Callers hold the ledger lock so two processes moving one item do not
// lose each other's movement.
#pragma once

#include <string>
#include <string_view>
#include <vector>

class LProfile;
class LRecord;

inline constexpr std::string_view kOpeningDate = "0001-01-01";
inline constexpr std::string_view kOpeningDocument = "Stock initial";

enum class LItemKind { kStocked, kProduct, kService };

// "Kind" of an item record: "product", "service", else a stocked product.
LItemKind LItemGetKind(const LRecord& item);
// The stored word of a kind ("stock", "product", "service"); LItemKindParse reads it back (and the
// French "stocké", "produit", "service"); false for another word, kind unchanged.
std::string_view LItemKindWord(LItemKind kind);
bool LItemKindParse(std::string_view word, LItemKind& kind);
// The French name shown to users: "Produit stocké", "Produit non stocké", "Service".
std::string_view LItemKindTitle(LItemKind kind);

struct LStockMove {
  std::string date;        // "YYYY-MM-DD"
  std::string document;    // "<list>/<key>"
  double quantity = 0;     // units, positive in, negative out
  long long unitCost = 0;  // cents per unit
};

// The movements of an item record in stored order; a field that does not read as a movement is
// skipped.
std::vector<LStockMove> LStockReadMoves(const LRecord& item);

// Stock and value of an item at the end of a date.
struct LStockPosition {
  double quantity = 0;  // units
  long long value = 0;  // cents
  // value / quantity rounded to cents; 0 when there is no stock.
  long long AverageCost() const;
};

// The movements dated up to date (every one when date is empty), summed.
LStockPosition LStockAt(const std::vector<LStockMove>& moves, std::string_view date);

// The movements dated before date, summed.
LStockPosition LStockBefore(const std::vector<LStockMove>& moves, std::string_view date);

// The shortest text that reads back as a quantity ("3", "-2.5"), whatever the locale.
std::string LQuantityText(double quantity);

// Decimal text with "." ("1.5", "-2", "10", at most 6 decimals) to a quantity; false for anything
// else, quantity unchanged.
bool LParseQuantity(std::string_view text, double& quantity);

// qty × unitCost in cents, rounded half away from zero.
long long LStockMoveValue(double quantity, long long unitCost);

// One line of a document as stock sees it.
struct LStockLine {
  std::string code;    // the item code
  double quantity = 0; // units, signed as the stock moves
  long long unitCost = -1;  // cents per unit; -1: at the item's average cost on the date
};

// Takes the movements of document out of the items named by previousCodes, then adds one
// movement per line whose item is a stocked product, dated date, and updates "Quantity" and
// "AverageCost". Lines of other items (services, unknown codes, no code) are skipped. false when an
// item record could not be written: the error names the item, and items written before keep
// their change.
bool LStockReplaceDocumentMoves(LProfile& profile, std::string_view document, std::string_view date,
                                const std::vector<LStockLine>& lines, const std::vector<std::string>& previousCodes,
                                std::string* error);

// The cost of what document took out of stock, in cents (positive for goods out), over the items
// of codes.
long long LStockDocumentCost(LProfile& profile, std::string_view document, const std::vector<std::string>& codes);

// Perpetual inventory, an option of the business ("PerpetualInventory" of "Options", off by
// default so books kept without it do not change): each invoice also moves the cost of what it
// took out of stock from the stock account to the cost of sales, and a credit note moves it back.
// The accounts are named by description: "StockAccount" (default "Stock") and
// "CostOfSalesAccount" (default "Achats de produits généraux") of "Options".
struct LPerpetualInventory {
  bool enabled = false;
  std::string stockAccount;        // description of the stock account
  std::string costOfSalesAccount;  // description of the cost-of-sales account
};
LPerpetualInventory LPerpetualInventoryOf(LProfile& profile);
