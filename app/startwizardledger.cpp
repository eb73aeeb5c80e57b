#include "app/startwizardledger.h"

#include "accounts/accounts.h"
#include "accounts/pcgchart.h"

bool LStartWizardCreateDefaultAccounts(LProfile& profile, bool pcg) {
  return pcg ? LAccountListCreatePCG(profile) : LAccountListCreateDefault(profile);
}

std::string_view LStartWizardCheckingAccount(bool pcg) { return pcg ? kPcgCheckingAccount : kStartWizardCheckingAccount; }
std::string_view LStartWizardCreditCardAccount(bool pcg) {
  return pcg ? kPcgCreditCardAccount : kStartWizardCreditCardAccount;
}

bool LStartWizardSetOpeningBalance(LProfile& profile, std::string_view accountNumber, long long amountCents) {
  if (!LAccountIsLive(profile, accountNumber)) return true;
  LAccountList accounts(profile);
  LAccount account;
  if (!accounts.Open(account, accountNumber)) return false;
  return account.UpdateOpeningBalance(profile, amountCents);
}
