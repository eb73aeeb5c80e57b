// The printed form of a sales-side document (invoice, quote, sales order, credit note, purchase
// order) as a PDF. Seller block (logo, name, address, contact) and the document's title, number
// and dates at the top; the buyer's block; the lines with their unit price, quantity, VAT rate
// and total, over as many pages as needed; the VAT breakdown per rate and the totals; the notes,
// the payment conditions and the kind's "FooterText"; the seller's legal identity (legal form,
// capital, SIREN, SIRET, RCS, VAT number) at the foot of every page.
//
// French invoices and credit notes carry what the law asks: delivery and due dates, the late
// payment penalty rate and the fixed 40 € recovery indemnity for business customers (a customer
// with a "SIREN", a "VATNumber" or a "Company" name), and "TVA non applicable, art. 293 B du
// CGI" when the business is under the VAT franchise.
#pragma once

#include <string>

#include "invoice/shared/salesdocument.h"
#include "invoice/shared/templateform.h"

class LProfile;

// The French file name of the document's PDF: "Facture-KEY.pdf", "Devis-KEY.pdf", ... (characters
// that cannot be in a file name replaced by "_").
std::string LSalesDocumentPdfName(const LSalesDocumentKind& kind, std::string_view key);

// Prints document (of kind) into pdf with the kind's default form. false with a French message in error (may be null) when
// the PDF could not be made; pdf is then empty. A logo that cannot be drawn does not stop the
// printing: the form is printed without it and the reason is put in warning (may be null;
// left empty when all went well).
[[nodiscard]] bool LSalesDocumentPdf(LProfile& profile, const LSalesDocumentKind& kind, const LSalesDocument& document,
                                     std::string& pdf, std::string* error, std::string* warning);
// The same, laid out by form (templateform.h): its elements drawn in its order. What left an
// element of the form out (an image that cannot be drawn, an expression that divides by 0) is
// put in warning too.
[[nodiscard]] bool LSalesDocumentPdf(LProfile& profile, const LSalesDocumentKind& kind, const LSalesDocument& document,
                                     const LTemplateForm& form, std::string& pdf, std::string* error,
                                     std::string* warning);
