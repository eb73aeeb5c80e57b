#include "invoice/shared/einvoiceread.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <cmath>
#include <cstring>

#include "invoice/shared/facturx.h"
#include "llib/gen/file.h"
#include "llib/gen/money.h"
#include "llib/gen/optionalerror.h"
#include "llib/gen/pdfa3.h"
#include "llib/gen/textnum.h"
#include "llib/gen/trim.h"

namespace {

constexpr int kDigits = 2;  // amounts of an e-invoice have two decimals
constexpr std::string_view kNotAnInvoice = "Ce fichier n'est pas une facture électronique Factur-X (CII).";

// ---- Walking the tree by local names ---------------------------------------------------------

bool IsNamed(const xmlNode* node, const char* name) {
  return node != nullptr && node->type == XML_ELEMENT_NODE && std::strcmp(reinterpret_cast<const char*>(node->name), name) == 0;
}

const xmlNode* Child(const xmlNode* node, const char* name) {
  if (node == nullptr) return nullptr;
  for (const xmlNode* child = node->children; child != nullptr; child = child->next) {
    if (IsNamed(child, name)) return child;
  }
  return nullptr;
}

// The node at the end of a path of local names ("A/B/C"); null when any step is missing.
const xmlNode* Path(const xmlNode* node, std::string_view path) {
  while (node != nullptr && !path.empty()) {
    std::size_t slash = path.find('/');
    std::string step(path.substr(0, slash));
    node = Child(node, step.c_str());
    path = slash == std::string_view::npos ? std::string_view() : path.substr(slash + 1);
  }
  return node;
}

std::string Text(const xmlNode* node) {
  if (node == nullptr) return {};
  xmlChar* content = xmlNodeGetContent(node);
  std::string text = content != nullptr ? reinterpret_cast<const char*>(content) : "";
  xmlFree(content);
  return std::string(LTrim(text));
}

std::string Attribute(const xmlNode* node, const char* name) {
  xmlChar* value = node != nullptr ? xmlGetProp(node, reinterpret_cast<const xmlChar*>(name)) : nullptr;
  std::string text = value != nullptr ? reinterpret_cast<const char*>(value) : "";
  xmlFree(value);
  return text;
}

// ---- Values ------------------------------------------------------------------------------------

// "1802.31", "5.9900", "-3" to cents; zeros beyond the second decimal are dropped.
bool ParseAmount(std::string text, long long& out) {
  std::size_t point = text.find('.');
  if (point != std::string::npos) {
    while (text.size() > point + 1 + kDigits && text.back() == '0') text.pop_back();
    if (text.back() == '.') text.pop_back();
  }
  return LParseAmount(text, kDigits, out);
}

// A date of format 102 ("20261120") as "2026-11-20"; empty when it is not one.
std::string Date(const xmlNode* node) {
  std::string text = Text(node);
  if (text.size() != 8 || text.find_first_not_of("0123456789") != std::string::npos) return {};
  return text.substr(0, 4) + "-" + text.substr(4, 2) + "-" + text.substr(6, 2);
}

double Number(const xmlNode* node) { return ttofl(Text(node).c_str()); }

// Reads the amount at path under node into out; a missing amount reads 0 unless required.
bool Amount(const xmlNode* node, std::string_view path, long long& out, bool required, std::string* error) {
  const xmlNode* at = Path(node, path);
  out = 0;
  if (at == nullptr && !required) return true;
  if (at != nullptr && ParseAmount(Text(at), out)) return true;
  return LFail(error, "Facture électronique : montant absent ou illisible (" + std::string(path) + ").");
}

LEInvoiceParty Party(const xmlNode* node) {
  LEInvoiceParty party;
  party.name = Text(Child(node, "Name"));
  party.siren = Text(Path(node, "SpecifiedLegalOrganization/ID"));
  for (const xmlNode* child = node != nullptr ? node->children : nullptr; child != nullptr; child = child->next) {
    const xmlNode* id = IsNamed(child, "SpecifiedTaxRegistration") ? Child(child, "ID") : nullptr;
    if (id != nullptr && Attribute(id, "schemeID") == "VA") party.vatNumber = Text(id);
  }
  const xmlNode* address = Child(node, "PostalTradeAddress");
  for (const char* line : {"LineOne", "LineTwo", "LineThree"}) {
    std::string text = Text(Child(address, line));
    if (!text.empty()) party.address += text + "\n";
  }
  std::string city = Text(Child(address, "PostcodeCode"));
  std::string cityName = Text(Child(address, "CityName"));
  if (!cityName.empty()) city += (city.empty() ? "" : " ") + cityName;
  party.address += city;
  if (!party.address.empty() && party.address.back() == '\n') party.address.pop_back();
  party.country = Text(Child(address, "CountryID"));
  party.email = Text(Path(node, "URIUniversalCommunication/URIID"));
  return party;
}

bool ReadLines(const xmlNode* transaction, LEInvoice& invoice, std::string* error) {
  for (const xmlNode* item = transaction->children; item != nullptr; item = item->next) {
    if (!IsNamed(item, "IncludedSupplyChainTradeLineItem")) continue;
    LEInvoiceLine line;
    line.id = Text(Path(item, "AssociatedDocumentLineDocument/LineID"));
    line.code = Text(Path(item, "SpecifiedTradeProduct/SellerAssignedID"));
    line.name = Text(Path(item, "SpecifiedTradeProduct/Name"));
    line.quantity = Number(Path(item, "SpecifiedLineTradeDelivery/BilledQuantity"));
    line.netPrice = Text(Path(item, "SpecifiedLineTradeAgreement/NetPriceProductTradePrice/ChargeAmount"));
    line.category = Text(Path(item, "SpecifiedLineTradeSettlement/ApplicableTradeTax/CategoryCode"));
    line.rate = Number(Path(item, "SpecifiedLineTradeSettlement/ApplicableTradeTax/RateApplicablePercent"));
    if (!Amount(item, "SpecifiedLineTradeSettlement/SpecifiedTradeSettlementLineMonetarySummation/LineTotalAmount",
                line.amount, true, error))
      return false;
    invoice.lines.push_back(std::move(line));
  }
  return true;
}

bool ReadSettlement(const xmlNode* settlement, LEInvoice& invoice, std::string* error) {
  invoice.currency = Text(Child(settlement, "InvoiceCurrencyCode"));
  for (const xmlNode* child = settlement->children; child != nullptr; child = child->next) {
    if (!IsNamed(child, "ApplicableTradeTax")) continue;
    LEInvoiceTax tax;
    tax.category = Text(Child(child, "CategoryCode"));
    tax.rate = Number(Child(child, "RateApplicablePercent"));
    if (!Amount(child, "BasisAmount", tax.basis, true, error) || !Amount(child, "CalculatedAmount", tax.amount, true, error))
      return false;
    invoice.taxes.push_back(tax);
  }
  invoice.dueDate = Date(Path(settlement, "SpecifiedTradePaymentTerms/DueDateDateTime/DateTimeString"));
  const xmlNode* sums = Child(settlement, "SpecifiedTradeSettlementHeaderMonetarySummation");
  return Amount(sums, "LineTotalAmount", invoice.lineTotal, false, error) &&
         Amount(sums, "ChargeTotalAmount", invoice.chargeTotal, false, error) &&
         Amount(sums, "AllowanceTotalAmount", invoice.allowanceTotal, false, error) &&
         Amount(sums, "TaxBasisTotalAmount", invoice.taxBasisTotal, true, error) &&
         Amount(sums, "TaxTotalAmount", invoice.taxTotal, false, error) &&
         Amount(sums, "GrandTotalAmount", invoice.grandTotal, true, error) &&
         Amount(sums, "TotalPrepaidAmount", invoice.prepaid, false, error) &&
         Amount(sums, "DuePayableAmount", invoice.duePayable, true, error);
}

// The sums a sender must get right.
bool CheckTotals(const LEInvoice& invoice, std::string* error) {
  auto fail = [error](const char* what) {
    return LFail(error, std::string("Facture électronique incohérente : ") + what + ".");
  };
  long long taxes = 0;
  for (const LEInvoiceTax& tax : invoice.taxes) taxes += tax.amount;
  if (!invoice.taxes.empty() && taxes != invoice.taxTotal) return fail("la TVA par taux ne fait pas la TVA totale");
  if (invoice.taxBasisTotal + invoice.taxTotal != invoice.grandTotal) return fail("HT plus TVA ne fait pas le TTC");
  if (invoice.grandTotal - invoice.prepaid != invoice.duePayable) return fail("le net à payer ne suit pas le TTC");
  if (!invoice.lines.empty()) {
    long long lines = 0;
    for (const LEInvoiceLine& line : invoice.lines) lines += line.amount;
    if (lines != invoice.lineTotal) return fail("les lignes ne font pas le total des lignes");
    if (invoice.lineTotal - invoice.allowanceTotal + invoice.chargeTotal != invoice.taxBasisTotal)
      return fail("les remises et frais ne mènent pas au total HT");
  }
  return true;
}

bool Read(const xmlNode* root, LEInvoice& invoice, std::string* error) {
  if (!IsNamed(root, "CrossIndustryInvoice")) return LFail(error, kNotAnInvoice);
  invoice.profile = Text(Path(root, "ExchangedDocumentContext/GuidelineSpecifiedDocumentContextParameter/ID"));
  invoice.number = Text(Path(root, "ExchangedDocument/ID"));
  invoice.typeCode = Text(Path(root, "ExchangedDocument/TypeCode"));
  invoice.issueDate = Date(Path(root, "ExchangedDocument/IssueDateTime/DateTimeString"));
  const xmlNode* transaction = Child(root, "SupplyChainTradeTransaction");
  const xmlNode* agreement = Child(transaction, "ApplicableHeaderTradeAgreement");
  const xmlNode* settlement = Child(transaction, "ApplicableHeaderTradeSettlement");
  if (invoice.number.empty() || invoice.issueDate.empty() || agreement == nullptr || settlement == nullptr) {
    return LFail(error, "Facture électronique incomplète : numéro, date, parties ou règlement absents.");
  }
  invoice.seller = Party(Child(agreement, "SellerTradeParty"));
  invoice.buyer = Party(Child(agreement, "BuyerTradeParty"));
  if (invoice.seller.name.empty()) return LFail(error, "Facture électronique incomplète : le vendeur n'a pas de nom.");
  invoice.deliveryDate =
      Date(Path(transaction, "ApplicableHeaderTradeDelivery/ActualDeliverySupplyChainEvent/OccurrenceDateTime/DateTimeString"));
  return ReadLines(transaction, invoice, error) && ReadSettlement(settlement, invoice, error) && CheckTotals(invoice, error);
}

}  // namespace

bool LEInvoiceParseXml(std::string_view xml, LEInvoice& invoice, std::string* error) {
  invoice = LEInvoice();
  // Entities are only declared in a DTD; an invoice never has one, an XML bomb always does.
  if (xml.find("<!DOCTYPE") != std::string_view::npos || xml.find("<!ENTITY") != std::string_view::npos) {
    return LFail(error, "Facture électronique refusée : le XML déclare une DTD ou des entités.");
  }
  xmlDoc* doc = xmlReadMemory(xml.data(), static_cast<int>(xml.size()), "factur-x.xml", nullptr,
                              XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
  if (doc == nullptr) return LFail(error, std::string(kNotAnInvoice) + " Le XML est mal formé.");
  bool ok = Read(xmlDocGetRootElement(doc), invoice, error);
  xmlFreeDoc(doc);
  if (!ok) invoice = LEInvoice();
  return ok;
}

bool LEInvoiceReadFile(const std::string& path, LEInvoice& invoice, std::string* error) {
  invoice = LEInvoice();
  std::string bytes;
  if (!LFile::ReadAll(path, bytes)) return LFail(error, "Impossible de lire le fichier « " + path + " ».");
  if (bytes.rfind("%PDF-", 0) != 0) return LEInvoiceParseXml(bytes, invoice, error);
  std::string xml;
  std::string pdfError;
  if (!LPdfReadAttachment(bytes, kFacturXFileName, xml, &pdfError)) {
    return LFail(error, "Ce PDF n'est pas une facture électronique : " + pdfError);
  }
  return LEInvoiceParseXml(xml, invoice, error);
}
