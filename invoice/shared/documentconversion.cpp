#include "invoice/shared/documentconversion.h"

#include "invoice/shared/profile.h"
#include "invoice/shared/taxoptions.h"
#include "llib/gen/textnum.h"

namespace {

constexpr std::string_view kCommonHeaderFields[] = {"Customer", "TaxRate",         "SalesPerson", "Address",
                                                    "ShippingAddress", "Notes", "NotesIternal"};
constexpr std::string_view kOrderOnlyHeaderFields[] = {"Date", "CustomerPO", "ShipBy", "TrackingRef", "QuoteNumber"};
// Line fields copied as they are ("Item<n>" + suffix); "UnitValueDigits" and "TaxRate" have rules.
constexpr std::string_view kCopiedLineFields[] = {"Code", "Description", "Qty", "TaxName", "UnitValue", "Discount"};

constexpr int kTermsDue = 1;      // due at once
constexpr int kTermsInDays = 2;   // due after "PaymentTermsDays"
constexpr int kDefaultTermsDays = 30;

bool OpenSource(LProfile& profile, LSalesDocumentType type, std::string_view key, LSalesDocument& source) {
  const LSalesDocumentKind& kind = LSalesDocumentKindOf(type);
  if (key.empty()) return false;
  return profile.MainList(kind.recordedList).Open(source, key) || profile.MainList(kind.draftsList).Open(source, key);
}

void CopyIfPresent(const LRecord& from, LRecord& to, std::string_view field) {
  if (from.TestFieldExists(field)) to.SetString(field, from.GetString(field));
}

// The line's tax by number becomes the rates that number gives today.
void FreezeTaxRate(const LTaxOptions& taxOptions, const LFKItemCollectionRecord& from, LFKItemCollectionRecord& to,
                   int index) {
  std::string text = from.GetItemTaxRate(index);
  if (text.empty()) return;
  if (LFKIsTaxRateTriple(text)) {
    to.SetItemTaxRate(index, LFKParseTaxRate(text));
    return;
  }
  int stored = LTextToInt(text);
  int taxNumber = stored == 0 ? taxOptions.GetDefaultRate() : stored - 1;
  to.SetItemTaxRate(index, taxOptions.GetTaxRate(taxNumber));
}

void CopyLines(LProfile& profile, const LSalesDocument& source, LSalesDocument& invoice) {
  LTaxOptions taxOptions;
  taxOptions.OpenFrom(profile);
  taxOptions.DetachWithoutSave();
  LFKItemCollectionRecord from = source.Items();
  LFKItemCollectionRecord to = invoice.Items();
  int count = from.GetItemCount();
  for (int i = 0; i < count; ++i) {
    for (std::string_view suffix : kCopiedLineFields)
      CopyIfPresent(source, invoice, LFKItemCollectionRecord::ItemField(i, suffix));
    invoice.SetInt(LFKItemCollectionRecord::ItemField(i, "UnitValueDigits"), from.GetItemUnitValueDigits(i));
    FreezeTaxRate(taxOptions, from, to, i);
  }
  to.SetItemCount(count);
  // The document's percentage discount stays what it was: without its mark the line would be
  // an ordinary line of no amount, and the invoice would not be the quote.
  CopyIfPresent(source, invoice, "FixedPercentageDiscountItem");
}

// Everything but the payment terms and the number fields, which differ by source.
void CopyCommon(LProfile& profile, const LSalesDocument& source, LSalesDocument& invoice) {
  for (std::string_view field : kCommonHeaderFields) CopyIfPresent(source, invoice, field);
  CopyLines(profile, source, invoice);
}

}  // namespace

bool LInvoice::LoadFromQuote(LProfile& profile, std::string_view quoteKey) {
  LSalesDocument quote;
  if (!OpenSource(profile, LSalesDocumentType::kQuote, quoteKey, quote)) return false;
  quote.DetachWithoutSave();
  CopyCommon(profile, quote, *this);
  SetInt("PaymentTerms", kTermsInDays);
  SetInt("PaymentTermsDays", kDefaultTermsDays);
  SetString("QuoteNumber", quote.GetPrimaryKey());
  return true;
}

bool LInvoice::LoadFromOrder(LProfile& profile, std::string_view orderKey) {
  LSalesDocument order;
  if (!OpenSource(profile, LSalesDocumentType::kOrder, orderKey, order)) return false;
  order.DetachWithoutSave();
  CopyCommon(profile, order, *this);
  for (std::string_view field : kOrderOnlyHeaderFields) CopyIfPresent(order, *this, field);
  int terms = order.GetInt("PaymentTerms", kTermsInDays);
  SetInt("PaymentTerms", terms == kTermsDue || terms == kTermsInDays ? terms : kTermsInDays);
  SetInt("PaymentTermsDays", order.GetInt("PaymentTermsDays", kDefaultTermsDays));
  SetString("OrderNumber", order.GetPrimaryKey());
  return true;
}

bool LConvertedInvoiceMoved(LProfile& profile, const LRecord& invoice, std::string_view oldKey,
                            std::string_view newKey) {
  std::string orderKey = invoice.GetString("OrderNumber");
  bool fromOrder = !orderKey.empty();
  std::string sourceKey = fromOrder ? orderKey : invoice.GetString("QuoteNumber");
  if (sourceKey.empty()) return true;
  const LSalesDocumentKind& kind =
      LSalesDocumentKindOf(fromOrder ? LSalesDocumentType::kOrder : LSalesDocumentType::kQuote);
  for (std::string_view list : {kind.recordedList, kind.draftsList}) {
    LRecord source;
    if (!profile.MainList(list).Open(source, sourceKey)) continue;
    if (LConvertedInvoiceKey(source) != oldKey) {
      source.DetachWithoutSave();
      return true;
    }
    if (newKey.empty()) source.DeleteField(kConvertedInvoiceField);
    else source.SetString(kConvertedInvoiceField, newKey);
    return source.Flush();
  }
  return true;
}
