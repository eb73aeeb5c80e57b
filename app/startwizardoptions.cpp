#include "app/startwizardoptions.h"

#include <cctype>
#include <iostream>

#include "app/cli.h"
#include "app/cliask.h"

bool LStartWizardTakeOptions(LCliArgs& args, LStartWizardAnswers& answers, bool& given, bool& named,
                             std::string& error) {
  named = args.TakeOption("--name", answers.name);
  given = named;
  std::string country, province, text;
  if (args.TakeOption("--country", country)) {
    given = true;
    for (char& c : country) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    answers.country = country;
  }
  if (args.TakeOption("--province", province)) {
    given = true;
    if (province.empty() || province.find_first_not_of("0123456789") != std::string::npos || province.size() > 3) {
      error = "--province attend le numéro de la province";
      return false;
    }
    answers.province = std::stoi(province);
  }
  std::pair<const char*, std::string*> texts[] = {
      {"--address", &answers.address},
      {"--contact", &answers.contact},
      {"--fiscal-year-end", &answers.fiscalYearEnd},
      {"--currency-symbol", &answers.currencySymbol},
      {"--currency-name", &answers.currencyName},
      {"--currency-subunit", &answers.currencySubunit},
      {"--usage", &answers.usage},
      {"--chart", &answers.chart},
      {"--siren", &answers.legal.siren},
      {"--siret", &answers.legal.siret},
      {"--vat-number", &answers.legal.vatNumber},
      {"--legal-form", &answers.legal.legalForm},
      {"--share-capital", &answers.legal.shareCapital},
      {"--rcs", &answers.legal.rcs},
      {"--late-penalty-rate", &answers.legal.latePenaltyRate},
      {"--email", &answers.legal.email},
      {"--phone", &answers.legal.phone},
  };
  for (auto& [option, value] : texts)
    if (args.TakeOption(option, *value)) given = true;
  if (args.TakeFlag("--vat-exempt")) {
    given = true;
    answers.legal.vatExempt = true;
  }
  if (args.TakeFlag("--manual-accounts")) {
    given = true;
    answers.manualAccounts = true;
  }
  // A balance option names an account the business has, even with an empty (missing) amount.
  if (args.TakeOption("--opening-checking", text)) {
    given = true;
    answers.openingChecking = text;
  }
  if (args.TakeOption("--opening-credit-card", text)) {
    given = true;
    answers.openingCreditCard = text;
  }
  return true;
}

std::unique_ptr<LStartWizardPrompter> LStartWizardTerminalPrompter(LCliContext& context, bool named) {
  if (named || !LCliCanAsk()) return nullptr;
  return std::make_unique<LStartWizardPrompter>(std::cin, context.err);
}
