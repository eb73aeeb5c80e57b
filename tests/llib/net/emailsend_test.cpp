// Sending mail to a real SMTP server (aiosmtpd on loopback): what the server received, envelope,
// headers, parts and decoded attachments, and the messages of real refusals.
#include <gtest/gtest.h>

#include <random>

#include "llib/net/email.h"
#include "llib/net/emailmime.h"
#include "tests/support/emailrequest.h"
#include "tests/support/scriptedserver.h"
#include "tests/support/smtptestserver.h"
#include "tests/support/testhome.h"

namespace {

// A server that wants STARTTLS, then AUTH LOGIN as auth ("user:password") when given.
LSmtpTestServer::Options SecureOptions(const std::string& auth) {
  LSmtpTestServer::Options options;
  options.tls = true;
  options.requireStartTls = true;
  options.auth = auth;
  return options;
}

// A server that answers with scripted refusals ("CMD=CODE,...").
LSmtpTestServer::Options ReplyOptions(const std::vector<std::string>& replies) {
  LSmtpTestServer::Options options;
  options.replies = replies;
  return options;
}

// A request that logs on as user, over STARTTLS trusting the server's certificate when encrypted.
EmailSMTPSendProcess LogonRequest(const LSmtpTestServer& server, const std::string& user,
                                  const std::string& password, bool encrypted) {
  EmailSMTPSendProcess request = LTestEmailRequest(server.Address());
  request.user = user;
  request.password = password;
  request.useEncryption = encrypted;
  request.caFile = server.CertFile();
  return request;
}

// The value of the first header called name ("" when absent).
std::string Header(const nlohmann::json& message, const std::string& name) {
  for (const auto& pair : message["headers"])
    if (pair[0] == name) return pair[1];
  return "";
}

class EmailSend : public LHomeTest {
 protected:
  // Starts a server in the test's folder; the test fails when it does not come up.
  LSmtpTestServer& StartServer(const LSmtpTestServer::Options& options = {}) {
    server_ = std::make_unique<LSmtpTestServer>(home_.Path() + "/smtp", options);
    EXPECT_TRUE(server_->IsRunning()) << LReadFile(home_.Path() + "/smtp/server.err");
    return *server_;
  }
  // Sends and returns the result; error_ holds the message.
  LProcessResult Send(EmailSMTPSendProcess& request) {
    LProcessInterfaceRecorder process;
    LProcessResult result = Process(process, request);
    error_ = process.GetError();
    status_ = process.GetStatus(0);
    return result;
  }
  std::string WriteFile(const std::string& name, const std::string& content) {
    std::string path = home_.Path() + "/" + name;
    LWriteFile(path, content);
    return path;
  }

  std::unique_ptr<LSmtpTestServer> server_;
  std::string error_;
  std::string status_;
};

// ---- What the server receives -----------------------------------------------------------------

TEST_F(EmailSend, PlainMessageCarriesEnvelopeAndEveryHeader) {
  LSmtpTestServer& server = StartServer();
  EmailSMTPSendProcess request = LTestEmailRequest(server.Address());
  request.recipients = "client@exemple.fr, compta@exemple.fr";
  request.replyTo = "factures@mon-entreprise.fr";
  request.date = 1700000000;
  ASSERT_EQ(Send(request), kProcessFinished) << error_;
  EXPECT_EQ(status_, "Message envoyé");
  ASSERT_EQ(server.MessageCount(), 1);
  nlohmann::json message = server.Message(1);
  // No configured sender: the product's name at the server's host.
  EXPECT_EQ(message["mailFrom"], "Kontavo@127.0.0.1");
  EXPECT_EQ(message["rcptTos"], nlohmann::json({"client@exemple.fr", "compta@exemple.fr"}));
  // Without a logon the greeting is HELO.
  EXPECT_FALSE(message["extended"].get<bool>());
  std::string localName;
  LIPGetLocalFQDN(localName);
  EXPECT_EQ(message["heloName"], localName);
  EXPECT_EQ(Header(message, "MIME-Version"), "1.0");
  EXPECT_EQ(Header(message, "From"), "Kontavo@127.0.0.1");
  EXPECT_EQ(Header(message, "To"), "client@exemple.fr, compta@exemple.fr");
  EXPECT_EQ(Header(message, "Subject"), "Facture 1042");
  EXPECT_EQ(Header(message, "Date"), LEmailFormatDate(1700000000));
  EXPECT_EQ(Header(message, "X-Mailer"), std::string(kEmailMailerName));
  EXPECT_EQ(Header(message, "Reply-To"), "factures@mon-entreprise.fr");
  EXPECT_EQ(Header(message, "Content-Type"), "text/plain; charset=\"utf-8\"");
  // The terminator's own CR LF follows the text's last line end.
  std::string content = server.Content(1);
  EXPECT_TRUE(content.ends_with("\r\n\r\nBonjour,\r\nveuillez trouver votre facture.\r\n\r\n")) << content;
  EXPECT_NE(server.Events().find("QUIT"), std::string::npos);
}

TEST_F(EmailSend, DotsAreStuffedAndLongLinesCutAsTheServerRestoresThem) {
  LSmtpTestServer& server = StartServer();
  EmailSMTPSendProcess request = LTestEmailRequest(server.Address());
  std::string noBlanks(1000, 'a');
  std::string words;
  while (words.size() < 800) words += "mot ";
  request.text = ".premier\r\n.x\r\n.\r\n..\r\n" + noBlanks + "\n" + words + "\nfin";
  ASSERT_EQ(Send(request), kProcessFinished) << error_;
  std::string content = server.Content(1);
  std::size_t body = content.find("\r\n\r\n");
  ASSERT_NE(body, std::string::npos);
  std::string expected = "premier\r\n.x\r\n.\r\n..\r\n";  // the first line alone goes unstuffed
  expected += std::string(700, 'a') + "\r\n" + std::string(300, 'a') + "\r\n";
  // Cut after the last blank within the first 700 characters: 175 words of 4 characters.
  expected += words.substr(0, 700) + "\r\n" + words.substr(700) + "\r\nfin";
  EXPECT_EQ(content.substr(body + 4), expected + "\r\n");
}

TEST_F(EmailSend, AttachmentsArriveDecodedByteForByteWithTheirTypesAndNames) {
  LSmtpTestServer& server = StartServer();
  std::string binary(200000, '\0');
  std::mt19937 random(42);
  for (char& c : binary) c = static_cast<char>(random());
  std::string pdf = WriteFile("Facture été n°7.pdf", binary);
  std::string wav = WriteFile("annonce.WAV", "RIFF....WAVEfmt ");
  std::string mp3 = WriteFile("musique.mp3", std::string(57, 'x'));
  std::string empty = WriteFile("vide.txt", "");
  EmailSMTPSendProcess request = LTestEmailRequest(server.Address());
  request.subject = "Votre facture d'été — n° 7";
  request.attachments = {pdf, wav, mp3, empty};
  request.html = "<p>ignoré quand des fichiers sont joints</p>";
  ASSERT_EQ(Send(request), kProcessFinished) << error_;
  nlohmann::json message = server.Message(1);
  EXPECT_EQ(message["subject"], "Votre facture d'été — n° 7");
  EXPECT_EQ(message["multipart"], "multipart/mixed");
  EXPECT_EQ(message["boundary"], "gc0p4Jq0M2Yt08jU534c0");
  ASSERT_EQ(message["parts"].size(), 5u);
  EXPECT_EQ(message["parts"][0]["contentType"], "text/plain");
  EXPECT_EQ(message["parts"][0]["charset"], "utf-8");
  EXPECT_EQ(server.Part(1, 0), request.text);
  const struct {
    const char* type;
    const char* name;
    std::string bytes;
  } expected[] = {{"application/octet-stream", "Facture été n°7.pdf", binary},
                  {"audio/wav", "annonce.WAV", "RIFF....WAVEfmt "},
                  {"audio/mpeg", "musique.mp3", std::string(57, 'x')},
                  {"application/octet-stream", "vide.txt", ""}};
  for (int k = 1; k <= 4; ++k) {
    const auto& part = message["parts"][k];
    EXPECT_EQ(part["contentType"], expected[k - 1].type) << k;
    EXPECT_EQ(part["filename"], expected[k - 1].name) << k;
    EXPECT_EQ(part["encoding"], "base64") << k;
    EXPECT_TRUE(server.Part(1, k) == expected[k - 1].bytes) << "attachment " << k << " differs";
  }
  // The file travels in base64 lines of 76 characters (57 bytes each).
  std::string content = server.Content(1);
  std::size_t fullLines = 0;
  for (std::size_t start = 0, end; (end = content.find("\r\n", start)) != std::string::npos; start = end + 2)
    if (end - start == 76) ++fullLines;
  EXPECT_EQ(fullLines, binary.size() / 57 + 1);  // and the one line of the 57-byte file
  EXPECT_TRUE(content.ends_with("\r\n--gc0p4Jq0M2Yt08jU534c0--\r\n\r\n"));
}

TEST_F(EmailSend, HtmlBodyMakesAnAlternativeAndTheBoundaryAvoidsTheText) {
  LSmtpTestServer& server = StartServer();
  EmailSMTPSendProcess request = LTestEmailRequest(server.Address());
  request.text = "Texte qui cite gc0p4Jq0M2Yt08jU534c0 par hasard.\r\n";
  request.html = "<html><body><p>Facture</p>\r\n.ligne\r\n</body></html>";
  ASSERT_EQ(Send(request), kProcessFinished) << error_;
  nlohmann::json message = server.Message(1);
  EXPECT_EQ(message["multipart"], "multipart/alternative");
  EXPECT_EQ(message["boundary"], "gc0p4Jq0M2Yt08jU534c1");
  ASSERT_EQ(message["parts"].size(), 2u);
  EXPECT_EQ(message["parts"][0]["contentType"], "text/plain");
  EXPECT_EQ(message["parts"][1]["contentType"], "text/html");
  EXPECT_EQ(message["parts"][1]["charset"], "utf-8");
  EXPECT_EQ(server.Part(1, 0), request.text);
  EXPECT_EQ(server.Part(1, 1), request.html);
  EXPECT_TRUE(server.Content(1).ends_with("\r\n--gc0p4Jq0M2Yt08jU534c1--\r\n\r\n\r\n"));
}

TEST_F(EmailSend, CopyListsGoToTheEnvelopeOnly) {
  LSmtpTestServer& server = StartServer();
  EmailSMTPSendProcess request = LTestEmailRequest(server.Address());
  request.sender = "factures@mon-entreprise.fr";
  request.copyRecipients = {"", "archive@mon-entreprise.fr"};
  ASSERT_EQ(Send(request), kProcessFinished) << error_;
  nlohmann::json message = server.Message(1);
  EXPECT_EQ(message["mailFrom"], "factures@mon-entreprise.fr");
  EXPECT_EQ(message["rcptTos"], nlohmann::json({"client@exemple.fr", "archive@mon-entreprise.fr"}));
  EXPECT_EQ(Header(message, "To"), "client@exemple.fr");
  EXPECT_EQ(Header(message, "Cc"), "");
}

// ---- STARTTLS and AUTH LOGIN ------------------------------------------------------------------

TEST_F(EmailSend, StartTlsThenAuthLoginWithAVerifiedCertificate) {
  LSmtpTestServer& server = StartServer(SecureOptions("compta:s3cret:é"));
  EmailSMTPSendProcess request = LogonRequest(server, "compta", "s3cret:é", true);
  ASSERT_EQ(Send(request), kProcessFinished) << error_;
  nlohmann::json message = server.Message(1);
  EXPECT_TRUE(message["tls"].get<bool>());
  EXPECT_TRUE(message["extended"].get<bool>());
  EXPECT_EQ(message["login"], "compta");
  std::string events = server.Events();
  std::size_t tls = events.find("STARTTLS");
  ASSERT_NE(tls, std::string::npos) << events;
  // The greeting is repeated over the secure link, then the logon.
  EXPECT_LT(events.find("EHLO"), tls);
  EXPECT_NE(events.find("EHLO", tls), std::string::npos);
  EXPECT_LT(tls, events.find("AUTH LOGIN"));
}

TEST_F(EmailSend, AnUntrustedCertificateRefusesTheSecureConnection) {
  LSmtpTestServer& server = StartServer(SecureOptions("u:p"));
  EmailSMTPSendProcess request = LogonRequest(server, "u", "p", true);
  request.caFile.clear();  // the certificate is self-signed and not named as trusted
  EXPECT_EQ(Send(request), kProcessFailed);
  EXPECT_EQ(error_, "Impossible de créer une connexion sécurisée au serveur ");
  EXPECT_EQ(server.MessageCount(), 0);
  // Unchecked, the same server is reached.
  request.verifyCertificate = false;
  EXPECT_EQ(Send(request), kProcessFinished) << error_;
}

TEST_F(EmailSend, LogonRefusalsGiveTheirMessages) {
  LSmtpTestServer& server = StartServer(SecureOptions("u:bon"));
  EmailSMTPSendProcess request = LogonRequest(server, "u", "mauvais", true);
  EXPECT_EQ(Send(request), kProcessFailed);
  EXPECT_EQ(error_, "Nom d'utilisateur ou mot de passe d'authentification de messagerie non accepté (535): ");
  // Without encryption the server wants STARTTLS before the logon.
  request.password = "bon";
  request.useEncryption = false;
  EXPECT_EQ(Send(request), kProcessFailed);
  EXPECT_EQ(error_, "Cryptage requis pour ce serveur de messagerie. Veuillez vérifier vos paramètres de courriels.");
  EXPECT_EQ(server.MessageCount(), 0);
}

TEST_F(EmailSend, EncryptionWithoutAUserStaysOnHelo) {
  // HELO replies list no extensions, so STARTTLS is never seen without a logon; a server that
  // insists on encryption refuses the HELO itself.
  LSmtpTestServer& server = StartServer(SecureOptions(""));
  EmailSMTPSendProcess request = LTestEmailRequest(server.Address());
  request.useEncryption = true;
  EXPECT_EQ(Send(request), kProcessFailed);
  EXPECT_EQ(error_, "Erreur du serveur hôte de messagerie (HELO non accepté): 530 emailto: client@exemple.fr");
  EXPECT_EQ(server.Events().find("STARTTLS"), std::string::npos);
}

// ---- Refusals ---------------------------------------------------------------------------------

struct Refusal {
  std::vector<std::string> replies;
  std::string message;
};

TEST_F(EmailSend, EachRefusedStepGivesItsMessage) {
  const Refusal refusals[] = {
      {{"HELO=504"},
       "Erreur du serveur de l'hôte de messagerie (HELO refusé, code erreur 504) pour l'adresse de courriel de "
       "destination  client@exemple.fr - cela indique généralement une adresse non valide."},
      {{"HELO=501"}, "Erreur du serveur hôte de messagerie (HELO non accepté): 501 emailto: client@exemple.fr"},
      {{"MAIL=553"},
       "Erreur du serveur hôte de messagerie (MAIL FROM non accepté). Veuillez vérifier vos paramètres de "
       "courriels. Kontavo@127.0.0.1 - (553 -  refus MAIL)"},
      {{"RCPT=550"},
       "Erreur lors de la tentative d'envoi de courriel. L'adresse de courriel est peut-être incorrecte ou votre "
       "serveur SMTP requiert peut-être un nom d'utilisateur ou un mot de passe. Veuillez vérifier l'adresse et vous "
       "référer aux paramètres des courriels. (550):  refus RCPT"},
      {{"DATACMD=451"}, "Erreur du serveur hôte de messagerie (DATA non accepté)"},
      {{"DATA=554"},
       "Le serveur de messagerie du destinataire a rejeté ce courriel pour une raison non précisée. Essayez "
       "d'utiliser un compte SMTP pour l'envoi de courriels à cette adresse."},
      {{"DATA=552"}, "Le message dépasse les limites de taille définies pour ce compte."},
      {{"DATA=451"},
       "Erreur du serveur hôte de messagerie (terminateur de données non accepté) emailto: client@exemple.fr "
       "mailhost: 127.0.0.1 error: 451"},
  };
  for (const auto& refusal : refusals) {
    SCOPED_TRACE(refusal.replies[0]);
    server_.reset();
    std::filesystem::remove_all(home_.Path() + "/smtp");
    LSmtpTestServer& server = StartServer(ReplyOptions(refusal.replies));
    EmailSMTPSendProcess request = LTestEmailRequest(server.Address());
    EXPECT_EQ(Send(request), kProcessFailed);
    EXPECT_EQ(error_, refusal.message);
    EXPECT_EQ(server.MessageCount(), 0);
  }
}

TEST_F(EmailSend, QuitRefusedChangesNothing) {
  LSmtpTestServer& server = StartServer(ReplyOptions({"QUIT=421"}));
  EmailSMTPSendProcess request = LTestEmailRequest(server.Address());
  EXPECT_EQ(Send(request), kProcessFinished) << error_;
  EXPECT_EQ(server.MessageCount(), 1);
}

TEST_F(EmailSend, AListGoesOnWhenOneOfItsAddressesIsTakenButFailsWhenNoneIs) {
  LSmtpTestServer::Options refusing;
  refusing.refusedRecipients = {"inconnu@exemple.fr", "archive@exemple.fr"};
  LSmtpTestServer& server = StartServer(refusing);
  EmailSMTPSendProcess request = LTestEmailRequest(server.Address());
  request.recipients = "inconnu@exemple.fr,client@exemple.fr";
  ASSERT_EQ(Send(request), kProcessFinished) << error_;
  EXPECT_EQ(server.Message(1)["rcptTos"], nlohmann::json({"client@exemple.fr"}));
  request.copyRecipients = {"archive@exemple.fr"};
  EXPECT_EQ(Send(request), kProcessFailed);
  EXPECT_EQ(error_,
            "Erreur lors de la tentative d'envoi de courriel. L'adresse de courriel est peut-être incorrecte ou votre "
            "serveur SMTP requiert peut-être un nom d'utilisateur ou un mot de passe. Veuillez vérifier l'adresse et "
            "vous référer aux paramètres des courriels. (550):  Recipient address rejected: inconnu");
  EXPECT_EQ(server.MessageCount(), 1);
}

// ---- Choosing the server ----------------------------------------------------------------------

TEST_F(EmailSend, AHostAloneTriesTheSubmissionPortThenTheRelayPortOnce) {
  LSmtpTestServer& server = StartServer();
  EmailSMTPSendProcess request = LTestEmailRequest("127.0.0.1");
  request.ports = {LRefusingPort(), server.Port()};
  ASSERT_EQ(Send(request), kProcessFinished) << error_;
  EXPECT_EQ(server.MessageCount(), 1);
  // A port given with the host is the only one tried.
  request.server = "127.0.0.1:" + std::to_string(LRefusingPort());
  EXPECT_EQ(Send(request), kProcessFailed);
  EXPECT_EQ(error_, "Impossible de se connecter au serveur de messagerie \"" + request.server +
                        "\" pour envoyer un message à \"client@exemple.fr\".");
  request.server = "127.0.0.1";
  request.ports = {LRefusingPort(), LRefusingPort()};
  EXPECT_EQ(Send(request), kProcessFailed);
  EXPECT_EQ(error_, "Impossible de se connecter au serveur de messagerie \"127.0.0.1\" pour envoyer un message à "
                    "\"client@exemple.fr\".");
}

TEST_F(EmailSend, DirectDeliveryRunsOneDialoguePerRecipientAtItsExchanger) {
  LSmtpTestServer& server = StartServer();
  std::vector<std::string> asked;
  EmailSMTPSendProcess request = LTestEmailRequest("");
  request.recipients = "client@exemple.fr, patron@autre-exemple.fr";
  request.mxLookup = [&](std::string_view domain, LIPAddressWithPort& out) {
    asked.emplace_back(domain);
    out = LIPAddressWithPort("127.0.0.1", server.Port());
    return true;
  };
  ASSERT_EQ(Send(request), kProcessFinished) << error_;
  EXPECT_EQ(asked, (std::vector<std::string>{"exemple.fr", "autre-exemple.fr"}));
  ASSERT_EQ(server.MessageCount(), 2);
  // Each connection names one recipient; the sender takes the recipient's domain.
  EXPECT_EQ(server.Message(1)["rcptTos"], nlohmann::json({"client@exemple.fr"}));
  EXPECT_EQ(server.Message(1)["mailFrom"], "Kontavo@exemple.fr");
  EXPECT_EQ(server.Message(2)["rcptTos"], nlohmann::json({"patron@autre-exemple.fr"}));
  EXPECT_EQ(server.Message(2)["mailFrom"], "Kontavo@autre-exemple.fr");
  EXPECT_EQ(Header(server.Message(2), "To"), "client@exemple.fr, patron@autre-exemple.fr");
}

TEST_F(EmailSend, DirectDeliveryRefusalsNameTheRecipientAndItsExchanger) {
  LSmtpTestServer& server = StartServer(ReplyOptions({"DATA=-,450"}));
  EmailSMTPSendProcess request = LTestEmailRequest("");
  request.recipients = "a@exemple.fr, b@exemple.fr, c@exemple.fr";
  request.mxLookup = [&](std::string_view, LIPAddressWithPort& out) {
    out = LIPAddressWithPort("127.0.0.1", server.Port());
    return true;
  };
  EXPECT_EQ(Send(request), kProcessFailed);
  EXPECT_EQ(error_,
            "Le serveur de messagerie du destinataire n'autorise pas la réception des courriels de cette manière. "
            "Veuillez utiliser un compte SMTP pour l'envoi de courriels à cette adresse. emailto: b@exemple.fr "
            "mailhost: 127.0.0.1 error:  refus message");
  // The first recipient got the message; the third was never tried.
  EXPECT_EQ(server.MessageCount(), 1);
  EXPECT_EQ(server.Events().find("RCPT c@exemple.fr"), std::string::npos);

  request.mxLookup = [](std::string_view, LIPAddressWithPort&) { return false; };
  EXPECT_EQ(Send(request), kProcessFailed);
  EXPECT_EQ(error_, "Impossible de se connecter au serveur de messagerie \"exemple.fr\" pour envoyer un message à "
                    "\"a@exemple.fr\".");
}

TEST_F(EmailSend, RequestsThatCannotGoAreRefusedBeforeConnecting) {
  EmailSMTPSendProcess request = LTestEmailRequest("127.0.0.1:" + std::to_string(LRefusingPort()));
  request.recipients = " , ";
  EXPECT_EQ(Send(request), kProcessFailed);
  EXPECT_EQ(error_, "Aucun destinataire indiqué pour réception de courriel.");
  request.recipients = "client@exemple.fr";
  request.attachments = {home_.Path() + "/absent.pdf"};
  EXPECT_EQ(Send(request), kProcessFailed);
  EXPECT_EQ(error_, "Impossible de lire la pièce jointe \"" + home_.Path() + "/absent.pdf\".");
}

}  // namespace
