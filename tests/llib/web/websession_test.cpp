// Web sessions in files and the password check of web accounts.
#include <gtest/gtest.h>

#include <chrono>
#include <regex>
#include <thread>

#include "llib/gen/file.h"
#include "llib/web/webaccount.h"
#include "llib/web/websession.h"
#include "tests/support/testhome.h"

namespace {

class WebSessionTest : public LHomeTest {};

TEST_F(WebSessionTest, NewSessionIdsHaveKindLettersAndSerial) {
  LWebletSessionDataFileBased a, b;
  a.CreateNewSession(false);
  b.CreateNewSession(true);
  EXPECT_TRUE(std::regex_match(a.GetSessionId(), std::regex("s[a-z]{8}[0-9]+")));
  EXPECT_TRUE(std::regex_match(b.GetSessionId(), std::regex("l[a-z]{8}[0-9]+")));
  int serialA = std::stoi(a.GetSessionId().substr(9));
  int serialB = std::stoi(b.GetSessionId().substr(9));
  EXPECT_EQ(serialB, serialA + 1);
  EXPECT_TRUE(a.IsPresent());
  // Nothing is written before a change.
  EXPECT_FALSE(LFile::Exists(a.GetPath()));
}

TEST_F(WebSessionTest, ChangesAreWrittenBackAtFlushOnly) {
  LWebletSessionDataFileBased session;
  session.CreateNewSession(false);
  session.SetString("user", "a@b.fr");
  session.SetString("profile", "/x y/z");
  EXPECT_EQ(LReadFile(session.GetPath()), "");  // taken and truncated, not yet written
  session.FlushSession();
  EXPECT_EQ(LReadFile(session.GetPath()), "profile=%2Fx%20y%2Fz&user=a%40b.fr");
  LWebletSessionDataFileBased again;
  ASSERT_TRUE(again.LoadSession(session.GetSessionId()));
  EXPECT_STREQ(again.GetParm("profile", ""), "/x y/z");
  again.DeleteField("profile");
  again.FlushSession();
  EXPECT_EQ(LReadFile(session.GetPath()), "user=a%40b.fr");
  again.DestroySession();
  EXPECT_FALSE(again.IsPresent());
  EXPECT_FALSE(LFile::Exists(session.GetPath()));
}

TEST_F(WebSessionTest, IdsWithPathsOrUnknownFilesGiveNoSession) {
  LWriteFile(home_.Path() + "/x.sess", "user=a");
  LWebletSessionDataFileBased session;
  for (const char* id : {"", "../x", "..\\x", "/x", "a/../../x", "nofile"}) {
    EXPECT_FALSE(session.LoadSession(id)) << id;
    EXPECT_FALSE(session.IsPresent()) << id;
  }
}

TEST_F(WebSessionTest, ReaderWaitsForTheWriterOfTheSameSession) {
  LWebletSessionDataFileBased writer;
  writer.CreateNewSession(false);
  writer.SetString("step", "1");
  writer.FlushSession();
  writer.SetString("step", "2");  // holds the exclusive lock until flushed
  std::thread flusher([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    writer.FlushSession();
  });
  auto start = std::chrono::steady_clock::now();
  LWebletSessionDataFileBased reader;
  ASSERT_TRUE(reader.LoadSession(writer.GetSessionId()));
  auto waited = std::chrono::steady_clock::now() - start;
  flusher.join();
  EXPECT_STREQ(reader.GetParm("step", ""), "2");
  EXPECT_GE(waited, std::chrono::milliseconds(250));
}

class WebAccountTest : public LHomeTest {
 protected:
  void SetUp() override {
    LWebAccount account;
    LWebAccountList().CreateNewRecord(account, "a@b.fr");
    account.SetString("Password", "Secret1");
    account.SetBool("Enabled", true);
    ASSERT_TRUE(account.Flush());
  }
  int Check(const char* password, std::time_t now) {
    LWebAccount account;
    EXPECT_TRUE(LWebAccountList().Open(account, "a@b.fr"));
    return account.ValidateLogon(password, now);
  }
  std::string AccountFile() { return LReadFile(LWebAccountList().GetFolder() + "/a%40b.fr.dat"); }
  long long Field(const char* name) {
    LWebAccount account;
    LWebAccountList().Open(account, "a@b.fr");
    return account.GetInt64(name, -1);
  }
};

TEST_F(WebAccountTest, SeventhAttemptWithinTwentyMinutesIsLockedOut) {
  std::time_t t = 1700000000;
  for (int i = 1; i <= 6; ++i) EXPECT_EQ(Check("wrong", t + i * 60), kWebLogonWrongPassword) << i;
  EXPECT_EQ(Field("LogonFailures"), 6);
  EXPECT_EQ(Field("LogonFailTime"), t + 360);
  EXPECT_EQ(Check("Secret1", t + 361), kWebLogonLocked);
  EXPECT_EQ(Check("Secret1", t + 360 + 1199), kWebLogonLocked);
  // Counted from the last failure: the lock is over after 1200 s, and success resets both.
  EXPECT_EQ(Check("Secret1", t + 360 + 1200), kWebLogonOk);
  EXPECT_EQ(Field("LogonFailures"), 0);
  EXPECT_EQ(Field("LogonFailTime"), 0);
}

TEST_F(WebAccountTest, FailuresOutsideTheWindowStartCountingAgain) {
  std::time_t t = 1700000000;
  for (int i = 0; i < 5; ++i) Check("wrong", t);
  EXPECT_EQ(Field("LogonFailures"), 5);
  EXPECT_EQ(Check("wrong", t + 1200), kWebLogonWrongPassword);
  EXPECT_EQ(Field("LogonFailures"), 1);
  EXPECT_EQ(Check("secret1", t + 1201), kWebLogonWrongPassword);  // case counts
  EXPECT_EQ(LWebAccountValidateLogon("nobody@b.fr", "x"), kWebLogonNoAccount);
  EXPECT_EQ(LWebAccountValidateLogon("A@B.FR", "Secret1"), kWebLogonOk);
}

TEST_F(WebAccountTest, ProfilesAreExactCommaSeparatedNames) {
  LWebAccount account;
  ASSERT_TRUE(LWebAccountList().Open(account, "a@b.fr"));
  EXPECT_FALSE(account.HasProfile(""));
  account.SetString("Profiles", "Dupont SA,Martin & Fils");
  EXPECT_TRUE(account.HasProfile("Martin & Fils"));
  EXPECT_FALSE(account.HasProfile("Dupont"));
  EXPECT_FALSE(account.HasProfile("dupont sa"));
  account.DetachWithoutSave();
}

TEST_F(WebAccountTest, ForgottenPasswordIsEightLettersStoredHashed) {
  std::string password;
  ASSERT_TRUE(LWebAccountForgotPassword("A@b.fr", password));
  EXPECT_TRUE(std::regex_match(password, std::regex("[a-z]{8}")));
  EXPECT_EQ(AccountFile().find(password), std::string::npos);
  EXPECT_EQ(LWebAccountValidateLogon("a@b.fr", "Secret1"), kWebLogonWrongPassword);
  EXPECT_EQ(LWebAccountValidateLogon("a@b.fr", password), kWebLogonOk);
  EXPECT_FALSE(LWebAccountForgotPassword("nobody@b.fr", password));
}

// The fixture's account is what an older program wrote: "Password" in plain text.
TEST_F(WebAccountTest, PlainPasswordOfAnOlderProgramIsHashedAtItsFirstLogon) {
  EXPECT_EQ(Check("wrong", 1700000000), kWebLogonWrongPassword);
  EXPECT_NE(AccountFile().find("Password=Secret1"), std::string::npos);  // a failure rewrites nothing of it
  EXPECT_EQ(Check("Secret1", 1700000001), kWebLogonOk);
  std::string file = AccountFile();
  EXPECT_EQ(file.find("Secret1"), std::string::npos) << file;
  EXPECT_NE(file.find("PasswordHash=pbkdf2-sha256%24600000%24"), std::string::npos) << file;
  EXPECT_EQ(file.find("Password="), std::string::npos) << file;
  EXPECT_EQ(Check("Secret1", 1700000002), kWebLogonOk);
  EXPECT_EQ(AccountFile(), file);  // a current hash is not made again
  EXPECT_EQ(Check("secret1", 1700000003), kWebLogonWrongPassword);
}

TEST_F(WebAccountTest, ServiceStartHashesEveryPlainPassword) {
  LWebAccount other;
  LWebAccountList().CreateNewRecord(other, "c@d.fr");
  ASSERT_TRUE(other.SetPassword("Hashed99"));
  ASSERT_TRUE(other.Flush());
  other.Invalidate();
  EXPECT_EQ(LWebAccountHashPlainPasswords(), 1);
  EXPECT_EQ(AccountFile().find("Secret1"), std::string::npos);
  EXPECT_EQ(LWebAccountHashPlainPasswords(), 0);
  EXPECT_EQ(LWebAccountValidateLogon("a@b.fr", "Secret1"), kWebLogonOk);
  EXPECT_EQ(LWebAccountValidateLogon("c@d.fr", "Hashed99"), kWebLogonOk);
  // An empty plain password of a damaged file opens nothing.
  LWebAccount empty;
  LWebAccountList().CreateNewRecord(empty, "e@f.fr");
  empty.SetString("Password", "");
  ASSERT_TRUE(empty.Flush());
  EXPECT_FALSE(empty.HasPassword(""));
}

}  // namespace
