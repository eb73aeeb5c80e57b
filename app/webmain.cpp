#include "app/webmain.h"

#include "llib/web/webformat.h"
#include "llib/web/webletform.h"

LWebPageMain::LWebPageMain(LWebletForm& form) : LWebPageMainEx(form, "main", "Page principale") {}

void LWebPageMain::Generate() {
  std::string name = LWebCompanyName(WLSessionBusinessFolder(form_));
  if (name.empty()) name = "Société sans nom";
  form_.wfprintf("<h1 class=companyname>%H</h1>", name.c_str());
  std::string links = "<ul class=mainlinks>";
  for (const LWebNavTab& tab : WLVisibleNavTabs(form_))
    if (tab.target != "main")
      links += LWebFormat("<li><a href='%s'>%H</a></li>", tab.target.c_str(), tab.text.c_str());
  links += "<li><a href='chooseprofile'>Changer de société</a></li>";
  links += "<li><a href='changepassword'>Changer le mot de passe</a></li>";
  links += "<li><a href='logoff'>Déconnexion</a></li></ul>";
  form_.Write(links);
}
