// The company details page ("settings") of a real `kontavo serve`: each legal mention checked
// with its message, then stored and read back with `kontavo record get`.
#include <gtest/gtest.h>

#include "tests/app/clitest.h"
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
  EXPECT_NE(saved.find("window.location = 'main'"), std::string::npos) << saved;
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

TEST_F(WebSettingsTest, OnlyAdministratorsReachTheSettings) {
  LRunResult added = LRunKontavo({"user", "add", "bob@example.fr", "--name", "Bob", "--user", "--profile",
                                  "Principale SARL", "--password-stdin"},
                                 "bobsecret\n");
  ASSERT_EQ(added.exitCode, 0) << added.err;
  std::string session = Logon("bob@example.fr", "bobsecret");
  ASSERT_FALSE(session.empty());
  LWebResponse refused = LHttpGet(port_, "/settings", session);
  EXPECT_EQ(refused.status, 302);
  EXPECT_EQ(refused.headers["location"], "main");
  Save(session, "101=Autre");
  EXPECT_EQ(LStoredField("Misc", "Company", "Name"), "Principale SARL");
}

}  // namespace
