#include "invoice/shared/documentform.h"

#include <algorithm>
#include <vector>

#include "invoice/shared/formparts.h"
#include "invoice/shared/options.h"
#include "invoice/shared/printformat.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/taxoptions.h"
#include "invoice/shared/templatereportformdata.h"
#include "invoice/shared/totals.h"
#include "llib/gen/date.h"
#include "llib/gen/optionalerror.h"
#include "llib/gen/pdfcanvas.h"
#include "llib/gen/pdftable.h"

namespace {

constexpr std::string_view kSuppliersList = "Suppliers";
constexpr std::string_view kIndemnityMention =
    "Indemnité forfaitaire pour frais de recouvrement en cas de retard de paiement : 40 €.";
constexpr std::string_view kNoDiscountMention = "Pas d'escompte pour paiement anticipé.";
constexpr std::string_view kLegalPenaltyRate =
    "taux de la Banque centrale européenne à son opération de refinancement la plus récente, majoré de 10 points";

// Everything the form prints, read once.
struct FormData {
  const LSalesDocumentKind& kind;
  const LSalesDocument& document;
  LPrintFormat format;
  LFormSeller seller;
  LRecord party;        // the customer, or the supplier of a purchase order
  LRecord kindOptions;  // "Invoice", "Quote", ... of "Misc": "NotesText", "FooterText"
  bool taxInclusive = false;
  bool untaxed = false;  // the document's "TaxRate" says no tax
};

// A customer that is a business: it has a registration number, a VAT number or a company name.
bool IsBusinessParty(const LRecord& party) {
  return !party.GetString("SIREN").empty() || !party.GetString("VATNumber").empty() ||
         !party.GetString("Company").empty();
}

std::string PartyName(const FormData& data) {
  std::string name = data.party.GetString("Name");
  return name.empty() ? data.document.GetCustomer() : name;
}

// ---- Top of the first page --------------------------------------------------------------------

std::string DocumentNumberLine(const FormData& data) {
  std::string key = data.document.GetPrimaryKey();
  if (data.document.IsDraft()) return "Brouillon " + key;
  return "N° " + key;
}

// The title, number and dates at the right of the seller's block; returns the y below both.
double DrawHeader(LPdfCanvas& canvas, const FormData& data, std::string* warning) {
  const LSalesDocument& document = data.document;
  std::vector<std::string> lines = {DocumentNumberLine(data), "Date : " + data.format.Date(document.GetDate())};
  if (data.kind.type == LSalesDocumentType::kInvoice) {
    std::string delivery = document.GetString("DeliveryDate");
    lines.push_back("Date de livraison : " + data.format.Date(delivery.empty() ? document.GetDate() : delivery));
    lines.push_back("Échéance : " +
                    data.format.Date(LDate::FromTime(LInvoiceCalculateDueDate(document)).ToText()));
  }
  if (!document.GetString("CustomerPO").empty()) lines.push_back("Votre commande : " + document.GetString("CustomerPO"));
  if (data.kind.type == LSalesDocumentType::kOrder && !document.GetString("ShipBy").empty())
    lines.push_back("Expédition prévue : " + data.format.Date(document.GetString("ShipBy")));
  return LFormDrawHeader(canvas, data.seller, data.kind.title, lines, warning);
}

// The buyer's block (the supplier's for a purchase order) at the right half, the delivery address
// at the left when it differs; returns the y below them.
double DrawParty(LPdfCanvas& canvas, const FormData& data, double y) {
  std::string heading = data.kind.type == LSalesDocumentType::kPOrder ? "Fournisseur" : "Client";
  std::string address = data.document.GetString("Address");
  if (address.empty()) address = data.party.GetString("Address");
  std::vector<std::string> lines = {address};
  if (!data.party.GetString("SIREN").empty()) lines.push_back("SIREN " + data.party.GetString("SIREN"));
  if (!data.party.GetString("VATNumber").empty()) lines.push_back("N° TVA " + data.party.GetString("VATNumber"));
  double bottom = LFormDrawParty(canvas, heading, PartyName(data), lines, y);
  std::string shipping = data.document.GetString("ShippingAddress");
  if (!shipping.empty() && shipping != address) bottom = std::max(bottom, LFormDrawSideBlock(canvas, "Livraison", shipping, y));
  return bottom;
}

// ---- Lines ------------------------------------------------------------------------------------

// The page top of continued pages: the document's title and number.
std::string ContinuedText(const FormData& data) {
  return std::string(data.kind.title) + " " + DocumentNumberLine(data) + " (suite)";
}

double ContinuedPageTop(LPdfCanvas& canvas, const FormData& data) { return LFormContinuedTop(canvas, ContinuedText(data)); }

// The rate printed for a tax: "20 %", "5 % + 9,975 %", or the tax's name when it has no rate.
std::string RateText(const FormData& data, const std::string& name, const std::vector<LFKTaxBreakdownLine>& taxes) {
  for (const LFKTaxBreakdownLine& tax : taxes) {
    if (tax.name != name) continue;
    if (tax.rate.IsZero()) return name;
    std::string text = data.format.Percent(tax.rate.rate1);
    if (tax.rate.rate2 > 0) text += " + " + data.format.Percent(tax.rate.rate2);
    return text;
  }
  return name.empty() ? "" : name;
}

void DrawLines(LPdfCanvas& canvas, LProfile& profile, const FormData& data,
               const std::vector<LFKTaxBreakdownLine>& taxes, double& y) {
  const double width = canvas.Right() - canvas.Left();
  std::string ht = data.taxInclusive ? "TTC" : "HT";
  bool showTax = !data.untaxed && !data.seller.company.IsVatExempt();
  std::vector<LPdfColumn> columns = {{"Réf.", 58, LTextAlign::kLeft},
                                     {"Désignation", 0, LTextAlign::kLeft},
                                     {"Qté", 44, LTextAlign::kRight},
                                     {"P.U. " + ht, 72, LTextAlign::kRight},
                                     {"TVA", showTax ? 48.0 : 0.0, LTextAlign::kRight},
                                     {"Total " + ht, 78, LTextAlign::kRight}};
  double fixed = 0;
  for (const LPdfColumn& column : columns) fixed += column.widthPt;
  columns[1].widthPt = width - fixed;
  if (!showTax) columns.erase(columns.begin() + 4);
  LPdfTable table(canvas, columns, canvas.Left(), [&data](LPdfCanvas& c) { return ContinuedPageTop(c, data); });
  table.Heading(y);

  LOptions options;
  options.OpenFrom(profile);
  bool ignoreDiscount = options.GetBool("DontShowDiscountColumn", true);
  LTaxOptions taxOptions;
  taxOptions.OpenFrom(profile);
  LFKTaxContext context = LFKMakeTaxContext(taxOptions, data.document);
  LFKItemCollectionRecord items = data.document.Items();
  int discountLine = items.GetFixedPercentageDiscountItem();
  for (int i = 0; i < items.GetItemCount(); ++i) {
    std::string description = items.GetItemDescription(i);
    double discount = items.GetItemDiscount(i);
    if (!ignoreDiscount && discount != 0 && i != discountLine)
      description += "\n(remise " + data.format.Percent(discount) + ")";
    std::vector<std::string> cells = {items.GetItemCode(i), description};
    if (i == discountLine) {
      cells.insert(cells.end(), {"", "", ""});
    } else {
      cells.push_back(data.format.Quantity(items.GetItemQty(i)));
      cells.push_back(data.format.UnitPrice(items.GetItemUnitValue(i), items.GetItemUnitValueDigits(i)));
      cells.push_back(RateText(data, LFKLineTaxName(items, i, context), taxes));
    }
    cells.push_back(data.format.Money(
        LFKDocumentLineTotal(items, i, ignoreDiscount || i == discountLine, profile.GetCurrencyDigits())));
    if (!showTax) cells.erase(cells.begin() + 4);
    table.Row(cells, y);
  }
  long long shipping = data.document.GetShippingCosts();
  if (shipping != 0) {
    std::vector<std::string> cells = {"", "Frais de port", "", "", "", data.format.Money(shipping)};
    std::string shippingTax = data.document.GetString("ShippingTaxName");
    if (shippingTax == "Valeur/défaut") shippingTax = context.defaultTaxName;
    cells[4] = RateText(data, shippingTax == "Aucun" ? "" : shippingTax, taxes);
    if (!showTax) cells.erase(cells.begin() + 4);
    table.Row(cells, y);
  }
  y += 10;
}

// ---- Taxes and totals -------------------------------------------------------------------------

void DrawTotals(LPdfCanvas& canvas, const FormData& data,
                const std::vector<LFKTaxBreakdownLine>& taxes, double& y) {
  const double width = canvas.Right() - canvas.Left();
  const LSalesDocument& document = data.document;
  auto continued = [&data](LPdfCanvas& c) { return ContinuedPageTop(c, data); };
  double taxesHeight = 0;
  bool showTax = !data.untaxed && !data.seller.company.IsVatExempt() && !taxes.empty();
  if (showTax) {
    LPdfTable breakdown(canvas,
                        {{"TVA", 80, LTextAlign::kLeft},
                         {"Base HT", 78, LTextAlign::kRight},
                         {"Montant", 70, LTextAlign::kRight}},
                        canvas.Left(), continued);
    double rowsHeight = (static_cast<double>(taxes.size()) + 1) * 17;
    breakdown.Reserve(rowsHeight + 70, y, false);
    double top = y;
    breakdown.Heading(y);
    for (const LFKTaxBreakdownLine& tax : taxes) {
      long long base = data.taxInclusive ? tax.base - tax.amount : tax.base;
      breakdown.Row({tax.name + " " + RateText(data, tax.name, taxes), data.format.Money(base), data.format.Money(tax.amount)},
                    y);
    }
    taxesHeight = y - top;
    y = top;
  } else {
    LPdfTable none(canvas, {{"", 1, LTextAlign::kLeft}}, canvas.Left(), continued);
    none.Reserve(80, y, false);
  }

  long long total = document.GetTotal();
  long long taxTotal = document.GetTaxTotal();
  std::vector<std::pair<std::string, long long>> rows;
  if (data.untaxed || data.seller.company.IsVatExempt()) {
    rows.push_back({"Total", total});
  } else {
    rows.push_back({"Total HT", total - taxTotal});
    rows.push_back({"TVA", taxTotal});
    rows.push_back({"Total TTC", total});
  }
  if (data.kind.type == LSalesDocumentType::kInvoice && !document.IsDraft() && !document.GetPrimaryKey().empty()) {
    long long paid = document.GetInt64("AmountPaid", 0);
    if (paid != 0) {
      rows.push_back({"Déjà réglé", paid});
      rows.push_back({"Reste à payer", total - paid});
    }
  }
  double x = canvas.Left() + width * 0.55;
  double labelWidth = width * 0.45 - 90;
  double ty = y;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    LTextStyle label;
    label.sizePt = 9.5;
    label.bold = rows[i].first == "Total TTC" || rows[i].first == "Total" || rows[i].first == "Reste à payer";
    LTextStyle amount = label;
    amount.align = LTextAlign::kRight;
    if (label.bold) canvas.FillRect(x, ty - 2, width * 0.45, 17, 0.9);
    canvas.Text(x + 4, ty + 1, labelWidth, rows[i].first, label);
    ty += canvas.Text(x + labelWidth, ty + 1, 86, data.format.Money(rows[i].second), amount) + 5;
  }
  y = std::max(y + taxesHeight, ty) + 12;
}

// ---- Notes, conditions and footer -------------------------------------------------------------

void DrawConditions(LPdfCanvas& canvas, const FormData& data, double& y) {
  LTextStyle style;
  style.sizePt = 8.5;
  const LSalesDocument& document = data.document;
  if (data.seller.company.IsVatExempt()) {
    LTextStyle bold = style;
    bold.bold = true;
    LFormParagraph(canvas, ContinuedText(data), kVatExemptMention, bold, y);
  }
  if (data.kind.type == LSalesDocumentType::kInvoice) {
    std::vector<std::string> lines;
    bool atOnce = document.GetInt("PaymentTerms", 2) == 1;
    std::string due = data.format.Date(LDate::FromTime(LInvoiceCalculateDueDate(document)).ToText());
    lines.push_back(atOnce ? "Paiement à réception de la facture." : "Paiement au plus tard le " + due + ".");
    if (IsBusinessParty(data.party)) {
      double rate = data.seller.company.GetLatePenaltyRate();
      lines.push_back("Pénalités de retard : " +
                      (rate > 0 ? data.format.Percent(rate) + " par an" : std::string(kLegalPenaltyRate)) + ".");
      lines.push_back(std::string(kIndemnityMention));
      lines.push_back(std::string(kNoDiscountMention));
    }
    LFormParagraph(canvas, ContinuedText(data), LFormJoinLines(lines), style, y);
  }
  std::string notes = document.TestFieldExists("Notes") ? document.GetString("Notes") : data.kindOptions.GetString("NotesText");
  LFormNotesAndFooter(canvas, ContinuedText(data), data.kindOptions, &notes, y);
}

// ---- Elements a form places itself ------------------------------------------------------------

constexpr double kPointsPerMm = 72.0 / 25.4;

// The document's amounts under the names expressions use.
void SetAmounts(const LSalesDocument& document, KVTemplateReportFormManager& manager) {
  long long total = document.GetTotal(), tax = document.GetTaxTotal(), paid = document.GetInt64("AmountPaid", 0);
  const long long values[] = {total, tax, paid, document.GetShippingCosts(), total - tax, total - paid};
  const std::vector<std::string_view>& names = LTemplateFormAmountNames();
  for (std::size_t i = 0; i < names.size(); ++i) manager.SetFieldValue(names[i], values[i]);
}

// The value an element prints after its label; false (reason in problem) when it has none.
bool ElementText(LProfile& profile, const FormData& data, const LTemplateElement& element, std::string& text,
                 std::string& problem) {
  switch (element.type) {
    case LTemplateElementType::kField: {
      std::string value = data.document.GetString(element.value);
      text = element.money ? data.format.Money(data.document.GetInt64(element.value, 0)) : data.format.Date(value);
      return true;
    }
    case LTemplateElementType::kExpression: {
      const LCurrencyFormat& currency = profile.GetCurrencyFormat();
      KVTemplateReportFormManager manager(currency.digits, currency.decimal);
      SetAmounts(data.document, manager);
      long long amount = manager.EvaluateSimpleExpression(element.value, problem);
      text = data.format.Money(amount);
      return problem.empty();
    }
    default:
      text = element.value;
      return true;
  }
}

// Text, a field, an expression, an image or a rule: at its place when it has one, else at y,
// which then moves below it. A problem that leaves the element out goes into notes.
void DrawElement(LPdfCanvas& canvas, LProfile& profile, const FormData& data, const LTemplateElement& element,
                 double& y, std::string& notes) {
  bool placed = element.x.has_value();
  double x = placed ? *element.x * kPointsPerMm : canvas.Left();
  double top = placed ? *element.y * kPointsPerMm : y;
  double width = element.width > 0 ? element.width * kPointsPerMm : canvas.Right() - x;
  auto note = [&notes, &element](const std::string& problem) {
    notes += (notes.empty() ? "" : "\n") + std::string("Formulaire, ligne ") + std::to_string(element.line) + " : " + problem;
  };
  double bottom = top;
  if (element.type == LTemplateElementType::kRule) {
    canvas.Line(x, top, x + width, top, 0.6);
    bottom = top + 6;
  } else if (element.type == LTemplateElementType::kImage) {
    std::string path = element.value.starts_with("/") ? element.value : LTemplateFormsFolder(profile) + "/" + element.value;
    double height = element.height > 0 ? element.height * kPointsPerMm : 20 * kPointsPerMm;
    double drawn = 0;
    std::string problem;
    if (!canvas.Image(path, x, top, element.width > 0 ? width : 40 * kPointsPerMm, height, &drawn, &problem)) note(problem);
    bottom = top + drawn + 6;
  } else {
    std::string text, problem;
    if (!ElementText(profile, data, element, text, problem)) {
      note(problem);
      return;
    }
    text = element.label + text;
    if (!placed) {
      LFormParagraph(canvas, ContinuedText(data), text, element.style, y);
      return;
    }
    bottom = top + canvas.Text(x, top, width, text, element.style);
  }
  if (!placed) y = std::max(y, bottom);
}

}  // namespace

std::string LSalesDocumentPdfName(const LSalesDocumentKind& kind, std::string_view key) {
  return LFormPdfName(kind.title, key);
}

bool LSalesDocumentPdf(LProfile& profile, const LSalesDocumentKind& kind, const LSalesDocument& document,
                       const LTemplateForm& form, std::string& pdf, std::string* error, std::string* warning) {
  if (warning != nullptr) warning->clear();
  FormData data{kind, document, LPrintFormat(profile), LFormSeller(profile), {}, {}, false, false};
  std::string party = document.GetCustomer();
  if (kind.type != LSalesDocumentType::kPOrder || !profile.List(kSuppliersList).Open(data.party, party))
    (void)profile.MainList("Customers").Open(data.party, party);
  (void)profile.List(kMiscList).Open(data.kindOptions, kind.optionsRecord);
  LTaxOptions taxOptions;
  taxOptions.OpenFrom(profile);
  data.taxInclusive = document.GetBool("IsTaxInclusive", taxOptions.IsTaxInclusive());
  data.untaxed = document.GetDocumentTaxMode() == kDocumentUntaxed;
  std::vector<LFKTaxBreakdownLine> taxes = LFKDocumentTaxBreakdown(profile, document);

  LPdfCanvas canvas(data.seller.paper);
  LFormBegin(canvas, data.seller, data.format, std::string(kind.title) + " " + document.GetPrimaryKey());
  double y = canvas.Top();
  std::string notes;
  for (const LTemplateElement& element : form.elements) {
    switch (element.type) {
      case LTemplateElementType::kHeader: y = std::max(y, DrawHeader(canvas, data, warning)); break;
      case LTemplateElementType::kParty: y = DrawParty(canvas, data, y); break;
      case LTemplateElementType::kLines: DrawLines(canvas, profile, data, taxes, y); break;
      case LTemplateElementType::kTotals: DrawTotals(canvas, data, taxes, y); break;
      case LTemplateElementType::kConditions: DrawConditions(canvas, data, y); break;
      default: DrawElement(canvas, profile, data, element, y, notes);
    }
  }
  if (!notes.empty() && warning != nullptr) *warning += (warning->empty() ? "" : "\n") + notes;
  return canvas.Finish(pdf, error);
}

bool LSalesDocumentPdf(LProfile& profile, const LSalesDocumentKind& kind, const LSalesDocument& document,
                       std::string& pdf, std::string* error, std::string* warning) {
  LTemplateForm form;
  std::string reason;
  if (!LTemplateFormParse(LTemplateFormDefaultText(kind), profile.GetCurrencyFormat(), form, reason)) {
    return LFail(error, reason);
  }
  return LSalesDocumentPdf(profile, kind, document, form, pdf, error, warning);
}
