// The start wizard's answers as command-line options, shared by "business add" and "init":
//
//     --name NAME  --country CC  --province N  --address TEXT  --contact TEXT
//     --fiscal-year-end MM-DD  --currency-symbol S  --currency-name TEXT
//     --currency-subunit TEXT  --manual-accounts  --opening-checking AMOUNT
//     --opening-credit-card AMOUNT  --usage products|services  --chart pcg|generic
//
// Without --name and on a terminal the wizard asks every page's questions, the options given
// being the defaults; otherwise it takes the options as they are and refuses what is missing
// with the page's message.
#pragma once

#include <memory>
#include <string>

#include "app/startwizard.h"

class LCliArgs;
class LCliContext;

// The usage lines of the options above, as a literal that command usage texts are built from.
#define KONTAVO_START_WIZARD_OPTIONS_USAGE                                                                  \
  "    [--name NAME] [--country CC] [--province N] [--address TEXT] [--contact TEXT]\n"                   \
  "    [--fiscal-year-end MM-DD] [--currency-symbol S] [--currency-name TEXT] [--currency-subunit TEXT]\n" \
  "    [--manual-accounts] [--opening-checking AMOUNT] [--opening-credit-card AMOUNT]\n"                   \
  "    [--usage products|services] [--chart pcg|generic (pcg: plan comptable général, par défaut en FR)]\n" \
  "    [--siren N] [--siret N] [--vat-number N] [--legal-form TEXT] [--share-capital AMOUNT] [--rcs TEXT]\n"   \
  "    [--late-penalty-rate PERCENT] [--vat-exempt] [--email ADDRESS] [--phone TEXT]\n"

// Takes the wizard's options out of args into answers. given: any of them was present; named:
// --name was. false (usage error in error) for a value that is not of its form.
bool LStartWizardTakeOptions(LCliArgs& args, LStartWizardAnswers& answers, bool& given, bool& named,
                             std::string& error);

// The prompter through which the wizard asks on the terminal: when named is false and standard
// input is a terminal; null otherwise (the wizard takes the options as they are).
std::unique_ptr<LStartWizardPrompter> LStartWizardTerminalPrompter(LCliContext& context, bool named);
