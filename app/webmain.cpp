#include "app/webmain.h"

#include <memory>
#include <string>
#include <vector>

#include "accounts/accounts.h"
#include "accounts/webdashboard.h"
#include "invoice/shared/profile.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"

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
    if (tab.target != "main")
      links += LWebFormat("<li><a href='%s'>%H</a></li>", tab.target.c_str(), tab.text.c_str());
  links += "<li><a href='chooseprofile'>Changer de société</a></li>";
  // The desk has no web account, hence no password of its own.
  if (!WLIsDeskSession(form_)) links += "<li><a href='changepassword'>Changer le mot de passe</a></li>";
  links += "<li><a href='logoff'>Déconnexion</a></li></ul>";
  form_.Write(links);
  LProfile profile(WLSessionBusinessFolder(form_));
  form_.Write(LWebDashboardCharts(profile, LDate::Today()));
  WriteChartOfAccounts();
}

namespace {

// A group of the chart: a header account and the accounts that follow it up to the next header
// (the accounts before the first header form a group without a heading).
struct ChartGroup {
  std::string number;       // of the header account; empty for the leading group
  std::string description;
  std::string rows;         // the rows of its accounts, as HTML
  int nAccounts = 0;
};

constexpr const char* kChartColumns =
    "<colgroup><col style='width:15%'><col style='width:45%'><col style='width:20%'><col style='width:20%'></colgroup>";

}  // namespace

void LWebPageMain::WriteChartOfAccounts() {
  LProfile profile(WLSessionBusinessFolder(form_));
  LAccountList accounts(profile);
  const LCurrencyFormat& currency = profile.GetCurrencyFormat();
  std::vector<ChartGroup> groups(1);
  int nAccounts = 0;
  LAccount account;
  for (const std::string& number : accounts.GetNumbers()) {
    if (!accounts.Open(account, number)) continue;
    if (account.IsHeader() && !account.IsDeleted()) {
      groups.push_back({number, account.GetDescription(), {}, 0});
    } else if (!account.IsDeleted()) {
      ChartGroup& group = groups.back();
      group.rows += LWebFormat("<tr><td class=hltd>%H</td><td class=hltd>%H</td><td class=hltd>%H</td>"
                               "<td class=hltd align=right>%H</td></tr>",
                               number.c_str(), account.GetDescription().c_str(), std::string(account.GetTypeString()).c_str(),
                               LFormatMoney(account.GetTotalBalance(), currency).c_str());
      ++group.nAccounts;
      ++nAccounts;
    }
    account.DetachWithoutSave();
  }
  // Groups are closed until clicked (the browser's own <details>, no script needed); "Tout
  // déplier" shows the page with every group open, for printing or searching in the page.
  bool allOpen = form_.GetParam("chart") == "open";
  form_.wfprintf("<div class=chartofaccounts><h2>Plan comptable (%d comptes)</h2>"
                 "<p class=chartactions><a href='main?chart=open'>Tout déplier</a> · <a href='main'>Tout replier</a></p>"
                 "<table class='hltbl chartheading' style='width:100%%'>%s<thead><tr class=hlhtr>"
                 "<th class=hlhtd style='text-align:left'>Numéro</th><th class=hlhtd style='text-align:left'>Compte</th>"
                 "<th class=hlhtd style='text-align:left'>Type</th><th class=hlhtd style='text-align:right'>Solde</th>"
                 "</tr></thead></table>",
                 nAccounts, kChartColumns);
  for (const ChartGroup& group : groups) {
    if (group.number.empty() && group.nAccounts == 0) continue;
    std::string table = LWebFormat("<table class='hltbl chartgroup' style='width:100%%'>%s<tbody>", kChartColumns) +
                        group.rows + "</tbody></table>";
    if (group.number.empty()) {
      form_.Write(table);
      continue;
    }
    form_.wfprintf("<details class=accountgroup%s><summary><span class=groupnumber>%H</span> <b>%H</b> "
                   "<span class=groupcount>(%d)</span></summary>",
                   allOpen ? " open" : "", group.number.c_str(), group.description.c_str(), group.nAccounts);
    form_.Write(table + "</details>");
  }
  form_.Write("</div>");
}
