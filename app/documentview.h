// How the command line shows sales-side documents: one document with its fields, lines, tax
// amounts, totals, amounts paid and refunded, status and due date; a list of documents one a line. Text output
// writes amounts in currency units with the business's digits ("1234.56"); JSON output writes
// them as integers in minor units, and the record's own fields under their own names.
#pragma once

#include <nlohmann/json.hpp>
#include <ostream>

#include "invoice/shared/salesdocument.h"

class LProfile;

// The document as one JSON object: "key", "kind", "draft", "fields" (stored text by field
// name), "lines" (each line's fields without the "Item<n>" prefix, plus its computed "Total"),
// "taxes" and "combinedTaxes" ({"name", "amount"}), "subTotal", "taxTotal", "shipping", "total",
// and for invoices "amountPaid", "amountRefunded", "status", "statusText" and "dueDate"
// ("YYYY-MM-DD HH:MM:SS"), for quotes and orders "convertedToInvoice" (the invoice's key, null
// when not converted). Reading the amounts paid and refunded may recompute and store them.
nlohmann::ordered_json LDocumentToJson(LProfile& profile, const LSalesDocumentKind& kind, LSalesDocument& document);

// The same for people, one "Label : value" a line, then the lines and the taxes.
void LPrintDocument(LProfile& profile, const LSalesDocumentKind& kind, LSalesDocument& document, std::ostream& out);

// One line of a list: key, date, customer, total, status text (invoices) or "brouillon", and
// "facturé (facture N)" for a converted quote or order.
void LPrintDocumentSummary(LProfile& profile, const LSalesDocumentKind& kind, LSalesDocument& document,
                           std::ostream& out);

// The line total shown beside each line: as the totaller computes it (scale from the line's
// digits, discounts as "DontShowDiscountColumn" says).
long long LDocumentLineTotal(LProfile& profile, const LSalesDocument& document, int index);
