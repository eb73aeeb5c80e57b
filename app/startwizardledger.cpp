#include "app/startwizardledger.h"

#include "accounts/accounts.h"

void LStartWizardCreateDefaultAccounts(LProfile& profile) { LAccountListCreateDefault(profile); }

bool LStartWizardSetOpeningBalance(LProfile& profile, std::string_view accountNumber, long long amountCents) {
  if (!LAccountIsLive(profile, accountNumber)) return false;
  LAccountList accounts(profile);
  LAccount account;
  if (!accounts.Open(account, accountNumber)) return false;
  account.UpdateOpeningBalance(profile, amountCents);
  return true;
}
