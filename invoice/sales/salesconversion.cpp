#include "invoice/sales/salesconversion.h"

#include "accounts/ledgerlock.h"
#include "invoice/sales/salesbook.h"
#include "invoice/shared/documentconversion.h"
#include "invoice/shared/profile.h"
#include "llib/gen/date.h"

namespace {

std::string AlreadyConverted(const LSalesDocumentKind& kind, std::string_view key, const std::string& invoiceKey) {
  if (kind.type == LSalesDocumentType::kQuote)
    return "Le devis " + std::string(key) + " a déjà été converti en facture (facture " + invoiceKey + ").";
  return "La commande " + std::string(key) + " a déjà été convertie en facture (facture " + invoiceKey + ").";
}

}  // namespace

bool LSalesDocumentConvertToInvoice(LProfile& profile, const LSalesDocumentKind& kind, std::string_view key,
                                    bool draft, std::string& newKey, std::string& error) {
  // The "already converted" test and the mark that ends it happen under one lock, so that two
  // desks cannot both turn one quote into an invoice.
  LLedgerLock lock(profile);
  bool fromQuote = kind.type == LSalesDocumentType::kQuote;
  if (!fromQuote && kind.type != LSalesDocumentType::kOrder) {
    error = "Seuls les devis et les commandes se convertissent en facture.";
    return false;
  }
  LSalesDocument source;
  if (!LSalesDocumentOpen(profile, kind, key, source)) {
    error = LSalesDocumentNotFoundMessage(key);
    return false;
  }
  std::string converted = LConvertedInvoiceKey(source);
  if (!converted.empty()) {
    source.DetachWithoutSave();
    error = AlreadyConverted(kind, key, converted);
    return false;
  }

  LInvoice invoice;
  bool loaded = fromQuote ? invoice.LoadFromQuote(profile, key) : invoice.LoadFromOrder(profile, key);
  if (!loaded) {
    error = LSalesDocumentNotFoundMessage(key);
    return false;
  }
  if (invoice.GetDate().empty()) invoice.SetString("Date", LDate::Today().ToText());
  const LSalesDocumentKind& invoiceKind = LSalesDocumentKindOf(LSalesDocumentType::kInvoice);
  if (!LSalesDocumentCreate(profile, invoiceKind, invoice, draft, {}, newKey, &error)) return false;
  source.SetString(kConvertedInvoiceField, newKey);
  if (!source.Flush()) {
    error = "Impossible d'enregistrer le document.";
    return false;
  }
  return true;
}

bool LSalesQuoteConvertToOrder(LProfile& profile, std::string_view key, std::string& newKey, std::string& error) {
  // As for invoices: the test and the mark under one lock.
  LLedgerLock lock(profile);
  const LSalesDocumentKind& quoteKind = LSalesDocumentKindOf(LSalesDocumentType::kQuote);
  const LSalesDocumentKind& orderKind = LSalesDocumentKindOf(LSalesDocumentType::kOrder);
  LSalesDocument quote;
  if (!LSalesDocumentOpen(profile, quoteKind, key, quote)) {
    error = LSalesDocumentNotFoundMessage(key);
    return false;
  }
  std::string converted = quote.GetString(kConvertedOrderField);
  LSalesDocument order;
  if (!converted.empty() && LSalesDocumentOpen(profile, orderKind, converted, order)) {
    order.DetachWithoutSave();
    quote.DetachWithoutSave();
    error = "Le devis " + std::string(key) + " a déjà été converti en commande (commande " + converted + ").";
    return false;
  }
  // The order carries what an invoice from the quote would, with the quote's own terms.
  LInvoice content;
  if (!content.LoadFromQuote(profile, key)) {
    quote.DetachWithoutSave();
    error = LSalesDocumentNotFoundMessage(key);
    return false;
  }
  for (std::string_view field : {"PaymentTerms", "PaymentTermsDays"})
    if (quote.TestFieldExists(field)) content.SetString(field, quote.GetString(field));
  content.SetString("Date", LDate::Today().ToText());
  if (!LSalesDocumentCreate(profile, orderKind, content, false, {}, newKey, &error)) {
    quote.DetachWithoutSave();
    return false;
  }
  quote.SetString(kConvertedOrderField, newKey);
  if (!quote.Flush()) {
    error = "Impossible d'enregistrer le document.";
    return false;
  }
  return true;
}
