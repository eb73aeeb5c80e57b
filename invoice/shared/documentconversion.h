// A quote or a sales order becoming an invoice (LInvoice::LoadFromQuote, LoadFromOrder, declared
// with LInvoice in salesdocument.h). The source is looked up in its recorded list, then in its
// drafts list. Carried to the invoice:
//
//   field                         from a quote              from an order
//   "Customer", "TaxRate",
//   "SalesPerson", "Address",
//   "ShippingAddress", "Notes",
//   "NotesIternal"                copied                    copied
//   "Date"                        not copied                copied
//   "PaymentTerms"                2                         copied when 1 or 2, else 2
//   "PaymentTermsDays"            30                        copied, default 30
//   "CustomerPO", "ShipBy",
//   "TrackingRef"                 -                         copied
//   "QuoteNumber"                 the quote's key           copied from the order
//   "OrderNumber"                 -                         the order's key
//
// ("NotesIternal", the internal notes, is spelt so in every stored document.) Header fields of
// the source that are absent stay absent. Each line keeps its code, description, quantity, tax
// name, unit price, price digits (-1 when absent) and discount; its tax rate is frozen: a line
// that names a tax by number gets that tax's rates of today as an explicit triple (number 0: the
// "DefaultRate" tax; a stored k >= 1 is tax k - 1), so that later changes of the tax options leave
// the invoice alone; a line that holds a triple keeps it. The line of the document's percentage
// discount stays that line ("FixedPercentageDiscountItem"). Shipping, line accounts and the totals
// are not carried: the totaller computes the invoice's totals when it is saved.
//
// A converted quote or order keeps the key of its invoice in "InvoiceNumber".
#pragma once

#include <string>
#include <string_view>

#include "invoice/shared/salesdocument.h"

inline constexpr std::string_view kConvertedInvoiceField = "InvoiceNumber";

// The key of the invoice a quote or an order became; empty when it was not converted.
inline std::string LConvertedInvoiceKey(const LRecord& source) { return source.GetString(kConvertedInvoiceField); }

class LProfile;

// The quote or order an invoice came from ("OrderNumber", else "QuoteNumber") follows the invoice:
// when its key changes from oldKey (a draft recorded) the source's mark names newKey; when the
// invoice is deleted (newKey empty) the mark goes, so that the source can be converted again. A
// source whose mark names another invoice is left alone. false when the source could not be written.
[[nodiscard]] bool LConvertedInvoiceMoved(LProfile& profile, const LRecord& invoice, std::string_view oldKey,
                                          std::string_view newKey);
