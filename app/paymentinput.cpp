#include "app/paymentinput.h"

#include "app/cli.h"
#include "app/cliasker.h"

bool LCliParseApplications(const LProfile& profile, const std::vector<std::string>& words,
                           std::vector<LAppliedAmount>& applications, std::string& error) {
  for (const auto& word : words) {
    std::string invoice, amountText;
    long long amount = 0;
    if (!LCliSplitAssignment(word, invoice, amountText) || !LCliParseAmount(profile, amountText, amount)) {
      error = "imputation invalide : " + word;
      return false;
    }
    applications.push_back({invoice, amount});
  }
  return true;
}
