// Sending a sales document by e-mail: the printed form attached as a PDF (a Factur-X PDF/A-3 for
// the invoices and credit notes of a French business, or when asked), to the customer's
// "Email" (the supplier's for a purchase order) unless other recipients are given, through the
// user's e-mail settings. The subject and the text come from the kind's options ("EmailSubject",
// "EmailText" of "Invoice", "Quote", ...) or, when they are not set, from the defaults below; in
// either, "[numéro]", "[montant]", "[client]" and "[entreprise]" are replaced by the document's
// key, its total, the customer's name and the business's name. The document's history records
// each sending and its e-mail state ("sent", or "failed" with the server's message).
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "invoice/shared/salesdocument.h"
#include "llib/gen/process.h"

class LProfile;

struct LDocumentMail {
  std::string to;       // recipients, comma-separated
  std::string subject;
  std::string body;     // plain text
  bool facturX = false; // attach the Factur-X PDF/A-3 rather than the plain PDF
};

// What the e-mail dialog shows before the user changes it: the party's address, the subject and
// text of the options (or the defaults) with their placeholders replaced, and whether the PDF
// goes as Factur-X (invoices and credit notes of a business whose "CountryCode" is "FR").
LDocumentMail LDocumentMailDefaults(LProfile& profile, const LSalesDocumentKind& kind, const LSalesDocument& document);

// Sends the document key of kind. Fields of request left empty take their defaults (facturX is
// taken as asked when request.facturX is set, else the default). kProcessFinished when the
// server took the message; kProcessFailed with one French message on process (no recipient,
// an invalid address, the document missing, the PDF not made, or the SMTP dialogue's error),
// the history then saying "failed" with it when the document exists; kProcessCancelled when
// the user stopped it. user is written in the history.
LProcessResult LSendSalesDocument(LProcessInterface& process, LProfile& profile, const LSalesDocumentKind& kind,
                                  std::string_view key, const LDocumentMail& request, std::optional<bool> facturX,
                                  std::string_view user);
// Queues the document's mail on the background sender of the service, which retries a failed
// send: the history says "pending" at once, then "sent", or "failed" with the server's reason,
// as each attempt ends. false with message set when the mail could not be prepared (the reasons
// of LSendSalesDocument before sending); nothing is queued then.
[[nodiscard]] bool LQueueSalesDocumentMail(LProfile& profile, const LSalesDocumentKind& kind, std::string_view key,
                                           const LDocumentMail& request, std::optional<bool> facturX,
                                           std::string_view user, std::string* message);
