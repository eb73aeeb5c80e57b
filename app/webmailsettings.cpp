// Route "settingsmail": the user's e-mail settings, checked and stored as `kontavo mail config`
// does, and a button that stores them and then sends a test message through them.
#include "app/websettings.h"
#include "llib/net/emailsettings.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"

namespace {

constexpr int kServerControl = 101;
constexpr int kUserControl = 102;
constexpr int kPasswordControl = 103;
constexpr int kSenderControl = 104;
constexpr int kReplyToControl = 105;
constexpr int kStartTlsControl = 106;
constexpr int kVerifyControl = 107;
constexpr int kTestToControl = 110;
constexpr std::string_view kTestButton = "Envoyer un message d'essai";

}  // namespace

LWebMailSettingsDialog::LWebMailSettingsDialog(LWebletForm& form)
    : LWebSettingsDialog(form, "settingsmail", "courrier électronique") {
  AddSpecialSubmit(kTestButton, "settingsmail");
}

void LWebMailSettingsDialog::InitDialog() {
  LEmailSettings settings = LEmailSettingsLoad();
  SetText(kServerControl, settings.server);
  SetText(kUserControl, settings.user);
  SetText(kSenderControl, settings.sender);
  SetText(kReplyToControl, settings.replyTo);
  SetCheck(kStartTlsControl, settings.useEncryption);
  SetCheck(kVerifyControl, settings.verifyCertificate);
  SetText(kTestToControl, settings.sender);
}

void LWebMailSettingsDialog::Generate() {
  std::string sent = form_.GetParam("sent");
  if (!sent.empty()) AddStaticBold("Le message d'essai a été envoyé à " + sent + ".");
  AddInput(kServerControl, "Serveur SMTP (hôte[:port]) :", "", 30);
  AddStaticSmall("Vide : remise directe au serveur de chaque destinataire.");
  AddInput(kUserControl, "Utilisateur :", "", 30);
  AddInputPassword(kPasswordControl, "Mot de passe :", 30);
  AddStaticSmall(LEmailSettingsLoad().password.empty() ? "Aucun mot de passe n'est enregistré."
                                                        : "Laissez vide pour garder le mot de passe enregistré.");
  AddInputEmailAddress(kSenderControl, "Adresse de l'expéditeur :", "", 30);
  AddInputEmailAddress(kReplyToControl, "Adresse de réponse :", "", 30);
  AddCheckBox(kStartTlsControl, "Chiffrer la connexion (STARTTLS) quand le serveur le propose");
  AddCheckBox(kVerifyControl, "Vérifier le certificat du serveur");
  StartGroupBox("Message d'essai");
  AddInputEmailAddress(kTestToControl, "Destinataire :", "", 30);
  EndGroupBox();
}

bool LWebMailSettingsDialog::CmOk() {
  LEmailSettings settings = LEmailSettingsLoad();
  settings.server = GetTextAndTrim(kServerControl);
  settings.user = GetTextAndTrim(kUserControl);
  if (std::string password = GetText(kPasswordControl); !password.empty()) settings.password = password;
  settings.sender = GetTextAndTrim(kSenderControl);
  settings.replyTo = GetTextAndTrim(kReplyToControl);
  settings.useEncryption = IsChecked(kStartTlsControl);
  settings.verifyCertificate = IsChecked(kVerifyControl);
  if (std::string problem = LEmailSettingsCheck(settings); !problem.empty()) {
    PopupControlDataInvalid(problem.starts_with("Serveur") ? kServerControl
                            : problem.ends_with(settings.sender) && !settings.sender.empty() ? kSenderControl
                                                                                             : kReplyToControl,
                            problem);
    return false;
  }
  if (!LEmailSettingsSave(settings)) {
    PopupBoxError("Impossible d'enregistrer les réglages de messagerie.");
    return false;
  }
  if (form_.GetParam("submit") != kTestButton) return true;
  std::string to = GetTextAndTrim(kTestToControl);
  if (to.empty()) {
    PopupControlDataInvalid(kTestToControl, "Veuillez entrer l'adresse du destinataire du message d'essai.");
    return false;
  }
  std::string error;
  if (!LEmailSendTestMessage(settings, to, error)) {
    PopupBoxError(error);
    return false;
  }
  WriteAnswerScript(LWebFormat("window.location = 'settingsmail?sent=%U';\n", to.c_str()));
  SetAnswerWritten();
  return true;
}
