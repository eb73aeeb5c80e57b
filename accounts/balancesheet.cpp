#include "accounts/balancesheet.h"

#include "accounts/statementprinter.h"

bool LBalanceSheet(LProfile& profile, const std::string& date, const std::vector<LProfilesAndRates>& businesses,
                   LReportTable& table) {
  LAccountTotalerList totals;
  if (!LStatementTotal(profile, LDTPeriod{"", date}, businesses, totals)) return false;
  bool includeZero = LStatementIncludeZero(profile);
  table.title = "Bilan";
  table.subtitle = "Au " + date;
  table.columns = {"Au " + date};
  LStatementPrinter printer(table, {&totals}, includeZero);
  // Every section of the sheet is shown, even empty: its totals are what the sheet balances on.
  auto section = [&](std::string_view heading, std::string_view totalLabel, AccountType type) {
    table.AddHeading(heading);
    long long total = printer.PrintSubAccounts("", 1, {type, 0, false, type == kAccountAsset ? +1 : -1}).front();
    table.AddRow(LReportRowKind::kTotal, totalLabel, {total});
    return total;
  };
  long long assets = section("Actifs", "Total des actifs :", kAccountAsset);
  long long liabilities = section("Passif", "Total du passif :", kAccountLiability);
  long long netAssets = assets - liabilities;
  table.AddRow(LReportRowKind::kResult, "Actif net", {netAssets});
  table.AddHeading("Capitaux propres");
  long long equity = printer.PrintSubAccounts("", 1, {kAccountEquity, 0, false, -1}).front();
  long long retained = netAssets - equity;
  if (includeZero || retained != 0) table.AddRow(LReportRowKind::kAccount, "Bénéfices non distribués", {retained}, 1);
  table.AddRow(LReportRowKind::kTotal, "Total capitaux propres :", {netAssets});
  return true;
}
