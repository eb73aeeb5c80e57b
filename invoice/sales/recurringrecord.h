// Recording the occurrences of recurring invoices and orders (templates and schedules:
// invoice/shared/recurring.h).
//
// One occurrence of an invoice template, dated D = its next due date: a new recorded invoice in
// "Invoices" (first free number) with the template's fields but its schedule and ledger
// reference, "Date" = D, "AmountPaid" 0, "OrderNumber" empty; its total goes onto the customer's
// balance; its lines take the items' descriptions and prices of today; it is totalled, marked
// "IsDraft" 0, takes its items out of stock (invoice/sales/salesstock.h), and is posted to the ledger on D (under a new "SLS"
// reference, by the user $LOGNAME, else $USER). The template's "RecurLast" becomes D before the
// invoice is written, under the template's own lock and only while D is still its due date (a
// claim, sourceclaim.h): two runs at once, even past the ledger lock's wait, record D once. It is a
// sales change (salesledger.h): killed midway, the next holder of the ledger lock finishes the
// invoice from its record, or, when it was never written, puts the template back and gives the
// number back.
//
// An order template makes a new recorded order in "Orders" the same way, without balance,
// stock or ledger: orders do not move any of them.
#pragma once

#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include "invoice/shared/recurring.h"

class LProfile;

// Records one occurrence of the invoice template (a record of "InvoicesRecurring", read only: its
// stored copy moves on) and returns the new invoice's key. Empty, with a French message in *error
// (when given), when the template is never due, its customer does not exist, a linked account is
// missing or the invoice cannot be written; nothing is changed then. Empty with *error untouched
// when another run recorded that date meanwhile. When the invoice was written but not all it moves
// (totals, ledger, stock), the key is returned and *error set: the next opener finishes it.
std::string LRecurringRecord(LProfile& profile, LRecord& schedule, std::string* error = nullptr);
// The same for an order template (a record of "OrdersRecurring"); returns the new order's key.
std::string LRecurringOrderRecord(LProfile& profile, LRecord& schedule, std::string* error = nullptr);

// For the settler of an interrupted sales change (salesledger.cpp), given its notes: the template
// of each occurrence it was recording whose document was never written is put back as it was, and
// logged, so that the next run records that date. A written order is totalled again; a written
// invoice is finished with the other noted documents.
void LRecurringSettle(LProfile& profile, const std::vector<std::string>& notes);

// One document made by a run.
struct LRecurringMade {
  LSalesDocumentType type;  // kInvoice or kOrder
  std::string key;
  std::string date;         // "YYYY-MM-DD"
};

// Records one occurrence of every invoice and order template due at or before now, invoice
// templates first, each list in key order; with all, goes on round after round until none is
// due. made receives what was recorded, in order. false, with error set, at the first failure
// (what was made before it stays made and listed). only: the templates of that kind alone
// (kInvoice or kOrder).
bool LRecurringRun(LProfile& profile, bool all, time_t now, std::vector<LRecurringMade>& made, std::string& error,
                   std::optional<LSalesDocumentType> only = std::nullopt);
