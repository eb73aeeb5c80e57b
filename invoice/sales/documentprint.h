// Printing stored records of the sales side as PDF: the one set of routines behind the "pdf"
// verbs of the command line and the PDF links of the web pages. Each opens what its key names,
// prints it and hands back the bytes with the file name the PDF is offered under; writing it to
// a file is a separate step, so a page can send the bytes as they are. Printing a document, a
// receipt or a packing slip adds "Imprimé" to the document's history (documenthistory.h), with
// the user who asked (a web user, or the login name at the command line).
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "invoice/shared/facturx.h"
#include "invoice/shared/salesdocument.h"
#include "llib/gen/date.h"

class LProfile;

// A printed form: its bytes, the name of its file ("Facture-12.pdf") and what did not stop the
// printing but should be told (a logo that could not be drawn; empty when all went well).
struct LPrintedForm {
  std::string pdf;
  std::string fileName;
  std::string warning;
};

// The PDF of document (of kind), as LPrintSalesDocument makes it, without a trace in its history
// (the attachment of an e-mail).
[[nodiscard]] bool LMakeSalesDocumentPdf(LProfile& profile, const LSalesDocumentKind& kind,
                                         const LSalesDocument& document, std::optional<LFacturXProfile> facturX,
                                         std::string_view formName, LPrintedForm& form, std::string* error);
// The document key of kind (recorded, else draft), laid out by the template form formName (empty:
// the one chosen for the kind; templateform.h). With facturX, the Factur-X PDF/A-3 of that
// profile (invoices and credit notes only). false with "Document introuvable : KEY.",
// "Formulaire introuvable : NAME." (or why the PDF could not be made) in error (may be null). A
// form that could not be used is told in the form's warning.
[[nodiscard]] bool LPrintSalesDocument(LProfile& profile, const LSalesDocumentKind& kind, std::string_view key,
                                       std::optional<LFacturXProfile> facturX, std::string_view formName,
                                       std::string_view user, LPrintedForm& form, std::string* error);
// The receipt of payment key; false with "Paiement introuvable : KEY." when there is none.
[[nodiscard]] bool LPrintReceipt(LProfile& profile, std::string_view key, std::string_view user, LPrintedForm& form,
                                 std::string* error);
// The packing slip (label: the shipping label) of the document key of kind.
[[nodiscard]] bool LPrintPackingSlip(LProfile& profile, const LSalesDocumentKind& kind, std::string_view key,
                                     bool label, std::string_view user, LPrintedForm& form, std::string* error);
// The statement of customer from from to to; false with "Client introuvable : KEY." when there
// is no such customer.
[[nodiscard]] bool LPrintStatement(LProfile& profile, std::string_view customer, const LDate& from, const LDate& to,
                                   LPrintedForm& form, std::string* error);

// Writes the form's bytes to path, replacing it at once (a reader never sees half a file).
// false with "Impossible d'écrire le fichier « PATH »." in error (may be null).
[[nodiscard]] bool LWritePrintedForm(const LPrintedForm& form, const std::string& path, std::string* error);
