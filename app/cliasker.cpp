#include "app/cliasker.h"

#include <cstdio>
#include <iostream>

#include "app/cli.h"
#include "invoice/shared/profile.h"
#include "llib/gen/money.h"
#include "llib/gen/system.h"

LCliAsker::LCliAsker(const LCliContext& context) : context_(context) {}

LAnswer LCliAsker::Ask(const LQuestion& question) {
  if (context_.yes) return {true, false};
  if (!LIsTerminal(0) || !LIsTerminal(2)) return {false, false};
  context_.err << question.text << "\n[" << question.confirm << " (o) / " << question.cancel << " (n)] " << std::flush;
  std::string reply;
  if (!std::getline(std::cin, reply)) return {false, false};
  bool confirmed = reply == "o" || reply == "O" || reply == "oui" || reply == question.confirm;
  return {confirmed, false};
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
