// The socket and TLS layer on real loopback connections: connecting, lines and their limits,
// time limits and the stop test, and TLS with its certificate checks.
#include "llib/net/socket.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>

#include "tests/support/scriptedserver.h"
#include "tests/support/smtptestserver.h"
#include "tests/support/testhome.h"

namespace {

using Clock = std::chrono::steady_clock;

long long MsSince(Clock::time_point start) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
}

TEST(Socket, ConnectsReadsLinesAndLeavesTheRestBuffered) {
  LScriptedTcpServer server([](LScriptedTcpConnection& c) {
    c.Send("premiere\r\nseconde\nsuite");
    std::string line;
    if (c.ReadLine(line)) c.Send(" et fin " + line + "\n");
  });
  LSocket socket;
  ASSERT_EQ(socket.Connect(LIPAddressWithPort("127.0.0.1", server.Port()), 2000), LNetStatus::kOk);
  std::string line;
  ASSERT_EQ(socket.ReadLine(line, 100, 2000), LNetStatus::kOk);
  EXPECT_EQ(line, "premiere");
  ASSERT_EQ(socket.ReadLine(line, 100, 2000), LNetStatus::kOk);
  EXPECT_EQ(line, "seconde");
  ASSERT_EQ(socket.Send("ping\r\n", 2000), LNetStatus::kOk);
  ASSERT_EQ(socket.ReadLine(line, 100, 2000), LNetStatus::kOk);
  EXPECT_EQ(line, "suite et fin ping");
  // The server is gone: the end of the connection, not a time-out.
  EXPECT_EQ(socket.ReadLine(line, 100, 2000), LNetStatus::kClosed);
}

TEST(Socket, LineLimitsTimeLimitsAndRefusals) {
  LScriptedTcpServer server([](LScriptedTcpConnection& c) {
    c.Send(std::string(300, 'x'));
    c.WaitForClose(5000);
  });
  LSocket socket;
  ASSERT_EQ(socket.Connect(LIPAddressWithPort("127.0.0.1", server.Port()), 2000), LNetStatus::kOk);
  std::string line;
  EXPECT_EQ(socket.ReadLine(line, 100, 2000), LNetStatus::kTooLong);
  EXPECT_EQ(line, std::string(100, 'x'));
  socket.Consume(socket.Buffered().size());
  Clock::time_point start = Clock::now();
  EXPECT_EQ(socket.ReadLine(line, 1000, 300), LNetStatus::kTimedOut);
  EXPECT_GE(MsSince(start), 300);
  EXPECT_LT(MsSince(start), 3000);

  LSocket refused;
  EXPECT_EQ(refused.Connect(LIPAddressWithPort("127.0.0.1", LRefusingPort()), 2000), LNetStatus::kFailed);
  EXPECT_FALSE(refused.IsOpen());
  EXPECT_NE(refused.LastError(), "");
  EXPECT_EQ(refused.Connect(LIPAddressWithPort("nom-inexistant.invalid", 25), 2000), LNetStatus::kFailed);
}

TEST(Socket, TheStopTestEndsAWaitWithinAFewSlices) {
  LScriptedTcpServer server([](LScriptedTcpConnection& c) { c.WaitForClose(10000); });
  LSocket socket;
  ASSERT_EQ(socket.Connect(LIPAddressWithPort("127.0.0.1", server.Port()), 2000), LNetStatus::kOk);
  Clock::time_point start = Clock::now();
  socket.SetStopTest([start] { return MsSince(start) > 150; });
  std::string line;
  EXPECT_EQ(socket.ReadLine(line, 100, 60000), LNetStatus::kStopped);
  EXPECT_LT(MsSince(start), 2000);
}

class SocketTls : public LHomeTest {
 protected:
  void SetUp() override {
    cert_ = home_.Path() + "/cert.pem";
    key_ = home_.Path() + "/key.pem";
    ASSERT_TRUE(LMakeSelfSignedCertificate(cert_, key_));
  }
  // An echo server of lines behind TLS.
  LScriptedTcpServer::Script EchoOverTls() {
    return [this](LScriptedTcpConnection& c) {
      if (!c.AcceptTls(cert_, key_)) return;
      std::string line;
      while (c.ReadLine(line)) c.Send("echo " + line + "\r\n");
    };
  }
  std::string cert_, key_;
};

TEST_F(SocketTls, TrafficGoesThroughTlsWhenTheCertificateNamesTheHost) {
  LScriptedTcpServer server(EchoOverTls());
  for (const char* name : {"localhost", "127.0.0.1"}) {
    SCOPED_TRACE(name);
    LSocket socket;
    ASSERT_EQ(socket.Connect(LIPAddressWithPort("127.0.0.1", server.Port()), 2000), LNetStatus::kOk);
    LTlsClientOptions options;
    options.caFile = cert_;
    options.hostName = name;
    ASSERT_EQ(socket.StartTls(options, 5000), LNetStatus::kOk) << socket.LastError();
    EXPECT_TRUE(socket.IsTls());
    // More than one TLS record each way.
    std::string big(40000, 'b');
    ASSERT_EQ(socket.Send(big + "\r\n", 5000), LNetStatus::kOk);
    std::string line;
    ASSERT_EQ(socket.ReadLine(line, 50000, 5000), LNetStatus::kOk);
    EXPECT_EQ(line, "echo " + big);
  }
}

TEST_F(SocketTls, CertificateChecksRefuseUnknownAuthoritiesAndOtherNames) {
  LScriptedTcpServer server(EchoOverTls());
  const struct {
    std::string caFile;
    std::string host;
    bool verify;
    bool ok;
  } cases[] = {
      {"", "localhost", true, false},                // self-signed, not trusted
      {cert_, "mail.autre-exemple.fr", true, false}, // trusted, but names another host
      {cert_, "10.0.0.1", true, false},              // another address
      {"", "mail.autre-exemple.fr", false, true},    // unchecked: any certificate
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.host);
    LSocket socket;
    ASSERT_EQ(socket.Connect(LIPAddressWithPort("127.0.0.1", server.Port()), 2000), LNetStatus::kOk);
    LTlsClientOptions options;
    options.caFile = test.caFile;
    options.hostName = test.host;
    options.verifyPeer = test.verify;
    LNetStatus status = socket.StartTls(options, 5000);
    EXPECT_EQ(status == LNetStatus::kOk, test.ok) << socket.LastError();
    if (!test.ok) {
      EXPECT_FALSE(socket.IsOpen());
      EXPECT_NE(socket.LastError().find("certificate"), std::string::npos) << socket.LastError();
    }
  }
}

TEST_F(SocketTls, AMissingAuthorityFileIsAFailureNotATrustAll) {
  LScriptedTcpServer server(EchoOverTls());
  LSocket socket;
  ASSERT_EQ(socket.Connect(LIPAddressWithPort("127.0.0.1", server.Port()), 2000), LNetStatus::kOk);
  LTlsClientOptions options;
  options.caFile = home_.Path() + "/absent.pem";
  options.hostName = "localhost";
  EXPECT_EQ(socket.StartTls(options, 5000), LNetStatus::kFailed);
  EXPECT_FALSE(socket.IsOpen());
}

}  // namespace
