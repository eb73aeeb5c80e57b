// The settings list ("settingsmenu") and what every settings dialog shares.
#include <string_view>

#include "app/websettings.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"

namespace {

struct SettingsPage {
  std::string_view route;
  std::string_view title;
  std::string_view summary;
};
constexpr SettingsPage kPages[] = {
    {"settings", "Coordonnées et mentions légales", "nom, adresse, SIREN, SIRET, TVA intracommunautaire, capital"},
    {"settingsregional", "Réglages régionaux", "symbole monétaire, symboles des nombres, ordre des dates"},
    {"settingstax", "Taxes", "noms, taux, comptes et taxe par défaut"},
    {"settingsdocuments", "Options des documents", "notes, pieds de page, conditions de paiement, remises"},
    {"settingslinked", "Comptes associés", "les comptes utilisés par les factures, paiements et achats"},
    {"settingsmail", "Courrier électronique", "serveur SMTP, expéditeur, message d'essai"},
    {"settingsweb", "Serveur Web", "activation et port"},
    {"settingsclosing", "Date de clôture", "livres clôturés jusqu'à une date"},
    {"backup", "Sauvegarde et restauration", "copie de toutes les sociétés, restauration"},
};

}  // namespace

LWebSettingsDialog::LWebSettingsDialog(LWebletForm& form, std::string_view routeName, std::string_view title)
    : LWebDialogEx(form, routeName) {
  SetTitle("Réglages : " + std::string(title));
  AddNavLink("settingsmenu", "Réglages");
  AddNavLink("main", "Page principale");
  AddNavLink("help/settings.html", "Aide");
  SetOkPage("settingsmenu");
  SetCancelPage("settingsmenu");
}

LWebSettingsMenuPage::LWebSettingsMenuPage(LWebletForm& form) : LWebPageWithNavTabs(form, "settingsmenu") {
  SetTitle("Réglages");
  AddNavLink("logoff", "Déconnexion");
}

void LWebSettingsMenuPage::Generate() {
  std::string html = "<ul class=settingslist>";
  for (const SettingsPage& page : kPages)
    html += LWebFormat("<li><a href='%s'>%H</a> : %H</li>", std::string(page.route).c_str(),
                       std::string(page.title).c_str(), std::string(page.summary).c_str());
  form_.Write(html + "</ul>");
}
