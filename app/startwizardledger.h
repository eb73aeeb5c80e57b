// Where the start wizard hands over to the ledger: the new business's default chart of
// accounts and the opening balances entered on the accounting page. The wizard calls these two
// functions and nothing else of the chart of accounts, so they are the one place joining them.
#pragma once

#include <string_view>

class LProfile;

inline constexpr std::string_view kStartWizardCheckingAccount = "1110";    // the checking account
inline constexpr std::string_view kStartWizardCreditCardAccount = "2110";  // the credit card
inline constexpr std::string_view kStartWizardPcgChart = "pcg";
inline constexpr std::string_view kStartWizardGenericChart = "generic";

// The chart of accounts of the business: the French general chart (LAccountListCreatePCG) when
// pcg, else the generic default chart (LAccountListCreateDefault). false when a record could not
// be written.
[[nodiscard]] bool LStartWizardCreateDefaultAccounts(LProfile& profile, bool pcg);
// The checking and credit-card accounts of the chart.
std::string_view LStartWizardCheckingAccount(bool pcg);
std::string_view LStartWizardCreditCardAccount(bool pcg);

// The opening balance of the account numbered accountNumber, entered on its natural side, in
// cents (LAccount::UpdateOpeningBalance). Nothing is written when the chart has no live account
// of that number (a country whose default chart leaves it out). false when it could not be written.
[[nodiscard]] bool LStartWizardSetOpeningBalance(LProfile& profile, std::string_view accountNumber, long long amountCents);
