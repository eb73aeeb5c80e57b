// The settings pages of a real `kontavo serve`: each checked with the messages of its command,
// stored, and read back with the command line; only administrators reach them.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/app/clitest.h"
#include "tests/support/smtptestserver.h"
#include "tests/support/webservertest.h"

namespace {

class WebSettingsTest : public LWebServerTest {
 protected:
  // The answer script of the page's OK with the given fields.
  std::string Save(const std::string& session, const std::string& fields) {
    return LHttpPost(port_, "/settings", fields + "&submit=++OK++", session).body;
  }
};

TEST_F(WebSettingsTest, LegalMentionsAreCheckedThenStored) {
  std::string session = Logon();
  ASSERT_FALSE(session.empty());
  std::string page = LHttpGet(port_, "/settings", session).body;
  EXPECT_NE(page.find("value='Principale SARL'"), std::string::npos);

  const std::string base = "101=Principale+SARL&108=";
  EXPECT_NE(Save(session, base + "12345678").find("Le numéro SIREN doit compter 9 chiffres."), std::string::npos);
  EXPECT_NE(Save(session, base + "123456789&109=98765432100011")
                .find("Le numéro SIRET doit compter 14 chiffres et commencer par le numéro SIREN."),
            std::string::npos);
  EXPECT_NE(Save(session, base + "&111=32123456789").find("Numéro de TVA intracommunautaire non valide"),
            std::string::npos);
  EXPECT_NE(Save(session, base + "&107=dix+mille").find("Veuillez entrer le capital social en chiffres"),
            std::string::npos);
  EXPECT_NE(Save(session, "101=").find("Veuillez entrer le nom de l"), std::string::npos);
  EXPECT_EQ(LStoredField("Misc", "Company", "SIREN"), "<absent>");

  std::string saved = Save(session,
                           "101=Principale+SARL&102=1+rue+de+la+Paix&106=SARL&107=10000&108=123456789"
                           "&109=12345678900011&110=RCS+Lyon&111=FR32123456789&112=10.5&120=on");
  EXPECT_NE(saved.find("window.location = 'settingsmenu'"), std::string::npos) << saved;
  const std::pair<const char*, const char*> stored[] = {
      {"SIREN", "123456789"},      {"SIRET", "12345678900011"}, {"VATNumber", "FR32123456789"},
      {"LegalForm", "SARL"},       {"ShareCapital", "1000000"}, {"RCS", "RCS Lyon"},
      {"VATExempt", "1"},          {"Address", "1 rue de la Paix"}, {"LatePenaltyRate", "10.500000"},
  };
  for (const auto& [field, value] : stored) EXPECT_EQ(LStoredField("Misc", "Company", field), value) << field;
  // The page shows the stored values again, the capital in currency units.
  page = LHttpGet(port_, "/settings", session).body;
  EXPECT_NE(page.find("value='10000.00'"), std::string::npos);
  EXPECT_NE(page.find("value='FR32123456789'"), std::string::npos);
}

// Each page changes its settings through the routine of its command: what the page stores, the
// command line reads back, and a refusal carries the command line's message word for word.
TEST_F(WebSettingsTest, EachPageStoresWhatTheCommandLineReadsBack) {
  std::string session = Logon();
  ASSERT_FALSE(session.empty());
  auto post = [&](const std::string& route, const std::string& fields) {
    return LHttpPost(port_, "/" + route, fields + "&submit=++OK++", session).body;
  };
  const std::string done = "window.location = 'settingsmenu'";

  // Regional settings.
  EXPECT_NE(post("settingsregional", "101=%E2%82%AC&102=3&103=%2C&104=%2C&105=1")
                .find("Le séparateur des milliers doit différer du symbole décimal."),
            std::string::npos);
  EXPECT_NE(post("settingsregional", "101=%E2%82%AC&102=3&103=%2C&104=+&105=1").find(done), std::string::npos);
  EXPECT_EQ(LStoredField("Misc", "Options", "CurrencySymbol"), "€");
  EXPECT_EQ(LStoredField("Misc", "Options", "CurrencyOrder"), "3");
  EXPECT_EQ(LStoredField("Misc", "Options", "DecimalSymbol"), ",");
  EXPECT_EQ(LStoredField("Misc", "Options", "ThousandsSymbol"), " ");
  EXPECT_EQ(LStoredField("Misc", "Options", "PrintedDateOrder"), "1");

  // Taxes: a rate that does not read is refused as `tax set` refuses it; a rename reaches `tax show`.
  LExpectSuccess({"tax", "set", "--count", "1", "--name", "1=TVA", "--rate", "1=20"});
  LRunResult cli = LRunKontavo({"tax", "set", "--rate", "1=vingt"});
  ASSERT_NE(cli.err.find("valeur invalide : 1=vingt"), std::string::npos) << cli.err;
  EXPECT_NE(post("settingstax", "1001=TVA&1101=vingt&101=1").find("Taux invalide pour la taxe 1 : « vingt »"), std::string::npos);
  EXPECT_NE(post("settingstax", "1001=TVA+normale&1101=20&1002=TVA+r%C3%A9duite&1102=5.5&1202=on&101=2&103=on")
                .find(done),
            std::string::npos);
  std::string shown = LExpectSuccess({"tax", "show"});
  EXPECT_NE(shown.find("Taxes : 2\nTaxe par défaut : 2\n"), std::string::npos) << shown;
  EXPECT_NE(shown.find("1\tTVA normale\t20"), std::string::npos) << shown;
  EXPECT_NE(shown.find("2\tTVA réduite\t5.5\ttaux zéro"), std::string::npos) << shown;
  EXPECT_NE(shown.find("Suivi de la taxe versée : oui"), std::string::npos) << shown;

  // Document options of one kind, and those every document shares.
  EXPECT_NE(post("settingsdocuments", "kind=Quote&rbg1=102&103=jamais").find("Veuillez entrer le délai de paiement"),
            std::string::npos);
  EXPECT_NE(post("settingsdocuments", "kind=Quote&rbg1=102&103=45&104=Devis+valable+un+mois.&105=Merci&201=on")
                .find(done),
            std::string::npos);
  EXPECT_EQ(LStoredField("Misc", "Quote", "PaymentTermsDays"), "45");
  EXPECT_EQ(LStoredField("Misc", "Quote", "NotesText"), "Devis valable un mois.");
  EXPECT_EQ(LStoredField("Misc", "Quote", "FooterText"), "Merci");
  // A kind never set before gets its record; its template form is kept, and "" goes back to
  // the default.
  EXPECT_NE(post("settingsdocuments", "kind=CreditNote&rbg1=101&104=Avoir&106=maison&201=on").find(done), std::string::npos);
  EXPECT_EQ(LStoredField("Misc", "CreditNote", "Form"), "maison");
  EXPECT_NE(post("settingsdocuments", "kind=CreditNote&rbg1=101&104=Avoir&106=&201=on").find(done), std::string::npos);
  EXPECT_EQ(LStoredField("Misc", "CreditNote", "Form"), "<absent>");
  EXPECT_EQ(LStoredField("Misc", "Options", "DontShowDiscountColumn"), "0");

  // The closing date.
  EXPECT_NE(post("settingsclosing", "101=on&102=31%2F12%2F2025").find("Veuillez entrer la date de clôture"),
            std::string::npos);
  EXPECT_NE(post("settingsclosing", "101=on&102=2025-12-31").find(done), std::string::npos);
  EXPECT_EQ(LStoredField("Misc", "Company", "CTDEnabled"), "1");
  EXPECT_EQ(LStoredField("Misc", "Company", "CTDDate"), "2025-12-31");

  // E-mail settings: the same refusal as `mail config`.
  cli = LRunKontavo({"mail", "config", "--sender", "pas une adresse"});
  ASSERT_EQ(cli.exitCode, 1);
  EXPECT_NE(post("settingsmail", "104=pas+une+adresse").find(cli.err.substr(0, cli.err.size() - 1)), std::string::npos);
  EXPECT_NE(post("settingsmail", "101=smtp.exemple.fr%3A2525&102=compta&103=motdepasse&104=compta%40exemple.fr&106=on")
                .find(done),
            std::string::npos);
  std::string mail = LExpectSuccess({"mail", "config"});
  EXPECT_NE(mail.find("server=smtp.exemple.fr:2525\nuser=compta\npassword=********\nsender=compta@exemple.fr\n"),
            std::string::npos)
      << mail;
  EXPECT_NE(mail.find("starttls=on\nverify=off"), std::string::npos) << mail;

  // The web server: the same refusal as `web port`, then the new port for `web status`.
  cli = LRunKontavo({"web", "port", "70000"});
  ASSERT_EQ(cli.exitCode, 1);
  EXPECT_NE(post("settingsweb", "101=on&102=70000").find(cli.err.substr(0, cli.err.size() - 1)), std::string::npos);

  // The linked accounts: all nine are needed, as the dialog of `account linked` says.
  EXPECT_NE(post("settingslinked", "101=&201=").find("alert("), std::string::npos);
  EXPECT_EQ(LStoredField("Misc", "Options", "DefAccount1Number"), "<absent>");
}

TEST_F(WebSettingsTest, TheTestMessageGoesThroughTheRealServer) {
  LSmtpTestServer smtp(home_.Path() + "/smtp", {});
  ASSERT_TRUE(smtp.IsRunning());
  std::string session = Logon();
  std::string answer = LHttpPost(port_, "/settingsmail",
                                 "101=" + smtp.Address() + "&104=compta%40exemple.fr&110=patron%40exemple.fr"
                                 "&submit=Envoyer+un+message+d%27essai",
                                 session)
                           .body;
  EXPECT_NE(answer.find("window.location = 'settingsmail?sent=patron%40exemple.fr'"), std::string::npos) << answer;
  ASSERT_EQ(smtp.MessageCount(), 1);
  EXPECT_EQ(smtp.Message(1)["rcptTos"], nlohmann::json({"patron@exemple.fr"}));
  EXPECT_EQ(smtp.Message(1)["subject"], "Message d'essai de Kontavo");
  EXPECT_NE(LHttpGet(port_, "/settingsmail?sent=patron%40exemple.fr", session).body.find(
                "Le message d&#39;essai a été envoyé à patron@exemple.fr."),
            std::string::npos);
  // A server that refuses: its own message comes back, and nothing more is sent.
  std::string refused = LHttpPost(port_, "/settingsmail",
                                  "101=127.0.0.1%3A1&104=compta%40exemple.fr&110=patron%40exemple.fr"
                                  "&submit=Envoyer+un+message+d%27essai",
                                  session)
                            .body;
  EXPECT_NE(refused.find("alert('"), std::string::npos) << refused;
  EXPECT_EQ(smtp.MessageCount(), 1);
}

// A user ("Utilisateur") or a viewer ("Afficheur") is sent back to the main page by every
// settings route, and a posted change is not stored.
TEST_F(WebSettingsTest, UsersAndViewersAreRefusedEverySettingsRoute) {
  const char* routes[] = {"settingsmenu", "settings", "settingsregional", "settingstax", "settingsdocuments",
                          "settingslinked", "settingsmail", "settingsweb", "settingsclosing", "backup"};
  for (const char* role : {"--user", "--viewer"}) {
    std::string email = std::string(role + 2) + "@example.fr";
    LRunResult added = LRunKontavo({"user", "add", email, "--name", "Bob", role, "--profile", "Principale SARL",
                                    "--password-stdin"},
                                   "bobsecret\n");
    ASSERT_EQ(added.exitCode, 0) << added.err;
    std::string session = Logon(email, "bobsecret");
    ASSERT_FALSE(session.empty()) << role;
    for (const char* route : routes) {
      LWebResponse refused = LHttpGet(port_, std::string("/") + route, session);
      EXPECT_EQ(refused.status, 302) << role << " " << route;
      EXPECT_EQ(refused.headers["location"], "main") << role << " " << route;
    }
    LHttpPost(port_, "/settings", "101=Autre&submit=++OK++", session);
    LHttpPost(port_, "/settingsclosing", "101=on&102=2030-01-01&submit=++OK++", session);
    LHttpPost(port_, "/settingsweb", "102=4444&submit=++OK++", session);
    EXPECT_EQ(LStoredField("Misc", "Company", "Name"), "Principale SARL");
    EXPECT_EQ(LStoredField("Misc", "Company", "CTDDate"), "<absent>");
    EXPECT_NE(LExpectSuccess({"web", "status"}).find("Port : " + std::to_string(port_)), std::string::npos);
  }
}

}  // namespace
