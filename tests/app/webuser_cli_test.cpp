// kontavo user and kontavo web without a running service.
#include <gtest/gtest.h>

#include <regex>

#include "tests/support/testhome.h"

namespace {

class WebUserCliTest : public LHomeTest {};

TEST_F(WebUserCliTest, AddChecksLikeTheAccountDialog) {
  EXPECT_EQ(LRunKontavo({"user", "add", "a@b.fr", "--password-stdin"}, "abcdef\n").err,
            "Veuillez entrer un nom pour l'utilisateur.\n");
  EXPECT_EQ(LRunKontavo({"user", "add", "a@b", "--name", "A", "--password-stdin"}, "abcdef\n").exitCode, 1);
  EXPECT_EQ(LRunKontavo({"user", "add", "a@b.fr", "--name", "A", "--password-stdin"}, "abc\n").err,
            "Veuillez entrer le mot de passe du compte.\nIl doit contenir au moins 6 caractères.\n");
  EXPECT_EQ(LRunKontavo({"user", "add", "A@B.fr", "--name", "A", "--viewer", "--password-stdin"}, "abcdef\n").exitCode, 0);
  LRunResult again = LRunKontavo({"user", "add", "a@b.FR", "--name", "A2", "--password-stdin"}, "abcdef\n");
  EXPECT_EQ(again.exitCode, 1);
  EXPECT_NE(again.err.find("Cette adresse de courriel est utilisée actuellement par un autre compte."), std::string::npos);
  EXPECT_EQ(LRunKontavo({"user", "add", "c@b.fr", "--name", "C", "--profile", "Inconnue SA"}).exitCode, 1);
  EXPECT_EQ(LRunKontavo({"user", "add", "c@b.fr", "--name", "C", "--admin", "--viewer"}).exitCode, 2);
  EXPECT_EQ(LRunKontavo({"record", "get", "WebAccounts", "a@b.fr", "Priviligies"}).out, "3\n");
}

TEST_F(WebUserCliTest, GeneratedPasswordsArePrintedAndListsHideThem) {
  LRunResult added = LRunKontavo({"user", "add", "a@b.fr", "--name", "A"});
  std::smatch match;
  ASSERT_TRUE(std::regex_search(added.out, match, std::regex("Mot de passe : ([a-z]{8})\n")));
  EXPECT_EQ(LRunKontavo({"record", "get", "WebAccounts", "a@b.fr", "Password"}).out, match[1].str() + "\n");
  LRunResult list = LRunKontavo({"--json", "user", "list"});
  EXPECT_EQ(list.out.find("Password"), std::string::npos);
  EXPECT_NE(list.out.find("\"ID\":\"a@b.fr\""), std::string::npos);
  EXPECT_EQ(LRunKontavo({"user", "list"}).out, "a@b.fr\tA\tUtilisateur\tactivé\t\n");
}

TEST_F(WebUserCliTest, PasswdLiftsALockOutAndDeleteNeedsAnAccount) {
  ASSERT_EQ(LRunKontavo({"user", "add", "a@b.fr", "--name", "A", "--password-stdin"}, "abcdef\n").exitCode, 0);
  ASSERT_EQ(LRunKontavo({"record", "set", "WebAccounts", "a@b.fr", "LogonFailures=9", "LogonFailTime=99"}).exitCode, 0);
  EXPECT_EQ(LRunKontavo({"user", "passwd", "a@b.fr", "--password-stdin"}, "nouveau1\n").exitCode, 0);
  EXPECT_EQ(LRunKontavo({"record", "get", "WebAccounts", "a@b.fr", "LogonFailures"}).out, "0\n");
  EXPECT_EQ(LRunKontavo({"record", "get", "WebAccounts", "a@b.fr", "Password"}).out, "nouveau1\n");
  EXPECT_EQ(LRunKontavo({"user", "delete", "A@B.FR"}).exitCode, 0);
  LRunResult missing = LRunKontavo({"user", "delete", "a@b.fr"});
  EXPECT_EQ(missing.exitCode, 1);
  EXPECT_EQ(missing.err, "Cet utilisateur n'existe pas dans le Kontavo - Logiciel de comptabilité Système\n");
}

TEST_F(WebUserCliTest, WebSettingsWithoutService) {
  LRunResult status = LRunKontavo({"--json", "web", "status"});
  EXPECT_NE(status.out.find("\"enabled\":false"), std::string::npos);
  EXPECT_NE(status.out.find("\"port\":1098"), std::string::npos);
  EXPECT_NE(status.out.find("\"serviceRunning\":false"), std::string::npos);
  EXPECT_EQ(LRunKontavo({"web", "enable"}).exitCode, 0);
  EXPECT_EQ(LRunKontavo({"settings", "get", "WebServer", "Enabled"}).out, "1\n");
  EXPECT_EQ(LRunKontavo({"web", "port", "8080"}).exitCode, 0);
  EXPECT_EQ(LRunKontavo({"settings", "get", "WebServer", "Port"}).out, "8080\n");
  EXPECT_EQ(LRunKontavo({"web", "port", "0"}).err, "Numéro de port non valide.\n");
  EXPECT_EQ(LRunKontavo({"web", "restart"}).exitCode, 2);
  EXPECT_EQ(LRunKontavo({"settings", "set", "WebServer", "Port", "0"}).exitCode, 0);
  EXPECT_NE(LRunKontavo({"--json", "web", "status"}).out.find("\"port\":1098"), std::string::npos);
}

}  // namespace
