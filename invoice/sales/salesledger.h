// How the sales side joins the books. The ledger knows nothing of invoices; the sales side tells
// it, once per process, what it needs to know:
//   - deleting a "Recettes" transaction deletes its invoice or credit note, and deleting a
//     "Reçus" transaction its payment, through the sales side (salesbook.h);
//   - checking the books also compares every customer's "Balance" with its documents, every
//     invoice's amounts paid and refunded with the payments and credit notes applied to it, and
//     the indexes of the sales lists with their records, and the items' stock movements with the
//     documents that move them (salesstock.h);
//   - the default chart of a new business also receives the accounts its taxes are collected
//     into (taxaccounts.h);
//   - a sales change killed midway (LSalesChangeIntent) has the stock movements of every document
//     and the documents it noted brought back in step with their postings, and every customer
//     balance and invoice amount paid computed again from the documents, by the next holder of
//     the ledger lock;
//   - a statement line can be posted as a customer payment from the ledger side's pages
//     (bankpayment.h).
#pragma once

#include <map>
#include <string>

#include "accounts/ledgerintent.h"

struct LCheckReport;
class LProfile;

// Held for the life of a change of sales documents or payments (accounts/ledgerintent.h), inside
// the ledger lock, which every such change holds from start to end: sales changes run one at a
// time, and whoever finds an intent of another process knows its change died. The change notes
// each recorded document whose posting it is about to write, change or take out, before it
// writes anything of that document.
//
// One that waited the whole 10,000 ms for the ledger lock goes on without it, beside the holder's
// changes and other late ones: the customer balances, the invoices' amounts paid and refunded and
// the stock it moves by reading and writing them back may lose a move made meanwhile. So its
// intent is always left to the next holder of the lock, ended or not, which brings every such
// figure back in step with the documents as it does after a crash. What it cannot bring back is
// an entry of a payment's or credit note's applications lost when two changes, one of them late,
// wrote that applier at once (each writes back the whole list it read): the invoices' amounts
// then follow the lists as stored.
inline constexpr std::string_view kSalesChangeIntentExtension = ".sales";
class LSalesChangeIntent : public LBooksChangeIntent {
 public:
  explicit LSalesChangeIntent(const LProfile& profile);
  // Without the ledger lock: left to the next holder (above).
  ~LSalesChangeIntent();
  LSalesChangeIntent(const LSalesChangeIntent&) = delete;
  LSalesChangeIntent& operator=(const LSalesChangeIntent&) = delete;
  // The document key of list ("Invoices", "CreditNotes", "Payments") is being recorded or edited:
  // its posting was on oldDate (empty when it had none) under reference (empty when it has none
  // yet; noted again once taken).
  void NotePosting(std::string_view list, std::string_view key, std::string_view oldDate, std::string_view reference);
  // The document is being deleted (noted before its deletion's entry in the audit trail).
  void NoteDeleting(std::string_view list, std::string_view key);
  // The applications of the payment or credit note key (stored in list) to invoice are about to
  // change. Killed midway, the invoice's amounts paid and refunded are computed again from the
  // payments and credit notes as stored, any excess over its total given back.
  void NoteApplying(std::string_view list, std::string_view key, std::string_view invoice);
  // A new number of list is about to be taken (an empty record file, noted once taken).
  void NoteReserving(std::string_view list);
  // The change failed after its audit entry, its record written or not: what it moves besides
  // (posting, balances, stock) is left to the next holder of the ledger lock, which brings them in
  // step with the record as it stands, as after a crash. Adds so much to *error (when it holds a
  // message) about document (its key); returns false.
  bool LeaveUnfinished(std::string_view document, std::string* error);

 private:
  bool unlocked_ = false;  // made without the ledger lock
};

// Installs the hooks above. Call once at start-up, before any business is opened; calling
// it again changes nothing.
void LSalesLedgerInstall();

// The check of customer balances: for each customer, the stored "Balance" against its recorded
// invoices less its credit notes and payments. Every difference is reported; with fix the
// computed balance is written.
void LCheckCustomerBalances(LProfile& profile, bool fix, LCheckReport& report);

// The check of the invoices' "AmountPaid" and "AmountRefunded": each against what its own
// customer's payments (refunds) and credit notes hold for it. Every difference is reported; with
// fix the computed amount is written. Invoices named by a payment of an older program, whose
// amounts are worked out when first read, are left alone.
void LCheckInvoiceAmounts(LProfile& profile, bool fix, LCheckReport& report);

// The check of the indexes of the sales lists (invoice/shared/listindexes.h): each record whose
// entry gives another value than the record's own is reported as a problem; with fix the index is
// rebuilt from the records instead. Entries left stale by a crash or a copy of the folder are
// mended without a word, as every list page does.
void LCheckListIndexes(LProfile& profile, bool fix, LCheckReport& report);
