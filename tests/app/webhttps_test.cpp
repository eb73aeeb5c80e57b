// HTTPS of the web server, checked with OpenSSL's own client (`openssl s_client`) over the
// loopback: the server's self-signed certificate and one the user gives, the secure cookie, plain
// HTTP kept for this machine and sent to https from any other.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <regex>

#include "llib/gen/file.h"

#include "tests/app/clitest.h"
#include "tests/support/smtptestserver.h"
#include "tests/support/webservertest.h"

namespace {

class WebHttpsTest : public LWebServerTest {
 protected:
  // Sends request over TLS with `openssl s_client`, trusting caFile only and checking that the
  // certificate names "localhost" (a failed check ends the handshake: no answer then); what the
  // client printed: the certificate, the answer, and the verdict.
  LRunResult TlsExchange(const std::string& request, const std::string& caFile) {
    return LRunProgram("/usr/bin/timeout",
                       {"30", "openssl", "s_client", "-connect", "127.0.0.1:" + std::to_string(port_), "-servername",
                        "localhost", "-CAfile", caFile, "-verify_return_error", "-verify_hostname", "localhost",
                        "-ign_eof"},
                       request);
  }
  static std::string Get(const std::string& path) {
    return "GET " + path + " HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n";
  }
};

TEST_F(WebHttpsTest, OwnSelfSignedCertificateServesTlsAndSecureCookies) {
  std::string said = LExpectSuccess({"web", "https", "on"});
  std::string cert = home_.Path() + "/tls/cert.pem";
  std::string key = home_.Path() + "/tls/key.pem";
  EXPECT_NE(said.find("Certificat : " + cert), std::string::npos) << said;
  struct stat st;
  ASSERT_EQ(::stat(key.c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 07777, 0600u);
  ASSERT_EQ(::stat((home_.Path() + "/tls").c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 07777, 0700u);
  EXPECT_NE(server_->Log().find("Démarrage du serveur Web (Sécurisé)"), std::string::npos) << server_->Log();

  LRunResult css = TlsExchange(Get("/s.css"), cert);
  EXPECT_NE(css.out.find("\nHTTP/1.1 200 OK\r\n"), std::string::npos) << css.out << css.err;
  EXPECT_NE(css.out.find("Verify return code: 0 (ok)"), std::string::npos);

  // Over TLS the session cookie carries Secure.
  std::string body = LWebLogonBody(kWebTestAdmin, kWebTestAdminPassword);
  LRunResult logon = TlsExchange("POST /logon HTTP/1.1\r\nHost: localhost\r\nContent-Type: "
                                 "application/x-www-form-urlencoded\r\nContent-Length: " +
                                     std::to_string(body.size()) + "\r\n\r\n" + body,
                                 cert);
  EXPECT_TRUE(std::regex_search(logon.out, std::regex("Set-Cookie: kontavo_sess=s[a-z]{8}[0-9]+; Path=/; HttpOnly; "
                                                      "SameSite=Strict; Secure\r\n")))
      << logon.out;

  // This machine keeps plain HTTP on the same port (the desk); other machines are sent to https.
  EXPECT_EQ(LHttpGet(port_, "/s.css").status, 200);
  std::string remote = LOtherLocalAddress();
  if (!remote.empty()) {
    LWebResponse plain = LHttpExchangeAt(remote, port_, "GET /main?x=1 HTTP/1.1\r\nHost: compta.local:" +
                                                           std::to_string(port_) + "\r\n\r\n");
    EXPECT_EQ(plain.status, 301) << plain.raw;
    EXPECT_EQ(plain.headers["location"], "https://compta.local:" + std::to_string(port_) + "/main?x=1");
  }

  // A client that opens TLS and says nothing more is dropped, and the server goes on serving.
  int silent = LConnectLoopback(port_);
  ASSERT_GE(silent, 0);
  ASSERT_TRUE(LSendAll(silent, std::string("\x16\x03\x01\x00\x05", 5)));
  EXPECT_NE(TlsExchange(Get("/s.css"), cert).out.find("\nHTTP/1.1 200 OK\r\n"), std::string::npos);
  ::close(silent);

  // Off again: a TLS client finds no TLS.
  LExpectSuccess({"web", "https", "off"});
  EXPECT_NE(TlsExchange(Get("/s.css"), cert).exitCode, 0);
  EXPECT_EQ(LHttpGet(port_, "/s.css").status, 200);
}

TEST_F(WebHttpsTest, GivenCertificateIsCheckedBeforeItIsStored) {
  std::string cert = home_.Path() + "/given-cert.pem";
  std::string key = home_.Path() + "/given-key.pem";
  ASSERT_TRUE(LMakeSelfSignedCertificate(cert, key));
  std::string otherCert = home_.Path() + "/other-cert.pem";
  std::string otherKey = home_.Path() + "/other-key.pem";
  ASSERT_TRUE(LMakeSelfSignedCertificate(otherCert, otherKey));

  LExpectUsageErrors({{"web", "https", "on", "--cert", cert}, {"web", "https", "off", "--cert", cert, "--key", key},
                      {"web", "https", "maybe"}});
  LRunResult mismatched = LRunKontavo({"web", "https", "on", "--cert", cert, "--key", otherKey});
  EXPECT_EQ(mismatched.exitCode, 1);
  EXPECT_EQ(mismatched.err.rfind("Le certificat du serveur Web ne peut pas être utilisé : ", 0), 0u) << mismatched.err;
  EXPECT_EQ(LRunKontavoJson({"web", "status"})["https"], false);

  LExpectSuccess({"web", "https", "on", "--cert", cert, "--key", key});
  LRunResult css = TlsExchange(Get("/s.css"), cert);
  EXPECT_NE(css.out.find("\nHTTP/1.1 200 OK\r\n"), std::string::npos) << css.out << css.err;
  // Nothing of the server's own pair was made.
  EXPECT_FALSE(LFile::Exists(home_.Path() + "/tls/key.pem"));
  nlohmann::json status = LRunKontavoJson({"web", "status"});
  EXPECT_EQ(status["https"], true);
  EXPECT_EQ(status["certificate"], cert);
}

}  // namespace
