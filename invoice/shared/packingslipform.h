// What goes into the parcel of an invoice (or a sales order): the packing slip, which lists the
// goods and their quantities without prices, and the shipping label, a 10 × 15 cm box at the top
// of the page (the usual parcel label, cut out or printed on a label sheet) with the sender, the
// addressee in large type and the document's number and tracking reference.
//
// Both deliver to the document's "ShippingAddress", else its "Address", else the customer's
// "Address". The packing slip prints the "NotesText" and "FooterText" of "PackingSlip".
#pragma once

#include <string>

#include "invoice/shared/salesdocument.h"

class LProfile;

// "Bon-de-livraison-KEY.pdf" and "Etiquette-KEY.pdf", as LFormPdfName makes them.
std::string LPackingSlipPdfName(std::string_view key);
std::string LShippingLabelPdfName(std::string_view key);

// Print document (of kind) into pdf. false with a French message in error (may be null) when
// the PDF could not be made; pdf is then empty. A logo that cannot be drawn on the packing slip
// is left out, the reason in warning (may be null).
[[nodiscard]] bool LPackingSlipPdf(LProfile& profile, const LSalesDocumentKind& kind, const LSalesDocument& document,
                                   std::string& pdf, std::string* error, std::string* warning);
[[nodiscard]] bool LShippingLabelPdf(LProfile& profile, const LSalesDocument& document, std::string& pdf,
                                     std::string* error);
