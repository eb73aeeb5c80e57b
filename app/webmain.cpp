#include "app/webmain.h"

#include <memory>

#include "accounts/accounts.h"
#include "accounts/webdashboard.h"
#include "invoice/shared/profile.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/weblist.h"

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
  if (WLIsAdministator(form_)) links += "<li><a href='settings'>Coordonnées et mentions légales</a></li>";
  links += "<li><a href='chooseprofile'>Changer de société</a></li>";
  // The desk has no web account, hence no password of its own.
  if (!WLIsDeskSession(form_)) links += "<li><a href='changepassword'>Changer le mot de passe</a></li>";
  links += "<li><a href='logoff'>Déconnexion</a></li></ul>";
  form_.Write(links);
  LProfile profile(WLSessionBusinessFolder(form_));
  form_.Write(LWebDashboardCharts(profile, LDate::Today()));
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
