// The SMTP dialogue over one connected socket: greeting, HELO or EHLO, STARTTLS, AUTH LOGIN,
// MAIL FROM, RCPT TO for each recipient list, DATA with the message and its terminator, QUIT.
// Process (email.h) decides where to connect and calls it once per connection: once for a
// configured server, once per recipient in direct delivery.
#pragma once

#include <string>
#include <vector>

#include "llib/gen/process.h"

class LSocket;
struct EmailSMTPSendProcess;

// What differs between the connections of one request.
struct LEmailSMTPRun {
  std::string mailHost;  // the server's host name: certificate check, and named in messages
  std::string emailTo;   // the recipients as messages name them
  std::vector<std::vector<std::string>> recipientLists;  // RCPT TO addresses, list by list
  std::string sender;    // MAIL FROM and the "From" header
  bool direct = false;   // delivery to the recipient's own mail exchanger
};

// Runs the dialogue on a connected socket and closes it. kProcessFinished when the server took
// the message; kProcessCancelled on a stop; kProcessFailed with the step's message set.
LProcessResult ProcessSendEmailSMTPDialogue(LProcessInterface& process, const EmailSMTPSendProcess& request,
                                            LSocket& socket, const LEmailSMTPRun& run);
