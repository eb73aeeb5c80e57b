#include "app/weblogonpages.h"

#include "app/maindialog.h"
#include "llib/web/webaccount.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/net/emailaddress.h"

namespace {

constexpr std::string_view kNoProfiles = "L'utilisateur n'a pas de profils de société autorisés";
constexpr int kFirstBusinessRadio = 301;
constexpr int kOldPasswordControl = 101;
constexpr int kNewPasswordControl = 102;
constexpr int kConfirmPasswordControl = 103;
constexpr int kLostEmailControl = 101;

bool OpenSessionAccount(LWebletForm& form, LWebAccount& account) {
  std::string user;
  form.session.GetString("user", "", user);
  return !user.empty() && LWebAccountList().Open(account, user);
}

}  // namespace

// ---- Logon ----------------------------------------------------------------------------------------

bool LAppWebAccountLogonPage::LogonSucceeded(const std::string& user, bool remember) {
  LWebAccount account;
  if (!LWebAccountList().Open(account, user)) return false;
  std::string last = account.GetLastUsedProfiles();
  bool administrator = account.IsAdministrator();
  if (!last.empty() && !administrator && account.GetProfiles().empty()) {
    PopupControlDataInvalid(kLogonEmailControl, kNoProfiles);
    return false;
  }
  StartSession(user, remember);
  std::string next = "chooseprofile";
  LWebBusiness business;
  if (!last.empty() && (administrator || account.HasProfile(last)) && LWebFindBusiness(last, business)) {
    form_.session.SetString("profile", business.folder);
    next = "main";
  }
  AnswerCookieAndGo(remember, next);
  return true;
}

void WLLogon(LWebletForm& form) {
  if (form.session.IsPresent()) {
    WLRedirect(form, LWebSafeTarget(form.GetParam("onok"), "main"));
    return;
  }
  LAppWebAccountLogonPage page(form);
  page.Run();
}

// ---- Business chooser ----------------------------------------------------------------------------

LWebSelectProfileDialog::LWebSelectProfileDialog(LWebletForm& form) : LWebDialog(form, "chooseprofile") {
  SetTitle("Choisir la société");
  AddNavLink("help/businesslist.html", "Aide");
  AddNavLink("main", "Page principale");
  AddNavLink("logoff", "Déconnexion");
  SetOkPage("main");
  SetCancelPage("main");
}

bool LWebSelectProfileDialog::Authenticate() {
  if (WLIsDeskSession(form_)) {
    administrator_ = true;
    allowed_ = WLSessionBusinesses(form_);
    return true;
  }
  LWebAccount account;
  if (!form_.session.IsPresent() || !OpenSessionAccount(form_, account) || !account.IsEnabled()) {
    form_.session.DestroySession();
    WLRedirect(form_, "logon");
    return false;
  }
  administrator_ = account.IsAdministrator();
  allowed_ = WLSessionBusinesses(form_);
  return true;
}

void LWebSelectProfileDialog::PrintHeader() {
  WLStandardHeader(form_, navLinks_, title_, WLSessionUserName(form_), styleCss_);
}

void LWebSelectProfileDialog::InitDialog() {
  std::string current;
  form_.session.GetString("profile", "", current);
  for (std::size_t i = 0; i < allowed_.size(); ++i)
    if (allowed_[i].folder == current) SetRadioCheck(kFirstBusinessRadio + static_cast<int>(i));
  if (GetRadioChoice(kFirstBusinessRadio) == 0 && !allowed_.empty()) SetRadioCheck(kFirstBusinessRadio);
}

void LWebSelectProfileDialog::Generate() {
  std::string current;
  form_.session.GetString("profile", "", current);
  std::string currentName = current.empty() ? "" : LWebCompanyName(current);
  AddStatic(LWebFormat("Profil de la société actuelle : %s", currentName.c_str()));
  if (allowed_.empty()) {
    AddRowError(kNoProfiles);
    return;
  }
  AddStaticBold("Sélectionner le profil de la nouvelle société :");
  // Radio groups hold a hundred ids: 301 to 399.
  for (std::size_t i = 0; i < allowed_.size() && i < 99; ++i)
    AddRadioButton(kFirstBusinessRadio + static_cast<int>(i), allowed_[i].name);
}

bool LWebSelectProfileDialog::CmOk() {
  int index = GetRadioChoice(kFirstBusinessRadio) - kFirstBusinessRadio;
  if (allowed_.empty() || index < 0 || index >= static_cast<int>(allowed_.size())) {
    PopupBoxError(allowed_.empty() ? std::string(kNoProfiles) : "Veuillez choisir une société.");
    return false;
  }
  const LWebBusiness& chosen = allowed_[static_cast<std::size_t>(index)];
  form_.session.SetString("profile", chosen.folder);
  // The desk opens, next time, the business it worked in last, as the desktop does.
  if (WLIsDeskSession(form_) && !MainDialog::SetWorkingFolder(chosen.folder)) {
    PopupBoxError(std::string(kWorkingFolderNotStored));
    return false;
  }
  LWebAccount account;
  if (OpenSessionAccount(form_, account)) account.SetString("LastUsedProfiles", chosen.name);
  return true;
}

// ---- Change password -----------------------------------------------------------------------------

LWebChangePasswordDialog::LWebChangePasswordDialog(LWebletForm& form) : LWebDialogEx(form, "changepassword") {
  SetTitle("Changer le mot de passe");
  AddNavLink("help/login.html", "Aide");
  AddNavLink("main", "Page principale");
  SetOkPage("changepasswordchanged");
  SetCancelPage("main");
}

bool LWebChangePasswordDialog::Authenticate() { return AuthenticateEx(form_); }

void LWebChangePasswordDialog::Generate() {
  AddInputPassword(kOldPasswordControl, "Ancien mot de passe:", 27);
  AddInputPassword(kNewPasswordControl, "Nouveau mot de passe:", 27);
  AddInputPassword(kConfirmPasswordControl, "Confirmez le mot de passe:", 27);
}

bool LWebChangePasswordDialog::CmOk() {
  std::string newPassword = GetText(kNewPasswordControl);
  if (newPassword.empty()) {
    PopupControlDataInvalid(kNewPasswordControl, "Mot de passe vide non autorisé. Veuillez entrer un mot de passe.");
    return false;
  }
  if (newPassword.size() < static_cast<std::size_t>(kWebPasswordMinLength)) {
    PopupControlDataInvalid(kNewPasswordControl, LWebFormat("Le mot de passe du compte doit contenir au moins %d "
                                                            "caractères.",
                                                            kWebPasswordMinLength));
    return false;
  }
  if (newPassword != GetText(kConfirmPasswordControl)) {
    PopupControlDataInvalid(kConfirmPasswordControl,
                            "Le nouveau mot de passe que vous venez de confirmer ne correspond pas à celui qui "
                            "avait été indiqué initialement.");
    return false;
  }
  LWebAccount account;
  if (!OpenSessionAccount(form_, account) || !account.HasPassword(GetText(kOldPasswordControl))) {
    PopupControlDataInvalid(kOldPasswordControl, "Mot de passe non valide. Veuillez réessayer.");
    return false;
  }
  if (!account.SetPassword(newPassword) || !account.Flush()) {
    PopupBoxError("Le mot de passe n'a pas pu être enregistré.");
    return false;
  }
  return true;
}

LWebChangePasswordChangedPage::LWebChangePasswordChangedPage(LWebletForm& form) : LWebPageEx(form) {
  SetTitle("Mot de passe changé");
  AddNavLink("main", "Page principale");
}

void LWebChangePasswordChangedPage::Generate() {
  form_.Write("<center>Your password has been changed.<p>Click <a href='main'>here</a> to return.</center>");
}

// ---- Lost password -------------------------------------------------------------------------------

LWebLostPasswordDialog::LWebLostPasswordDialog(LWebletForm& form) : LWebDialog(form, "lostpassword") {
  SetTitle("Mot de passe oublié");
  AddNavLink("help/login.html", "Aide");
  AddNavLink("logon", "Connexion");
  SetOkPage("lostpasswordsent");
  SetCancelPage("logon");
}

void LWebLostPasswordDialog::Generate() {
  AddStatic("Veuillez entrer votre adresse de courriel. Votre mot de passe sera réinitialisé et vous sera "
            "envoyé par courriel.");
  AddInputEmailAddress(kLostEmailControl, "Adresse de courriel :", "", 30);
}

bool LWebLostPasswordDialog::CmOk() {
  std::string email = GetTextAndTrim(kLostEmailControl);
  if (email.empty()) {
    PopupControlDataInvalid(kLostEmailControl, "Veuillez entrer votre adresse de courriel.");
    return false;
  }
  std::string id = LWebAccountIdFromEmail(email);
  if (!LEmail::ValidateAddress(id)) {
    PopupControlDataInvalid(kLostEmailControl, "Cette adresse de courriel n'est pas valide. Veuillez réessayer.");
    return false;
  }
  std::string password;
  if (!LWebAccountForgotPassword(id, password)) {
    PopupControlDataInvalid(kLostEmailControl,
                            "Cet utilisateur n'existe pas dans le Kontavo - Logiciel de comptabilité Système");
    return false;
  }
  LWebAccountSendPassword(id, password);
  return true;
}

LWebLostPasswordSentPage::LWebLostPasswordSentPage(LWebletForm& form) : LWebPage(form) {
  SetTitle("Mot de passe envoyé");
  AddNavLink("logon", "Connexion");
}

void LWebLostPasswordSentPage::Generate() {
  form_.Write("<center>Votre mot de passe a été réinitialisé et a été envoyé à votre adresse de courriel.<p>Cliquez "
              "<a href=\"logon\">ici</a> pour ouvrir une session lorsque vous recevez votre mot de passe.</center>");
}
