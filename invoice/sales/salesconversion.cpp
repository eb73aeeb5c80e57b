#include "invoice/sales/salesconversion.h"

#include <functional>

#include "accounts/ledgerlock.h"
#include "invoice/sales/salesbook.h"
#include "invoice/sales/salesledger.h"
#include "invoice/sales/sourceclaim.h"
#include "invoice/shared/documentconversion.h"
#include "invoice/shared/profile.h"
#include "llib/gen/date.h"

namespace {

std::string AlreadyConverted(const LSalesDocumentKind& kind, std::string_view key, const std::string& invoiceKey) {
  if (kind.type == LSalesDocumentType::kQuote)
    return "Le devis " + std::string(key) + " a déjà été converti en facture (facture " + invoiceKey + ").";
  return "La commande " + std::string(key) + " a déjà été convertie en facture (facture " + invoiceKey + ").";
}

// The list of kind that holds key: its recorded list, else its drafts list.
std::string ListHolding(LProfile& profile, const LSalesDocumentKind& kind, std::string_view key) {
  return std::string(profile.MainList(kind.recordedList).TestRecordExists(key) ? kind.recordedList : kind.draftsList);
}

// Makes content into a new document of kind under a number taken first, once the source of claim
// is claimed for it (sourceclaim.h); blocked and refusal say when the source's mark stands in the
// way and what the user is told then. newKey receives the key. A document refused before anything
// of it was written lets go of the claim.
template <class Refusal>
bool CreateClaimed(LProfile& profile, const LSalesDocumentKind& kind, const LRecord& content, bool draft,
                   LSalesClaim claim, const std::function<bool(const std::string&)>& blocked, Refusal refusal,
                   std::string& newKey, std::string& error) {
  LSalesChangeIntent intent(profile);
  claim.targetList = draft ? kind.draftsList : kind.recordedList;
  intent.NoteReserving(claim.targetList);
  claim.targetKey = LSalesReserveFirstFreeKey(profile.MainList(claim.targetList), draft ? kDraftKeyPrefix : std::string_view());
  if (claim.targetKey.empty()) {
    error = kDocumentNotSavedMessage;
    return false;
  }
  std::string mark;
  switch (LSalesClaimSource(profile, intent, claim, blocked, mark)) {
    case LClaimResult::kClaimed: break;
    case LClaimResult::kLost: error = refusal(mark); return false;
    case LClaimResult::kNotSaved: error = kDocumentNotSavedMessage; return false;
  }
  if (LSalesDocumentCreateTaken(profile, kind, content, draft, claim.targetKey, intent, newKey, &error)) return true;
  if (newKey.empty()) (void)LSalesClaimRelease(profile, claim);
  return false;
}

}  // namespace

bool LSalesDocumentConvertToInvoice(LProfile& profile, const LSalesDocumentKind& kind, std::string_view key,
                                    bool draft, std::string& newKey, std::string& error) {
  // One sales change at a time; past the lock's wait, the source's own claim keeps two desks from
  // both turning it into an invoice.
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
  source.DetachWithoutSave();
  if (!converted.empty()) {
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
  LSalesClaim claim{ListHolding(profile, kind, key), std::string(key), std::string(kConvertedInvoiceField), {}, {}};
  return CreateClaimed(
      profile, LSalesDocumentKindOf(LSalesDocumentType::kInvoice), invoice, draft, claim,
      [](const std::string& mark) { return !mark.empty(); },
      [&](const std::string& mark) { return AlreadyConverted(kind, key, mark); }, newKey, error);
}

bool LSalesQuoteConvertToOrder(LProfile& profile, std::string_view key, std::string& newKey, std::string& error) {
  LLedgerLock lock(profile);  // as for invoices
  const LSalesDocumentKind& quoteKind = LSalesDocumentKindOf(LSalesDocumentType::kQuote);
  const LSalesDocumentKind& orderKind = LSalesDocumentKindOf(LSalesDocumentType::kOrder);
  // A deleted order frees its quote: only an order that exists (or whose number is taken, being
  // made) stands in the way.
  auto orderExists = [&](const std::string& mark) {
    return !mark.empty() && (profile.MainList(orderKind.recordedList).TestRecordExists(mark) ||
                             profile.MainList(orderKind.draftsList).TestRecordExists(mark));
  };
  auto refusal = [&](const std::string& mark) {
    return "Le devis " + std::string(key) + " a déjà été converti en commande (commande " + mark + ").";
  };
  LSalesDocument quote;
  if (!LSalesDocumentOpen(profile, quoteKind, key, quote)) {
    error = LSalesDocumentNotFoundMessage(key);
    return false;
  }
  std::string converted = quote.GetString(kConvertedOrderField);
  if (orderExists(converted)) {
    quote.DetachWithoutSave();
    error = refusal(converted);
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
  quote.DetachWithoutSave();
  content.SetString("Date", LDate::Today().ToText());
  LSalesClaim claim{ListHolding(profile, quoteKind, key), std::string(key), std::string(kConvertedOrderField), {}, {}};
  return CreateClaimed(profile, orderKind, content, false, claim, orderExists, refusal, newKey, error);
}
