#include "llib/web/weblogon.h"

#include "llib/gen/log.h"
#include "llib/web/webaccount.h"
#include "llib/web/webletform.h"
#include "llib/net/emailaddress.h"

namespace {

constexpr std::string_view kLogonFailed = "Échec de la connexion. Veuillez vérifier que le mot de passe est correct.";
constexpr std::string_view kCookieExpiry = "; Expires=Sun, 17 Jan 2038 19:14:07 GMT";

}  // namespace

// ---- Logon ----------------------------------------------------------------------------------------

LWebLogon::LWebLogon(LWebletForm& form) : LWebDialog(form, "logon") {
  SetTitle("Connexion");
  SetOkText("  Connexion  ");
  SetCancelText("");
  AddNavLink("help/login.html", "Aide");
  SetOkPage("main");
  SetButtonCheckBox(kLogonRememberControl, "Mémoriser mon adresse sur cet ordinateur");
}

void LWebLogon::Generate() {
  AddInputEmailAddress(kLogonEmailControl, "Courriel:", "", 27);
  AddInputPassword(kLogonPasswordControl, "Mot de passe:", 27);
  AddHyperLinkSpanRightSmall(104, "lostpassword", "Mot de passe oublié ?");
}

bool LWebLogon::Validate(const std::string& user, const std::string& password) {
  LWebAccount account;
  if (!LWebAccountList().Open(account, user) || !account.IsEnabled()) return false;
  account.Invalidate();  // the check below opens and saves the record itself
  return LWebAccountValidateLogon(user, password) == kWebLogonOk;
}

bool LWebLogon::CmOk() {
  std::string user = GetTextAndTrim(kLogonEmailControl);
  if (user.empty()) {
    PopupControlDataInvalid(kLogonEmailControl, "Veuillez entrer votre adresse de courriel.");
    return false;
  }
  user = LWebAccountIdFromEmail(user);
  if (!LEmail::ValidateAddress(user)) {
    PopupControlDataInvalid(kLogonEmailControl, "Veuillez entrer une adresse de courriel valide.");
    return false;
  }
  std::string password = GetTextAndTrim(kLogonPasswordControl);
  if (!Validate(user, password)) {
    PopupControlDataInvalid(kLogonEmailControl, kLogonFailed);
    return false;
  }
  // Disabled between the check and now.
  LWebAccount account;
  if (!LWebAccountList().Open(account, user) || !account.IsEnabled()) {
    PopupControlDataInvalid(kLogonEmailControl, "Échec d'ouverture de session. Votre compte a été désactivé.");
    return false;
  }
  return LogonSucceeded(user, IsChecked(kLogonRememberControl));
}

void LWebLogon::StartSession(const std::string& user, bool remember) {
  form_.session.CreateNewSession(remember);
  form_.session.SetString("user", user);
}

void LWebLogon::AnswerCookieAndGo(bool remember, std::string_view next) {
  if (!form_.AddHeaderLine(WLSessionCookieLine(form_, remember)))
    LLogError("Weblet: le cookie de session n'a pas pu être envoyé à %s", form_.ClientAddressText().c_str());
  Redirect(next);
  SetAnswerWritten();
}

bool LWebLogon::LogonSucceeded(const std::string& user, bool remember) {
  StartSession(user, remember);
  AnswerCookieAndGo(remember, LWebSafeTarget(form_.GetParam("onok"), "main"));
  return true;
}

std::string WLSessionCookieLine(const LWebletForm& form, bool remember) {
  // Session ids are letters and digits: nothing in them needs quoting.
  return "Set-Cookie: " + std::string(kWebSessionCookie) + "=" + form.session.GetSessionId() +
         "; Path=/; HttpOnly; SameSite=Strict" + (form.isSecure ? "; Secure" : "") +
         (remember ? std::string(kCookieExpiry) : "");
}

// ---- Log-off and expired sessions -----------------------------------------------------------------

LWebLogOff::LWebLogOff(LWebletForm& form) : LWebPage(form) {
  SetTitle("Déconnexion");
  AddNavLink("logon", "Connexion");
}

void LWebLogOff::Generate() {
  form_.Write("<center>Votre session est fermée.<p>Cliquez <a href=\"logon\">ici</a> pour ouvrir une nouvelle "
              "session.</center>");
}

void WLWriteSessionExpiredPage(LWebletForm& form) {
  WLStandardHeader(form, {{"logon", "Connexion"}}, "Session expirée", "", "");
  form.Write("<div class=contenttable><center>Votre session a expiré. Veuillez <a href=\"logon\"><b>cliquer "
             "ici</b></a> pour rouvrir une session.</center></div>");
  WLStandardPageFooter(form);
}

bool WLValidateSession(LWebletForm& form) {
  if (form.session.IsPresent()) return true;
  WLWriteSessionExpiredPage(form);
  return false;
}

void WLLogout(LWebletForm& form) {
  if (!WLValidateSession(form)) return;
  std::string user;
  form.session.GetString("user", "", user);
  LLogInfo("L'utilisateur Web \"%s\" a fermé sa session.", user.c_str());
  form.session.DestroySession();
  LWebLogOff page(form);
  page.Open();
}
