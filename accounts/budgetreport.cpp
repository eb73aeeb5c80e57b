#include "accounts/budgetreport.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "accounts/accounts.h"
#include "accounts/accounttotaller.h"
#include "accounts/reportperiods.h"
#include "invoice/shared/profile.h"

namespace {

// "12,5 %" of difference against budget, rounded to a tenth; "" without a budget.
std::string Percent(long long difference, long long budget) {
  if (budget == 0) return {};
  long long tenths = std::llround(double(difference) * 1000.0 / double(budget));
  long long magnitude = tenths < 0 ? -tenths : tenths;
  return (tenths < 0 ? "-" : "") + std::to_string(magnitude / 10) + "," + std::to_string(magnitude % 10) + " %";
}

// The natural side of an account type: income, liabilities and equity are credit-positive.
long long NaturalSign(int type) {
  return type == kAccountIncome || type == kAccountLiability || type == kAccountEquity ? -1 : 1;
}

void AddFigures(LReportTable& table, LReportRowKind kind, const std::string& label, long long budget, long long actual,
                int indent) {
  LReportRow& row = table.AddRow(kind, label, {budget, actual, actual - budget, std::nullopt}, indent);
  row.texts = {"", "", "", Percent(actual - budget, budget)};
}

}  // namespace

bool LBudgetReport(LProfile& profile, const LBudget& budget, const LDTPeriod& period, LReportTable& table,
                   std::string& error) {
  LDate from, to, yearStart;
  if (!LDate::Parse(period.from, from) || !LDate::Parse(period.to, to) || to < from ||
      !LDate::Parse(LBudgetPeriod(profile, budget.year).from, yearStart)) {
    error = "Période invalide.";
    return false;
  }
  // Each month's actual amounts: one totalling of the month's part of the period.
  struct Month {
    LDate first;
    int budgetMonth;  // 0..11, or -1 outside the budget's year
    std::map<std::string, long long> actual;
  };
  std::vector<Month> months;
  LAccountList chart(profile);
  std::map<std::string, std::pair<std::string, int>> accounts;  // number -> description, type
  for (const LBudgetLine& line : budget.lines) {
    LAccount account;
    if (chart.Open(account, line.account)) accounts[line.account] = {account.GetDescription(), account.GetType()};
    account.DetachWithoutSave();
  }
  for (int index = from.MonthIndex(); index <= to.MonthIndex(); ++index) {
    LDate first(index / 12, index % 12 + 1, 1);
    LDate last(first.year, first.month, LDaysInMonth(first.year, first.month));
    int budgetMonth = index - yearStart.MonthIndex();
    Month month{first, budgetMonth >= 0 && budgetMonth < 12 ? budgetMonth : -1, {}};
    LAccountTotalerProcess totaler(profile);
    totaler.from = std::max(first, from).ToText();
    totaler.to = std::min(last, to).ToText();
    LProcessInterfaceVoid quiet;
    if (Process(quiet, totaler) != kProcessFinished) {
      error = "Période invalide.";
      return false;
    }
    for (const LAccountTotalerItem& item : totaler.result.Items())
      if (accounts.count(item.number)) month.actual[item.number] += item.amount * NaturalSign(item.type);
    months.push_back(std::move(month));
  }

  table = LReportTable();
  table.title = "Budget et réalisé : " + budget.name;
  table.subtitle = "Du " + period.from + " au " + period.to;
  table.columns = {"Budget", "Réel", "Écart", "Écart %"};
  long long budgetTotal = 0, actualTotal = 0;
  for (const LBudgetLine& line : budget.lines) {
    std::string label = line.account + " " + accounts[line.account].first;
    table.AddHeading(label);
    long long lineBudget = 0, lineActual = 0;
    for (const Month& month : months) {
      long long planned = month.budgetMonth >= 0 ? line.months[month.budgetMonth] : 0;
      auto found = month.actual.find(line.account);
      long long actual = found == month.actual.end() ? 0 : found->second;
      AddFigures(table, LReportRowKind::kAccount, std::string(LMonthName(month.first.month)) + " " +
                 std::to_string(month.first.year), planned, actual, 1);
      lineBudget += planned;
      lineActual += actual;
    }
    AddFigures(table, LReportRowKind::kTotal, "Total " + label, lineBudget, lineActual, 0);
    budgetTotal += lineBudget;
    actualTotal += lineActual;
  }
  AddFigures(table, LReportRowKind::kResult, "Total du budget", budgetTotal, actualTotal, 0);
  return true;
}
