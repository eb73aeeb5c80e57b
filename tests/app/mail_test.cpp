// kontavo mail config / mail send, run as the real binary against a real SMTP server.
#include <gtest/gtest.h>

#include "tests/support/scriptedserver.h"
#include "tests/support/smtptestserver.h"
#include "tests/support/testhome.h"

namespace {

class MailCommand : public LHomeTest {};

TEST_F(MailCommand, ConfigStoresTheSettingsAndHidesThePassword) {
  LRunResult run = LRunKontavo({"mail", "config", "--server", "smtp.exemple.fr:465", "--user", "compta",
                                "--password-stdin", "--sender", "factures@exemple.fr", "--starttls", "on",
                                "--reply-to", "contact@exemple.fr"},
                               "s3cret\n");
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_EQ(run.out,
            "server=smtp.exemple.fr:465\nuser=compta\npassword=********\nsender=factures@exemple.fr\n"
            "reply-to=contact@exemple.fr\nstarttls=on\nverify=on\nca-file=\n");
  EXPECT_EQ(run.out.find("s3cret"), std::string::npos);
  // Where they live: the user's settings group "Email".
  EXPECT_EQ(LRunKontavo({"settings", "get", "Email", "SMTPServer"}).out, "smtp.exemple.fr:465\n");
  EXPECT_EQ(LRunKontavo({"settings", "get", "Email", "ReplyToEmail"}).out, "contact@exemple.fr\n");
  // A later call changes only what it names.
  run = LRunKontavo({"--json", "mail", "config", "--starttls", "off"});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  nlohmann::json json = nlohmann::json::parse(run.out);
  EXPECT_EQ(json["server"], "smtp.exemple.fr:465");
  EXPECT_EQ(json["starttls"], false);
  EXPECT_EQ(json["passwordSet"], true);
}

TEST_F(MailCommand, ConfigRefusesWhatCouldNotWork) {
  LRunResult run = LRunKontavo({"mail", "config", "--server", "smtp.exemple.fr:99999"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_EQ(run.err, "Serveur de messagerie non valide : smtp.exemple.fr:99999\n");
  run = LRunKontavo({"mail", "config", "--sender", "pas-une-adresse"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_EQ(run.err, "Adresse de courriel non valide : pas-une-adresse\n");
  EXPECT_EQ(LRunKontavo({"mail", "config", "--starttls", "oui"}).exitCode, 2);
  EXPECT_EQ(LRunKontavo({"mail", "config", "--to", "a@b.fr"}).exitCode, 2);
  // Nothing was stored by the refusals.
  EXPECT_EQ(LRunKontavo({"settings", "get", "Email", "SenderEmail"}).out, "\n");
}

TEST_F(MailCommand, SendGoesThroughTheConfiguredServer) {
  LSmtpTestServer server(home_.Path() + "/smtp", {});
  ASSERT_TRUE(server.IsRunning());
  ASSERT_EQ(LRunKontavo({"mail", "config", "--server", server.Address(), "--starttls", "off"}).exitCode, 0);
  std::string body = home_.Path() + "/corps.txt";
  std::string html = home_.Path() + "/corps.html";
  std::string pdf = home_.Path() + "/Facture 7.pdf";
  LWriteFile(body, "Bonjour,\n.ci-joint la facture.\n");
  LWriteFile(html, "<p>Bonjour</p>");
  LWriteFile(pdf, std::string("%PDF\0binaire", 12));
  LRunResult run = LRunKontavo({"mail", "send", "--to", "client@exemple.fr", "--subject", "Facture n° 7",
                                "--body-file", body, "--attach", pdf, "--attach", html});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  // Not a terminal: no progress drawn.
  EXPECT_EQ(run.err, "");
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

  run = LRunKontavo({"--json", "mail", "send", "--to", "client@exemple.fr", "--body", "court", "--html-file", html});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_EQ(nlohmann::json::parse(run.out)["sent"], true);
  EXPECT_EQ(server.Message(2)["multipart"], "multipart/alternative");
}

TEST_F(MailCommand, SendFailuresPrintTheDialoguesMessage) {
  std::string address = "127.0.0.1:" + std::to_string(LRefusingPort());
  ASSERT_EQ(LRunKontavo({"mail", "config", "--server", address, "--starttls", "off"}).exitCode, 0);
  LRunResult run = LRunKontavo({"mail", "send", "--to", "client@exemple.fr", "--body", "texte"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_EQ(run.err, "Impossible de se connecter au serveur de messagerie \"" + address +
                         "\" pour envoyer un message à \"client@exemple.fr\".\n");
  run = LRunKontavo({"mail", "send", "--to", "client.exemple.fr", "--body", "texte"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_EQ(run.err, "Adresse de courriel de destinataire non valide: client.exemple.fr\n");
}

TEST_F(MailCommand, SendUsageErrors) {
  EXPECT_EQ(LRunKontavo({"mail", "send", "--body", "texte"}).exitCode, 2);
  EXPECT_EQ(LRunKontavo({"mail", "send", "--to", "a@b.fr"}).exitCode, 2);
  EXPECT_EQ(LRunKontavo({"mail", "send", "--to", "a@b.fr", "--body", "x", "--body-file", "f"}).exitCode, 2);
  EXPECT_EQ(LRunKontavo({"mail", "send", "--to", "a@b.fr", "--body", "x", "--user", "u"}).exitCode, 2);
  EXPECT_EQ(LRunKontavo({"mail", "envoyer"}).exitCode, 2);
}

}  // namespace
