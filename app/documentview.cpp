#include "app/documentview.h"

#include <cstdlib>

#include "invoice/shared/documentconversion.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "llib/gen/date.h"
#include "llib/gen/money.h"

namespace {

struct TaxAmount {
  std::string name;
  long long amount;
};

std::vector<TaxAmount> ReadAmounts(const LSalesDocument& document, const char* countField, const char* amountPrefix,
                                   const char* namePrefix) {
  std::vector<TaxAmount> amounts;
  int count = document.GetInt(countField, 0);
  for (int n = 1; n <= count; ++n)
    amounts.push_back({document.GetString(namePrefix + std::to_string(n)),
                       document.GetInt64(amountPrefix + std::to_string(n), 0)});
  return amounts;
}

std::vector<TaxAmount> SeparateTaxes(const LSalesDocument& document) {
  return ReadAmounts(document, "TaxAmountCount", "TaxAmount", "TaxAmountName");
}

std::vector<TaxAmount> CombinedTaxes(const LSalesDocument& document) {
  return ReadAmounts(document, "TaxAmountCountCombined", "TaxAmountCombined", "TaxAmountNameCombined");
}

bool IsInvoice(const LSalesDocumentKind& kind) { return kind.type == LSalesDocumentType::kInvoice; }

// Quotes and orders become invoices.
bool IsConvertible(const LSalesDocumentKind& kind) {
  return kind.type == LSalesDocumentType::kQuote || kind.type == LSalesDocumentType::kOrder;
}

// The fields of line index, by their names without the "Item<n>" prefix.
nlohmann::ordered_json LineFields(const LSalesDocument& document, int index) {
  nlohmann::ordered_json line = nlohmann::ordered_json::object();
  std::string prefix = LFKItemCollectionRecord::ItemField(index, "");
  for (const auto& field : document.Fields()) {
    if (field.deleted || field.name.compare(0, prefix.size(), prefix) != 0) continue;
    std::string_view rest = std::string_view(field.name).substr(prefix.size());
    // "Item1" must not take the fields of "Item12".
    if (rest.empty() || (rest.front() >= '0' && rest.front() <= '9')) continue;
    line[std::string(rest)] = field.text;
  }
  return line;
}

}  // namespace

long long LDocumentLineTotal(LProfile& profile, const LSalesDocument& document, int index) {
  LOptions options;
  options.OpenFrom(profile);
  LFKItemCollectionRecord items = document.Items();
  int currencyDigits = profile.GetCurrencyDigits();
  int digits = items.GetItemUnitValueDigits(index);
  if (digits == -1) digits = currencyDigits;
  if (index == items.GetFixedPercentageDiscountItem()) return items.GetItemTotal(index);
  return LFKGetItemTotal(items, index, options.GetBool("DontShowDiscountColumn", true),
                         std::abs(digits - currencyDigits));
}

nlohmann::ordered_json LDocumentToJson(LProfile& profile, const LSalesDocumentKind& kind, LSalesDocument& document) {
  nlohmann::ordered_json json;
  json["key"] = document.GetPrimaryKey();
  json["kind"] = kind.command;
  json["draft"] = document.IsDraft();
  nlohmann::ordered_json fields = nlohmann::ordered_json::object();
  for (const auto& field : document.Fields())
    if (!field.deleted) fields[field.name] = field.text;
  json["fields"] = fields;
  nlohmann::ordered_json lines = nlohmann::ordered_json::array();
  int count = document.Items().GetItemCount();
  for (int i = 0; i < count; ++i) {
    nlohmann::ordered_json line = LineFields(document, i);
    line["Total"] = LDocumentLineTotal(profile, document, i);
    lines.push_back(line);
  }
  json["lines"] = lines;
  for (auto [member, amounts] : {std::pair{"taxes", SeparateTaxes(document)}, {"combinedTaxes", CombinedTaxes(document)}}) {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const auto& tax : amounts) list.push_back({{"name", tax.name}, {"amount", tax.amount}});
    json[member] = list;
  }
  json["subTotal"] = document.GetSubTotal();
  json["taxTotal"] = document.GetTaxTotal();
  json["shipping"] = document.GetShippingCosts();
  json["total"] = document.GetTotal();
  if (IsInvoice(kind)) {
    int status = LInvoiceGetStatus(profile, document);
    json["amountPaid"] = document.GetAmountPaid(profile);
    json["amountRefunded"] = document.GetAmountRefunded(profile);
    json["status"] = status;
    json["statusText"] = LInvoiceStatusText(status);
    json["dueDate"] = LDateTimeText(LInvoiceCalculateDueDate(document));
  }
  if (IsConvertible(kind)) {
    std::string invoiceKey = LConvertedInvoiceKey(document);
    json["convertedToInvoice"] = invoiceKey.empty() ? nlohmann::ordered_json() : nlohmann::ordered_json(invoiceKey);
  }
  return json;
}

void LPrintDocument(LProfile& profile, const LSalesDocumentKind& kind, LSalesDocument& document, std::ostream& out) {
  int digits = profile.GetCurrencyDigits();
  auto money = [digits](long long amount) { return LFormatAmountPlain(amount, digits); };
  out << kind.title << " " << document.GetPrimaryKey() << (document.IsDraft() ? " (brouillon)" : "") << "\n";
  out << "Client : " << document.GetCustomer() << "\n";
  out << "Date : " << document.GetDate() << "\n";
  if (!document.GetString("SalesPerson").empty()) out << "Vendeur : " << document.GetString("SalesPerson") << "\n";
  if (document.TestFieldExists("JournalTxnRef")) out << "Référence : " << document.GetString("JournalTxnRef") << "\n";
  if (IsConvertible(kind) && !LConvertedInvoiceKey(document).empty())
    out << "Facturé : facture " << LConvertedInvoiceKey(document) << "\n";
  LFKItemCollectionRecord items = document.Items();
  int count = items.GetItemCount();
  for (int i = 0; i < count; ++i) {
    out << "Ligne " << i + 1 << " : " << items.GetItemCode(i) << " | " << items.GetItemDescription(i) << " | "
        << items.GetItemQty(i) << " | " << items.GetItemUnitValue(i) << " (" << items.GetItemUnitValueDigits(i)
        << ") | " << items.GetItemTaxName(i) << " | " << money(LDocumentLineTotal(profile, document, i)) << "\n";
  }
  out << "Sous-total : " << money(document.GetSubTotal()) << "\n";
  out << "Frais de port : " << money(document.GetShippingCosts()) << "\n";
  for (const auto& tax : SeparateTaxes(document)) out << "Taxe " << tax.name << " : " << money(tax.amount) << "\n";
  out << "Total : " << money(document.GetTotal()) << "\n";
  if (IsInvoice(kind)) {
    int status = LInvoiceGetStatus(profile, document);
    out << "Montant payé : " << money(document.GetAmountPaid(profile)) << "\n";
    out << "Montant remboursé : " << money(document.GetAmountRefunded(profile)) << "\n";
    out << "État : " << LInvoiceStatusText(status) << "\n";
    out << "Échéance : " << LDateTimeText(LInvoiceCalculateDueDate(document)) << "\n";
  }
}

void LPrintDocumentSummary(LProfile& profile, const LSalesDocumentKind& kind, LSalesDocument& document,
                           std::ostream& out) {
  out << document.GetPrimaryKey() << "\t" << document.GetDate() << "\t" << document.GetCustomer() << "\t"
      << LFormatAmountPlain(document.GetTotal(), profile.GetCurrencyDigits());
  if (document.IsDraft()) out << "\tbrouillon";
  else if (IsInvoice(kind)) out << "\t" << LInvoiceStatusText(LInvoiceGetStatus(profile, document));
  if (IsConvertible(kind) && !LConvertedInvoiceKey(document).empty())
    out << "\tfacturé (facture " << LConvertedInvoiceKey(document) << ")";
  out << "\n";
}
