// What a user types about a sales-side document, turned into record fields; the command line
// and the web's item-line grid both go through here. A document is described either by a JSON file (record fields by their own names with their stored values,
// plus "Lines": the item-line fields without their "Item<n>" prefix) or by options: customer,
// date, terms, lines "CODE|DESCRIPTION|QTY|UNIT PRICE|TAX NAME|DISCOUNT %", shipping and its tax,
// untaxed, notes, sales person. Lines name their tax by name; the rates of that tax are frozen on the line as
// the tax options give them today, so that later changes of the rates leave the document alone.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "invoice/shared/salesdocument.h"
#include "llib/gen/money.h"

class LProfile;
class LTaxOptions;

// The document options of one command.
struct LDocumentInput {
  std::string file;                // --file: a DOC.json; exclusive with the other fields
  std::string customer;            // --customer
  std::string date;                // --date, "YYYY-MM-DD"
  std::string terms;               // --terms: "now" or a number of days
  std::vector<std::string> lines;  // --line, in order
  std::string shipping;            // --shipping, decimal text in currency units
  std::string shippingTax;         // --shipping-tax
  bool untaxed = false;            // --untaxed
  bool hasNotes = false;           // --notes given
  std::string notes;
  bool hasSalesPerson = false;     // --salesperson given
  std::string salesPerson;         // a key of "SalesPerson"; empty: none (the customer's is not taken)

  // Something besides --file was given.
  bool HasFieldOptions() const;
};

// One item line as typed. Empty texts take the defaults: quantity 1, the item's price and
// description when the code names an item (price 0 otherwise), the document's default tax, no
// discount. The tax is named ("Valeur/défaut", "Aucun" or a tax of the business).
struct LDocumentLineInput {
  std::string code;
  std::string description;
  std::string quantity;
  std::string unitPrice;
  std::string taxName;
  std::string discount;
};

// A line of the command line, "CODE|DESCRIPTION|QTY|UNIT PRICE|TAX NAME|DISCOUNT %" (the last two
// columns may be left out) into its columns; false when it has fewer than four or more than six.
[[nodiscard]] bool LParseDocumentLineText(std::string_view text, LDocumentLineInput& line);

// Why a typed line was refused: the column at fault and the rule it broke.
enum class LDocumentLineError {
  kNone,
  kBadQuantity,   // the quantity is not a decimal number
  kBadUnitPrice,  // the unit price is not an amount
  kBadDiscount,   // the discount is not a decimal number
  kUnknownTax,    // the tax name is neither "Valeur/défaut", "Aucun" nor a tax of the business
  kTooLarge,      // the unit price, or the line's amount, is beyond the money ceiling
};

// Writes the line as line index (0-based) of document, the tax's rates frozen as today's tax
// options give them. kNone when written; otherwise the first refusal, in the order quantity,
// unit price, discount, tax, and the line's fields are then unspecified.
[[nodiscard]] LDocumentLineError LApplyDocumentLine(LProfile& profile, const LTaxOptions& tax,
                                                    LSalesDocument& document, int index,
                                                    const LDocumentLineInput& line);
// The French message of a refusal, naming what was typed: "Quantité invalide : 2x.", "Prix
// invalide : …", "Remise invalide : …", "Taxe inconnue : …", "Ligne trop grande : 3 × 1e12
// (plafond 99 999 999 999,99 €)." (the ceiling in format); empty for kNone.
std::string LDocumentLineErrorMessage(LDocumentLineError error, const LDocumentLineInput& line,
                                      const LCurrencyFormat& format);
// Removes every item line of document (and its fixed-percentage discount line).
void LRemoveDocumentLines(LSalesDocument& document);

// Writes what input says into document, on top of what it holds. For a new document (isNew) the
// date defaults to today, the terms and notes to the kind's options and the sales person to the
// customer's. A sales person given must be a record of "SalesPerson" ("Le vendeur « X »
// n'existe pas."); given empty, the document has none. Given lines replace all
// lines. false, with a French message in error and document in an unspecified state, when a
// value cannot be read (date, amount, line, tax name, JSON), a line's description or the notes
// pass 4,000 characters ("La description de la ligne 2 est trop longue : 102400 caractères (4000
// au plus)."), or a total passes the money ceiling.
[[nodiscard]] bool LApplyDocumentInput(LProfile& profile, const LSalesDocumentKind& kind, const LDocumentInput& input, bool isNew,
                         LSalesDocument& document, std::string& error);
