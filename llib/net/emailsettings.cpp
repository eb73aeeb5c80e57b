#include "llib/net/emailsettings.h"

#include <string_view>

#include "llib/gen/log.h"
#include "llib/gen/usersettings.h"
#include "llib/net/email.h"
#include "llib/net/emailaddress.h"
#include "llib/net/ipaddress.h"

namespace {

constexpr std::string_view kGroup = "Email";
constexpr std::string_view kServer = "SMTPServer";
constexpr std::string_view kUser = "SMTPUser";
constexpr std::string_view kSender = "SenderEmail";
constexpr std::string_view kReplyTo = "ReplyToEmail";
constexpr std::string_view kUseEncryption = "UseEncryption";
constexpr std::string_view kVerifyCertificate = "VerifyCertificate";
constexpr std::string_view kCAFile = "CAFile";
constexpr std::string_view kPasswordKey = "SMTPPassword";

std::string_view FlagText(bool on) { return on ? "1" : "0"; }

}  // namespace

bool LEmailSettingsCreateDefaults() {
  const LEmailSettings defaults;
  const std::pair<std::string_view, std::string_view> keys[] = {
      {kServer, defaults.server},
      {kUser, defaults.user},
      {kSender, defaults.sender},
      {kReplyTo, defaults.replyTo},
      {kUseEncryption, FlagText(defaults.useEncryption)},
      {kVerifyCertificate, FlagText(defaults.verifyCertificate)},
      {kCAFile, defaults.caFile},
  };
  for (const auto& [key, value] : keys)
    if (!LUserSettingTestExists(kGroup, key) && !LUserSettingSetString(kGroup, key, value)) return false;
  return true;
}

LEmailSettings LEmailSettingsLoad() {
  // Unwritten defaults are still read as defaults below; they are written again next time.
  if (!LEmailSettingsCreateDefaults()) LLogWarning("Email: the default settings could not be stored");
  const LEmailSettings defaults;
  LEmailSettings settings;
  settings.server = LUserSettingGetString(kGroup, kServer, defaults.server);
  settings.user = LUserSettingGetString(kGroup, kUser, defaults.user);
  settings.sender = LUserSettingGetString(kGroup, kSender, defaults.sender);
  settings.replyTo = LUserSettingGetString(kGroup, kReplyTo, defaults.replyTo);
  settings.useEncryption = LUserSettingGetString(kGroup, kUseEncryption, FlagText(defaults.useEncryption)) != "0";
  settings.verifyCertificate =
      LUserSettingGetString(kGroup, kVerifyCertificate, FlagText(defaults.verifyCertificate)) != "0";
  settings.caFile = LUserSettingGetString(kGroup, kCAFile, defaults.caFile);
  LUserSettingGetPassword(kGroup, kPasswordKey, settings.password);
  return settings;
}

bool LEmailSettingsSave(const LEmailSettings& settings) {
  bool saved = LUserSettingSetString(kGroup, kServer, settings.server) &&
               LUserSettingSetString(kGroup, kUser, settings.user) &&
               LUserSettingSetString(kGroup, kSender, settings.sender) &&
               LUserSettingSetString(kGroup, kReplyTo, settings.replyTo) &&
               LUserSettingSetString(kGroup, kUseEncryption, FlagText(settings.useEncryption)) &&
               LUserSettingSetString(kGroup, kVerifyCertificate, FlagText(settings.verifyCertificate)) &&
               LUserSettingSetString(kGroup, kCAFile, settings.caFile);
  if (!saved) return false;
  return settings.password.empty() ? LUserSettingDeletePassword(kGroup, kPasswordKey)
                                   : LUserSettingSetPassword(kGroup, kPasswordKey, settings.password);
}

void LEmailSettingsFillRequest(const LEmailSettings& settings, EmailSMTPSendProcess& request) {
  request.server = settings.server;
  request.user = settings.user;
  request.password = settings.password;
  request.sender = settings.sender;
  request.replyTo = settings.replyTo;
  request.useEncryption = settings.useEncryption;
  request.verifyCertificate = settings.verifyCertificate;
  request.caFile = settings.caFile;
}

std::string LEmailSettingsCheck(const LEmailSettings& settings) {
  LIPAddressWithPort parsed;
  if (!settings.server.empty() && !LIPAddressWithPort::Parse(settings.server, 587, parsed))
    return "Serveur de messagerie non valide : " + settings.server;
  for (const std::string* address : {&settings.sender, &settings.replyTo})
    if (!address->empty() && !LEmail::ValidateAddressSingle(*address)) return "Adresse de courriel non valide : " + *address;
  return {};
}

bool LEmailSendTestMessage(const LEmailSettings& settings, const std::string& to, std::string& error) {
  EmailSMTPSendProcess request;
  LEmailSettingsFillRequest(settings, request);
  request.recipients = to;
  request.subject = "Message d'essai de Kontavo";
  request.text = "Ce message d'essai confirme que Kontavo peut envoyer du courrier électronique avec ces réglages.\r\n";
  LProcessInterfaceRecorder process;
  if (Process(process, request) == kProcessFinished) return true;
  error = process.GetError();
  return false;
}
