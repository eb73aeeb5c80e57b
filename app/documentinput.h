// What the command line says about a sales-side document, turned into record fields. A document
// is described either by a JSON file (record fields by their own names with their stored values,
// plus "Lines": the item-line fields without their "Item<n>" prefix) or by options: customer,
// date, terms, lines "CODE|DESCRIPTION|QTY|UNIT PRICE|TAX NAME|DISCOUNT %", shipping and its tax,
// untaxed, notes. Lines name their tax by name; the rates of that tax are frozen on the line as
// the tax options give them today, so that later changes of the rates leave the document alone.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "invoice/shared/salesdocument.h"

class LCliArgs;
class LProfile;
class LTaxOptions;

// The document options of one command, taken from its words.
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

  // Takes every document option from args (the caller finishes args afterwards).
  void TakeFrom(LCliArgs& args);
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

// Writes the line as line index (0-based) of document, the tax's rates frozen as today's tax
// options give them. false, with a French message in error, when a quantity, price, discount
// or tax name cannot be read.
bool LApplyDocumentLine(LProfile& profile, const LTaxOptions& tax, LSalesDocument& document, int index,
                        const LDocumentLineInput& line, std::string& error);
// Removes every item line of document (and its fixed-percentage discount line).
void LRemoveDocumentLines(LSalesDocument& document);

// The verb of a command with several forms ("new", "show", ...): its first positional word once
// the options it may carry are set aside (options with a value, then bare flags). Empty when
// there is none. args is left as it was.
std::string LCliPeekVerb(const LCliArgs& args, std::initializer_list<std::string_view> valueOptions,
                         std::initializer_list<std::string_view> flags = {});

// "NAME=VALUE" into its parts; false without "=" or with an empty name.
bool LCliSplitAssignment(std::string_view word, std::string& name, std::string& value);

// Writes what input says into document, on top of what it holds. For a new document (isNew) the
// date defaults to today and the terms and notes to the kind's options. Given lines replace all
// lines. false, with a French message in error and document in an unspecified state, when a
// value cannot be read (date, amount, line, tax name, JSON).
bool LApplyDocumentInput(LProfile& profile, const LSalesDocumentKind& kind, const LDocumentInput& input, bool isNew,
                         LSalesDocument& document, std::string& error);
