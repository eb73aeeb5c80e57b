#include "app/cliasker.h"

#include "app/cli.h"
#include "app/cliask.h"
#include "invoice/shared/profile.h"
#include "llib/gen/money.h"

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

std::string LCliBadDateMessage(std::string_view text) {
  return "La date \"" + std::string(text) + "\" n'est pas une date valide (AAAA-MM-JJ).";
}
