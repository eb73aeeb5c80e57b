// The options of the printed and sent documents as the administrator edits them. Each kind of
// document has its own option record in "Misc" ("Invoice", "Order", "Quote", "CreditNote",
// "POrder", "Receipt", "PackingSlip", "Bill") with the texts printed on it ("NotesText", copied
// into a new document's notes, and "FooterText") and, for the documents that fall due, the
// terms a new one gets ("PaymentTerms" 1 due on receipt, 2 due after "PaymentTermsDays" days)
// and, for the sales documents, the template form they print with ("Form"; templateform.h).
// Documents are numbered by the first free number of their list: there is no numbering option.
// Beside them, "Options" holds what applies to every document: line discounts (counted only
// while "DontShowDiscountColumn" is off), negative amounts in parentheses
// ("UseParenthesesForNegative") and the refusal of dates more than a year ahead
// ("ProhibitTransactionsInFuture").
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

class LProfile;

struct LDocumentOptionKind {
  std::string_view record;  // the option record of "Misc"
  std::string_view label;   // its French name
  bool hasTerms;            // new documents of the kind take payment terms from it
};
// Every kind, in the order the page lists them.
std::span<const LDocumentOptionKind> LDocumentOptionKinds();
// The kind of that record name; null when there is none.
const LDocumentOptionKind* LDocumentOptionKindFind(std::string_view record);

inline constexpr int kTermsOnReceipt = 1;
inline constexpr int kTermsInDays = 2;

struct LDocumentOptions {
  int paymentTerms = kTermsInDays;  // kTermsOnReceipt or kTermsInDays
  std::string termsDays = "30";     // days as typed
  std::string notes;
  std::string footer;
  std::string form;                 // the template form; "" the kind's default
};

struct LGeneralDocumentOptions {
  bool lineDiscounts = false;
  bool parenthesesForNegative = false;
  bool prohibitFutureDates = false;
};

void LDocumentOptionsLoad(const LProfile& profile, const LDocumentOptionKind& kind, LDocumentOptions& options);
void LGeneralDocumentOptionsLoad(const LProfile& profile, LGeneralDocumentOptions& options);
// "" when options can be stored; otherwise the French message of the fault (the days).
std::string LDocumentOptionsCheck(const LDocumentOptionKind& kind, const LDocumentOptions& options);
// The template forms a kind may print with (templateform.h); empty for the kinds that print
// without one (receipts, packing slips, bills).
std::vector<std::string> LDocumentOptionsForms(const LProfile& profile, const LDocumentOptionKind& kind);
// Store checked options. false when a record cannot be written.
[[nodiscard]] bool LDocumentOptionsStore(LProfile& profile, const LDocumentOptionKind& kind,
                                         const LDocumentOptions& options);
[[nodiscard]] bool LGeneralDocumentOptionsStore(LProfile& profile, const LGeneralDocumentOptions& options);
