#include "invoice/sales/salesstock.h"

#include <cmath>
#include <map>
#include <optional>
#include <set>
#include <tuple>
#include <vector>

#include "accounts/check.h"
#include "accounts/ledgerlock.h"
#include "invoice/sales/salesledger.h"
#include "invoice/shared/item.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/stock.h"
#include "invoice/shared/totals.h"
#include "llib/gen/filestore.h"
#include "llib/gen/log.h"
#include "llib/gen/optionalerror.h"
#include "llib/gen/percent.h"
#include "llib/gen/textnum.h"

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

// ---- The queue step ---------------------------------------------------------------------------

// The note of a queue step: "queue", the document, then number, item code and quantity of each
// record, tab-separated, the texts percent-encoded. One line, so a note cut by a kill is dropped
// whole: the step had then written nothing.
constexpr std::string_view kQueueNote = "queue";
constexpr std::string_view kQueueNotWritten = "Impossible d'enregistrer les mouvements à synchroniser.";

std::string QueueNote(std::string_view document, const std::vector<LSyncItemMove>& moves) {
  std::string note(kQueueNote);
  note += '\t';
  LPercentEncodeAppend(document, note);
  for (const LSyncItemMove& move : moves) {
    note += '\t' + move.number + '\t';
    LPercentEncodeAppend(move.code, note);
    note += '\t' + ftotl(move.quantity);
  }
  return note;
}

// false for a note of another kind, or one that does not read whole.
bool ParseQueueNote(std::string_view note, std::string& document, std::vector<LSyncItemMove>& moves) {
  std::vector<std::string_view> parts = LIntentNoteParts(note);
  if (parts.size() < 2 || parts[0] != kQueueNote || (parts.size() - 2) % 3 != 0) return false;
  document = LPercentDecode(parts[1]);
  for (std::size_t at = 2; at < parts.size(); at += 3) {
    LSyncItemMove move{std::string(parts[at]), LPercentDecode(parts[at + 1]), 0};
    if (move.number.empty() || !LParseQuantity(parts[at + 2], move.quantity)) return false;
    moves.push_back(std::move(move));
  }
  return true;
}

// Replaces the movements of document (LStockReplaceDocumentMoves) and queues moves for the linked
// client, as one step that survives a kill (see the header). Under the ledger lock. A step that
// fails leaves its note to the settler, as a killed one does.
bool MoveAndQueue(LProfile& profile, const std::string& document, std::string_view date,
                  const std::vector<LStockLine>& lines, const std::vector<std::string>& previousCodes,
                  std::vector<LSyncItemMove> moves, std::string* error) {
  std::optional<LSalesChangeIntent> step;
  if (!moves.empty()) {
    LItemSyncFixNumbers(profile, moves);
    step.emplace(profile);
    (void)step->Note(QueueNote(document, moves));
  }
  bool moved = LStockReplaceDocumentMoves(profile, document, date, lines, previousCodes, error);
  if (moves.empty()) return moved;
  bool queued = LItemSyncWriteMissing(profile, moves, nullptr);
  if (moved && queued) return true;
  step->Keep();
  if (moved) LSetError(error, kQueueNotWritten);
  return false;
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
  std::vector<LSyncItemMove> queue;
  if (kind.type == LSalesDocumentType::kInvoice && LItemSyncEnabled(profile)) {
    if (!previous.empty()) LItemSyncAddDocument(*before, +1, queue);
    if (!date.empty()) LItemSyncAddDocument(*after, -1, queue);
  }
  LLedgerLock lock(profile);
  return MoveAndQueue(profile, LSalesStockDocument(kind, key), date, lines, previous, std::move(queue), error);
}

bool LPOrderReceive(LProfile& profile, std::string_view key, std::string_view date, std::string* error) {
  // The order and its goods change together: killed between the two, the next holder of the
  // ledger lock brings the movements in step with the order (salesledger.h).
  LLedgerLock lock(profile);
  LSalesChangeIntent intent(profile);
  const LSalesDocumentKind& kind = LSalesDocumentKindOf(LSalesDocumentType::kPOrder);
  LSalesDocument order;
  if (!profile.MainList(kind.recordedList).Open(order, key)) {
    return LFail(error, "Bon de commande introuvable : " + std::string(key) + ".");
  }
  LSalesDocument before;
  before.CopyRecord(order);
  order.SetString(kReceivedDate, date);
  if (!order.Flush()) return LFail(error, "Impossible d'enregistrer le document.");
  return LSalesDocumentMoveStock(profile, kind, key, &before, &order, error);
}

// ---- Check ------------------------------------------------------------------------------------

namespace {

constexpr LSalesDocumentType kMovingTypes[] = {LSalesDocumentType::kInvoice, LSalesDocumentType::kCreditNote,
                                               LSalesDocumentType::kPOrder};

using LMoveKey = std::tuple<std::string, std::string, std::string>;  // item code, document, date

// What one document moves, as its record now stands.
struct LDocumentMoves {
  std::string date;              // empty: none (gone, a draft, an order not received)
  std::vector<LStockLine> lines;
};

// The quantity as a difference carries it: thousandths of a unit.
long long Thousandths(double quantity) { return std::llround(quantity * 1000); }

// The check, and with fix the repair, of LCheckStockMovements; what the repair moves for the
// documents of queued is queued for the linked client, by item.
void CheckStockMovements(LProfile& profile, bool fix, LCheckReport& report, const std::set<std::string>& queued) {
  std::map<LMoveKey, double> stored, computed;
  std::map<std::string, std::set<std::string>> holders;  // document: the items holding a movement of it
  std::set<std::string> stocked;
  std::set<std::string> lists;
  for (LSalesDocumentType type : kMovingTypes) lists.insert(std::string(LSalesDocumentKindOf(type).recordedList));
  LItem item;
  for (LFileStoreIteratorBase it(profile.MainList(kItemsList), item); item.IsAttached(); it.Next(item)) {
    if (LItemGetKind(item) == LItemKind::kStocked) stocked.insert(item.GetPrimaryKey());
    for (const LStockMove& move : LStockReadMoves(item)) {
      if (!lists.contains(move.document.substr(0, move.document.find('/')))) continue;  // not a document's
      stored[{item.GetPrimaryKey(), move.document, move.date}] += move.quantity;
      holders[move.document].insert(item.GetPrimaryKey());
    }
  }
  std::map<std::string, LDocumentMoves> documents;
  for (LSalesDocumentType type : kMovingTypes) {
    const LSalesDocumentKind& kind = LSalesDocumentKindOf(type);
    LSalesDocument document;
    for (LFileStoreIteratorBase it(profile.MainList(kind.recordedList), document); document.IsAttached(); it.Next(document)) {
      LDocumentMoves& moves = documents[LSalesStockDocument(kind, document.GetPrimaryKey())];
      moves.date = MoveDate(kind, document);
      if (moves.date.empty()) continue;
      moves.lines = StockLines(profile, kind, document);
      for (const LStockLine& line : moves.lines)
        if (stocked.contains(line.code)) computed[{line.code, LSalesStockDocument(kind, document.GetPrimaryKey()), moves.date}] += line.quantity;
    }
  }
  std::set<LMoveKey> keys;
  for (const auto* side : {&stored, &computed})
    for (const auto& entry : *side) keys.insert(entry.first);
  std::set<std::string> wrong;  // documents whose movements differ
  for (const LMoveKey& key : keys) {
    double held = stored.contains(key) ? stored[key] : 0, moved = computed.contains(key) ? computed[key] : 0;
    if (std::fabs(held - moved) < 1e-9) continue;
    const auto& [code, document, date] = key;
    wrong.insert(document);
    report.differences.push_back({std::string(kItemsList), code, "Mouvement " + document + " du " + date + " (millièmes)",
                                  Thousandths(held), Thousandths(moved), fix});
  }
  if (!fix) return;
  for (const std::string& document : wrong) {
    const LDocumentMoves& moves = documents[document];
    const std::set<std::string>& held = holders[document];
    std::vector<LSyncItemMove> queue;
    if (queued.contains(document)) {
      std::map<std::string, double> change;  // by item: what the repair moves
      for (const LMoveKey& key : keys)
        if (std::get<1>(key) == document) change[std::get<0>(key)] += computed[key] - stored[key];
      for (const auto& [code, quantity] : change)
        if (std::fabs(quantity) >= 1e-9) queue.push_back({{}, code, quantity});
    }
    std::size_t nQueued = queue.size();
    std::string error;
    if (!MoveAndQueue(profile, document, moves.date, moves.lines, {held.begin(), held.end()}, std::move(queue), &error))
      LLogError("%s", error.c_str());
    else if (nQueued > 0)
      LLogWarning("Client lié : le stock de %s, remis en accord, a été mis dans « SyncItems » (%zu mouvements).",
                  document.c_str(), nQueued);
  }
}

}  // namespace

void LCheckStockMovements(LProfile& profile, bool fix, LCheckReport& report) { CheckStockMovements(profile, fix, report, {}); }

void LSalesSettleStock(LProfile& profile, const std::vector<std::string>& notes,
                       const std::set<std::pair<std::string, std::string>>& changed, LCheckReport& report) {
  std::set<std::string> stepped;  // documents whose queue step began
  for (const std::string& note : notes) {
    std::string document;
    std::vector<LSyncItemMove> moves;
    if (!ParseQueueNote(note, document, moves)) continue;
    stepped.insert(document);
    int nWritten = 0;
    if (!LItemSyncWriteMissing(profile, moves, &nWritten)) LLogError("%s", std::string(kQueueNotWritten).c_str());
    if (nWritten > 0)
      LLogWarning("Client lié : les mouvements de %s, interrompus, ont été mis dans « SyncItems » (%d sur %zu).",
                  document.c_str(), nWritten, moves.size());
  }
  std::set<std::string> queued;
  const LSalesDocumentKind& invoices = LSalesDocumentKindOf(LSalesDocumentType::kInvoice);
  if (LItemSyncEnabled(profile)) {
    for (const auto& [list, key] : changed) {
      std::string document = LSalesStockDocument(invoices, key);
      if (list == invoices.recordedList && !stepped.contains(document)) queued.insert(document);
    }
  }
  CheckStockMovements(profile, true, report, queued);
}
