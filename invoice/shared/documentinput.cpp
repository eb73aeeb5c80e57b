#include "invoice/shared/documentinput.h"

#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "invoice/shared/item.h"
#include "invoice/shared/options.h"
#include "invoice/shared/partyfields.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/stock.h"
#include "invoice/shared/taxoptions.h"
#include "invoice/shared/textlimit.h"
#include "invoice/shared/totals.h"
#include "llib/gen/date.h"
#include "llib/gen/datemessage.h"
#include "llib/gen/money.h"
#include "llib/gen/moneybounds.h"
#include "llib/gen/textnum.h"

namespace {

// A unit price in currency units to the stored integer and its digits: prices with no more
// decimals than the currency are stored in currency decimals (digits -1); finer prices keep
// their own decimals ("1.999" is 1999 at 3 digits).
bool ParseUnitPrice(std::string_view text, int currencyDigits, long long& value, int& digits) {
  std::size_t point = text.find('.');
  int decimals = point == std::string_view::npos ? 0 : static_cast<int>(text.size() - point - 1);
  int scale = decimals > currencyDigits ? decimals : currencyDigits;
  if (!LParseAmount(text, scale, value)) return false;
  digits = decimals > currencyDigits ? decimals : -1;
  return true;
}

std::string UnknownTaxMessage(std::string_view name) { return "Taxe inconnue : " + std::string(name) + "."; }

std::vector<std::string> SplitBars(std::string_view text) {
  std::vector<std::string> parts;
  while (true) {
    std::size_t bar = text.find('|');
    parts.emplace_back(text.substr(0, bar));
    if (bar == std::string_view::npos) return parts;
    text.remove_prefix(bar + 1);
  }
}

// The tax fields of a line or of the shipping under prefix ("Item3" or "Shipping"): the name,
// and for a defined tax its rates and combination as the tax options give them today. false
// when the name is no tax of the business.
bool SetTaxFields(const LTaxOptions& tax, LRecord& document, const std::string& prefix, std::string_view name) {
  if (name.empty()) name = kTaxNameDefault;
  document.SetString(prefix + "TaxName", name);
  if (name == kTaxNameDefault || name == kTaxNameNone) {
    // Tax index 0 is the document's default tax; no index and no rates is no tax.
    if (name == kTaxNameDefault) document.SetString(prefix + "TaxRate", "0");
    else document.DeleteField(prefix + "TaxRate");
    document.DeleteField(prefix + "CombinedTaxName");
    return true;
  }
  int number = tax.GetTaxNumberFromName(name);
  if (number == 0) return false;
  document.SetString(prefix + "TaxRate", LFKFormatTaxRateTriple(tax.GetTaxRate(number)));
  std::string combined = tax.GetTaxCombined(number);
  if (combined.empty()) document.DeleteField(prefix + "CombinedTaxName");
  else document.SetString(prefix + "CombinedTaxName", combined);
  return true;
}

bool ApplyLine(LProfile& profile, const LTaxOptions& tax, LSalesDocument& document, int index,
               const std::string& text, std::string& error) {
  LDocumentLineInput line;
  if (!LParseDocumentLineText(text, line)) {
    error = "Ligne invalide : " + text + ".";
    return false;
  }
  LDocumentLineError refusal = LApplyDocumentLine(profile, tax, document, index, line);
  if (refusal == LDocumentLineError::kNone) return true;
  error = LDocumentLineErrorMessage(refusal, line, profile.GetCurrencyFormat());
  return false;
}

// A JSON value as the text a record stores.
bool JsonToText(const nlohmann::json& value, std::string& text) {
  if (value.is_string()) text = value.get<std::string>();
  else if (value.is_boolean()) text = value.get<bool>() ? "1" : "0";
  else if (value.is_number_integer()) text = std::to_string(value.get<long long>());
  else if (value.is_number()) text = ftotl(value.get<double>());
  else return false;
  return true;
}

bool ApplyJsonFile(const std::string& path, LSalesDocument& document, std::string& error) {
  std::ifstream file(path);
  if (!file) {
    error = "Impossible de lire le fichier " + path + ".";
    return false;
  }
  std::stringstream content;
  content << file.rdbuf();
  nlohmann::json doc = nlohmann::json::parse(content.str(), nullptr, false);
  if (doc.is_discarded() || !doc.is_object()) {
    error = "Le fichier " + path + " n'est pas un document JSON valide.";
    return false;
  }
  // New lines replace the old ones before the fields are read, so that a field about the new
  // lines ("FixedPercentageDiscountItem") given beside them is kept.
  bool hasLines = doc.contains("Lines");
  if (hasLines && !doc["Lines"].is_array()) return error = "\"Lines\" doit être un tableau.", false;
  if (hasLines) LRemoveDocumentLines(document);
  for (const auto& [name, value] : doc.items()) {
    if (name == "Lines") continue;
    std::string text;
    if (value.is_null()) document.DeleteField(name);
    else if (JsonToText(value, text)) document.SetString(name, text);
    else return error = "Valeur invalide pour " + name + ".", false;
  }
  if (!hasLines) return true;
  int index = 0;
  const nlohmann::json& lines = doc["Lines"];
  for (const auto& line : lines) {
    if (!line.is_object()) return error = "Chaque ligne doit être un objet.", false;
    for (const auto& [name, value] : line.items()) {
      std::string text;
      if (!JsonToText(value, text)) return error = "Valeur invalide pour " + name + ".", false;
      document.SetString(LFKItemCollectionRecord::ItemField(index, name), text);
    }
    ++index;
  }
  document.SetInt("ItemCount", index);
  return true;
}

void SetDefaults(LProfile& profile, const LSalesDocumentKind& kind, const LTaxOptions& tax, LSalesDocument& document) {
  if (!document.TestFieldExists("Date")) document.SetString("Date", LDate::Today().ToText());
  LRecord options;
  profile.List(kMiscList).OpenAlways(options, kind.optionsRecord);
  if (!document.TestFieldExists("PaymentTerms")) document.SetInt("PaymentTerms", options.GetInt("PaymentTerms", 2));
  if (!document.TestFieldExists("PaymentTermsDays"))
    document.SetInt("PaymentTermsDays", options.GetInt("PaymentTermsDays", 30));
  if (!document.TestFieldExists("Notes") && options.TestFieldExists("NotesText"))
    document.SetString("Notes", options.GetString("NotesText"));
  if (!document.TestFieldExists("IsTaxInclusive")) document.SetBool("IsTaxInclusive", tax.IsTaxInclusive());
  if (!document.TestFieldExists("SalesPerson")) {
    std::string salesPerson = LCustomerSalesPerson(profile, document.GetCustomer());
    if (!salesPerson.empty()) document.SetString("SalesPerson", salesPerson);
  }
}

// Every amount the document would post within the money ceiling, taxes included: a document file
// may give any stored value, and a total beyond the ceiling could not be posted.
bool WithinCeiling(LProfile& profile, const LSalesDocument& document, std::string& error) {
  if (LFKDocumentWithinCeiling(profile, document)) return true;
  error = "Le total du document dépasse le plafond de " + LMoneyCeilingText(profile.GetCurrencyFormat()) + ".";
  return false;
}

// Every line's description and the notes within kTypedTextMaxChars, however they came (a line, a
// document file, the notes).
bool TextsFit(const LSalesDocument& document, std::string& error) {
  LFKItemCollectionRecord items = document.Items();
  std::size_t count = 0;
  for (int i = 0; i < items.GetItemCount(); ++i)
    if (LTypedTextIsTooLong(items.GetItemDescription(i), count))
      return error = "La description de la ligne " + std::to_string(i + 1) + " est trop longue" +
                     LTypedTextTooLongEnd(count),
             false;
  if (LTypedTextIsTooLong(document.GetString("Notes"), count))
    return error = "Les notes sont trop longues" + LTypedTextTooLongEnd(count), false;
  return true;
}

}  // namespace

bool LParseDocumentLineText(std::string_view text, LDocumentLineInput& line) {
  std::vector<std::string> parts = SplitBars(text);
  if (parts.size() < 4 || parts.size() > 6) return false;
  parts.resize(6);
  line = {parts[0], parts[1], parts[2], parts[3], parts[4], parts[5]};
  return true;
}

void LRemoveDocumentLines(LSalesDocument& document) {
  LFKItemCollectionRecord items = document.Items();
  for (int i = items.GetItemCount() - 1; i >= 0; --i) items.DeleteItem(i);
  document.DeleteField("FixedPercentageDiscountItem");
}

LDocumentLineError LApplyDocumentLine(LProfile& profile, const LTaxOptions& tax, LSalesDocument& document, int index,
                                      const LDocumentLineInput& line) {
  const std::string& code = line.code;
  LItem item;
  bool known = !code.empty() && profile.MainList(kItemsList).Open(item, code);
  auto field = [index](std::string_view suffix) { return LFKItemCollectionRecord::ItemField(index, suffix); };

  double qty = 1;
  if (!line.quantity.empty() && !LParseQuantity(line.quantity, qty)) return LDocumentLineError::kBadQuantity;
  long long unitValue = known ? LCustomerItemPrice(profile, document.GetCustomer(), item.GetPrice()) : 0;
  int digits = -1;
  int currencyDigits = profile.GetCurrencyDigits();
  if (!line.unitPrice.empty() && !ParseUnitPrice(line.unitPrice, currencyDigits, unitValue, digits))
    return LAmountTextIsBeyondCeiling(line.unitPrice, currencyDigits) ? LDocumentLineError::kTooLarge
                                                                     : LDocumentLineError::kBadUnitPrice;
  double discount = 0;
  if (!line.discount.empty() && !LParseQuantity(line.discount, discount)) return LDocumentLineError::kBadDiscount;
  // The line's amount as the document totals it: refused here, it never reaches a total.
  int scale = digits == -1 ? 0 : digits - currencyDigits;
  if (!LMoneyIsWithinBounds(LLineAmount(unitValue, qty, discount, scale))) return LDocumentLineError::kTooLarge;
  document.SetString(field("Code"), code);
  document.SetString(field("Description"), line.description.empty() && known ? item.GetDescription() : line.description);
  document.SetString(field("Qty"), ftotl(qty));
  document.SetInt64(field("UnitValue"), unitValue);
  document.SetInt(field("UnitValueDigits"), digits);
  document.SetString(field("Discount"), ftotl(discount));
  if (!SetTaxFields(tax, document, "Item" + std::to_string(index + 1), line.taxName))
    return LDocumentLineError::kUnknownTax;
  return LDocumentLineError::kNone;
}

std::string LDocumentLineErrorMessage(LDocumentLineError error, const LDocumentLineInput& line,
                                      const LCurrencyFormat& format) {
  switch (error) {
    case LDocumentLineError::kNone: break;
    case LDocumentLineError::kBadQuantity: return "Quantité invalide : " + line.quantity + ".";
    case LDocumentLineError::kBadUnitPrice: return "Prix invalide : " + line.unitPrice + ".";
    case LDocumentLineError::kBadDiscount: return "Remise invalide : " + line.discount + ".";
    case LDocumentLineError::kUnknownTax: return UnknownTaxMessage(line.taxName);
    case LDocumentLineError::kTooLarge:
      return "Ligne trop grande : " + (line.quantity.empty() ? std::string("1") : line.quantity) + " × " +
             line.unitPrice + " (plafond " + LMoneyCeilingText(format) + ").";
  }
  return {};
}

bool LDocumentInput::HasFieldOptions() const {
  return !customer.empty() || !date.empty() || !terms.empty() || !lines.empty() || !shipping.empty() ||
         !shippingTax.empty() || untaxed || hasNotes || hasSalesPerson;
}

bool LApplyDocumentInput(LProfile& profile, const LSalesDocumentKind& kind, const LDocumentInput& input, bool isNew,
                         LSalesDocument& document, std::string& error) {
  LTaxOptions tax;
  tax.OpenFrom(profile);
  if (!input.file.empty() && !ApplyJsonFile(input.file, document, error)) return false;
  if (!input.customer.empty()) document.SetString("Customer", input.customer);
  if (!input.date.empty()) {
    LDate date;
    if (!LDate::Parse(input.date, date)) return error = LInvalidDateMessage(input.date), false;
    document.SetString("Date", input.date);
  }
  if (input.terms == "now") {
    document.SetInt("PaymentTerms", 1);
  } else if (!input.terms.empty()) {
    if (input.terms.find_first_not_of("0123456789") != std::string::npos || input.terms.size() > 5)
      return error = "Délai de paiement invalide : " + input.terms + ".", false;
    document.SetInt("PaymentTerms", 2);
    document.SetInt("PaymentTermsDays", LTextToInt(input.terms));
  }
  if (!input.lines.empty()) {
    LRemoveDocumentLines(document);
    for (std::size_t i = 0; i < input.lines.size(); ++i)
      if (!ApplyLine(profile, tax, document, static_cast<int>(i), input.lines[i], error)) return false;
    document.SetInt("ItemCount", static_cast<int>(input.lines.size()));
  }
  if (!input.shipping.empty()) {
    long long shipping = 0;
    if (!LParseAmount(input.shipping, profile.GetCurrencyDigits(), shipping))
      return error = LAmountRefusal("le port", input.shipping, input.shipping, profile.GetCurrencyFormat()), false;
    document.SetInt64("ShippingCosts", shipping);
  }
  if (!input.shippingTax.empty() && !SetTaxFields(tax, document, "Shipping", input.shippingTax))
    return error = UnknownTaxMessage(input.shippingTax), false;
  if (input.untaxed) document.SetInt("TaxRate", kDocumentUntaxed);
  if (input.hasNotes) document.SetString("Notes", input.notes);
  if (input.hasSalesPerson) {
    LRecord salesPerson;
    if (!input.salesPerson.empty() && !profile.MainList(kSalesPersonList).Open(salesPerson, input.salesPerson))
      return error = "Le vendeur « " + input.salesPerson + " » n'existe pas.", false;
    salesPerson.DetachWithoutSave();
    // Stored even when empty, so that the customer's sales person is not taken instead.
    document.SetString("SalesPerson", input.salesPerson);
  }
  if (isNew) SetDefaults(profile, kind, tax, document);
  return TextsFit(document, error) && WithinCeiling(profile, document, error);
}
