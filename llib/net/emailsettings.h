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

// Writes the default of every key that is missing (existing keys are left alone).
void LEmailSettingsCreateDefaults();
// The stored settings, defaults created first.
LEmailSettings LEmailSettingsLoad();
// Stores every setting (the password in the password store; an empty password is removed).
void LEmailSettingsSave(const LEmailSettings& settings);
// Copies the way out (server, logon, encryption, sender and reply address) into a request.
void LEmailSettingsFillRequest(const LEmailSettings& settings, EmailSMTPSendProcess& request);
