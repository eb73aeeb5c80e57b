// Sending one mail message: documents, statements and the web server's password mails leave
// the system through its own SMTP client.
//
// A send request (EmailSMTPSendProcess) names the recipients, the message (subject, plain text,
// optional HTML, attached files) and the way out: a configured outgoing server ("host" or
// "host:port", port 587 by default with one fall-back to port 25), optionally with STARTTLS and
// AUTH LOGIN; or, when no server is configured, each recipient's own mail exchanger on port 25,
// one recipient at a time. Process runs the whole dialogue as a long operation: progress and
// status on the interface, every wait bounded by its time limit and ended early by a cancel, and
// every failure one French message on the interface (the reply text of the server quoted where
// it helps the user).
//
//   EmailSMTPSendProcess request;
//   request.recipients = "client@example.fr";
//   request.subject = "Facture 1042";
//   request.text = "Bonjour, ...";
//   request.attachments = {"/tmp/Facture-1042.pdf"};
//   request.server = "smtp.example.fr";  // empty: direct delivery
//   LProcessResult result = Process(process, request);
#pragma once

#include <ctime>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "llib/gen/process.h"
#include "llib/net/ipaddress.h"

// The time limits of a dialogue, in milliseconds. The defaults are those of real use; tests
// shorten them.
struct EmailSMTPTimeLimits {
  unsigned connectMs = 60000;  // connecting to one server
  unsigned commandMs = 20000;  // sending one command
  unsigned replyMs = 60000;    // one reply, from its first byte to its last line; also the TLS handshake
  unsigned lineMs = 30000;     // writing one piece of the message
};

// The ports tried with a configured server given without its own port: the submission port
// first, then once the relay port.
struct EmailSMTPPorts {
  int submission = 587;
  int fallback = kSmtpRelayPort;
};

// Finds the mail exchanger of a domain; false when there is none (LIPAddressWithPort::EmailMXLookup).
using LEmailMXLookupFunction = std::function<bool(std::string_view domain, LIPAddressWithPort& out)>;

struct EmailSMTPSendProcess {
  // Recipients: the main list (the "To" header) and further lists sent as blind copies (no
  // header names them). Comma-separated; every address must pass LEmail::ValidateAddressSingle.
  std::string recipients;
  std::vector<std::string> copyRecipients;
  std::string sender;   // empty: "Kontavo@" and the server's host, or the recipient's domain
  std::string replyTo;  // the "Reply-To" header; empty: none

  std::string subject;
  std::string text;                      // plain text body (UTF-8)
  std::string html;                      // HTML body; empty: none. Not sent when files are attached
  std::vector<std::string> attachments;  // paths of the attached files

  std::string server;    // "host", "host:port" or "[v6]:port"; empty: direct delivery
  std::string user;      // empty: no AUTH LOGIN
  std::string password;
  bool useEncryption = false;     // STARTTLS when the server offers it
  bool verifyCertificate = true;  // check the server's certificate and name under STARTTLS
  std::string caFile;             // extra trusted certificates (PEM); empty: the system's

  EmailSMTPTimeLimits timeLimits;
  EmailSMTPPorts ports;
  LEmailMXLookupFunction mxLookup;  // empty: LIPAddressWithPort::EmailMXLookup
  std::time_t date = 0;             // the Date header; 0: now
};

// Sends the message. kProcessFinished once every server accepted it; kProcessCancelled when the
// interface asked to stop (no message set); kProcessFailed with exactly one message set on the
// interface otherwise. Never throws; the connection is closed on every path.
LProcessResult Process(LProcessInterface& process, EmailSMTPSendProcess& request);

// The product's name on the "X-Mailer" header line.
inline constexpr std::string_view kEmailMailerName = "Kontavo (https://www.kontavo.fr)";
