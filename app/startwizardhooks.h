// What the start wizard needs from the ledger and tax sides of the system, reached through
// functions that those sides register, so that the wizard does not depend on their modules:
//
//   createDefaultAccounts   the default chart of accounts (LAccountListCreateDefault)
//   setOpeningBalance       an account's opening balance as entered (LAccount::UpdateOpeningBalance
//                           of the account with that number)
//   setProvinceTaxRates     the tax rates of a Canadian province into "Tax"
//                           (LTaxOptionsSetCanadaRates; province 1 to 13)
//   setDefaultOptions       the default options of the business's country (LSetDefaultOptions)
//
// A function that is not registered is not called: the wizard then writes its own pages only.
// The application registers them once at start-up, before any wizard runs.
#pragma once

#include <string_view>

class LProfile;

struct LStartWizardHooks {
  void (*createDefaultAccounts)(LProfile& profile) = nullptr;
  void (*setOpeningBalance)(LProfile& profile, std::string_view accountNumber, long long amountCents) = nullptr;
  void (*setProvinceTaxRates)(LProfile& profile, int province) = nullptr;
  void (*setDefaultOptions)(LProfile& profile, std::string_view countryCode) = nullptr;
};

// Replaces the registered functions.
void LStartWizardSetHooks(const LStartWizardHooks& hooks);
const LStartWizardHooks& LStartWizardGetHooks();
