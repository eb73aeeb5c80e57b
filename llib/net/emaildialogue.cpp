#include "llib/net/emaildialogue.h"

#include "llib/net/email.h"
#include "llib/net/emaildata.h"
#include "llib/net/emailreply.h"
#include "llib/net/socket.h"

namespace {

class Dialogue {
 public:
  Dialogue(LProcessInterface& process, const EmailSMTPSendProcess& request, LSocket& socket,
           const LEmailSMTPRun& run)
      : process_(process), request_(request), socket_(socket), run_(run), limits_(request.timeLimits) {}

  LProcessResult Run();

 private:
  LProcessResult Greet();
  LProcessResult StartTls();
  LProcessResult Authenticate();
  LProcessResult Envelope();
  LProcessResult Data();

  // Sends a command and reads its reply into code_ and text_ (code 0 when either failed).
  void Command(std::string_view command);
  void Recv() { ProcessSendEmailSMTPRecv(process_, socket_, code_, text_, limits_.replyMs); }
  // Ends the dialogue: cancelled when the user asked to stop (that is why the step failed),
  // otherwise failed with the message.
  LProcessResult Fail(std::string_view message);
  template <class... Args>
  LProcessResult FailF(const char* format, Args... args);

  LProcessInterface& process_;
  const EmailSMTPSendProcess& request_;
  LSocket& socket_;
  const LEmailSMTPRun& run_;
  const EmailSMTPTimeLimits& limits_;
  std::string greeting_;  // "EHLO name\r\n" or "HELO name\r\n"
  int code_ = 0;          // code of the last reply
  std::string text_;      // text of the last reply
};

void Dialogue::Command(std::string_view command) {
  if (socket_.Send(command, limits_.commandMs) != LNetStatus::kOk) {
    code_ = 0;
    text_.clear();
    return;
  }
  Recv();
}

LProcessResult Dialogue::Fail(std::string_view message) {
  socket_.Close();
  if (process_.IsToStop()) return kProcessCancelled;
  process_.SetError(message);
  return kProcessFailed;
}

template <class... Args>
LProcessResult Dialogue::FailF(const char* format, Args... args) {
  socket_.Close();
  if (process_.IsToStop()) return kProcessCancelled;
  process_.SetErrorF(format, args...);
  return kProcessFailed;
}

// Steps 1 and 2: the server's greeting, then ours. EHLO (extended SMTP) only when logging on.
LProcessResult Dialogue::Greet() {
  process_.SetStatus("Connecté au serveur", 0);
  Recv();
  if (code_ != 220) return FailF("Le serveur de messagerie ne répond pas: %s (%d)", text_.c_str(), code_);
  std::string localName;
  LIPGetLocalFQDN(localName);
  greeting_ = (request_.user.empty() ? "HELO " : "EHLO ") + localName + "\r\n";
  bool startTlsOffered = false;
  if (socket_.Send(greeting_, limits_.commandMs) != LNetStatus::kOk) code_ = 0;
  else if (request_.useEncryption)
    ProcessSendEmailSMTPRecvEhloResponse(process_, socket_, startTlsOffered, code_, limits_.replyMs);
  else Recv();
  if (code_ == 504)
    return FailF("Erreur du serveur de l'hôte de messagerie (HELO refusé, code erreur 504) pour l'adresse de "
                 "courriel de destination  %s - cela indique généralement une adresse non valide.",
                 run_.emailTo.c_str());
  if (code_ != 250)
    return FailF("Erreur du serveur hôte de messagerie (HELO non accepté): %d emailto: %s", code_, run_.emailTo.c_str());
  if (request_.useEncryption && startTlsOffered) return StartTls();
  return kProcessFinished;
}

// Step 3. A server that offered STARTTLS and then refuses it is treated like a failed handshake:
// going on in clear text would send the password unprotected.
LProcessResult Dialogue::StartTls() {
  Command("STARTTLS\r\n");
  LTlsClientOptions options;
  options.verifyPeer = request_.verifyCertificate;
  options.caFile = request_.caFile;
  options.hostName = run_.mailHost;
  // The handshake gets the reply limit: a server that never answers must not hold the sender.
  if (code_ != 220 || socket_.StartTls(options, limits_.replyMs) != LNetStatus::kOk)
    return Fail("Impossible de créer une connexion sécurisée au serveur ");
  Command(greeting_);
  return kProcessFinished;
}

// Step 4: AUTH LOGIN, the user name and the password each in base64.
LProcessResult Dialogue::Authenticate() {
  Command("AUTH LOGIN\r\n");
  if (code_ == 503) {
    // Some servers want the greeting again before they accept a logon.
    Command(greeting_);
    if (code_ == 250) Command("AUTH LOGIN\r\n");
  }
  if (code_ == 530)
    return Fail("Cryptage requis pour ce serveur de messagerie. Veuillez vérifier vos paramètres de courriels.");
  if (code_ == 334) {
    code_ = 0;
    text_.clear();
    if (ProcessSendEmailStringBase64(socket_, request_.user, limits_.commandMs) == LNetStatus::kOk) Recv();
    if (code_ == 334) {
      code_ = 0;
      text_.clear();
      if (ProcessSendEmailStringBase64(socket_, request_.password, limits_.commandMs) == LNetStatus::kOk) Recv();
    }
  }
  if (code_ != 235)
    return FailF("Nom d'utilisateur ou mot de passe d'authentification de messagerie non accepté (%d): %s", code_,
                 text_.c_str());
  return kProcessFinished;
}

// Steps 5 and 6: the sender, then the recipients list by list; a list of which no address was
// taken ends the dialogue.
LProcessResult Dialogue::Envelope() {
  Command("MAIL FROM:<" + run_.sender + ">\r\n");
  if (code_ != 250)
    return FailF(
        "Erreur du serveur hôte de messagerie (MAIL FROM non accepté). Veuillez vérifier vos paramètres de courriels. "
        "%s - (%d - %s)",
        run_.sender.c_str(), code_, text_.c_str());
  for (const auto& list : run_.recipientLists) {
    if (list.empty()) continue;
    bool accepted = false;
    for (const auto& address : list) {
      Command("RCPT TO:<" + address + ">\r\n");
      if (code_ == 250 || code_ == 251) accepted = true;
    }
    if (!accepted)
      return FailF(
          "Erreur lors de la tentative d'envoi de courriel. L'adresse de courriel est peut-être incorrecte ou votre "
          "serveur SMTP requiert peut-être un nom d'utilisateur ou un mot de passe. Veuillez vérifier l'adresse et vous "
          "référer aux paramètres des courriels. (%d): %s",
          code_, text_.c_str());
  }
  return kProcessFinished;
}

// Steps 7 and 8: the message and its terminator.
LProcessResult Dialogue::Data() {
  Command("DATA\r\n");
  if (code_ != 354) return Fail("Erreur du serveur hôte de messagerie (DATA non accepté)");
  LSmtpDataWriter writer(socket_, limits_.lineMs);
  std::string unreadablePath;
  LEmailDataResult written = ProcessSendEmailSMTPData(process_, request_, writer, run_.sender, unreadablePath);
  if (written == LEmailDataResult::kStopped) {
    socket_.Close();
    return kProcessCancelled;
  }
  if (written == LEmailDataResult::kAttachmentUnreadable)
    return FailF("Impossible de lire la pièce jointe \"%s\".", unreadablePath.c_str());
  code_ = 0;
  text_.clear();
  if (written == LEmailDataResult::kWritten && writer.Write("\r\n.\r\n") && writer.Flush()) Recv();
  if (code_ == 250) return kProcessFinished;
  if (code_ == 554)
    return Fail(
        "Le serveur de messagerie du destinataire a rejeté ce courriel pour une raison non précisée. Essayez "
        "d'utiliser un compte SMTP pour l'envoi de courriels à cette adresse.");
  if (code_ == 552) return Fail("Le message dépasse les limites de taille définies pour ce compte.");
  if (run_.direct)
    return FailF(
        "Le serveur de messagerie du destinataire n'autorise pas la réception des courriels de cette manière. "
        "Veuillez utiliser un compte SMTP pour l'envoi de courriels à cette adresse. emailto: %s mailhost: %s "
        "error: %s",
        run_.emailTo.c_str(), run_.mailHost.c_str(), text_.c_str());
  return FailF("Erreur du serveur hôte de messagerie (terminateur de données non accepté) emailto: %s mailhost: %s "
               "error: %d",
               run_.emailTo.c_str(), run_.mailHost.c_str(), code_);
}

LProcessResult Dialogue::Run() {
  socket_.SetStopTest([this] { return process_.IsToStop(); });
  for (auto step : {&Dialogue::Greet, &Dialogue::Authenticate, &Dialogue::Envelope, &Dialogue::Data}) {
    if (step == &Dialogue::Authenticate && request_.user.empty()) continue;
    LProcessResult result = (this->*step)();
    if (result != kProcessFinished) return result;
  }
  // Step 9: the server has the message; its answer to QUIT changes nothing.
  process_.SetProgress(1.0);
  process_.SetStatus("Message envoyé", 0);
  Command("QUIT\r\n");
  socket_.Close();
  return kProcessFinished;
}

}  // namespace

LProcessResult ProcessSendEmailSMTPDialogue(LProcessInterface& process, const EmailSMTPSendProcess& request,
                                            LSocket& socket, const LEmailSMTPRun& run) {
  Dialogue dialogue(process, request, socket, run);
  LProcessResult result = dialogue.Run();
  socket.SetStopTest({});
  return result;
}
