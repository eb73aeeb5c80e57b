#include "accounts/webdashboard.h"

#include "accounts/dashboard.h"
#include "invoice/shared/profile.h"
#include "llib/gen/money.h"
#include "llib/web/webchart.h"
#include "llib/web/webformat.h"

namespace {

constexpr const char* kMonthNames[] = {"janv.", "févr.", "mars", "avr.", "mai", "juin",
                                       "juil.", "août", "sept.", "oct.", "nov.", "déc."};

}  // namespace

std::string LWebDashboardCharts(LProfile& profile, const LDate& today) {
  LDTPeriod year = LFiscalYearOf(profile, today);
  std::vector<LDashboardMonth> months = LDashboardMonths(profile, year, today);
  LWebChart flows{"Recettes et dépenses par mois", {}, {{"Recettes", "income", {}}, {"Dépenses", "expense", {}}}};
  LWebChart cash{"Trésorerie en fin de mois", {}, {{"Trésorerie", "cash", {}}}};
  for (const LDashboardMonth& month : months) {
    // The year goes with January and with the first month, so that a year across two is read right.
    std::string label = kMonthNames[month.month - 1];
    if (month.month == 1 || &month == &months.front()) label += " " + std::to_string(month.year % 100);
    flows.labels.push_back(label);
    cash.labels.push_back(label);
    flows.series[0].values.push_back(month.income);
    flows.series[1].values.push_back(month.expense);
    cash.series[0].values.push_back(month.cash);
  }
  const LCurrencyFormat& currency = profile.GetCurrencyFormat();
  LWebChartFormat format = [&currency](long long cents) { return LFormatMoney(cents, currency); };
  return LWebFormat("<section class=charts aria-label='Exercice du %H au %H'>", year.from.c_str(), year.to.c_str()) +
         "<figure class=chart>" + LWebBarChartSvg(flows, format) + LWebChartTable(flows, format) + "</figure>" +
         "<figure class=chart>" + LWebLineChartSvg(cash, format) + LWebChartTable(cash, format) + "</figure></section>";
}
