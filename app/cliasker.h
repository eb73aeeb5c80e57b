// How the command line answers the questions of the business code and reads the words that
// every ledger command shares (amounts, dates, accounts).
//
// Questions: --yes answers every question with its confirm button; on a terminal the question
// is asked on stderr and read from stdin; without a terminal it is declined, and the command
// reports the question's text as its refusal.
#pragma once

#include <string>
#include <string_view>

#include "accounts/question.h"
#include "llib/gen/date.h"

class LCliContext;
class LProfile;
struct LJournalEntryLine;

class LCliAsker : public LAsker {
 public:
  explicit LCliAsker(LCliContext& context);
  LAnswer Ask(const LQuestion& question) override;

 private:
  LCliContext& context_;
};

// "1234.56", "-0.05", "12" in the business's currency digits; false for anything else.
bool LCliParseAmount(const LProfile& profile, std::string_view text, long long& amount);
// Why text is not an amount: "Montant invalide : x." or "Montant trop grand : … (plafond …)." in
// the business's currency format.
std::string LCliBadAmountMessage(const LProfile& profile, std::string_view text);
// Cents as "1234.56" in the business's currency digits.
std::string LCliFormatAmount(const LProfile& profile, long long amount);
// --date: today when absent; false when present but not a day "YYYY-MM-DD".
bool LCliParseDate(bool given, std::string_view text, LDate& date);
// "dr:ACCOUNT:AMOUNT" or "cr:ACCOUNT:AMOUNT" into a journal-entry line (the account column read
// as the entry reads it); false with problem set otherwise.
bool LCliParseEntryLine(const LProfile& profile, std::string_view word, LJournalEntryLine& line, std::string& problem);
