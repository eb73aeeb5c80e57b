#include "app/webmain.h"

#include <algorithm>
#include <utility>

#include "accounts/accounts.h"
#include "accounts/accounttotaller.h"
#include "invoice/shared/profile.h"
#include "llib/gen/date.h"
#include "llib/gen/record.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"

namespace {

constexpr int kInfoPaneWidthPercent = 30;

// The fiscal year that holds today: it ends on the company's "FiscalYearEnd" month and
// "FiscalYearEndDay" (31 December when not set), the first such day on or after today.
LDTPeriod CurrentFiscalYear(LProfile& profile) {
  LRecord company;
  profile.List("Misc").Open(company, "Company");
  int month = company.GetInt("FiscalYearEnd", 12);
  int day = company.GetInt("FiscalYearEndDay", 31);
  if (month < 1 || month > 12) month = 12, day = 31;
  LDate today = LDate::Today();
  auto endIn = [&](int year) { return LDate(year, month, std::clamp(day, 1, LDaysInMonth(year, month))); };
  LDate end = endIn(today.year);
  if (end < today) end = endIn(today.year + 1);
  return {endIn(end.year - 1).AddDays(1).ToText(), end.ToText()};
}

}  // namespace

// ---- LWebPageMainEx ----------------------------------------------------------------------------

LWebPageMainEx::LWebPageMainEx(LWebletForm& form, std::string_view currentTab, std::string_view title)
    : LWebPageWithNavTabsEx(form, currentTab, kInfoPaneWidthPercent) {
  SetTitle(title);
  AddNavLink("chooseprofile", "Changer de société");
  AddNavLink("logoff", "Déconnexion");
}

void LWebPageMainEx::GenerateInfoPane() {
  // The year's figures come from the account totals; customers owe the receivables and
  // suppliers are owed the payables, the balances kept in their records.
  LProfile profile(WLSessionBusinessFolder(form_));
  LDTPeriod year = CurrentFiscalYear(profile);
  long long income = 0, expense = 0, profit = 0, assets = 0;
  LGetTotalIncomeExpenseProfit(profile, year, income, expense, profit);
  LGetAssets(profile, assets);
  const LCurrencyFormat& currency = profile.GetCurrencyFormat();
  const std::pair<const char*, long long> figures[] = {
      {"Recettes", income},
      {"Dépenses", expense},
      {"Bénéfice", profit},
      {"Actif", assets},
      {"Comptes clients", LGetTotalAccountsReceivable(profile)},
      {"Comptes fournisseurs", LGetTotalAccountsPayable(profile)},
  };
  form_.wfprintf("<table class=mainfigures><caption>Exercice du %H au %H</caption>", year.from.c_str(),
                 year.to.c_str());
  for (const auto& [label, amount] : figures) {
    std::string money = LFormatMoney(amount, currency);
    form_.wfprintf("<tr><td>%H</td><td class=amount>%H</td></tr>", label, money.c_str());
  }
  form_.Write("</table>");
}

// ---- LWebPageMain ------------------------------------------------------------------------------

LWebPageMain::LWebPageMain(LWebletForm& form) : LWebPageMainEx(form, "main", "Page principale") {}

void LWebPageMain::Generate() {
  std::string name = LWebCompanyName(WLSessionBusinessFolder(form_));
  if (name.empty()) name = "Société sans nom";
  form_.wfprintf("<h1 class=companyname>%H</h1>", name.c_str());
  std::string links = "<ul class=mainlinks>";
  for (const LWebNavTab& tab : WLVisibleNavTabs(form_))
    if (std::string_view(tab.target) != "main")
      links += LWebFormat("<li><a href='%s'>%H</a></li>", tab.target, tab.text);
  links += "<li><a href='chooseprofile'>Changer de société</a></li>";
  links += "<li><a href='changepassword'>Changer le mot de passe</a></li>";
  links += "<li><a href='logoff'>Déconnexion</a></li></ul>";
  form_.Write(links);
}
