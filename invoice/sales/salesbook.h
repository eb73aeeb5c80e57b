// The life of a sales-side document: created (as a draft or recorded), edited, recorded from a
// draft, deleted. Each operation keeps the totals, the customer's balance and the ledger in
// step:
//   - every save re-totals the document (totals.h);
//   - a recorded invoice adds its total to its customer's "Balance" (through the totaller), a
//     recorded credit note takes its total off (LCoreDataCreditNoteApply);
//   - recorded invoices and credit notes are posted to the ledger, and reposted under the same
//     reference when edited;
//   - drafts ("…Drafts" lists, keys "DFT<n>") touch neither balances nor the ledger;
//   - invoices, drafts included, are refused while a linked account is missing
//     (LDefAccountListNeedsUpdate), with the warning of the linked-accounts dialog.
// Every change of a recorded document is written to the audit trail (accounts/audittrail.h) before
// the change is made; when the trail cannot be written the change is refused.
// Failures return false with the French message for the user in *error (when given); nothing
// is written then.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "invoice/shared/salesdocument.h"
#include "invoice/shared/totals.h"

class LFileStoreListBase;
class LProfile;
class LSalesChangeIntent;

// What the user is told when a document's record could not be written.
inline constexpr std::string_view kDocumentNotSavedMessage = "Impossible d'enregistrer le document.";

// Moves the customer's balance by -sign × "Total" of the credit note: +1 when a credit note is
// recorded, -1 when it is taken back. false when the customer could not be written.
[[nodiscard]] bool LCoreDataCreditNoteApply(LProfile& profile, const LSalesDocument& creditNote, int sign);

// The party of a document of kind must be named and exist: a customer, or a supplier for a
// purchase order. false with "Veuillez sélectionner un client." or "Le client « X » n'existe
// pas." (the supplier's words for a purchase order) in *error otherwise.
bool LSalesCheckParty(LProfile& profile, const LSalesDocumentKind& kind, const std::string& party, std::string* error);

// Creates a document from content (a detached record holding the header fields and lines).
// draft: into the drafts list under "DFT<n>" (or key, which must then begin with "DFT");
// otherwise into the recorded list under the first free number (or key). Any "Total" in content
// is recomputed. newKey receives the key.
bool LSalesDocumentCreate(LProfile& profile, const LSalesDocumentKind& kind, const LRecord& content, bool draft,
                          std::string_view key, std::string& newKey, std::string* error);

// As LSalesDocumentCreate, under key of the list draft names, which the caller took already (an
// empty record file: LSalesReserveKey, LSalesReserveFirstFreeKey) before claiming what the
// document is made from (sourceclaim.h); intent is the caller's change, which noted the number.
// When newKey stays empty nothing of the document was written and the number is given back.
bool LSalesDocumentCreateTaken(LProfile& profile, const LSalesDocumentKind& kind, const LRecord& content, bool draft,
                               const std::string& key, LSalesChangeIntent& intent, std::string& newKey,
                               std::string* error);

// Opens the document key of that kind from its recorded list, else from its drafts list.
// false when neither holds it; document is then detached and empty.
bool LSalesDocumentOpen(LProfile& profile, const LSalesDocumentKind& kind, std::string_view key,
                        LSalesDocument& document);

// Applies change to the document key (which must not fail: check inputs before), then
// re-totals, moves balances by what changed (customer and total) and reposts under the
// document's reference. A recorded invoice whose total fell below what is applied to it gives
// the excess back (RemoveExcessPayments, RemoveExcessCreditNotes).
bool LSalesDocumentEdit(LProfile& profile, const LSalesDocumentKind& kind, std::string_view key,
                        const std::function<void(LSalesDocument&)>& change, std::string* error);

// Moves the draft draftKey into the recorded list under the first free number, then totals,
// moves the balance and posts as a new recorded document would. newKey receives the key.
bool LSalesDocumentRecordDraft(LProfile& profile, const LSalesDocumentKind& kind, std::string_view draftKey,
                               std::string& newKey, std::string* error);

// Deletes the document (recorded or draft): for a recorded invoice or credit note its
// transaction leaves the ledger and its total leaves the customer's balance; the payments and
// credit notes applied to an invoice, and a credit note's own applications, are unapplied.
bool LSalesDocumentDelete(LProfile& profile, const LSalesDocumentKind& kind, std::string_view key,
                          std::string* error);

// Completes the deletion of a recorded invoice or credit note that a crash cut short (the
// settler of an interrupted sales change): as LSalesDocumentDelete, without a second audit entry.
bool LSalesDocumentFinishDelete(LProfile& profile, const LSalesDocumentKind& kind, std::string_view key);

// Takes key in list by creating its record file empty, exclusively; false when it exists already
// (or cannot be made).
bool LSalesReserveKey(const LFileStoreListBase& list, const std::string& key);
// Takes the first free key "<prefix>1", "<prefix>2"... of list by creating its record file empty.
// Empty when the folder cannot be written.
std::string LSalesReserveFirstFreeKey(const LFileStoreListBase& list, std::string_view prefix);

// The ledger's routes for "Recettes" and "Reçus": the invoice or credit note (or the payment in
// "Payments") whose key is document and whose "JournalTxnRef" is reference is deleted with its
// postings and its effect on the customer's balance (a payment's "Amount" goes back onto the
// balance, its applications are undone). false when there is no such document; nothing is
// changed then.
bool LSalesDeleteForLedger(LProfile& profile, std::string_view document, std::string_view reference);
bool LPaymentDeleteForLedger(LProfile& profile, std::string_view document, std::string_view reference);

// The totaller of the kind (LInvoiceSumTotals, LOrderSumTotals, ...).
LFKTotalsChange LSalesDocumentSumTotals(LProfile& profile, const LSalesDocumentKind& kind,
                                        LSalesDocument& document);
