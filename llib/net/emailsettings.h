// The user's e-mail settings: how mail leaves this machine. They live in the per-user settings
// group "Email" and the password in the password store (section "Email"), so every business
// of the user sends the same way.
//
// Keys of the group "Email":
//   "SMTPServer"         outgoing server "host[:port]"; empty: direct delivery to each recipient's
//                        mail exchanger
//   "SMTPUser"           user name of AUTH LOGIN; empty: no logon
//   "SenderEmail"        the sender address; empty: "Kontavo@" and the server's host
//   "ReplyToEmail"       the address replies go to ("Reply-To"); empty: none
//   "UseEncryption"      "1": STARTTLS when the server offers it; "0": never
//   "VerifyCertificate"  "1": the server's certificate must be valid for its name; "0": any
//   "CAFile"             a PEM file of extra trusted certificates (a company's own authority)
// Password store, section "Email", key "SMTPPassword": the password of AUTH LOGIN.
#pragma once

#include <string>

struct EmailSMTPSendProcess;

struct LEmailSettings {
  std::string server;
  std::string user;
  std::string password;
  std::string sender;
  std::string replyTo;
  bool useEncryption = true;
  bool verifyCertificate = true;
  std::string caFile;
};

// Writes the default of every key that is missing (existing keys are left alone); false when one
// could not be written.
[[nodiscard]] bool LEmailSettingsCreateDefaults();
// The stored settings, defaults created first; a setting never stored reads as its default.
LEmailSettings LEmailSettingsLoad();
// "" when settings can be stored; otherwise the French message of the first fault: a server
// that is not "host[:port]" ("Serveur de messagerie non valide : ..."), a sender or reply
// address that is not one valid address ("Adresse de courriel non valide : ...").
std::string LEmailSettingsCheck(const LEmailSettings& settings);
// Stores every setting (the password in the password store; an empty password is removed);
// false when a setting could not be written.
[[nodiscard]] bool LEmailSettingsSave(const LEmailSettings& settings);
// Sends the test message of the e-mail settings page to the addresses to through settings.
// true when the server accepted it; false with error set to the SMTP dialogue's own message.
[[nodiscard]] bool LEmailSendTestMessage(const LEmailSettings& settings, const std::string& to, std::string& error);
// Copies the way out (server, logon, encryption, sender and reply address) into a request.
void LEmailSettingsFillRequest(const LEmailSettings& settings, EmailSMTPSendProcess& request);
