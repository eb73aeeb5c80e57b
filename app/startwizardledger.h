// Where the start wizard hands over to the ledger and the tax options: the new business's
// default chart of accounts, the opening balances entered on the accounting page, and the tax
// rates of a Canadian province chosen on the country page. The wizard calls these three
// functions and nothing else of those sides, so each is the one place that joins them.
//
// The chart of accounts, the accounts' opening balances and the province rates are kept by the
// ledger and tax modules. Until those modules provide LAccountListCreateDefault,
// LAccount::UpdateOpeningBalance and LTaxOptionsSetCanadaRates, these functions write nothing:
// a business set up meanwhile has its company, currency and layout options but no accounts.
#pragma once

#include <string_view>

class LProfile;

inline constexpr std::string_view kStartWizardCheckingAccount = "1110";    // the checking account
inline constexpr std::string_view kStartWizardCreditCardAccount = "2110";  // the credit card

// The default chart of accounts of the business (LAccountListCreateDefault).
void LStartWizardCreateDefaultAccounts(LProfile& profile);

// The opening balance of the account numbered accountNumber, entered on its natural side, in
// cents (LAccount::UpdateOpeningBalance of that account). Called after the default chart exists.
void LStartWizardSetOpeningBalance(LProfile& profile, std::string_view accountNumber, long long amountCents);

// The tax rates of the Canadian province numbered province (1 to 13, the order of
// LStartWizardProvinces) into the record "Tax" of "Misc" (LTaxOptionsSetCanadaRates).
void LStartWizardSetProvinceTaxRates(LProfile& profile, int province);
