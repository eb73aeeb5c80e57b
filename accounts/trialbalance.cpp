#include "accounts/trialbalance.h"

#include "accounts/statementprinter.h"
#include "llib/gen/moneybounds.h"

bool LTrialBalance(LProfile& profile, const LDTPeriod& period, const std::vector<LProfilesAndRates>& businesses,
                   LReportTable& table) {
  LAccountTotalerList totals;
  if (!LStatementTotal(profile, period, businesses, totals)) return false;
  bool includeZero = LStatementIncludeZero(profile);
  table.title = "Balance de vérification";
  table.subtitle = LStatementPeriodText(period);
  table.columns = {"Débit", "Crédit"};
  long long debits = 0;
  long long credits = 0;
  for (const auto& item : totals.Items()) {
    if (item.deleted || (item.amount == 0 && !includeZero)) continue;
    if (item.amount >= 0) {
      table.AddRow(LReportRowKind::kAccount, LStatementAccountLabel(item), {item.amount, std::nullopt});
      debits = LMoneySum(debits, item.amount);
    } else {
      table.AddRow(LReportRowKind::kAccount, LStatementAccountLabel(item), {std::nullopt, -item.amount});
      credits = LMoneySum(credits, -item.amount);
    }
  }
  table.AddRow(LReportRowKind::kTotal, "Total", {debits, credits});
  return true;
}
