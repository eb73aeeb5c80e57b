#include "app/cliasker.h"

#include "app/cli.h"
#include "accounts/journalentry.h"
#include "app/cliask.h"
#include "invoice/shared/profile.h"
#include "llib/gen/money.h"
#include "llib/gen/moneybounds.h"

LCliAsker::LCliAsker(LCliContext& context) : context_(context) {}

LAnswer LCliAsker::Ask(const LQuestion& question) {
  if (context_.yes) return {true, false};
  // Without a terminal the command itself reports the question's text as its refusal.
  if (!LCliCanAsk()) return {false, false};
  return {LCliConfirm(context_, question.title, question.text, question.confirm, question.cancel), false};
}

bool LCliParseAmount(const LProfile& profile, std::string_view text, long long& amount) {
  return LParseAmount(text, profile.GetCurrencyDigits(), amount);
}

std::string LCliBadAmountMessage(const LProfile& profile, std::string_view text) {
  return LAmountRefusal("", text, text, profile.GetCurrencyFormat());
}

std::string LCliFormatAmount(const LProfile& profile, long long amount) {
  return LFormatAmountPlain(amount, profile.GetCurrencyDigits());
}

bool LCliParseDate(bool given, std::string_view text, LDate& date) {
  if (!given) {
    date = LDate::Today();
    return true;
  }
  return LDate::Parse(text, date);
}


bool LCliParseEntryLine(const LProfile& profile, std::string_view word, LJournalEntryLine& line, std::string& problem) {
  std::size_t first = word.find(':');
  std::size_t last = word.rfind(':');
  std::string_view side = word.substr(0, first);
  if (first == std::string_view::npos || first == last || (side != "dr" && side != "cr")) {
    problem = "ligne attendue sous la forme dr:COMPTE:MONTANT ou cr:COMPTE:MONTANT : " + std::string(word);
    return false;
  }
  std::string_view amount = word.substr(last + 1);
  if (!LCliParseAmount(profile, amount, line.amount)) {
    problem = LCliBadAmountMessage(profile, amount);
    return false;
  }
  line.side = side == "cr" ? "CR" : "DR";
  line.account = LJournalEntryAccountFromColumn(word.substr(first + 1, last - first - 1));
  return true;
}
