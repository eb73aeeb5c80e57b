// kontavo user and kontavo web without a running service.
#include <gtest/gtest.h>

#include <regex>

#include "llib/web/webaccount.h"
#include "tests/app/clitest.h"

namespace {

class WebUserCliTest : public LHomeTest {};

// The stored file of an account (the key's "@" percent-encoded).
std::string LWebAccountFileText(const std::string& id) {
  return LReadFile(LWebAccountList().GetFolder() + "/" + std::regex_replace(id, std::regex("@"), "%40") + ".dat");
}

TEST_F(WebUserCliTest, AddChecksLikeTheAccountDialog) {
  const std::string pass = "--password-stdin";
  LExpectRefused({"user", "add", "a@b.fr", pass}, "Veuillez entrer un nom pour l'utilisateur.", "abcdef\n");
  EXPECT_EQ(LRunKontavo({"user", "add", "a@b", "--name", "A", pass}, "abcdef\n").exitCode, 1);
  LExpectRefused({"user", "add", "a@b.fr", "--name", "A", pass},
                 "Veuillez entrer le mot de passe du compte.\nIl doit contenir au moins 6 caractères.", "abc\n");
  LExpectSuccess({"user", "add", "A@B.fr", "--name", "A", "--viewer", pass}, "abcdef\n");
  LRunResult again = LRunKontavo({"user", "add", "a@b.FR", "--name", "A2", pass}, "abcdef\n");
  EXPECT_EQ(again.exitCode, 1);
  EXPECT_NE(again.err.find("Cette adresse de courriel est utilisée actuellement par un autre compte."),
            std::string::npos);
  EXPECT_EQ(LRunKontavo({"user", "add", "c@b.fr", "--name", "C", "--profile", "Inconnue SA"}).exitCode, 1);
  LExpectUsageErrors({{"user", "add", "c@b.fr", "--name", "C", "--admin", "--viewer"}});
  EXPECT_EQ(LStoredField("WebAccounts", "a@b.fr", "Priviligies"), "3");
}

TEST_F(WebUserCliTest, GeneratedPasswordsArePrintedAndListsHideThem) {
  std::string added = LExpectSuccess({"user", "add", "a@b.fr", "--name", "A"});
  std::smatch match;
  ASSERT_TRUE(std::regex_search(added, match, std::regex("Mot de passe : ([a-z]{8})\n")));
  EXPECT_EQ(LStoredField("WebAccounts", "a@b.fr", "Password"), "<absent>");
  EXPECT_NE(LStoredField("WebAccounts", "a@b.fr", "PasswordHash").find("pbkdf2-sha256$"), std::string::npos);
  EXPECT_EQ(LWebAccountFileText("a@b.fr").find(match[1].str()), std::string::npos);
  std::string list = LExpectSuccess({"--json", "user", "list"});
  EXPECT_EQ(list.find("Password"), std::string::npos);
  EXPECT_NE(list.find("\"ID\":\"a@b.fr\""), std::string::npos);
  EXPECT_EQ(LExpectSuccess({"user", "list"}), "a@b.fr\tA\tUtilisateur\tactivé\t\n");
}

TEST_F(WebUserCliTest, PasswdLiftsALockOutAndDeleteNeedsAnAccount) {
  LExpectSuccess({"user", "add", "a@b.fr", "--name", "A", "--password-stdin"}, "abcdef\n");
  LExpectSuccess({"record", "set", "WebAccounts", "a@b.fr", "LogonFailures=9", "LogonFailTime=99"});
  LExpectSuccess({"user", "passwd", "a@b.fr", "--password-stdin"}, "nouveau1\n");
  EXPECT_EQ(LStoredField("WebAccounts", "a@b.fr", "LogonFailures"), "0");
  EXPECT_EQ(LWebAccountFileText("a@b.fr").find("nouveau1"), std::string::npos);
  EXPECT_EQ(LWebAccountValidateLogon("a@b.fr", "nouveau1"), kWebLogonOk);
  LExpectSuccess({"user", "delete", "A@B.FR"});
  LExpectRefused({"user", "delete", "a@b.fr"},
                 "Cet utilisateur n'existe pas dans le Kontavo - Logiciel de comptabilité Système");
}

TEST_F(WebUserCliTest, WebSettingsWithoutService) {
  std::string status = LExpectSuccess({"--json", "web", "status"});
  for (const char* part : {"\"enabled\":false", "\"port\":1098", "\"serviceRunning\":false"})
    EXPECT_NE(status.find(part), std::string::npos) << part;
  LExpectSuccess({"web", "enable"});
  EXPECT_EQ(LExpectSuccess({"settings", "get", "WebServer", "Enabled"}), "1\n");
  LExpectSuccess({"web", "port", "8080"});
  EXPECT_EQ(LExpectSuccess({"settings", "get", "WebServer", "Port"}), "8080\n");
  EXPECT_EQ(LRunKontavo({"web", "port", "0"}).err, "Numéro de port non valide.\n");
  LExpectUsageErrors({{"web", "restart"}});
  // A stored port that cannot be used reads as the default.
  LExpectSuccess({"settings", "set", "WebServer", "Port", "0"});
  EXPECT_NE(LExpectSuccess({"--json", "web", "status"}).find("\"port\":1098"), std::string::npos);
}

}  // namespace
