#include "invoice/shared/salesdocument.h"

#include <cstdio>

#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/taxcalc.h"
#include "invoice/shared/taxoptions.h"
#include "llib/gen/date.h"
#include "llib/gen/moneybounds.h"

// ---- Kinds ------------------------------------------------------------------------------------

namespace {

constexpr LSalesDocumentKind kKinds[] = {
    {LSalesDocumentType::kInvoice, "invoice", "Invoices", "InvoicesDrafts", "Invoice", "Facture"},
    {LSalesDocumentType::kOrder, "order", "Orders", "OrdersDrafts", "Order", "Commande"},
    {LSalesDocumentType::kQuote, "quote", "Quotes", "QuotesDrafts", "Quote", "Devis"},
    {LSalesDocumentType::kCreditNote, "creditnote", "CreditNotes", "CreditNotesDrafts", "CreditNote", "Avoir"},
    {LSalesDocumentType::kPOrder, "porder", "POrders", "POrdersDrafts", "POrder", "Bon de commande"},
};

}  // namespace

const LSalesDocumentKind& LSalesDocumentKindOf(LSalesDocumentType type) {
  for (const auto& kind : kKinds)
    if (kind.type == type) return kind;
  return kKinds[0];
}

const LSalesDocumentKind* LSalesDocumentKindFromCommand(std::string_view command) {
  for (const auto& kind : kKinds)
    if (kind.command == command) return &kind;
  return nullptr;
}

std::string LSalesDocumentNotFoundMessage(std::string_view key) {
  return "Document introuvable : " + std::string(key) + ".";
}

bool LDocumentKeyLess(std::string_view a, std::string_view b) {
  bool aNumber = !a.empty() && a.find_first_not_of("0123456789") == std::string_view::npos;
  bool bNumber = !b.empty() && b.find_first_not_of("0123456789") == std::string_view::npos;
  if (aNumber != bNumber) return aNumber;
  if (aNumber && a.size() != b.size()) return a.size() < b.size();
  return a < b;
}

// ---- Derived values ---------------------------------------------------------------------------

long long LSalesDocument::GetTaxTotal() const {
  int count = GetInt("TaxAmountCount", 3);
  long long total = 0;
  for (int n = 1; n <= count; ++n) total = LMoneySum(total, GetInt64("TaxAmount" + std::to_string(n), 0));
  return total;
}

long long LSalesDocument::GetSubTotal() const { return GetTotal() - GetShippingCosts() - GetTaxTotal(); }

bool LSalesDocument::IsDraft() const {
  bool keyIsDraft = GetPrimaryKey().compare(0, kDraftKeyPrefix.size(), kDraftKeyPrefix) == 0;
  return GetBool("IsDraft", keyIsDraft);
}

long long LSalesDocument::CalculateTaxAmount(LProfile& profile, int index) const {
  if (GetDocumentTaxMode() != kDocumentTaxDefault) return 0;
  LOptions options;
  options.OpenFrom(profile);
  LTaxOptions taxOptions;
  taxOptions.OpenFrom(profile);
  LFKItemCollectionRecord items = Items();

  int digits = items.GetItemUnitValueDigits(index);
  int currencyDigits = profile.GetCurrencyDigits();
  // The per-line calculator scales differently from the document totaller; both are kept as
  // stored documents were computed.
  int scale = digits >= currencyDigits ? digits - currencyDigits : digits;
  long long amount = LFKGetItemTotal(items, index, options.GetBool("DontShowDiscountColumn", true), scale);

  double rate1 = 0, rate2 = 0;
  bool compound = false;
  int taxIndex = items.GetItemTaxRate(index, rate1, rate2, compound);
  if (taxIndex > 0) {
    LFKTaxRate rate = taxOptions.GetTaxRate(taxIndex - 1);
    rate1 = rate.rate1;
    rate2 = rate.rate2;
    compound = rate.compound;
  } else if (rate1 == 0 && rate2 == 0) {
    int taxNumber = taxOptions.ListNameToTax(items.GetItemTaxName(index));
    if (taxNumber < 0) taxNumber = taxOptions.GetDefaultRate();
    LFKTaxRate rate = taxNumber > 0 ? taxOptions.GetTaxRate(taxNumber) : LFKTaxRate{};
    rate1 = rate.rate1;
    rate2 = rate.rate2;
    compound = rate.compound;
  }
  return LCalculateTax(taxOptions, rate1, rate2, amount, taxOptions.IsTaxInclusive(), compound);
}

int LInvoiceGetStatus(LProfile& profile, LSalesDocument& invoice) {
  long long total = invoice.GetTotal();
  if (total == 0) return kInvoiceNothingDue;
  long long paid = invoice.GetAmountPaid(profile);
  if (paid == 0) return kInvoiceUnpaid;
  if (paid >= total) return kInvoicePaid;
  return kInvoicePartlyPaid;
}

std::string_view LInvoiceStatusText(int status) {
  switch (status) {
    case kInvoicePaid: return "Payée";
    case kInvoicePartlyPaid: return "Partiellement payée";
    case kInvoiceNothingDue: return "Aucun montant dû";
    default: return "Non payée";
  }
}

time_t LInvoiceCalculateDueDate(const LSalesDocument& invoice) {
  LDate date;
  if (!LDate::Parse(invoice.GetDate(), date)) return ::time(nullptr);
  int days = invoice.GetInt("PaymentTerms", 2) == 1 ? 0 : invoice.GetInt("PaymentTermsDays", 30);
  return date.ToLocalTime(1) + static_cast<time_t>(days) * 86400;
}
