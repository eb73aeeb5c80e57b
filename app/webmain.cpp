#include "app/webmain.h"

#include "accounts/accounts.h"
#include "invoice/shared/profile.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"

LWebPageMain::LWebPageMain(LWebletForm& form) : LWebPageEx(form) {
  SetTitle("Page principale");
  AddNavLink("chooseprofile", "Changer de société");
  AddNavLink("logoff", "Déconnexion");
}

void LWebPageMain::Generate() {
  std::string name = LWebCompanyName(WLSessionBusinessFolder(form_));
  if (name.empty()) name = "Société sans nom";
  form_.wfprintf("<h1 class=companyname>%H</h1>", name.c_str());
  // Customers owe the receivables, suppliers are owed the payables: the balances kept in their
  // records.
  LProfile profile(WLSessionBusinessFolder(form_));
  const LCurrencyFormat& currency = profile.GetCurrencyFormat();
  std::string receivable = LFormatMoney(LGetTotalAccountsReceivable(profile), currency);
  std::string payable = LFormatMoney(LGetTotalAccountsPayable(profile), currency);
  form_.wfprintf("<table class=mainfigures><tr><td>Comptes clients</td><td class=amount>%H</td></tr>"
                 "<tr><td>Comptes fournisseurs</td><td class=amount>%H</td></tr></table>",
                 receivable.c_str(), payable.c_str());
  std::string links = "<ul class=mainlinks>";
  links += "<li><a href='chooseprofile'>Changer de société</a></li>";
  links += "<li><a href='changepassword'>Changer le mot de passe</a></li>";
  if (WLIsAdministator(form_)) links += "<li><a href='userlist'>Utilisateurs Web</a></li>";
  links += "<li><a href='logoff'>Déconnexion</a></li></ul>";
  form_.Write(links);
}
