// Taking a transaction out of the books. LAccountTransactionDelete removes its rows from the day
// file, its rows from the reconciliation files of its accounts, and its amounts from the
// balances. LedgerTransactionDelete is what a user's "delete" does: a transaction that a
// document posted (an invoice, a payment, a bill...) is deleted through that document, which
// removes its own postings; anything else is deleted from the ledger directly.
//
// Which document a transaction belongs to is decided by its type and the document identifier of
// its lines, through a table of routes keyed by type. Bills ("Achats") and bill payments
// ("Paiements") are routed from the start; the sales side adds "Recettes" (invoices, then credit
// notes) and "Reçus" (customer payments) with LLedgerSetDocumentDeleteRoute. Cheques and cash
// transactions, whose key is their reference, are asked before any route of a type.
#pragma once

#include <string_view>

class LProfile;

// Removes (date, reference) from the ledger, the reconciliation files and the balances, under the
// ledger lock. false when the ledger holds no such transaction or its day file could not be
// rewritten (nothing is changed then).
[[nodiscard]] bool LAccountTransactionDelete(LProfile& profile, std::string_view date, std::string_view reference);

// Deletes the document whose identifier is document when its "JournalTxnRef" equals reference,
// which removes its postings; true when a document was deleted. false leaves everything as it
// was, and the ledger delete is used instead.
using LDocumentDeleteRoute = bool (*)(LProfile& profile, std::string_view document, std::string_view reference);
// Whether the document key of listName is there and its "JournalTxnRef" equals reference: what a
// route asks before it deletes the document for that posting.
bool LDocumentPostedAs(const LProfile& profile, std::string_view listName, std::string_view key,
                       std::string_view reference);
// Sets (or, with null, removes) the route of a transaction type.
void LLedgerSetDocumentDeleteRoute(std::string_view type, LDocumentDeleteRoute route);

// The user-level delete. false when the transaction does not exist; true when it was deleted,
// through its document or from the ledger.
[[nodiscard]] bool LedgerTransactionDelete(LProfile& profile, std::string_view date, std::string_view reference);
