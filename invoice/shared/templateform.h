// Template forms of the sales documents: how a printed document is laid out, kept as a readable
// text file in the business's folder "Forms" ("facture.form", "devis.form", ...), one element a
// line. The printed form draws the elements in the file's order:
//
//   entete       the seller's block with the logo, the title, the number and the dates
//   client       the buyer's block (the supplier's on a purchase order) and the delivery address
//   lignes       the lines table, continued over as many pages as needed
//   totaux       the VAT breakdown per rate and the totals
//   conditions   the legal mentions, the payment conditions, the notes and the footer text
//   texte "..."           fixed text
//   champ "NAME"          a field of the document's record ("CustomerPO", "Date", ...)
//   expression "EXPR"     an amount computed from the document's amounts (Total, TaxTotal,
//                         AmountPaid, ShippingCosts, Subtotal, BalanceDue), as template report
//                         expressions compute it, truncated to the cent: "Total-AmountPaid",
//                         "Subtotal*0,05" (numbers with the currency's decimal symbol)
//   image "FILE"          a PNG image (a file name is taken in the folder "Forms")
//   trait                 a horizontal rule
//
// Text, fields, expressions, images and rules take attributes: x=, y= (millimetres from the
// top-left corner of the page the element comes to; without them the element follows the one
// before, on a new page when it does not fit), largeur=,
// hauteur= (millimetres), taille= (points), gras, italique, centre, droite, libelle="..." (printed
// before the value) and, for a field, montant (its value is an amount in minor units). Lines that
// begin with "#" are comments.
//
// The default form of each kind is written into "Forms" the first time the kind is printed, so
// that a user can copy it under another name, change it and choose it: for one printing with
// --form NAME, for every printing of the kind with the field "Form" of the kind's options record
// ("Invoice", "Quote", ...). A form that cannot be read (an unknown element, a broken expression)
// is not used: the document prints with the default form and the reason is told.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "invoice/shared/salesdocument.h"
#include "llib/gen/pdfcanvas.h"

class LProfile;
struct LCurrencyFormat;

enum class LTemplateElementType { kHeader, kParty, kLines, kTotals, kConditions, kText, kField, kExpression, kImage, kRule };

struct LTemplateElement {
  LTemplateElementType type = LTemplateElementType::kText;
  int line = 0;                     // its line in the file
  std::optional<double> x, y;       // millimetres; absent: after the element before
  double width = 0, height = 0;     // millimetres; 0: to the right margin, or the image's own
  LTextStyle style;
  bool money = false;               // a field whose value is an amount
  std::string label;                // printed before the value
  std::string value;                // the text, field name, expression or image file
};

struct LTemplateForm {
  std::string name;
  std::vector<LTemplateElement> elements;
};

// The names an expression may use: the document's amounts, in minor units.
const std::vector<std::string_view>& LTemplateFormAmountNames();

// The folder of the business's forms: "<business>/Forms".
std::string LTemplateFormsFolder(const LProfile& profile);
// The name of the kind's default form: "facture", "devis", "commande", "avoir",
// "commande-fournisseur".
std::string LTemplateFormDefaultName(const LSalesDocumentKind& kind);
// The text of the kind's default form.
std::string LTemplateFormDefaultText(const LSalesDocumentKind& kind);

// Reads a form's text. false with "ligne N : reason" in error when a line is not an element of
// the form, an attribute is unknown or not a number, or an expression cannot be computed.
// Numbers in expressions are written with the currency's decimal symbol ("Subtotal*0,05").
[[nodiscard]] bool LTemplateFormParse(std::string_view text, const LCurrencyFormat& currency, LTemplateForm& form,
                                      std::string& error);

// The form that prints a document of kind: the form named requested (--form), else the one the
// kind's options record names in "Form", else the default. false with "Formulaire introuvable :
// NAME." in error when requested names no form of the business. A form that cannot be read, or
// a "Form" option naming none, gives the default form and the reason in warning.
[[nodiscard]] bool LTemplateFormLoad(const LProfile& profile, const LSalesDocumentKind& kind, std::string_view requested,
                                     LTemplateForm& form, std::string* error, std::string& warning);

// The business's form names (the files of "Forms" without ".form"), in name order.
std::vector<std::string> LTemplateFormNames(const LProfile& profile);
// Copies the form from (a default form is written first when missing) to a new form to. false
// with a French message when from is no form, to is not a plain name or already exists, or the
// file cannot be written.
[[nodiscard]] bool LTemplateFormCopy(const LProfile& profile, std::string_view from, std::string_view to,
                                     std::string* error);
