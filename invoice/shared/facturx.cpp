#include "invoice/shared/facturx.h"

#include <cmath>
#include <ctime>
#include <map>
#include <vector>

#include "invoice/shared/company.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/taxcalc.h"
#include "invoice/shared/taxoptions.h"
#include "invoice/shared/totals.h"
#include "llib/gen/date.h"
#include "llib/gen/money.h"
#include "llib/gen/optionalerror.h"
#include "llib/gen/pdfa3.h"
#include "llib/gen/reporttable.h"

namespace {

constexpr std::string_view kNoTaxReason = "Exonération de TVA";

// ---- XML text ---------------------------------------------------------------------------------

class XmlText {
 public:
  void Open(std::string_view tag) {
    Indent();
    text_ += "<" + std::string(tag) + ">\n";
    ++depth_;
  }
  void Close(std::string_view tag) {
    --depth_;
    Indent();
    text_ += "</" + std::string(tag) + ">\n";
  }
  // <tag attributes>value</tag>; attributes already written as name="value".
  void Leaf(std::string_view tag, std::string_view value, std::string_view attributes = {}) {
    Indent();
    text_ += "<" + std::string(tag) + (attributes.empty() ? "" : " " + std::string(attributes)) + ">" +
             LHtmlEscape(value) + "</" + std::string(tag) + ">\n";
  }
  // A date as <udt:DateTimeString format="102">YYYYMMDD</...> inside tag.
  void Date(std::string_view tag, const LDate& date) {
    Open(tag);
    char text[16];
    std::snprintf(text, sizeof text, "%.4d%.2d%.2d", date.year, date.month, date.day);
    Leaf("udt:DateTimeString", text, "format=\"102\"");
    Close(tag);
  }
  std::string& Text() { return text_; }

 private:
  void Indent() { text_.append(static_cast<std::size_t>(depth_) * 2, ' '); }
  std::string text_;
  int depth_ = 0;
};

// ---- The document in the invoice model ---------------------------------------------------------

// A VAT category of the invoice: "S" with its rate, "Z", or "E".
struct Category {
  std::string code;
  double rate = 0;
  bool operator<(const Category& other) const {
    return code != other.code ? code < other.code : rate < other.rate;
  }
};

struct CategoryTotals {
  long long lines = 0;      // line net amounts
  long long allowance = 0;  // the fixed discount's share
  long long charge = 0;     // shipping
  long long tax = 0;
  long long Basis() const { return lines - allowance + charge; }
};

struct Line {
  std::string code;
  std::string name;
  long long priceValue = 0;  // net unit price, scaled by priceDigits
  int priceDigits = 2;
  double quantity = 0;
  long long amount = 0;      // line net amount, minor units
  Category category;
};

struct Invoice {
  std::vector<Line> lines;
  std::map<Category, CategoryTotals> categories;
  long long shipping = 0;
  Category shippingCategory;
  std::string exemptionReason;  // of category "E"
};

std::string Amount(long long cents, int digits) { return LFormatAmountPlain(cents, digits); }

std::string Rate(double rate) {
  return LFormatAmountPlain(std::llround(rate * 100), 2);
}

// Builds the lines and categories from the totaller's figures. false with error for taxes the
// profiles cannot carry.
bool BuildInvoice(LProfile& profile, const LSalesDocument& document, const LCompany& company, Invoice& invoice,
                  std::string* error) {
  LOptions options;
  options.OpenFrom(profile);
  bool ignoreDiscount = options.GetBool("DontShowDiscountColumn", true);
  LTaxOptions taxOptions;
  taxOptions.OpenFrom(profile);
  if (document.GetBool("IsTaxInclusive", taxOptions.IsTaxInclusive())) {
    return LFail(error, "Factur-X : les prix TTC ne peuvent pas être transmis ; utilisez des prix HT.");
  }
  LFKTaxContext context = LFKMakeTaxContext(taxOptions, document);
  std::map<std::string, LFKTaxBreakdownLine> taxes;
  for (LFKTaxBreakdownLine& tax : LFKDocumentTaxBreakdown(profile, document)) taxes[tax.name] = tax;
  bool exempt = company.IsVatExempt() || document.GetDocumentTaxMode() == kDocumentUntaxed;
  invoice.exemptionReason = company.IsVatExempt() ? std::string(kVatExemptMention) : std::string(kNoTaxReason);

  // The category of a tax name; false for two-rate taxes.
  auto categoryOf = [&](const std::string& name, Category& category) {
    auto tax = taxes.find(name);
    if (exempt || tax == taxes.end()) {
      category = {"E", 0};
      return true;
    }
    if (tax->second.rate.rate2 > 0 || LFKIsCombinedName(name)) {
      return LFail(error, "Factur-X : la taxe « " + name +
                              " » a deux taux ; une facture électronique n'en porte qu'un par ligne.");
    }
    category = tax->second.rate.rate1 > 0 ? Category{"S", tax->second.rate.rate1} : Category{"Z", 0};
    return true;
  };

  LFKItemCollectionRecord items = document.Items();
  int discountLine = items.GetFixedPercentageDiscountItem();
  int currencyDigits = profile.GetCurrencyDigits();
  std::map<std::string, long long> linesByTax;  // line amounts per tax name, for the discount's share
  long long untaxedLines = 0;
  for (int i = 0; i < items.GetItemCount(); ++i) {
    if (i == discountLine) continue;
    Line line;
    line.code = items.GetItemCode(i);
    line.name = items.GetItemDescription(i);
    if (line.name.empty()) line.name = line.code.empty() ? "Article" : line.code;
    line.quantity = items.GetItemQty(i);
    line.amount = LFKDocumentLineTotal(items, i, ignoreDiscount, currencyDigits);
    int digits = items.GetItemUnitValueDigits(i);
    line.priceDigits = digits < 0 ? currencyDigits : digits;
    line.priceValue = items.GetItemUnitValue(i);
    double discount = ignoreDiscount ? 0 : items.GetItemDiscount(i);
    if (discount != 0) {
      // The net price after the line's discount, to four decimals.
      int scale = std::max(line.priceDigits, 4);
      line.priceValue = LRoundHalfAwayFromZero(static_cast<double>(line.priceValue) *
                                               std::pow(10, scale - line.priceDigits) * (100 - discount) / 100);
      line.priceDigits = scale;
    }
    std::string taxName = LFKLineTaxName(items, i, context);
    if (!categoryOf(taxName, line.category)) return false;
    invoice.categories[line.category].lines += line.amount;
    if (taxes.count(taxName) != 0) linesByTax[taxName] += line.amount;
    else untaxedLines += line.amount;
    invoice.lines.push_back(line);
  }

  invoice.shipping = document.GetShippingCosts();
  std::string shippingTax = document.GetString("ShippingTaxName");
  if (shippingTax == "Valeur/défaut") shippingTax = context.defaultTaxName;
  if (!categoryOf(shippingTax, invoice.shippingCategory)) return false;
  if (invoice.shipping != 0) invoice.categories[invoice.shippingCategory].charge += invoice.shipping;

  // The fixed discount: what the totaller took off each tax's base, and off the untaxed lines.
  bool hasDiscount = discountLine >= 0 && discountLine < items.GetItemCount();
  if (hasDiscount) {
    double percent = items.GetItemDiscount(discountLine);
    for (const auto& [name, amount] : linesByTax) {
      Category category;
      (void)categoryOf(name, category);
      long long shipped = name == shippingTax ? invoice.shipping : 0;
      invoice.categories[category].allowance += amount + shipped - taxes[name].base;
    }
    long long untaxedShare = static_cast<long long>(std::trunc(percent * static_cast<double>(untaxedLines) / 100));
    if (untaxedShare != 0) invoice.categories[{"E", 0}].allowance += untaxedShare;
  }
  for (const auto& [name, tax] : taxes) {
    Category category;
    if (categoryOf(name, category)) invoice.categories[category].tax += exempt ? 0 : tax.amount;
    if (company.IsVatExempt() && tax.amount != 0) {
      if (error != nullptr)
        *error = "Factur-X : l'entreprise ne facture pas la TVA (" + std::string(kVatExemptMention) +
                 ") mais le document en porte ; enregistrez-le sans taxe.";
      return false;
    }
  }
  return true;
}

// ---- Writing -----------------------------------------------------------------------------------

struct Address {
  std::string postcode;
  std::string city;
  std::vector<std::string> lines;
};

// "12 rue des Lilas\n69003 Lyon": the line that starts with a 4 or 5-digit code is the postcode
// and city, the others are street lines.
Address SplitAddress(std::string_view text) {
  Address address;
  std::size_t start = 0;
  while (start <= text.size()) {
    std::size_t end = text.find_first_of("\r\n", start);
    if (end == std::string_view::npos) end = text.size();
    std::string line(text.substr(start, end - start));
    start = end + 1;
    if (line.empty()) continue;
    std::size_t digits = line.find_first_not_of("0123456789");
    if (address.postcode.empty() && (digits == 4 || digits == 5) && line.size() > digits + 1 && line[digits] == ' ') {
      address.postcode = line.substr(0, digits);
      address.city = line.substr(digits + 1);
    } else {
      address.lines.push_back(line);
    }
  }
  return address;
}

void WriteParty(XmlText& xml, std::string_view tag, const std::string& name, const std::string& siren,
                const std::string& addressText, const std::string& country, const std::string& email,
                const std::string& vatNumber, const std::string& fiscalNumber) {
  xml.Open(tag);
  xml.Leaf("ram:Name", name);
  if (!siren.empty()) {
    xml.Open("ram:SpecifiedLegalOrganization");
    xml.Leaf("ram:ID", siren, "schemeID=\"0002\"");
    xml.Close("ram:SpecifiedLegalOrganization");
  }
  Address address = SplitAddress(addressText);
  xml.Open("ram:PostalTradeAddress");
  if (!address.postcode.empty()) xml.Leaf("ram:PostcodeCode", address.postcode);
  static constexpr std::string_view kLineTags[] = {"ram:LineOne", "ram:LineTwo", "ram:LineThree"};
  for (std::size_t i = 0; i < address.lines.size() && i < 3; ++i) xml.Leaf(kLineTags[i], address.lines[i]);
  if (!address.city.empty()) xml.Leaf("ram:CityName", address.city);
  xml.Leaf("ram:CountryID", country);
  xml.Close("ram:PostalTradeAddress");
  if (!email.empty()) {
    xml.Open("ram:URIUniversalCommunication");
    xml.Leaf("ram:URIID", email, "schemeID=\"EM\"");
    xml.Close("ram:URIUniversalCommunication");
  }
  if (!vatNumber.empty()) {
    xml.Open("ram:SpecifiedTaxRegistration");
    xml.Leaf("ram:ID", vatNumber, "schemeID=\"VA\"");
    xml.Close("ram:SpecifiedTaxRegistration");
  } else if (!fiscalNumber.empty()) {
    xml.Open("ram:SpecifiedTaxRegistration");
    xml.Leaf("ram:ID", fiscalNumber, "schemeID=\"FC\"");
    xml.Close("ram:SpecifiedTaxRegistration");
  }
  xml.Close(tag);
}

void WriteTax(XmlText& xml, std::string_view tag, const Category& category) {
  xml.Open(tag);
  xml.Leaf("ram:TypeCode", "VAT");
  xml.Leaf("ram:CategoryCode", category.code);
  xml.Leaf("ram:RateApplicablePercent", Rate(category.rate));
  xml.Close(tag);
}

void WriteAllowanceCharge(XmlText& xml, bool charge, long long amount, int digits, const std::string& reason,
                          const Category& category) {
  xml.Open("ram:SpecifiedTradeAllowanceCharge");
  xml.Open("ram:ChargeIndicator");
  xml.Leaf("udt:Indicator", charge ? "true" : "false");
  xml.Close("ram:ChargeIndicator");
  xml.Leaf("ram:ActualAmount", Amount(amount, digits));
  xml.Leaf("ram:Reason", reason);
  WriteTax(xml, "ram:CategoryTradeTax", category);
  xml.Close("ram:SpecifiedTradeAllowanceCharge");
}

void WriteNote(XmlText& xml, const std::string& content, std::string_view subject) {
  if (content.empty()) return;
  xml.Open("ram:IncludedNote");
  xml.Leaf("ram:Content", content);
  xml.Leaf("ram:SubjectCode", subject);
  xml.Close("ram:IncludedNote");
}

void WriteLine(XmlText& xml, const Line& line, int index, int digits, LFacturXProfile facturXProfile) {
  xml.Open("ram:IncludedSupplyChainTradeLineItem");
  xml.Open("ram:AssociatedDocumentLineDocument");
  xml.Leaf("ram:LineID", std::to_string(index));
  xml.Close("ram:AssociatedDocumentLineDocument");
  xml.Open("ram:SpecifiedTradeProduct");
  if (facturXProfile == LFacturXProfile::kEn16931 && !line.code.empty()) xml.Leaf("ram:SellerAssignedID", line.code);
  xml.Leaf("ram:Name", line.name);
  xml.Close("ram:SpecifiedTradeProduct");
  xml.Open("ram:SpecifiedLineTradeAgreement");
  xml.Open("ram:NetPriceProductTradePrice");
  xml.Leaf("ram:ChargeAmount", LFormatAmountPlain(line.priceValue, line.priceDigits));
  xml.Close("ram:NetPriceProductTradePrice");
  xml.Close("ram:SpecifiedLineTradeAgreement");
  xml.Open("ram:SpecifiedLineTradeDelivery");
  xml.Leaf("ram:BilledQuantity", LFormatAmountPlain(std::llround(line.quantity * 10000), 4), "unitCode=\"C62\"");
  xml.Close("ram:SpecifiedLineTradeDelivery");
  xml.Open("ram:SpecifiedLineTradeSettlement");
  WriteTax(xml, "ram:ApplicableTradeTax", line.category);
  xml.Open("ram:SpecifiedTradeSettlementLineMonetarySummation");
  xml.Leaf("ram:LineTotalAmount", Amount(line.amount, digits));
  xml.Close("ram:SpecifiedTradeSettlementLineMonetarySummation");
  xml.Close("ram:SpecifiedLineTradeSettlement");
  xml.Close("ram:IncludedSupplyChainTradeLineItem");
}

LDate DateOrToday(std::string_view text) {
  LDate date;
  return LDate::Parse(text, date) ? date : LDate::Today();
}

}  // namespace

bool LFacturXProfileFromName(std::string_view name, LFacturXProfile& out) {
  if (name == "en16931") out = LFacturXProfile::kEn16931;
  else if (name == "basic") out = LFacturXProfile::kBasic;
  else return false;
  return true;
}

bool LFacturXXml(LProfile& profile, const LSalesDocumentKind& kind, const LSalesDocument& document,
                 LFacturXProfile facturXProfile, std::string& xml, std::string* error) {
  xml.clear();
  bool creditNote = kind.type == LSalesDocumentType::kCreditNote;
  if (kind.type != LSalesDocumentType::kInvoice && !creditNote) {
    return LFail(error, "Factur-X : seules les factures et les avoirs sont des factures électroniques.");
  }
  LCompany company;
  company.OpenFrom(profile);
  Invoice invoice;
  if (!BuildInvoice(profile, document, company, invoice, error)) return false;
  LOptions options;
  options.OpenFrom(profile);
  std::string country = options.GetString("CountryCode");
  if (country.empty()) country = "FR";
  std::string currency = options.GetString("CurrencyType", "EUR");
  if (currency.empty()) currency = "EUR";
  int digits = profile.GetCurrencyDigits();
  LRecord customer;
  (void)profile.MainList("Customers").Open(customer, document.GetCustomer());

  XmlText out;
  out.Text() =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<rsm:CrossIndustryInvoice xmlns:qdt=\"urn:un:unece:uncefact:data:standard:QualifiedDataType:100\" "
      "xmlns:ram=\"urn:un:unece:uncefact:data:standard:ReusableAggregateBusinessInformationEntity:100\" "
      "xmlns:rsm=\"urn:un:unece:uncefact:data:standard:CrossIndustryInvoice:100\" "
      "xmlns:udt=\"urn:un:unece:uncefact:data:standard:UnqualifiedDataType:100\">\n";
  XmlText& x = out;
  x.Open("rsm:ExchangedDocumentContext");
  x.Open("ram:GuidelineSpecifiedDocumentContextParameter");
  x.Leaf("ram:ID", facturXProfile == LFacturXProfile::kBasic ? "urn:cen.eu:en16931:2017#compliant#urn:factur-x.eu:1p0:basic"
                                                             : "urn:cen.eu:en16931:2017");
  x.Close("ram:GuidelineSpecifiedDocumentContextParameter");
  x.Close("rsm:ExchangedDocumentContext");

  x.Open("rsm:ExchangedDocument");
  x.Leaf("ram:ID", document.GetPrimaryKey());
  x.Leaf("ram:TypeCode", creditNote ? "381" : "380");
  x.Date("ram:IssueDateTime", DateOrToday(document.GetDate()));
  std::string legalForm = company.GetLegalForm();
  if (company.GetShareCapital() > 0)
    legalForm += (legalForm.empty() ? "Capital de " : " au capital de ") +
                 LFormatAmountPlain(company.GetShareCapital(), digits) + " " + currency;
  WriteNote(x, legalForm, "REG");
  WriteNote(x, company.GetRcs(), "ABL");
  if (company.IsVatExempt()) WriteNote(x, std::string(kVatExemptMention), "TXD");
  double penalty = company.GetLatePenaltyRate();
  if (penalty > 0) WriteNote(x, "Pénalités de retard : " + Rate(penalty) + " % par an.", "PMD");
  WriteNote(x, "Indemnité forfaitaire pour frais de recouvrement en cas de retard de paiement : 40 €.", "PMT");
  WriteNote(x, "Pas d'escompte pour paiement anticipé.", "AAB");
  x.Close("rsm:ExchangedDocument");

  x.Open("rsm:SupplyChainTradeTransaction");
  for (std::size_t i = 0; i < invoice.lines.size(); ++i)
    WriteLine(x, invoice.lines[i], static_cast<int>(i + 1), digits, facturXProfile);

  x.Open("ram:ApplicableHeaderTradeAgreement");
  WriteParty(x, "ram:SellerTradeParty", company.GetName(), company.GetSiren(), company.GetAddress(), country,
             company.GetEmail(), company.GetVatNumber(),
             company.GetSiret().empty() ? company.GetSiren() : company.GetSiret());
  std::string buyerName = customer.GetString("Name");
  std::string buyerAddress = document.GetString("Address");
  if (buyerAddress.empty()) buyerAddress = customer.GetString("Address");
  std::string buyerCountry = customer.GetString("CountryCode");
  WriteParty(x, "ram:BuyerTradeParty", buyerName.empty() ? document.GetCustomer() : buyerName,
             customer.GetString("SIREN"), buyerAddress, buyerCountry.empty() ? country : buyerCountry,
             customer.GetString("Email"), customer.GetString("VATNumber"), "");
  if (!document.GetString("CustomerPO").empty()) {
    x.Open("ram:BuyerOrderReferencedDocument");
    x.Leaf("ram:IssuerAssignedID", document.GetString("CustomerPO"));
    x.Close("ram:BuyerOrderReferencedDocument");
  }
  x.Close("ram:ApplicableHeaderTradeAgreement");

  x.Open("ram:ApplicableHeaderTradeDelivery");
  std::string delivery = document.GetString("DeliveryDate");
  x.Open("ram:ActualDeliverySupplyChainEvent");
  x.Date("ram:OccurrenceDateTime", DateOrToday(delivery.empty() ? document.GetDate() : delivery));
  x.Close("ram:ActualDeliverySupplyChainEvent");
  x.Close("ram:ApplicableHeaderTradeDelivery");

  x.Open("ram:ApplicableHeaderTradeSettlement");
  x.Leaf("ram:InvoiceCurrencyCode", currency);
  long long lineTotal = 0, allowanceTotal = 0, chargeTotal = 0, taxTotal = 0;
  for (const auto& [category, totals] : invoice.categories) {
    lineTotal += totals.lines;
    allowanceTotal += totals.allowance;
    chargeTotal += totals.charge;
    taxTotal += totals.tax;
    x.Open("ram:ApplicableTradeTax");
    x.Leaf("ram:CalculatedAmount", Amount(totals.tax, digits));
    x.Leaf("ram:TypeCode", "VAT");
    if (category.code == "E") x.Leaf("ram:ExemptionReason", invoice.exemptionReason);
    x.Leaf("ram:BasisAmount", Amount(totals.Basis(), digits));
    x.Leaf("ram:CategoryCode", category.code);
    x.Leaf("ram:RateApplicablePercent", Rate(category.rate));
    x.Close("ram:ApplicableTradeTax");
  }
  for (const auto& [category, totals] : invoice.categories) {
    if (totals.allowance != 0) WriteAllowanceCharge(x, false, totals.allowance, digits, "Remise", category);
  }
  if (invoice.shipping != 0)
    WriteAllowanceCharge(x, true, invoice.shipping, digits, "Frais de port", invoice.shippingCategory);
  x.Open("ram:SpecifiedTradePaymentTerms");
  bool atOnce = document.GetInt("PaymentTerms", 2) == 1;
  x.Leaf("ram:Description", atOnce ? "Paiement à réception"
                                   : "Paiement à " + std::to_string(document.GetInt("PaymentTermsDays", 30)) + " jours");
  x.Date("ram:DueDateDateTime", LDate::FromTime(LInvoiceCalculateDueDate(document)));
  x.Close("ram:SpecifiedTradePaymentTerms");
  long long basis = lineTotal - allowanceTotal + chargeTotal;
  long long grand = basis + taxTotal;
  long long prepaid = creditNote ? 0 : document.GetInt64("AmountPaid", 0);
  x.Open("ram:SpecifiedTradeSettlementHeaderMonetarySummation");
  x.Leaf("ram:LineTotalAmount", Amount(lineTotal, digits));
  x.Leaf("ram:ChargeTotalAmount", Amount(chargeTotal, digits));
  x.Leaf("ram:AllowanceTotalAmount", Amount(allowanceTotal, digits));
  x.Leaf("ram:TaxBasisTotalAmount", Amount(basis, digits));
  x.Leaf("ram:TaxTotalAmount", Amount(taxTotal, digits), "currencyID=\"" + LHtmlEscape(currency) + "\"");
  x.Leaf("ram:GrandTotalAmount", Amount(grand, digits));
  x.Leaf("ram:TotalPrepaidAmount", Amount(prepaid, digits));
  x.Leaf("ram:DuePayableAmount", Amount(grand - prepaid, digits));
  x.Close("ram:SpecifiedTradeSettlementHeaderMonetarySummation");
  x.Close("ram:ApplicableHeaderTradeSettlement");
  x.Close("rsm:SupplyChainTradeTransaction");
  out.Text() += "</rsm:CrossIndustryInvoice>\n";
  xml = std::move(out.Text());
  return true;
}

bool LFacturXPdf(LProfile& profile, const LSalesDocumentKind& kind, const LSalesDocument& document,
                 LFacturXProfile facturXProfile, std::string_view pdf, std::string& out, std::string* error) {
  out.clear();
  std::string xml;
  if (!LFacturXXml(profile, kind, document, facturXProfile, xml, error)) return false;
  LCompany company;
  company.OpenFrom(profile);
  LPdfA3Metadata metadata;
  metadata.title = std::string(kind.title) + " " + document.GetPrimaryKey();
  metadata.author = company.GetName();
  metadata.created = std::time(nullptr);
  std::string level = facturXProfile == LFacturXProfile::kBasic ? "BASIC" : "EN 16931";
  metadata.extraXmp =
      "<rdf:Description rdf:about=\"\" xmlns:fx=\"urn:factur-x:pdfa:CrossIndustryDocument:invoice:1p0#\">\n"
      "<fx:ConformanceLevel>" + level + "</fx:ConformanceLevel>\n"
      "<fx:DocumentFileName>factur-x.xml</fx:DocumentFileName>\n"
      "<fx:DocumentType>INVOICE</fx:DocumentType>\n"
      "<fx:Version>1.0</fx:Version>\n"
      "</rdf:Description>\n"
      "<rdf:Description rdf:about=\"\" xmlns:pdfaExtension=\"http://www.aiim.org/pdfa/ns/extension/\" "
      "xmlns:pdfaSchema=\"http://www.aiim.org/pdfa/ns/schema#\" xmlns:pdfaProperty=\"http://www.aiim.org/pdfa/ns/property#\">\n"
      "<pdfaExtension:schemas><rdf:Bag><rdf:li rdf:parseType=\"Resource\">\n"
      "<pdfaSchema:schema>Factur-X PDFA Extension Schema</pdfaSchema:schema>\n"
      "<pdfaSchema:namespaceURI>urn:factur-x:pdfa:CrossIndustryDocument:invoice:1p0#</pdfaSchema:namespaceURI>\n"
      "<pdfaSchema:prefix>fx</pdfaSchema:prefix>\n"
      "<pdfaSchema:property><rdf:Seq>\n"
      "<rdf:li rdf:parseType=\"Resource\"><pdfaProperty:name>DocumentFileName</pdfaProperty:name><pdfaProperty:valueType>Text</pdfaProperty:valueType><pdfaProperty:category>external</pdfaProperty:category><pdfaProperty:description>name of the embedded XML invoice file</pdfaProperty:description></rdf:li>\n"
      "<rdf:li rdf:parseType=\"Resource\"><pdfaProperty:name>DocumentType</pdfaProperty:name><pdfaProperty:valueType>Text</pdfaProperty:valueType><pdfaProperty:category>external</pdfaProperty:category><pdfaProperty:description>INVOICE</pdfaProperty:description></rdf:li>\n"
      "<rdf:li rdf:parseType=\"Resource\"><pdfaProperty:name>Version</pdfaProperty:name><pdfaProperty:valueType>Text</pdfaProperty:valueType><pdfaProperty:category>external</pdfaProperty:category><pdfaProperty:description>The actual version of the Factur-X XML schema</pdfaProperty:description></rdf:li>\n"
      "<rdf:li rdf:parseType=\"Resource\"><pdfaProperty:name>ConformanceLevel</pdfaProperty:name><pdfaProperty:valueType>Text</pdfaProperty:valueType><pdfaProperty:category>external</pdfaProperty:category><pdfaProperty:description>The conformance level of the embedded Factur-X data</pdfaProperty:description></rdf:li>\n"
      "</rdf:Seq></pdfaSchema:property>\n"
      "</rdf:li></rdf:Bag></pdfaExtension:schemas>\n"
      "</rdf:Description>\n";
  LPdfAttachment attachment{std::string(kFacturXFileName), "text/xml", "Facture électronique Factur-X", "Data", xml};
  return LPdfMakeA3(pdf, metadata, attachment, out, error);
}
