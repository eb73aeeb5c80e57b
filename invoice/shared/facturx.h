// Factur-X e-invoices out: an invoice or credit note as the UN/CEFACT Cross Industry Invoice
// (D16B) of the Factur-X profiles EN 16931 and BASIC, and the PDF/A-3 that carries it as
// "factur-x.xml" beside the printed pages, with the XMP properties of the Factur-X extension
// schema.
//
// How the books map onto the invoice model: each item line is an invoice line at its net
// price; a fixed-percentage discount line becomes one document allowance per VAT category (the
// part the totaller took off that category's base); shipping is a document charge in its tax's
// category. A tax with a rate is category "S", a zero-rated tax "Z", a line without tax and
// every line of a business under the VAT franchise "E" with its exemption reason. So every sum
// the receiver checks (line totals, bases per rate, taxes, grand total) is the document's own.
#pragma once

#include <string>
#include <string_view>

#include "invoice/shared/salesdocument.h"

class LProfile;

enum class LFacturXProfile { kEn16931, kBasic };

inline constexpr std::string_view kFacturXFileName = "factur-x.xml";

// "en16931" or "basic"; false for any other name, out unchanged.
bool LFacturXProfileFromName(std::string_view name, LFacturXProfile& out);

// The CII XML of document, an invoice or a credit note. false with a French message in error
// (may be null) for other kinds and for what the profiles cannot express: prices that include
// tax, a tax of two rates or made of other taxes; xml is then empty.
[[nodiscard]] bool LFacturXXml(LProfile& profile, const LSalesDocumentKind& kind, const LSalesDocument& document,
                               LFacturXProfile facturXProfile, std::string& xml, std::string* error);

// The printed pdf of document made a Factur-X PDF/A-3b carrying its XML. false with a French
// message in error (may be null) as LFacturXXml or the PDF/A conversion give it; out is then
// empty.
[[nodiscard]] bool LFacturXPdf(LProfile& profile, const LSalesDocumentKind& kind, const LSalesDocument& document,
                               LFacturXProfile facturXProfile, std::string_view pdf, std::string& out,
                               std::string* error);
