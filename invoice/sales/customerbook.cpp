#include "invoice/sales/customerbook.h"

#include "invoice/shared/customer.h"
#include "invoice/shared/payment.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/recurring.h"
#include "invoice/shared/salesdocument.h"
#include "llib/gen/filestore.h"
#include "llib/gen/optionalerror.h"

namespace {

// The first record of listName whose "Customer" is key; empty when none.
std::string FirstNaming(LProfile& profile, std::string_view listName, std::string_view key) {
  LRecord record;
  for (LFileStoreIteratorBase it(profile.MainList(listName), record); record.IsAttached(); it.Next(record)) {
    if (record.GetString("Customer") == key) {
      std::string found = record.GetPrimaryKey();
      record.DetachWithoutSave();
      return found;
    }
  }
  return {};
}

}  // namespace

std::string LCustomerFirstUse(LProfile& profile, std::string_view key) {
  struct Place {
    std::string_view list;
    const char* words;
  };
  const LSalesDocumentKind& invoice = LSalesDocumentKindOf(LSalesDocumentType::kInvoice);
  const LSalesDocumentKind& credit = LSalesDocumentKindOf(LSalesDocumentType::kCreditNote);
  const LSalesDocumentKind& order = LSalesDocumentKindOf(LSalesDocumentType::kOrder);
  const LSalesDocumentKind& quote = LSalesDocumentKindOf(LSalesDocumentType::kQuote);
  const Place places[] = {
      {invoice.recordedList, "la facture "},       {invoice.draftsList, "le brouillon de facture "},
      {kPaymentsList, "le paiement "},             {credit.recordedList, "l'avoir "},
      {credit.draftsList, "le brouillon d'avoir "}, {order.recordedList, "la commande "},
      {order.draftsList, "le brouillon de commande "}, {quote.recordedList, "le devis "},
      {quote.draftsList, "le brouillon de devis "}, {kRecurringInvoicesList, "la facture périodique "},
      {kRecurringOrdersList, "la commande périodique "},
  };
  for (const Place& place : places) {
    std::string found = FirstNaming(profile, place.list, key);
    if (!found.empty()) return place.words + found;
  }
  return {};
}

bool LCustomerDelete(LProfile& profile, std::string_view key, std::string* error) {
  const LFileStoreListBase& list = profile.MainList(kCustomersList);
  if (key.empty() || !list.TestRecordExists(key)) return LFail(error, LCustomerNotFoundMessage(key));
  std::string use = LCustomerFirstUse(profile, key);
  if (!use.empty())
    return LFail(error, "Le client « " + std::string(key) + " » ne peut pas être supprimé : " + use + " le nomme.");
  if (!list.Delete(key)) return LFail(error, "Le client « " + std::string(key) + " » n'a pas pu être supprimé.");
  return true;
}
