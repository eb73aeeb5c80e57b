#include "accounts/profitandloss.h"

#include "accounts/statementprinter.h"

namespace {

std::vector<long long> Minus(const std::vector<long long>& a, const std::vector<long long>& b) {
  std::vector<long long> out(a.size());
  for (std::size_t c = 0; c < a.size(); ++c) out[c] = a[c] - b[c];
  return out;
}

std::vector<long long> Plus(const std::vector<long long>& a, const std::vector<long long>& b) {
  std::vector<long long> out(a.size());
  for (std::size_t c = 0; c < a.size(); ++c) out[c] = a[c] + b[c];
  return out;
}

// The sections in statement order over one totalled list per column.
void LayOut(LReportTable& table, std::vector<LAccountTotalerList*> lists, bool includeZero) {
  LStatementPrinter printer(table, std::move(lists), includeZero);
  auto result = [&](std::string_view label, const std::vector<long long>& amounts) {
    table.AddRow(LReportRowKind::kResult, label, LStatementPrinter::Values(amounts));
  };
  auto revenue = printer.PrintSection("Recettes", "Revenu total :", {kAccountIncome, 0, true, -1});
  auto costOfSales = printer.PrintSection("Prix de revient de distribution", "Prix de revient de distribution total :",
                                          {kAccountExpense, 0, true, +1});
  auto grossProfit = Minus(revenue, costOfSales);
  result("Bénéfice brut", grossProfit);
  auto expenses = printer.PrintSection("Frais", "Total charges :", {kAccountExpense, 1, true, +1});
  auto operatingProfit = Minus(grossProfit, expenses);
  result("Total bénéfice d'exploitation", operatingProfit);
  auto otherRevenue = printer.PrintSection("Autres revenus", "Total autres revenus :", {kAccountIncome, 1, true, -1});
  auto otherExpenses = printer.PrintSection("Autres charges", "Total autres charges :", {kAccountExpense, 2, true, +1});
  result("Bénéfice net", Minus(Plus(operatingProfit, otherRevenue), otherExpenses));
}

}  // namespace

bool LProfitAndLoss(LProfile& profile, const LDTPeriod& period, const std::vector<LProfilesAndRates>& businesses,
                    LReportTable& table) {
  LAccountTotalerList totals;
  if (!LStatementTotal(profile, period, businesses, totals)) return false;
  table.title = "Compte de résultat";
  table.subtitle = LStatementPeriodText(period);
  table.columns = {LStatementPeriodText(period)};
  LayOut(table, {&totals}, LStatementIncludeZero(profile));
  return true;
}

bool LProfitAndLossCompare(LProfile& profile, const LDTPeriod& period, const LDTPeriod& compared,
                           const std::vector<LProfilesAndRates>& businesses, LReportTable& table) {
  LAccountTotalerList totals;
  LAccountTotalerList comparedTotals;
  if (!LStatementTotal(profile, period, businesses, totals) ||
      !LStatementTotal(profile, compared, businesses, comparedTotals))
    return false;
  table.title = "Compte de résultat comparatif";
  table.subtitle = LStatementPeriodText(period) + " / " + LStatementPeriodText(compared);
  table.columns = {LStatementPeriodText(period), LStatementPeriodText(compared)};
  LayOut(table, {&totals, &comparedTotals}, LStatementIncludeZero(profile));
  return true;
}
