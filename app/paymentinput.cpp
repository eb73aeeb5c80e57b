#include "app/paymentinput.h"

#include "app/cli.h"
#include "app/cliasker.h"
#include "invoice/shared/profile.h"
#include "llib/gen/moneybounds.h"

bool LCliParseApplications(const LProfile& profile, const std::vector<std::string>& words,
                           std::vector<LAppliedAmount>& applications, std::string& error) {
  for (const auto& word : words) {
    std::string invoice, amountText;
    long long amount = 0;
    if (!LCliSplitAssignment(word, invoice, amountText) || !LCliParseAmount(profile, amountText, amount)) {
      bool beyond = !invoice.empty() && LAmountTextIsBeyondCeiling(amountText, profile.GetCurrencyDigits());
      error = beyond ? LAmountRefusal("l'imputation sur " + invoice, amountText, amountText, profile.GetCurrencyFormat())
                     : "imputation invalide : " + word;
      return false;
    }
    applications.push_back({invoice, amount});
  }
  return true;
}
