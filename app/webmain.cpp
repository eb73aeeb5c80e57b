#include "app/webmain.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "accounts/accounts.h"
#include "accounts/accounttotaller.h"
#include "invoice/shared/profile.h"
#include "llib/gen/date.h"
#include "llib/gen/record.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/weblist.h"

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

bool LWebPageMain::Authenticate() {
  if (!LWebPageMainEx::Authenticate()) return false;
  if (!WLIsAdministator(form_) || !LWebCompanyName(WLSessionBusinessFolder(form_)).empty()) return true;
  WLRedirect(form_, "startwizard");
  return false;
}

void LWebPageMain::Generate() {
  std::string name = LWebCompanyName(WLSessionBusinessFolder(form_));
  if (name.empty()) name = "Société sans nom";
  form_.wfprintf("<h1 class=companyname>%H</h1>", name.c_str());
  std::string links = "<ul class=mainlinks>";
  for (const LWebNavTab& tab : WLVisibleNavTabs(form_))
    if (std::string_view(tab.target) != "main")
      links += LWebFormat("<li><a href='%s'>%H</a></li>", tab.target, tab.text);
  links += "<li><a href='chooseprofile'>Changer de société</a></li>";
  // The desk has no web account, hence no password of its own.
  if (!WLIsDeskSession(form_)) links += "<li><a href='changepassword'>Changer le mot de passe</a></li>";
  links += "<li><a href='logoff'>Déconnexion</a></li></ul>";
  form_.Write(links);
  WriteChartOfAccounts();
}

void LWebPageMain::WriteChartOfAccounts() {
  LProfile profile(WLSessionBusinessFolder(form_));
  LAccountList accounts(profile);
  const LCurrencyFormat& currency = profile.GetCurrencyFormat();
  LHtmlList list(form_, "coa", 0, true);
  list.SetInsertInOrder(true);
  list.AddColumn("Numéro", 15, kListAlignLeft, false);
  list.AddColumn("Compte", 45, kListAlignLeft, false);
  list.AddColumn("Type", 20, kListAlignLeft, false);
  list.AddColumn("Solde", 20, kListAlignRight, false);
  LAccount account;
  for (const std::string& number : accounts.GetNumbers()) {
    if (!accounts.Open(account, number)) continue;
    if (!account.IsDeleted()) {
      auto row = std::make_unique<LHtmlListRow>();
      row->AddCellText(number);
      row->AddCell("", LWebFormat(account.IsHeader() ? "<b>%H</b>" : "%H", account.GetDescription().c_str()));
      row->AddCellText(account.GetTypeString());
      row->AddCellText(account.IsHeader() ? std::string() : LFormatMoney(account.GetTotalBalance(), currency));
      list.AddRow(std::move(row));
    }
    account.DetachWithoutSave();
  }
  form_.wfprintf("<details class=chartofaccounts open><summary>Plan comptable (%d comptes)</summary>",
                 static_cast<int>(list.GetRowCount()));
  list.Write(form_, 100);
  form_.Write("</details>");
}
