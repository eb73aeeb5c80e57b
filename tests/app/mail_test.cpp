// kontavo mail config / mail send, run as the real binary against a real SMTP server.
#include <gtest/gtest.h>

#include "tests/app/clitest.h"
#include "tests/support/scriptedserver.h"
#include "tests/support/smtptestserver.h"

namespace {

class MailCommand : public LHomeTest {};

TEST_F(MailCommand, ConfigStoresTheSettingsHidesThePasswordAndRefusesWhatCouldNotWork) {
  LExpectRefused({"mail", "config", "--server", "smtp.exemple.fr:99999"},
                 "Serveur de messagerie non valide : smtp.exemple.fr:99999");
  LExpectRefused({"mail", "config", "--sender", "pas-une-adresse"}, "Adresse de courriel non valide : pas-une-adresse");
  LExpectUsageErrors({{"mail", "config", "--starttls", "oui"}, {"mail", "config", "--to", "a@b.fr"}});
  // Nothing was stored by the refusals.
  EXPECT_EQ(LRunKontavo({"settings", "get", "Email", "SenderEmail"}).out, "\n");

  EXPECT_EQ(LExpectSuccess({"mail", "config", "--server", "smtp.exemple.fr:465", "--user", "compta", "--password-stdin",
                            "--sender", "factures@exemple.fr", "--starttls", "on", "--reply-to", "contact@exemple.fr"},
                           "s3cret\n"),
            "server=smtp.exemple.fr:465\nuser=compta\npassword=********\nsender=factures@exemple.fr\n"
            "reply-to=contact@exemple.fr\nstarttls=on\nverify=on\nca-file=\n");
  // Where they live: the user's settings group "Email".
  EXPECT_EQ(LExpectSuccess({"settings", "get", "Email", "SMTPServer"}), "smtp.exemple.fr:465\n");
  EXPECT_EQ(LExpectSuccess({"settings", "get", "Email", "ReplyToEmail"}), "contact@exemple.fr\n");
  // A later call changes only what it names.
  nlohmann::json json = LRunKontavoJson({"mail", "config", "--starttls", "off"});
  EXPECT_EQ(json["server"], "smtp.exemple.fr:465");
  EXPECT_EQ(json["starttls"], false);
  EXPECT_EQ(json["passwordSet"], true);
}

TEST_F(MailCommand, SendGoesThroughTheConfiguredServer) {
  LSmtpTestServer server(home_.Path() + "/smtp", {});
  ASSERT_TRUE(server.IsRunning());
  LExpectSuccess({"mail", "config", "--server", server.Address(), "--starttls", "off"});
  std::string body = home_.Path() + "/corps.txt", html = home_.Path() + "/corps.html";
  std::string pdf = home_.Path() + "/Facture 7.pdf";
  LWriteFile(body, "Bonjour,\n.ci-joint la facture.\n");
  LWriteFile(html, "<p>Bonjour</p>");
  LWriteFile(pdf, std::string("%PDF\0binaire", 12));
  LRunResult run = LRunKontavo({"mail", "send", "--to", "client@exemple.fr", "--subject", "Facture n° 7",
                                "--body-file", body, "--attach", pdf, "--attach", html});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_EQ(run.err, "");  // not a terminal: no progress drawn
  ASSERT_EQ(server.MessageCount(), 1);
  nlohmann::json message = server.Message(1);
  EXPECT_EQ(message["subject"], "Facture n° 7");
  EXPECT_EQ(message["rcptTos"], nlohmann::json({"client@exemple.fr"}));
  ASSERT_EQ(message["parts"].size(), 3u);
  // Line ends become CR LF; the stuffed dot is restored by the server.
  EXPECT_EQ(server.Part(1, 0), "Bonjour,\r\n.ci-joint la facture.\r\n");
  EXPECT_EQ(message["parts"][1]["filename"], "Facture 7.pdf");
  EXPECT_EQ(server.Part(1, 1), std::string("%PDF\0binaire", 12));
  EXPECT_EQ(server.Part(1, 2), "<p>Bonjour</p>");

  EXPECT_EQ(
      LRunKontavoJson({"mail", "send", "--to", "client@exemple.fr", "--body", "court", "--html-file", html})["sent"],
      true);
  EXPECT_EQ(server.Message(2)["multipart"], "multipart/alternative");
}

TEST_F(MailCommand, SendFailuresPrintTheDialoguesMessage) {
  std::string address = "127.0.0.1:" + std::to_string(LRefusingPort());
  LExpectSuccess({"mail", "config", "--server", address, "--starttls", "off"});
  LExpectRefused({"mail", "send", "--to", "client@exemple.fr", "--body", "texte"},
                 "Impossible de se connecter au serveur de messagerie \"" + address +
                     "\" pour envoyer un message à \"client@exemple.fr\".");
  LExpectRefused({"mail", "send", "--to", "client.exemple.fr", "--body", "texte"},
                 "Adresse de courriel de destinataire non valide: client.exemple.fr");
  LExpectUsageErrors({{"mail", "send", "--body", "texte"},
                      {"mail", "send", "--to", "a@b.fr"},
                      {"mail", "send", "--to", "a@b.fr", "--body", "x", "--body-file", "f"},
                      {"mail", "send", "--to", "a@b.fr", "--body", "x", "--user", "u"},
                      {"mail", "envoyer"}});
}

}  // namespace
