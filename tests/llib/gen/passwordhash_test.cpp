// Hashed passwords: salted, checked in constant time, and stored hashes from a damaged file
// never matched nor computed for ever.
#include <gtest/gtest.h>

#include <regex>

#include "llib/gen/passwordhash.h"

namespace {

TEST(PasswordHashTest, SaltedHashMatchesOnlyItsPassword) {
  std::string first = LPasswordHashMake("secret12");
  std::string second = LPasswordHashMake("secret12");
  EXPECT_TRUE(std::regex_match(first, std::regex("pbkdf2-sha256\\$600000\\$[0-9a-f]{32}\\$[0-9a-f]{64}"))) << first;
  EXPECT_NE(first, second);  // a fresh salt each time
  EXPECT_TRUE(LPasswordHashMatches(first, "secret12"));
  EXPECT_TRUE(LPasswordHashMatches(second, "secret12"));
  for (const char* wrong : {"Secret12", "secret1", "secret123", ""}) EXPECT_FALSE(LPasswordHashMatches(first, wrong)) << wrong;
  EXPECT_TRUE(LPasswordHashIsCurrent(first));
}

TEST(PasswordHashTest, OlderCountsStillMatchButAskForANewHash) {
  // PBKDF2-HMAC-SHA256 of "secret12" with this salt text and 1000 iterations, as Python's
  // hashlib.pbkdf2_hmac computes it.
  const std::string old =
      "pbkdf2-sha256$1000$00112233445566778899aabbccddeeff$"
      "ada8b0d408af19213a33558393c921082e624c10df9f7fd145085f59860ad77b";
  EXPECT_TRUE(LPasswordHashMatches(old, "secret12"));
  EXPECT_FALSE(LPasswordHashMatches(old, "secret13"));
  EXPECT_FALSE(LPasswordHashIsCurrent(old));
}

TEST(PasswordHashTest, MalformedStoredHashesNeverMatch) {
  std::string good = LPasswordHashMake("secret12");
  std::string salt = good.substr(21, 32);
  std::string key = good.substr(54);
  for (const std::string& bad : {std::string(), std::string("secret12"), "md5$600000$" + salt + "$" + key,
                                 "pbkdf2-sha256$0$" + salt + "$" + key, "pbkdf2-sha256$-5$" + salt + "$" + key,
                                 "pbkdf2-sha256$99999999999$" + salt + "$" + key,  // hours of work: refused
                                 "pbkdf2-sha256$600000$" + salt + "$" + key.substr(1),
                                 "pbkdf2-sha256$600000x$" + salt + "$" + key, good + "$"}) {
    EXPECT_FALSE(LPasswordHashMatches(bad, "secret12")) << bad;
    EXPECT_FALSE(LPasswordHashIsCurrent(bad)) << bad;
  }
}

TEST(PasswordHashTest, SecretEqualsComparesWholeTexts) {
  EXPECT_TRUE(LSecretEquals("", ""));
  EXPECT_TRUE(LSecretEquals("abc", "abc"));
  EXPECT_FALSE(LSecretEquals("abc", "abd"));
  EXPECT_FALSE(LSecretEquals("abc", "abcd"));
  EXPECT_FALSE(LSecretEquals(std::string("a\0b", 3), "a"));
}

}  // namespace
