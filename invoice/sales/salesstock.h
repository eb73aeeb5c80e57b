// How sales-side documents move the stock of their items (invoice/shared/stock.h keeps the
// movements). Every recorded document moves stock through LSalesDocumentMoveStock, whether it is
// recorded, edited or deleted from the command line, the web pages or a recurring run:
//   invoice        its lines leave stock on its "Date", at the items' average cost;
//   credit note    its lines come back on its "Date", at the average cost;
//   purchase order once received ("ReceivedDate" set), its lines come in on that date at their
//                  net unit price;
// quotes, sales orders and drafts move nothing. For invoices the movements are also queued for
// the linked client, one per line (invoice/shared/item.h).
//
// Moving a document's stock and queuing it is one step that a kill may cut anywhere: the step
// fixes the numbers of its queue records and notes them, with what they hold, in an intent
// (salesledger.h) before it writes any item, then writes the items, then the records. The settler
// of an interrupted change writes the noted records that are missing; where the change died before
// its step, the settler's stock repair moves the stock itself and queues what it moved, through a
// step of its own. Either way each movement reaches the linked client once.
#pragma once

#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "invoice/shared/salesdocument.h"

struct LCheckReport;
class LProfile;

// The movements of the recorded document key of kind become those of after: what before (the
// document as it was, null when it was not recorded) moved is taken back, what after moves is
// added (null when the document is deleted). Under the ledger lock. false with a message in
// *error when an item could not be written.
bool LSalesDocumentMoveStock(LProfile& profile, const LSalesDocumentKind& kind, std::string_view key,
                             const LSalesDocument* before, const LSalesDocument* after, std::string* error);

// The stock movement identifier of a recorded document: "Invoices/12".
std::string LSalesStockDocument(const LSalesDocumentKind& kind, std::string_view key);

// Records the receipt of the purchase order key on date ("ReceivedDate"), its lines coming into
// stock; a received order is received again on the new date. false with the message in *error
// when the order does not exist or is a draft.
bool LPOrderReceive(LProfile& profile, std::string_view key, std::string_view date, std::string* error);

// The check of stock movements: every movement that an item holds of a recorded document against
// what the document, as it stands, moves (its lines of stocked products, on its date). Each
// difference is reported by item, document and date, quantities in thousandths of a unit; with
// fix the movements of each document found wrong are replaced by what it moves, at the average
// cost of the day for what leaves.
void LCheckStockMovements(LProfile& profile, bool fix, LCheckReport& report);

// The stock after an interrupted sales change, for its settler (salesledger.cpp), given the notes
// of the change and the documents it noted (list, key): each queue step the notes hold gets its
// missing records written; then every document's movements are repaired as LCheckStockMovements
// does with fix (the differences into report), and what the repair moves for a noted invoice whose
// step never began is queued for the linked client, one record per item. Each repair is logged.
void LSalesSettleStock(LProfile& profile, const std::vector<std::string>& notes,
                       const std::set<std::pair<std::string, std::string>>& changed, LCheckReport& report);
