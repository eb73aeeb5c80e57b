// A test fixture for the web server: a fresh application folder whose primary business is
// "Principale SARL" with one administrator account, and a real `kontavo serve` on a free
// loopback port; helpers to log on and to reach files of the "Web" folder.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <regex>
#include <string>

#include "tests/support/testhome.h"
#include "tests/support/webclient.h"

inline constexpr char kWebTestAdmin[] = "admin@example.fr";
inline constexpr char kWebTestAdminPassword[] = "secret12";

// The session id of a logon answer ("Set-Cookie: kontavo_sess=ID; Path=/; ...").
inline std::string LWebSessionOf(const LWebResponse& response) {
  std::smatch match;
  static const std::regex cookie("^kontavo_sess=([a-z0-9]+);");
  auto header = response.headers.find("set-cookie");
  if (header == response.headers.end()) return "";
  return std::regex_search(header->second, match, cookie) ? match[1].str() : "";
}

// The POST body of the logon dialog's OK.
inline std::string LWebLogonBody(const std::string& email, const std::string& password, bool remember = false) {
  return "101=" + email + "&102=" + password + (remember ? "&103=on" : "") + "&submit=++Connexion++";
}

class LWebServerTest : public LHomeTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(LRunKontavo({"record", "set", "Misc", "Company", "Name=Principale SARL"}).exitCode, 0);
    LRunResult added = LRunKontavo({"user", "add", kWebTestAdmin, "--name", "Alice Admin", "--admin", "--password-stdin"},
                                   std::string(kWebTestAdminPassword) + "\n");
    ASSERT_EQ(added.exitCode, 0) << added.err;
    StartServer();
  }

  void StartServer() {
    port_ = LFreeLoopbackPort();
    server_ = std::make_unique<LServeProcess>(port_);
    ASSERT_TRUE(server_->WaitReady()) << server_->Log();
  }

  std::string Logon(const std::string& email = kWebTestAdmin, const std::string& password = kWebTestAdminPassword) {
    return LWebSessionOf(LHttpPost(port_, "/logon", LWebLogonBody(email, password)));
  }

  // A session in the primary business: the administrator's, or, given a privilege ("--user",
  // "--viewer"), that of the colleague "eve@example.fr" added with it.
  std::string Session(const char* privilege = nullptr) {
    std::string session;
    if (privilege == nullptr) {
      session = Logon();
    } else {
      LRunResult added = LRunKontavo({"user", "add", "eve@example.fr", "--name", "Eve", privilege, "--profile",
                                      "Principale SARL", "--password-stdin"},
                                     "evesecret\n");
      EXPECT_EQ(added.exitCode, 0) << added.err;
      session = Logon("eve@example.fr", "evesecret");
    }
    EXPECT_FALSE(session.empty());
    EXPECT_EQ(LHttpPost(port_, "/chooseprofile", "rbg3=301&submit=++OK++", session).status, 200);
    return session;
  }

  std::string SessionFile(const std::string& id) const { return home_.Path() + "/SessionData/" + id + ".sess"; }

  // Writes a file under the "Web" folder.
  std::string WriteWebFile(const std::string& name, const std::string& content) {
    std::string path = home_.Path() + "/Web/" + name;
    LWriteFile(path, content);
    return path;
  }

  int port_ = 0;
  std::unique_ptr<LServeProcess> server_;
};
