// The life of a customer payment and of a credit note's applications: a payment (or refund) is
// recorded with its applications, moves its customer's balance and is posted ("Reçus"); deleting
// it unapplies it, takes its transaction out of the ledger and gives its effect on the balance
// back. A recorded credit note is applied to its customer's invoices as a refund of them.
//
// Failures return false with the French message for the user in *error (when given); nothing
// is written then, except where said.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "invoice/shared/payment.h"

class LProfile;

struct LPaymentRequest {
  std::string customer;        // customer key, must exist
  std::string date;            // "YYYY-MM-DD"
  long long amount = 0;        // cents, above 0
  std::string depositAccount;  // description; empty: the posting's default ("Compte-chèque")
  bool refund = false;         // money paid back to the customer
  // Either spread over the customer's invoices in the sorted order (automatic), or these
  // invoices, each receiving at most its amount, in the sorted order, while the payment lasts.
  bool automatic = false;
  std::vector<LAppliedAmount> applications;
};

// Opens the recorded payment key. false with "Paiement introuvable : KEY." when there is none
// (an empty key included).
bool LPaymentOpen(LProfile& profile, std::string_view key, LPayment& payment, std::string* error);

// Records the payment under the first free number of "Payments", writes it to the audit trail
// (refused, nothing left behind, when the trail cannot be written), moves the balance, posts it
// and applies it. newKey receives the key. Refused: unknown customer, amount not above 0, an
// invoice that is not a recorded invoice of the customer. When the ledger cannot be written the
// payment stays recorded and applied and false is returned.
bool LPaymentCreate(LProfile& profile, const LPaymentRequest& request, std::string& newKey, std::string* error);

// Deletes the payment key: its applications, its transaction and its effect on the balance go.
// The audit trail receives the whole payment first; refused when it cannot be written.
bool LPaymentDelete(LProfile& profile, std::string_view key, std::string* error);
// Completes the deletion of a payment that a crash cut short (the settler of an interrupted
// sales change): as LPaymentDelete, without a second audit entry.
bool LPaymentFinishDelete(LProfile& profile, std::string_view key);

// Applies what is left of the payment key to invoices of its customer, each entry in turn (an
// invoice it already covers takes the new amount instead); an invoice takes at most what it
// still owes. Refused: an unknown payment, an unknown invoice or one of another customer, an
// amount not above 0, more than the payment has in all.
bool LPaymentApply(LProfile& profile, std::string_view key, const std::vector<LAppliedAmount>& applications,
                   std::string* error);
// Applies the recorded credit note key to invoices of its customer, each entry in turn (an
// invoice it already covers takes the new amount instead). Refused: an unknown or draft credit
// note, an unknown invoice or one of another customer, an amount not above 0, more than the
// credit note has left.
bool LCreditNoteApply(LProfile& profile, std::string_view key, const std::vector<LAppliedAmount>& applications,
                      std::string* error);

// Takes every payment, refund and credit-note application off the invoice (before it goes), and
// flushes the invoice. false when a record could not be written.
[[nodiscard]] bool LInvoiceRemoveApplications(LProfile& profile, LSalesDocument& invoice);
// After an edit lowered the invoice's total: gives back what its payments, refunds and credit
// notes hold beyond it (LInvoiceRemoveExcess), with an "unapply" entry in the audit trail for
// each, as when the user lets go of one. The edit's own entry is written already: a trail that
// refuses these does not stop it. true when an applier was changed.
bool LInvoiceRemoveExcessApplications(LProfile& profile, LSalesDocument& invoice);
