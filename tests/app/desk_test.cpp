// The desk: `kontavo desk --no-open` starts the service of a fresh application folder and
// prints a one-time logon link; the link opens a desk session once, within its minute, from this
// computer only.
#include <gtest/gtest.h>
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <ctime>
#include <regex>

#include "llib/gen/file.h"
#include "llib/gen/serviceengine.h"
#include "llib/web/webdesk.h"
#include "tests/support/testhome.h"
#include "tests/support/webclient.h"
#include "tests/support/webservertest.h"

namespace {

// An IPv4 address of this machine outside the loopback network ("" when it has none).
std::string DeskRequest(const std::string& pathAndQuery) {
  return "GET " + pathAndQuery + " HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n";
}

class DeskTest : public LHomeTest {
 protected:
  void SetUp() override {
    port_ = LFreeLoopbackPort();
    ASSERT_EQ(LRunKontavo({"web", "port", std::to_string(port_)}).exitCode, 0);
  }
  // The service started by the desk outlives the command; each case ends it.
  void TearDown() override {
    if (!LServiceEngineSendControl(kServiceControlStop)) return;
    for (int waited = 0; LServiceEngineIsRunning() && waited < 10000; waited += 20) usleep(20000);
  }

  // Runs the desk and returns the path and query of the link it printed ("" when none).
  std::string DeskLink() {
    LRunResult run = LRunKontavo({"desk", "--no-open"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    std::smatch match;
    std::regex link("^http://127\\.0\\.0\\.1:" + std::to_string(port_) + "(/desk\\?token=[0-9a-f]{32})\n$");
    if (!std::regex_match(run.out, match, link)) {
      ADD_FAILURE() << "no link in: " << run.out;
      return {};
    }
    return match[1].str();
  }

  std::string TokenPath() const { return home_.Path() + "/desk-token"; }

  int port_ = 0;
};

TEST_F(DeskTest, LinkOpensOneDeskSessionAndOnlyOnce) {
  EXPECT_FALSE(LServiceEngineIsRunning());
  std::string link = DeskLink();
  ASSERT_FALSE(link.empty());
  EXPECT_TRUE(LServiceEngineIsRunning());

  struct stat st;
  ASSERT_EQ(::stat(TokenPath().c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 07777, 0600u);

  // A guessed token, and the right one from another address, are refused and spend nothing.
  std::string forged = link;
  forged.back() = forged.back() == '0' ? '1' : '0';
  EXPECT_EQ(LHttpGet(port_, forged).status, 403);
  EXPECT_EQ(LHttpGet(port_, "/desk").status, 403);
  std::string remote = LOtherLocalAddress();
  if (!remote.empty()) {
    LWebResponse fromAfar = LHttpExchangeAt(remote, port_, DeskRequest(link));
    EXPECT_EQ(fromAfar.status, 403) << remote;
    EXPECT_EQ(LWebSessionOf(fromAfar), "");
  }
  EXPECT_TRUE(LFile::Exists(TokenPath()));

  LWebResponse opened = LHttpGet(port_, link);
  EXPECT_EQ(opened.status, 302);
  EXPECT_EQ(opened.headers["location"], "main");
  std::string session = LWebSessionOf(opened);
  ASSERT_FALSE(session.empty()) << opened.raw;
  EXPECT_NE(opened.headers["set-cookie"].find("; HttpOnly; SameSite=Strict"), std::string::npos);
  EXPECT_FALSE(LFile::Exists(TokenPath()));

  // No web account exists, yet the desk session sees the pages of an administrator; the new
  // business has no name, so the main page sends it into the start wizard.
  LWebResponse main = LHttpGet(port_, "/main", session);
  EXPECT_EQ(main.status, 302);
  EXPECT_EQ(main.headers["location"], "startwizard");
  LWebResponse wizard = LHttpGet(port_, "/startwizard", session);
  EXPECT_EQ(wizard.status, 200);
  EXPECT_NE(wizard.body.find("Connecté sous Poste de travail"), std::string::npos);
  EXPECT_EQ(LHttpGet(port_, "/userlist", session).status, 200);

  LWebResponse again = LHttpGet(port_, link);
  EXPECT_EQ(again.status, 403);
  EXPECT_EQ(LWebSessionOf(again), "");

  // A second desk finds the service running and gives a new link that works.
  std::string second = DeskLink();
  EXPECT_NE(second, link);
  EXPECT_EQ(LHttpGet(port_, link).status, 403);
  EXPECT_FALSE(LWebSessionOf(LHttpGet(port_, second)).empty());
}

TEST_F(DeskTest, LinkOlderThanAMinuteIsRefusedAndSpent) {
  std::string link = DeskLink();
  ASSERT_FALSE(link.empty());
  std::string token;
  ASSERT_TRUE(LWebDeskIssueToken(std::time(nullptr) - kDeskTokenLifetimeSeconds - 1, token));
  LWebResponse late = LHttpGet(port_, "/desk?token=" + token);
  EXPECT_EQ(late.status, 403);
  EXPECT_EQ(LWebSessionOf(late), "");
  EXPECT_FALSE(LFile::Exists(TokenPath()));

  // At the edge of the minute the token still counts, once.
  ASSERT_TRUE(LWebDeskIssueToken(1000, token));
  EXPECT_FALSE(LWebDeskRedeemToken(token, 1000 + kDeskTokenLifetimeSeconds + 1));
  ASSERT_TRUE(LWebDeskIssueToken(1000, token));
  EXPECT_FALSE(LWebDeskRedeemToken(token.substr(1), 1000));
  EXPECT_TRUE(LWebDeskRedeemToken(token, 1000 + kDeskTokenLifetimeSeconds));
  EXPECT_FALSE(LWebDeskRedeemToken(token, 1000 + kDeskTokenLifetimeSeconds));
}

TEST_F(DeskTest, PortHeldByAnotherProgramIsNamedWithTheWayOut) {
  int holder = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_ANY);
  address.sin_port = htons(static_cast<uint16_t>(port_));
  ASSERT_EQ(::bind(holder, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(::listen(holder, 1), 0);

  LRunResult run = LRunKontavo({"desk", "--no-open"});
  EXPECT_EQ(run.exitCode, 1);
  std::string port = std::to_string(port_);
  EXPECT_NE(run.err.find("le port TCP " + port + " est déjà utilisé par un autre programme"), std::string::npos)
      << run.err;
  EXPECT_NE(run.err.find("kontavo web port " + std::to_string(port_ + 1)), std::string::npos) << run.err;
  EXPECT_EQ(run.out, "");
  ::close(holder);
}

}  // namespace
