// Turning a quote or a sales order into an invoice, as the desk does it: the invoice is filled by
// LInvoice::LoadFromQuote / LoadFromOrder (invoice/shared/documentconversion.h), dated today when
// the source gives no date, and created like any new invoice (totalled; recorded ones move the
// customer's balance and are posted). The source keeps the invoice's key in "InvoiceNumber",
// written before the invoice (a claim, sourceclaim.h), and a second conversion of it is refused.
//
// A quote also becomes a sales order: the order is filled as an invoice from the quote would be
// ("QuoteNumber" names the quote, lines keep their frozen rates), keeps the quote's payment
// terms, is dated today and created like any new order; the quote keeps the order's key in
// "OrderNumber". A second conversion is refused while that order exists (a deleted order frees
// the quote again). The order later becomes an invoice that still names the quote.
#pragma once

#include <string>
#include <string_view>

#include "invoice/shared/salesdocument.h"

class LProfile;

// Converts the quote or order key (recorded, else draft) of kind into a new invoice, a draft when
// draft is set; newKey receives the invoice's key. false with a French message in error when the
// kind is neither a quote nor an order, the source does not exist or was already converted, or
// the invoice is refused (unknown customer, missing linked account); nothing is written then.
// When the invoice was written but not all it moves, error says so (LSalesChangeIntent::LeaveUnfinished).
bool LSalesDocumentConvertToInvoice(LProfile& profile, const LSalesDocumentKind& kind, std::string_view key,
                                    bool draft, std::string& newKey, std::string& error);

inline constexpr std::string_view kConvertedOrderField = "OrderNumber";

// Converts the quote key (recorded, else draft) into a new recorded order; newKey receives its
// key. false with a French message in error when the quote does not exist, already became an
// order that still exists, or the order is refused; nothing is written then.
bool LSalesQuoteConvertToOrder(LProfile& profile, std::string_view key, std::string& newKey, std::string& error);
