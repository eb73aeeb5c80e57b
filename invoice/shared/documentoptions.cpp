#include "invoice/shared/documentoptions.h"

#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/templateform.h"
#include "llib/gen/textnum.h"

namespace {

constexpr int kMaxTermsDays = 999;

constexpr LDocumentOptionKind kKinds[] = {
    {"Invoice", "Factures", true},       {"Quote", "Devis", true},
    {"Order", "Commandes", true},        {"CreditNote", "Avoirs", true},
    {"POrder", "Bons de commande", true}, {"Receipt", "Reçus", false},
    {"PackingSlip", "Bons de livraison", false}, {"Bill", "Factures fournisseurs", false},
};

// Days as decimal text, 0 to 999; -1 otherwise.
int ParseDays(const std::string& text) {
  if (text.empty() || text.size() > 3 || text.find_first_not_of("0123456789") != std::string::npos) return -1;
  return LTextToInt(text);
}

}  // namespace

std::span<const LDocumentOptionKind> LDocumentOptionKinds() { return kKinds; }

const LDocumentOptionKind* LDocumentOptionKindFind(std::string_view record) {
  for (const LDocumentOptionKind& kind : kKinds)
    if (kind.record == record) return &kind;
  return nullptr;
}

void LDocumentOptionsLoad(const LProfile& profile, const LDocumentOptionKind& kind, LDocumentOptions& options) {
  LRecord record;
  profile.List(kMiscList).Open(record, kind.record);
  options.paymentTerms = record.GetInt("PaymentTerms", kTermsInDays) == kTermsOnReceipt ? kTermsOnReceipt : kTermsInDays;
  options.termsDays = std::to_string(record.GetInt("PaymentTermsDays", 30));
  options.notes = record.GetString("NotesText");
  options.footer = record.GetString("FooterText");
  options.form = record.GetString("Form");
}

void LGeneralDocumentOptionsLoad(const LProfile& profile, LGeneralDocumentOptions& options) {
  LOptions record;
  record.OpenFrom(profile);
  options.lineDiscounts = !record.GetBool("DontShowDiscountColumn", true);
  options.parenthesesForNegative = record.GetBool("UseParenthesesForNegative", false);
  options.prohibitFutureDates = record.GetBool("ProhibitTransactionsInFuture", false);
}

std::string LDocumentOptionsCheck(const LDocumentOptionKind& kind, const LDocumentOptions& options) {
  if (kind.hasTerms && options.paymentTerms == kTermsInDays && ParseDays(options.termsDays) < 0)
    return "Veuillez entrer le délai de paiement en jours (de 0 à " + std::to_string(kMaxTermsDays) + ").";
  return {};
}

bool LDocumentOptionsStore(LProfile& profile, const LDocumentOptionKind& kind, const LDocumentOptions& options) {
  LRecord record;
  // OpenAlways says whether the record was there: a kind never set gets its record now.
  (void)profile.List(kMiscList).OpenAlways(record, kind.record);
  if (kind.hasTerms) {
    record.SetInt("PaymentTerms", options.paymentTerms);
    if (options.paymentTerms == kTermsInDays) record.SetInt("PaymentTermsDays", ParseDays(options.termsDays));
  }
  record.SetString("NotesText", options.notes);
  record.SetString("FooterText", options.footer);
  if (options.form.empty()) record.DeleteField("Form");
  else record.SetString("Form", options.form);
  return record.Flush();
}

std::vector<std::string> LDocumentOptionsForms(const LProfile& profile, const LDocumentOptionKind& kind) {
  for (LSalesDocumentType type : {LSalesDocumentType::kInvoice, LSalesDocumentType::kQuote, LSalesDocumentType::kOrder,
                                  LSalesDocumentType::kCreditNote, LSalesDocumentType::kPOrder})
    if (LSalesDocumentKindOf(type).optionsRecord == kind.record) return LTemplateFormNames(profile);
  return {};
}

bool LGeneralDocumentOptionsStore(LProfile& profile, const LGeneralDocumentOptions& options) {
  LOptions record;
  record.OpenFrom(profile);
  record.SetBool("DontShowDiscountColumn", !options.lineDiscounts);
  record.SetBool("UseParenthesesForNegative", options.parenthesesForNegative);
  record.SetBool("ProhibitTransactionsInFuture", options.prohibitFutureDates);
  return record.Flush();
}
