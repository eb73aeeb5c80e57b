// Posting sales documents to the ledger. Recording an invoice, a credit note or a customer
// payment writes one balanced transaction under the document's reference ("JournalTxnRef"):
//
//   invoice      "Recettes", "Recette; <customer>": tax collected, item lines and shipping
//                credited, the receivable debited with "Total";
//   credit note  "Recettes", "Avoir; <customer>": the same with every sign reversed;
//   payment      "Reçus", "Encaissement; <customer>": the receivable credited, the deposit
//                account debited with "Amount";
//   refund       a payment with "IsRefund": "Reçus", "Remboursement; <customer>", the same
//                lines with the signs reversed.
//
// Invoices and credit notes take their references from the sales counter ("SLS10000", ...),
// payments from the receipt counter ("REC10000", ...); a document that has a reference keeps it
// and takes no number, which is how an edited document is posted again in the same place.
//
// Line amounts are truncated toward zero, not rounded, and the unit-price digits are not
// applied: the difference between the document's total and what the lines add up to is credited
// (debited for a credit note) to the account of the last item line, deliberately: the ledger
// must agree with the books' existing postings.
//
// Accounts are configured by description and turned into numbers just before each line:
//   receivable  "AccountsReceivable" of the "Invoice" (or "CreditNote") options, default
//               "Comptes clients"; else linked slot 2;
//   income      the item's "PLAccount" when the line's code is an item, else "Recettes
//               générales"; an unknown description falls back to linked slot 3;
//   shipping    "FreightCollected" of the options, default "Frais de port perçus"; else slot 4;
//   tax n       "TaxAccountPayable<n>" of the tax options; else slot 5; an account that no longer
//               exists sends the tax to "2301";
//   deposit     the payment's "DepositAccount", default "Compte-chèque"; else slot 1.
#pragma once

#include <string>
#include <string_view>

#include "invoice/shared/payment.h"
#include "invoice/shared/salesdocument.h"
#include "llib/gen/record.h"

class LLedgerTransaction;
class LProfile;

// Where a tax goes when the account configured for it no longer exists.
inline constexpr std::string_view kLostTaxAccount = "2301";

// The "Invoice" options record (or another kind's: "CreditNote") as the postings read it.
class LInvoiceOptions : public LRecord {
 public:
  void OpenFrom(const LProfile& profile, std::string_view record = "Invoice");
  // "AccountsReceivable", default "Comptes clients".
  std::string GetAccountsReceivable() const;
  // "FreightCollected": the account shipping charged to customers is credited to; default
  // "Frais de port perçus".
  std::string GetFreightCollected() const;
};

// Builds the transaction of an invoice (creditNote false) or a credit note, dated date, under
// reference, without recording it. The lines sum to zero.
void LSalesDocumentBuildTransaction(LProfile& profile, const LSalesDocument& document, bool creditNote,
                                    std::string_view date, std::string_view reference, std::string_view userName,
                                    LLedgerTransaction& txn);

// Posts the invoice: takes a new reference when it has none, records the transaction and stores
// the reference in "JournalTxnRef" (the caller saves the invoice). recurring: the call comes from
// the recurring-invoice run, which has set the invoice's "Date" to the schedule's due date; that
// date is used. false when the ledger could not be written (the reference is still stored).
bool LInvoiceRecordTransactions(LProfile& profile, LSalesDocument& invoice, std::string_view userName,
                                bool recurring);
bool LCreditNoteRecordTransactions(LProfile& profile, LSalesDocument& creditNote, std::string_view userName);
bool LPaymentRecordTransactions(LProfile& profile, LRecord& payment, std::string_view userName);

// Builds the transaction of a customer payment or refund under reference, without recording it.
void LPaymentBuildTransaction(LProfile& profile, const LRecord& payment, std::string_view reference,
                              std::string_view userName, LLedgerTransaction& txn);

// Gives the document (an invoice or credit note; a payment when payment) the next number of its
// counter as "JournalTxnRef" when it has none (the caller saves it) and returns its reference;
// empty when the counter could not be written.
std::string LSalesDocumentTakeReference(LProfile& profile, LRecord& document, bool payment);

// Takes the document's transaction (its "JournalTxnRef" on date) out of the ledger and the
// balances. true when there was one.
bool LSalesDocumentRemoveTransaction(LProfile& profile, const LRecord& document, std::string_view date);

// Brings the ledger back in step with a recorded invoice or credit note (list "Invoices" or
// "CreditNotes") or a payment ("Payments") whose change a crash cut short: unless the ledger holds
// exactly the document's transaction under its reference on its date, whatever is posted under
// that reference on oldDate (where the change found it) and on the date goes, and the document is
// posted again. reference stands in for a "JournalTxnRef" the document did not keep. true when
// the ledger was changed.
bool LSalesDocumentRepost(LProfile& profile, std::string_view list, LSalesDocument& document, std::string_view oldDate,
                          std::string_view reference);
