#include "invoice/sales/taxaccounts.h"

#include <string>

#include "accounts/accounts.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/taxoptions.h"

namespace {

// Tax accounts are created after the collected-tax account of the default chart (2410).
constexpr long long kFirstTaxAccount = 2411;

std::string FirstFreeNumber(const LProfile& profile, int digits) {
  long long number = kFirstTaxAccount;
  for (int d = 4; d < digits; ++d) number *= 10;
  LAccountList accounts(profile);
  LAccount account;
  while (accounts.Open(account, std::to_string(number))) {
    account.Invalidate();
    ++number;
  }
  return std::to_string(number);
}

}  // namespace

bool LTaxOptionsCreateDefaultTaxAccounts(LProfile& profile) {
  LTaxOptions tax;
  tax.OpenFrom(profile);
  int digits = LAccountGetNumberOfDigits(profile);
  for (int n = 1, count = tax.GetTaxCount(); n <= count; ++n) {
    std::string description = tax.GetTaxAccountPayable(n);
    if (description.empty() || !LGetAccountNumberUsingDescription(profile, description).empty()) continue;
    if (!LCreateAccount(profile, FirstFreeNumber(profile, digits), description, kAccountLiability, false, 0,
                        kClassificationOperating))
      return false;
  }
  return true;
}
