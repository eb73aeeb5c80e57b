// Transaction templates: a journal entry kept under a name to be entered again (the monthly rent,
// the quarterly insurance): its type, reference pattern, description and lines, each line an
// account and a signed amount (debit positive). Recalled into a journal entry, a template gives
// the entry its lines with a new date and, when asked, every amount scaled so that the debits
// (and the credits) come to a new total.
//
// Records of the list "TransactionTemplates", keyed by the name: "Description", "Type" (the
// journal-entry type index), "Reference" (default "GJ[auto]": the next general-journal number),
// "ItemCount", "Item%dAccount", "Item%dAmount".
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "accounts/journalentry.h"

class LProfile;

inline constexpr std::string_view kTransactionTemplatesList = "TransactionTemplates";
inline constexpr std::string_view kTemplateDefaultReference = "GJ[auto]";

struct LTxnTemplate {
  std::string name;
  std::string description;
  int typeIndex = kJournalEntryGeneralType;
  std::string reference = std::string(kTemplateDefaultReference);
  std::vector<LJournalEntryLine> lines;  // amounts positive, side "CR" or "DR"

  // The debits' total (equal to the credits' in a balanced template).
  long long Debits() const;
};

// Saves the template under its name, replacing one of that name. Refused with message set: an
// empty name, no line, lines that do not balance, an account that is not a live account.
[[nodiscard]] bool LTxnTemplateSave(const LProfile& profile, const LTxnTemplate& tpl, std::string* message);
// false when there is no template of that name.
bool LTxnTemplateLoad(const LProfile& profile, std::string_view name, LTxnTemplate& tpl);
// The names, sorted.
std::vector<std::string> LTxnTemplateNames(const LProfile& profile);
bool LTxnTemplateDelete(const LProfile& profile, std::string_view name);

// The template's lines with their debits, and their credits, brought to total each (cents,
// positive): every line scaled and rounded half up, the rounding left on the last line of its
// side. total 0 leaves the amounts as they are.
std::vector<LJournalEntryLine> LTxnTemplateScaledLines(const LTxnTemplate& tpl, long long total);

// Fills a journal entry from the template: date, type, reference, description, the lines scaled
// to total (0: as kept). The entry is then saved as any other, with every check of CmOk.
void LTxnTemplateFillEntry(const LTxnTemplate& tpl, const LDate& date, long long total, LJournalEntryDlg& entry);
