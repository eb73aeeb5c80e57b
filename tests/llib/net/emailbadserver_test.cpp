// The SMTP dialogue against scripted servers: the exact lines on the wire, and the servers no
// real one should be (silent, endless, closing half-way, answering a TLS handshake in plain
// text). Each must end with its message within its time limit, never hang the caller.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "llib/gen/base64.h"
#include "llib/net/email.h"
#include "tests/support/emailrequest.h"
#include "tests/support/scriptedserver.h"

namespace {

using Clock = std::chrono::steady_clock;

long long MsSince(Clock::time_point start) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
}

// How a well-behaved scripted server answers; tests change single answers.
struct ServerPlay {
  std::string greeting = "220 mail.test ESMTP\r\n";
  std::string helo = "250 mail.test\r\n";
  std::string ehlo = "250-mail.test\r\n250-SIZE 1000000\r\n250 HELP\r\n";
  std::string auth = "334 VXNlcm5hbWU6\r\n";
  std::string user = "334 UGFzc3dvcmQ6\r\n";
  std::string password = "235 2.7.0 ok\r\n";
  std::string mail = "250 ok\r\n";
  std::string rcpt = "250 ok\r\n";
  std::string data = "354 go ahead\r\n";
  std::string end = "250 queued\r\n";
};

// Plays a whole dialogue; the server's journal keeps every line it read.
void Play(LScriptedTcpConnection& connection, const ServerPlay& play) {
  if (!connection.Send(play.greeting)) return;
  std::string line;
  while (connection.ReadLine(line)) {
    std::string answer;
    if (line.starts_with("HELO ")) answer = play.helo;
    else if (line.starts_with("EHLO ")) answer = play.ehlo;
    else if (line == "AUTH LOGIN") answer = play.auth;
    else if (line.starts_with("MAIL FROM:")) answer = play.mail;
    else if (line.starts_with("RCPT TO:")) answer = play.rcpt;
    else if (line == "QUIT") answer = "221 bye\r\n";
    else if (line == "DATA") {
      if (!connection.Send(play.data)) return;
      while (connection.ReadLine(line) && line != ".") {
      }
      answer = play.end;
    } else if (line == LBase64Encode("compta")) answer = play.user;
    else answer = play.password;
    if (!connection.Send(answer)) return;
  }
}

class EmailBadServer : public ::testing::Test {
 protected:
  LProcessResult Send(EmailSMTPSendProcess& request) {
    LProcessResult result = Process(process_, request);
    error_ = process_.GetError();
    return result;
  }
  LTestStoppableProcess process_;
  std::string error_;
};

// ---- The lines on the wire ----------------------------------------------------------------

TEST_F(EmailBadServer, TheWholeDialogueLineByLine) {
  LScriptedTcpServer server([](LScriptedTcpConnection& c) { Play(c, ServerPlay()); });
  EmailSMTPSendProcess request = LTestEmailRequest(server.Address());
  request.sender = "factures@mon-entreprise.fr";
  request.text = "ligne un\n.point\n" + std::string(1000, 'z');
  request.user = "compta";
  request.password = "mot de passe";
  ASSERT_EQ(Send(request), kProcessFinished) << error_;
  std::string localName;
  LIPGetLocalFQDN(localName);
  std::vector<std::string> lines = server.Received();
  ASSERT_GE(lines.size(), 10u);
  EXPECT_EQ(lines[0], "EHLO " + localName);
  EXPECT_EQ(lines[1], "AUTH LOGIN");
  EXPECT_EQ(lines[2], LBase64Encode("compta"));
  EXPECT_EQ(lines[3], LBase64Encode("mot de passe"));
  EXPECT_EQ(lines[4], "MAIL FROM:<factures@mon-entreprise.fr>");
  EXPECT_EQ(lines[5], "RCPT TO:<client@exemple.fr>");
  EXPECT_EQ(lines[6], "DATA");
  EXPECT_EQ(lines[7], "MIME-Version: 1.0");
  // The text's last line has no line end of its own: the terminator's CR LF ends it.
  std::vector<std::string> tail(lines.end() - 6, lines.end());
  EXPECT_EQ(tail, (std::vector<std::string>{"ligne un", "..point", std::string(700, 'z'), std::string(300, 'z'), ".",
                                             "QUIT"}));
}

TEST_F(EmailBadServer, RepliesLongerThan512BytesAndRecipientsTakenWith251) {
  ServerPlay play;
  play.greeting = "220-" + std::string(2000, 'g') + "\r\n220-" + std::string(600, 'h') + "\r\n220 pret\r\n";
  play.helo = "250 " + std::string(1500, 'o') + "\r\n";
  play.rcpt = "251 User not local; will forward\r\n";
  LScriptedTcpServer server([&](LScriptedTcpConnection& c) { Play(c, play); });
  EmailSMTPSendProcess request = LTestEmailRequest(server.Address());
  EXPECT_EQ(Send(request), kProcessFinished) << error_;
}

TEST_F(EmailBadServer, LogonRetriedOnceAfter503OverANewGreeting) {
  ServerPlay play;
  play.auth = "503 5.5.1 auth: dites bonjour d'abord\r\n";
  LScriptedTcpServer server([&](LScriptedTcpConnection& c) { Play(c, play); });
  EmailSMTPSendProcess request = LTestEmailRequest(server.Address());
  request.user = "compta";
  request.password = "x";
  // The second AUTH LOGIN is answered 503 too: the logon ends as refused with that reply.
  EXPECT_EQ(Send(request), kProcessFailed);
  EXPECT_EQ(error_, "Nom d'utilisateur ou mot de passe d'authentification de messagerie non accepté (503):  dites "
                    "bonjour d'abord");
  std::vector<std::string> lines = server.Received();
  ASSERT_GE(lines.size(), 4u);
  EXPECT_EQ(lines[1], "AUTH LOGIN");
  EXPECT_TRUE(lines[2].starts_with("EHLO "));
  EXPECT_EQ(lines[3], "AUTH LOGIN");
}

// ---- Greetings that never come right ----------------------------------------------------------

TEST_F(EmailBadServer, AGreetingOtherThan220QuotesTheServer) {
  ServerPlay play;
  play.greeting = "554 5.3.2 mail.test: fermé pour maintenance\r\n";
  LScriptedTcpServer server([&](LScriptedTcpConnection& c) { Play(c, play); });
  EmailSMTPSendProcess request = LTestEmailRequest(server.Address());
  EXPECT_EQ(Send(request), kProcessFailed);
  EXPECT_EQ(error_, "Le serveur de messagerie ne répond pas:  fermé pour maintenance (554)");
}

TEST_F(EmailBadServer, ASilentServerEndsAtTheReplyTimeLimit) {
  LScriptedTcpServer server([](LScriptedTcpConnection& c) { c.WaitForClose(10000); });
  EmailSMTPSendProcess request = LTestEmailRequest(server.Address(), 400);
  Clock::time_point start = Clock::now();
  EXPECT_EQ(Send(request), kProcessFailed);
  long long elapsed = MsSince(start);
  EXPECT_EQ(error_, "Le serveur de messagerie ne répond pas:  (0)");
  EXPECT_GE(elapsed, 400);
  EXPECT_LT(elapsed, 4000);
}

TEST_F(EmailBadServer, AReplyThatNeverEndsEndsAtTheReplyTimeLimit) {
  // Continuation lines trickle in forever, each well within the time limit.
  LScriptedTcpServer server([](LScriptedTcpConnection& c) {
    while (c.Send("220-encore un peu\r\n")) std::this_thread::sleep_for(std::chrono::milliseconds(20));
  });
  EmailSMTPSendProcess request = LTestEmailRequest(server.Address(), 500);
  Clock::time_point start = Clock::now();
  EXPECT_EQ(Send(request), kProcessFailed);
  EXPECT_EQ(error_, "Le serveur de messagerie ne répond pas:  (0)");
  EXPECT_LT(MsSince(start), 5000);
}

TEST_F(EmailBadServer, AFloodWithoutLineEndsIsCutLongBeforeTheTimeLimit) {
  LScriptedTcpServer server([](LScriptedTcpConnection& c) {
    std::string flood(4096, 'x');
    while (c.Send(flood)) {
    }
  });
  EmailSMTPSendProcess request = LTestEmailRequest(server.Address(), 30000);
  Clock::time_point start = Clock::now();
  EXPECT_EQ(Send(request), kProcessFailed);
  EXPECT_EQ(error_, "Le serveur de messagerie ne répond pas:  (0)");
  EXPECT_LT(MsSince(start), 5000);
}

TEST_F(EmailBadServer, AServerThatClosesMidDialogueFailsTheStepAtOnce) {
  ServerPlay play;
  LScriptedTcpServer server([&](LScriptedTcpConnection& c) {
    c.Send(play.greeting);
    std::string line;
    if (c.ReadLine(line)) c.Send(play.helo);
    c.ReadLine(line);  // MAIL FROM, then the connection ends unanswered
  });
  EmailSMTPSendProcess request = LTestEmailRequest(server.Address(), 30000);
  Clock::time_point start = Clock::now();
  EXPECT_EQ(Send(request), kProcessFailed);
  EXPECT_EQ(error_,
            "Erreur du serveur hôte de messagerie (MAIL FROM non accepté). Veuillez vérifier vos paramètres de "
            "courriels. Kontavo@127.0.0.1 - (0 - )");
  EXPECT_LT(MsSince(start), 5000);
}

TEST_F(EmailBadServer, AServerThatClosesDuringTheMessageFailsTheTerminator) {
  LScriptedTcpServer server([](LScriptedTcpConnection& c) {
    ServerPlay play;
    c.Send(play.greeting);
    std::string line;
    while (c.ReadLine(line) && line != "DATA") c.Send(line.starts_with("HELO") ? play.helo : play.mail);
    c.Send(play.data);
    c.ReadLine(line);  // the first header, then gone
  });
  EmailSMTPSendProcess request = LTestEmailRequest(server.Address(), 30000);
  // Big enough that the writes meet the closed connection.
  request.text = std::string(4 << 20, 'a');
  Clock::time_point start = Clock::now();
  EXPECT_EQ(Send(request), kProcessFailed);
  EXPECT_EQ(error_, "Erreur du serveur hôte de messagerie (terminateur de données non accepté) emailto: "
                    "client@exemple.fr mailhost: 127.0.0.1 error: 0");
  EXPECT_LT(MsSince(start), 10000);
}

// ---- STARTTLS with servers that do not deliver it ---------------------------------------------

class EmailBadTls : public EmailBadServer {
 protected:
  // A server that offers STARTTLS and then does what after does once it said 220.
  void Run(const std::function<void(LScriptedTcpConnection&)>& after, unsigned replyMs,
           const std::string& startTlsReply = "220 go ahead\r\n") {
    LScriptedTcpServer server([&](LScriptedTcpConnection& c) {
      c.Send("220 mail.test\r\n");
      std::string line;
      if (!c.ReadLine(line)) return;
      c.Send("250-mail.test\r\n250-STARTTLS\r\n250 HELP\r\n");
      if (!c.ReadLine(line) || line != "STARTTLS") return;
      c.Send(startTlsReply);
      after(c);
    });
    EmailSMTPSendProcess request = LTestEmailRequest(server.Address(), replyMs);
    request.user = "compta";
    request.password = "x";
    request.useEncryption = true;
    Clock::time_point start = Clock::now();
    EXPECT_EQ(Send(request), kProcessFailed);
    elapsedMs_ = MsSince(start);
    EXPECT_EQ(error_, "Impossible de créer une connexion sécurisée au serveur ");
  }
  long long elapsedMs_ = 0;
};

TEST_F(EmailBadTls, AServerAnsweringTheHandshakeInPlainText) {
  Run([](LScriptedTcpConnection& c) {
        c.Send("500 5.5.1 commande inconnue\r\n500 5.5.1 commande inconnue\r\n");
        c.WaitForClose(10000);
      },
      30000);
  EXPECT_LT(elapsedMs_, 5000);
}

TEST_F(EmailBadTls, AServerSilentAfterItsGoAheadEndsAtTheTimeLimit) {
  Run([](LScriptedTcpConnection& c) { c.WaitForClose(10000); }, 400);
  EXPECT_GE(elapsedMs_, 400);
  EXPECT_LT(elapsedMs_, 5000);
}

TEST_F(EmailBadTls, AServerThatOffersStartTlsAndThenRefusesIt) {
  // Going on in clear text would send the password unprotected.
  Run([](LScriptedTcpConnection& c) { c.WaitForClose(10000); }, 5000, "454 4.7.0 TLS indisponible\r\n");
}

// ---- Cancelling -------------------------------------------------------------------------------

TEST_F(EmailBadServer, ACancelEndsAnyWaitQuicklyWithoutAMessage) {
  LScriptedTcpServer server([](LScriptedTcpConnection& c) { c.WaitForClose(20000); });
  EmailSMTPSendProcess request = LTestEmailRequest(server.Address(), 60000);
  std::thread stopper([this] {
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    process_.Stop();
  });
  Clock::time_point start = Clock::now();
  EXPECT_EQ(Send(request), kProcessCancelled);
  long long elapsed = MsSince(start);
  stopper.join();
  EXPECT_EQ(error_, "");
  EXPECT_LT(elapsed, 3000);
}

}  // namespace
