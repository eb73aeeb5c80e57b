#include "app/webuser.h"

#include "llib/gen/log.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/weblist.h"
#include "llib/web/weblogon.h"
#include "llib/net/emailaddress.h"

namespace {

constexpr int kEmailControl = 101;
constexpr int kNameControl = 102;
constexpr int kPasswordControl = 103;
constexpr int kConfirmControl = 104;
constexpr int kEnabledControl = 200;
constexpr int kAdministratorRadio = 301;
constexpr int kUserRadio = 302;
constexpr int kViewerRadio = 303;
constexpr int kFirstBusinessControl = 1000;

}  // namespace

// ---- Checks and storage ---------------------------------------------------------------------------

std::string LAppWebAccountCheck(const LAppWebAccountInput& input) {
  if (input.displayName.empty()) return "Veuillez entrer un nom pour l'utilisateur.";
  if (input.email.empty() || !LEmail::ValidateAddress(input.email))
    return "Adresse de courriel non valide.\nVeuillez entrer une adresse de courriel valide pour créer un nouveau "
           "compte.";
  std::string id = LWebAccountIdFromEmail(input.email);
  if (id != input.originalId && LWebAccountList().TestRecordExists(id))
    return "Cette adresse de courriel est utilisée actuellement par un autre compte.\nVeuillez entrer une autre "
           "adresse de courriel pour créer un autre compte.";
  // An account being edited keeps its password when both fields are left empty: the stored
  // hash cannot be shown back.
  if (!input.originalId.empty() && input.password.empty() && input.confirmation.empty()) return {};
  if (input.password.size() < static_cast<std::size_t>(kWebPasswordMinLength))
    return "Veuillez entrer le mot de passe du compte.\nIl doit contenir au moins 6 caractères.";
  if (input.password != input.confirmation)
    return "Veuillez entrer le mot de passe du compte deux fois.\nLes mots de passe doivent correspondre.";
  return {};
}

bool LAppWebAccountStore(const LAppWebAccountInput& input, bool enabled, int privilege,
                         const std::string& profiles) {
  std::string id = LWebAccountIdFromEmail(input.email);
  LAppWebAccount account;
  LFileStoreListBase list = LWebAccountList();
  bool existed = !input.originalId.empty() && list.Open(account, input.originalId);
  if (!existed) list.CreateNewRecord(account, id);
  bool wasEnabled = existed && account.IsEnabled();
  account.SetPrimaryKey(id);
  account.SetString("DisplayName", input.displayName);
  if (!input.password.empty() && !account.SetPassword(input.password)) return false;
  account.SetBool("Enabled", enabled);
  account.SetBool("Administrator", privilege == kWebPrivilegeAdministrator);
  account.SetInt("Priviligies", privilege);
  account.SetString("Profiles", profiles);
  bool saved = account.Flush();
  if (enabled != wasEnabled && (existed || enabled))
    LLogInfo("%s%s", enabled ? "Le compte a été activé pour " : "Le compte a été désactivé pour ", id.c_str());
  return saved;
}

// ---- "userlist" ----------------------------------------------------------------------------------

LAppWebAccountsPage::LAppWebAccountsPage(LWebletForm& form) : LWebPageWithNavTabs(form, "userlist") {
  SetTitle("Utilisateurs Web");
  AddNavLink("main", "Page principale");
  AddNavLink("logoff", "Déconnexion");
}

bool LAppWebAccountsPage::Authenticate() { return AuthenticateAdministrator(form_); }

void LAppWebAccountsPage::Generate() {
  LHtmlList list(form_, 0, true);
  list.AddColumn("Adresse de courriel", 40, kListAlignLeft, true);
  list.AddColumn("Utilisateur", 35, kListAlignLeft, true);
  list.AddColumn("Activé", 10, kListAlignCenter, true);
  list.AddColumn("", 15, kListAlignCenter, false);
  LAppWebAccount account;
  LFileStoreListBase accounts = LWebAccountList();
  int index = 0;
  for (LFileStoreIteratorBase it(accounts, account); account.IsAttached(); it.Next(account)) {
    const std::string& id = account.GetId();
    auto row = std::make_unique<LHtmlListRow>();
    row->AddCellTextLink(LWebFormat("userprop?id=%U&onok=userlist&oncancel=userlist", id.c_str()), id);
    row->AddCellText(account.GetDisplayName());
    row->AddCell(account.IsEnabled() ? "1" : "0",
                 LWebFormat("<input type=checkbox name=\"check%d\" value=\"%s\" %s disabled>", index,
                            LHtmlEscape(id).c_str(), account.IsEnabled() ? "checked" : ""));
    row->AddCell("", LWebFormat("<a href='userdelete?id=%U' class=deletelink onclick=\"return confirm('%s')\">"
                                "Supprimer</a>",
                                id.c_str(), LHtmlEscape(LJScriptEscape("Supprimer le compte " + id + " ?")).c_str()));
    list.AddRow(std::move(row));
    ++index;
  }
  UseListScript();
  list.Write(form_, 100);
  form_.Write("<p><a href='userprop?onok=userlist&oncancel=userlist' class=actionlink>Ajouter un nouvel "
              "utilisateur</a></p>");
}

// ---- "userprop" ----------------------------------------------------------------------------------

LAppWebAccountDialog::LAppWebAccountDialog(LWebletForm& form)
    : LWebDialogEx(form, "userprop"), businesses_(LWebBusinessList()) {
  SetTitle("Compte d'utilisateur Web");
  AddNavLink("help/userlist.html", "Aide");
  AddNavLink("userlist", "Utilisateurs");
  AddNavLink("main", "Page principale");
  SetOkPage("userlist");
  SetCancelPage("userlist");
}

bool LAppWebAccountDialog::Authenticate() { return AuthenticateAdministrator(form_); }

void LAppWebAccountDialog::InitDialog() {
  std::string id = form_.GetParam("id");
  LAppWebAccount account;
  if (id.empty() || !LWebAccountList().Open(account, id)) {
    SetCheck(kEnabledControl, true);
    SetRadioCheck(kUserRadio);
    return;
  }
  SetText(kEmailControl, account.GetId());
  SetText(kNameControl, account.GetDisplayName());
  SetCheck(kEnabledControl, account.IsEnabled());
  int privilege = account.IsAdministrator() ? kWebPrivilegeAdministrator : account.GetPriviligies();
  SetRadioCheck(privilege == kWebPrivilegeAdministrator ? kAdministratorRadio
                : privilege == kWebPrivilegeViewer      ? kViewerRadio
                                                        : kUserRadio);
  for (std::size_t i = 0; i < businesses_.size(); ++i)
    SetCheck(kFirstBusinessControl + static_cast<int>(i), account.HasProfile(businesses_[i].name));
}

void LAppWebAccountDialog::Generate() {
  AddHiddenField("id", form_.GetParam("id"));
  AddInputEmailAddress(kEmailControl, "Adresse de courriel :", "", 30);
  AddInput(kNameControl, "Utilisateur:", "", 30);
  AddInputPassword(kPasswordControl, "Mot de passe d'accès Web :", 30);
  AddInputPassword(kConfirmControl, "Confirmer le mot de passe :", 30);
  if (!form_.GetParam("id").empty()) AddStaticSmall("Laissez les deux champs vides pour garder le mot de passe actuel.");
  AddCheckBox(kEnabledControl, "Compte activé");
  StartGroupBox("Droits");
  AddRadioButton(kAdministratorRadio, "Administrateur", true);
  AddRadioButton(kUserRadio, "Utilisateur", true);
  AddRadioButton(kViewerRadio, "Afficheur", true);
  EndGroupBox();
  StartGroupBox("Sociétés autorisées");
  for (std::size_t i = 0; i < businesses_.size(); ++i)
    AddCheckBox(kFirstBusinessControl + static_cast<int>(i), businesses_[i].name);
  EndGroupBox();
}

void LAppWebAccountDialog::EnableControls() {
  // An administrator opens every business: its boxes are ticked and cannot be changed.
  if (businesses_.empty()) return;
  AddEnableScript(LWebFormat(
      "var admin = document.getElementById('%d') != null && document.getElementById('%d').checked;"
      "for (var i = %d; i <= %d; i++) {var box = document.getElementById(String(i)); if (box) {if (admin) "
      "box.checked = true; box.disabled = admin;}}",
      kAdministratorRadio, kAdministratorRadio, kFirstBusinessControl,
      kFirstBusinessControl + static_cast<int>(businesses_.size()) - 1));
}

bool LAppWebAccountDialog::CmOk() {
  LAppWebAccountInput input;
  input.originalId = LWebAccountIdFromEmail(form_.GetParam("id"));
  input.email = GetTextAndTrim(kEmailControl);
  input.displayName = GetTextAndTrim(kNameControl);
  input.password = GetText(kPasswordControl);
  input.confirmation = GetText(kConfirmControl);
  std::string refusal = LAppWebAccountCheck(input);
  if (!refusal.empty()) {
    int control = refusal.starts_with("Veuillez entrer un nom") ? kNameControl
                  : refusal.find("courriel") != std::string::npos ? kEmailControl
                                                                  : kPasswordControl;
    PopupControlDataInvalid(control, refusal);
    return false;
  }
  int privilege = GetRadioCheck(kAdministratorRadio) ? kWebPrivilegeAdministrator
                  : GetRadioCheck(kViewerRadio)      ? kWebPrivilegeViewer
                                                     : kWebPrivilegeUser;
  std::string profiles;
  for (std::size_t i = 0; i < businesses_.size(); ++i) {
    if (privilege != kWebPrivilegeAdministrator && !IsChecked(kFirstBusinessControl + static_cast<int>(i)))
      continue;
    if (!profiles.empty()) profiles += ",";
    profiles += businesses_[i].name;
  }
  if (!LAppWebAccountStore(input, IsChecked(kEnabledControl), privilege, profiles)) {
    PopupBoxError("Le compte n'a pas pu être enregistré.");
    return false;
  }
  return true;
}

// ---- "userdelete" --------------------------------------------------------------------------------

void WLUserDelete(LWebletForm& form) {
  if (!WLValidateSession(form) || !AuthenticateAdministrator(form)) return;
  std::string id = LWebAccountIdFromEmail(form.GetParam("id"));
  std::string self;
  form.session.GetString("user", "", self);
  if (!id.empty() && id != self && LWebAccountList().Delete(id))
    LLogInfo("Le compte Web \"%s\" a été supprimé.", id.c_str());
  WLRedirect(form, "userlist");
}
