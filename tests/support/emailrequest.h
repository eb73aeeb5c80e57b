// Test support: a mail send request as the mail tests use it, with time limits short enough
// that a test which waits for one to pass stays quick, and a progress interface that a test
// can stop from another thread.
#pragma once

#include <atomic>
#include <string>

#include "llib/gen/process.h"
#include "llib/net/email.h"

// A request to server ("host:port"; empty: direct delivery) with one recipient and a short text.
// Encryption off and certificate checks on: the tests that want them switch them.
inline EmailSMTPSendProcess LTestEmailRequest(const std::string& server, unsigned replyMs = 5000) {
  EmailSMTPSendProcess request;
  request.server = server;
  request.recipients = "client@exemple.fr";
  request.subject = "Facture 1042";
  request.text = "Bonjour,\r\nveuillez trouver votre facture.\r\n";
  request.useEncryption = false;
  request.timeLimits.connectMs = 5000;
  request.timeLimits.commandMs = 5000;
  request.timeLimits.replyMs = replyMs;
  request.timeLimits.lineMs = 5000;
  return request;
}

// Records status and error like the terminal's progress, and stops once Stop() was called.
class LTestStoppableProcess : public LProcessInterfaceRecorder {
 public:
  bool IsToStop() override { return stop_; }
  void Stop() { stop_ = true; }

 private:
  std::atomic<bool> stop_{false};
};
