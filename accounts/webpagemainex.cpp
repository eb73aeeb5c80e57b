#include "accounts/webpagemainex.h"

#include <utility>

#include "accounts/accounts.h"
#include "accounts/accounttotaller.h"
#include "invoice/shared/fiscalyear.h"
#include "invoice/shared/profile.h"
#include "llib/gen/date.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"

namespace {

constexpr int kInfoPaneWidthPercent = 30;

}  // namespace

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
  LDTPeriod year = LFiscalYearOf(profile, LDate::Today());
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
