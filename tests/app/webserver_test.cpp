// The web server as a browser or a bad client meets it: a real `kontavo serve` process on a
// free loopback port, raw HTTP over real sockets.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utime.h>

#include <atomic>
#include <chrono>
#include <regex>
#include <thread>

#include "llib/gen/date.h"
#include "llib/gen/file.h"
#include "tests/support/smtptestserver.h"
#include "tests/support/testhome.h"
#include "tests/support/webclient.h"
#include "tests/support/webservertest.h"

namespace {

constexpr char kNotImplemented[] = "HTTP/1.1 501 Not Implemented\r\nConnection: close\r\n\r\n";
constexpr char kNotFound[] = "HTTP/1.1 404 Not Found\r\nConnection: close\r\n\r\n";

long long NowMs() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

// Sends piece on fd every two seconds, after each a look that others are served, until the
// server closes it or limitMs have passed. Returns the ms waited; closed says which.
long long TrickleUntilClosed(int port, int fd, const char* piece, long long limitMs, bool& closed) {
  long long start = NowMs();
  closed = false;
  while (!closed && NowMs() - start < limitMs) {
    EXPECT_EQ(LHttpGet(port, "/s.css").status, 200);
    LSendAll(fd, piece);
    LReadUntilClose(fd, 2000, &closed);
  }
  return NowMs() - start;
}

class WebServerTest : public LWebServerTest {};

// ---- Methods, paths and the request line ----------------------------------------------------------

TEST_F(WebServerTest, RootWithoutSessionGoesToLogon) {
  LWebResponse response = LHttpGet(port_, "/");
  EXPECT_EQ(response.raw, "HTTP/1.1 302 Found\r\nConnection: close\r\nLocation: logon\r\nContent-Length: 0\r\n\r\n");
}

TEST_F(WebServerTest, MethodsOtherThanGetAndPostAnswer501AndClose) {
  for (const char* method : {"HEAD", "OPTIONS", "PROPFIND", "DELETE", "get"}) {
    LWebResponse response = LHttpExchange(port_, std::string(method) + " /main HTTP/1.1\r\nHost: x\r\n\r\n", 5000);
    EXPECT_EQ(response.raw, kNotImplemented) << method;
  }
  std::string log = server_->Log();
  EXPECT_NE(log.find("Weblet: HEAD requested: 127.0.0.1 (return error 501 Not Implemented)"), std::string::npos);
  EXPECT_NE(log.find("Weblet: OPTIONS requested: 127.0.0.1 (return error 501 Not Implemented)"), std::string::npos);
  EXPECT_NE(log.find("[erreur] Weblet: Bad request method: 127.0.0.1 DELETE"), std::string::npos);
  EXPECT_EQ(log.find("PROPFIND"), std::string::npos);
}

TEST_F(WebServerTest, PathsThatLeaveTheWebFolderAnswer404) {
  LWriteFile(home_.Path() + "/secret.txt", "secret");
  for (const char* path : {"/../secret.txt", "/%2e%2e/secret.txt", "/%2E%2E%2Fsecret.txt", "/..\\secret.txt",
                           "/help/../../secret.txt", "/s.css%00/../../secret.txt"}) {
    LWebResponse response = LHttpGet(port_, path);
    EXPECT_EQ(response.raw, kNotFound) << path;
  }
  EXPECT_EQ(LHttpExchange(port_, "GET main HTTP/1.1\r\n\r\n").raw, kNotFound);
  EXPECT_EQ(LHttpExchange(port_, "GET http://x/main HTTP/1.1\r\n\r\n").raw, kNotFound);
  EXPECT_NE(server_->Log().find("Weblet: Bad request: 127.0.0.1 ../secret.txt"), std::string::npos);
  EXPECT_NE(server_->Log().find("Weblet: Invalid Request URI: 127.0.0.1 main"), std::string::npos);
}

TEST_F(WebServerTest, NulAndBackslashesStayInsideTheWebFolder) {
  WriteWebFile("a.txt", "inside");
  // A decoded NUL ends the file name at the system boundary: still the "Web" folder's file.
  LWebResponse nul = LHttpGet(port_, "/a.txt%00.png");
  EXPECT_EQ(nul.status, 404);
  LWebResponse backslash = LHttpGet(port_, "/help\\login.html");
  EXPECT_EQ(backslash.status, 404);
}

// ---- Static files ---------------------------------------------------------------------------------

TEST_F(WebServerTest, StaticFilesKeepHttp11ConnectionsOpenWithCachingHeaders) {
  int fd = LConnectLoopback(port_);
  ASSERT_GE(fd, 0);
  ASSERT_TRUE(LSendAll(fd, "GET /s.css HTTP/1.1\r\nHost: x\r\n\r\n"));
  LWebResponse first = LReadResponse(fd);
  ASSERT_TRUE(first.complete);
  EXPECT_EQ(first.status, 200);
  EXPECT_EQ(first.headers["content-type"], "text/css");
  EXPECT_EQ(first.headers["cache-control"], "max-age=3600");
  EXPECT_EQ(first.headers["accept-ranges"], "bytes");
  EXPECT_EQ(first.body, LReadFile(home_.Path() + "/Web/s.css"));
  std::string etag = first.headers["etag"];
  std::string modified = first.headers["last-modified"];
  EXPECT_TRUE(std::regex_match(etag, std::regex("\"[0-9]+\"")));
  EXPECT_TRUE(std::regex_match(modified, std::regex("[A-Z][a-z]{2}, [0-9]{2} [A-Z][a-z]{2} 20[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2} GMT")));

  // The same connection carries the next requests: the conditional ones answer 304.
  ASSERT_TRUE(LSendAll(fd, "GET /s.css HTTP/1.1\r\nIf-None-Match: " + etag + "\r\n\r\n"));
  LWebResponse notModified = LReadResponse(fd);
  EXPECT_EQ(notModified.raw, "HTTP/1.1 304 Not Modified\r\n\r\n");
  std::string lower = modified;
  for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  ASSERT_TRUE(LSendAll(fd, "GET /s.css HTTP/1.1\r\nIf-Modified-Since: " + lower + "\r\n\r\n"));
  EXPECT_EQ(LReadResponse(fd).raw, "HTTP/1.1 304 Not Modified\r\n\r\n");
  ASSERT_TRUE(LSendAll(fd, "GET /ajax.js HTTP/1.1\r\nIf-Modified-Since: Mon, 01 Jan 2001 00:00:00 GMT\r\n\r\n"));
  LWebResponse script = LReadResponse(fd);
  EXPECT_EQ(script.status, 200);
  EXPECT_EQ(script.headers["content-type"], "text/javascript");
  ::close(fd);
}

TEST_F(WebServerTest, Http10AndConnectionCloseEndAfterAFile) {
  for (const char* request : {"GET /s.css HTTP/1.0\r\n\r\n", "GET /s.css HTTP/1.1\r\nConnection: close\r\n\r\n",
                              "GET /s.css HTTP/1.1\r\nConnection: keep-alive, close\r\n\r\n"}) {
    int fd = LConnectLoopback(port_);
    ASSERT_TRUE(LSendAll(fd, request));
    bool closed = false;
    std::string raw = LReadUntilClose(fd, 5000, &closed);
    EXPECT_TRUE(closed) << request;
    EXPECT_EQ(raw.substr(0, 15), "HTTP/1.1 200 OK");
    ::close(fd);
  }
}

TEST_F(WebServerTest, RangesAnswer206Or416) {
  std::string content;
  for (int i = 0; i < 1000; ++i) content.push_back(static_cast<char>('a' + i % 26));
  WriteWebFile("data.bin", content);
  auto get = [&](const std::string& range) {
    return LHttpExchange(port_, "GET /data.bin HTTP/1.1\r\nConnection: close\r\nRange: " + range + "\r\n\r\n");
  };
  LWebResponse last = get("bytes=-100");
  EXPECT_EQ(last.statusLine, "HTTP/1.1 206 Partial Content");
  EXPECT_EQ(last.headers["content-range"], "bytes 900-999/1000");
  EXPECT_EQ(last.headers["content-length"], "100");
  EXPECT_EQ(last.headers["content-type"], "application/octet-stream");
  EXPECT_EQ(last.headers["cache-control"], "max-age=0");
  EXPECT_EQ(last.headers["content-disposition"], "attachment; filename=\"data.bin\"; filename*=UTF-8''data.bin");
  EXPECT_EQ(last.body, content.substr(900));
  LWebResponse middle = get("bytes=10-19");
  EXPECT_EQ(middle.headers["content-range"], "bytes 10-19/1000");
  EXPECT_EQ(middle.body, content.substr(10, 10));
  LWebResponse open = get("bytes=990-");
  EXPECT_EQ(open.headers["content-range"], "bytes 990-999/1000");
  EXPECT_EQ(get("bytes=500-400").raw, "HTTP/1.1 416 Requested Range Not Satisfiable\r\n\r\n");
  EXPECT_EQ(get("bytes=2000-").raw, "HTTP/1.1 416 Requested Range Not Satisfiable\r\n\r\n");
}

TEST_F(WebServerTest, MissingFileAnswers404AndIsLogged) {
  LWebResponse response = LHttpGet(port_, "/nothing.png");
  EXPECT_EQ(response.raw, "HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n");
  std::string log = server_->Log();
  EXPECT_NE(log.find("[erreur] Weblet: File not found: " + home_.Path() + "/Web/nothing.png for connection 127.0.0.1"),
            std::string::npos)
      << log;
  // A folder is not a file.
  EXPECT_EQ(LHttpGet(port_, "/help").status, 404);
}

TEST_F(WebServerTest, LargeFileArrivesWhole) {
  std::string content(300000, 'x');
  for (std::size_t i = 0; i < content.size(); i += 7) content[i] = static_cast<char>(i % 251);
  WriteWebFile("big.pdf", content);
  LWebResponse response = LHttpGet(port_, "/big.pdf");
  EXPECT_EQ(response.headers["content-type"], "application/pdf");
  EXPECT_EQ(response.body, content);
}

// ---- Limits and bad clients -----------------------------------------------------------------------

TEST_F(WebServerTest, BodyAboveThreeMillionBytesIsRefusedUnread) {
  LWebResponse refused = LHttpExchange(
      port_, "POST /logon HTTP/1.1\r\nContent-Length: 3000001\r\n\r\n101=a", 5000);
  EXPECT_EQ(refused.raw, "HTTP/1.1 500 Content Length Too Long\r\nConnection: close\r\n\r\n");
  EXPECT_NE(server_->Log().find("Weblet: Content too long: 127.0.0.1 logon"), std::string::npos);

  std::string body = "101=&submit=++Connexion++&pad=";
  body.append(3000000 - body.size(), 'z');
  LWebResponse accepted = LHttpPost(port_, "/logon", body);
  EXPECT_EQ(accepted.status, 200);
  EXPECT_NE(accepted.body.find("Veuillez entrer votre adresse de courriel."), std::string::npos);
}

TEST_F(WebServerTest, ShortBodyEndsTheConnectionWithoutAnswer) {
  int fd = LConnectLoopback(port_);
  ASSERT_TRUE(LSendAll(fd, "POST /logon HTTP/1.1\r\nContent-Length: 100\r\n\r\n101=a"));
  ::shutdown(fd, SHUT_WR);
  bool closed = false;
  EXPECT_EQ(LReadUntilClose(fd, 5000, &closed), "");
  EXPECT_TRUE(closed);
  ::close(fd);
}

TEST_F(WebServerTest, LongLinesAreCutAndManyHeadersEndTheConnection) {
  std::string longPath = "/s.css?" + std::string(5000, 'q');
  EXPECT_EQ(LHttpExchange(port_, "GET " + longPath + " HTTP/1.1\r\nConnection: close\r\n\r\n").status, 200);
  std::string longHeader = "X-Long: " + std::string(100000, 'h');
  LWebResponse cut = LHttpExchange(port_, "GET /s.css HTTP/1.1\r\n" + longHeader + "\r\nConnection: close\r\n\r\n");
  EXPECT_EQ(cut.status, 200);
  std::string many;
  for (int i = 0; i < 1000; ++i) many += "X-H" + std::to_string(i) + ": v\r\n";
  LWebResponse tooMany = LHttpExchange(port_, "GET /s.css HTTP/1.1\r\n" + many + "\r\n");
  EXPECT_EQ(tooMany.raw, "");
  // The server is still there.
  EXPECT_EQ(LHttpGet(port_, "/s.css").status, 200);
}

TEST_F(WebServerTest, StalledClientsDoNotBlockOthers) {
  std::vector<int> stalled;
  for (int i = 0; i < 40; ++i) {
    int fd = LConnectLoopback(port_);
    ASSERT_GE(fd, 0);
    LSendAll(fd, i % 2 == 0 ? "GET /s.c" : "GET /s.css HTTP/1.1\r\nHost: x\r\n");
    stalled.push_back(fd);
  }
  long long start = NowMs();
  EXPECT_EQ(LHttpGet(port_, "/s.css").status, 200);
  EXPECT_EQ(LHttpGet(port_, "/").status, 302);
  EXPECT_LT(NowMs() - start, 2000);
  for (int fd : stalled) ::close(fd);
}

TEST_F(WebServerTest, ConcurrentClientsAllGetWholeAnswers) {
  std::string expected = LReadFile(home_.Path() + "/Web/s.css");
  std::atomic<int> good{0};
  std::vector<std::thread> clients;
  for (int i = 0; i < 32; ++i) {
    clients.emplace_back([&, i] {
      int fd = LConnectLoopback(port_);
      if (fd < 0) return;
      for (int r = 0; r < 10; ++r) {
        std::string path = (i + r) % 3 == 0 ? "/logon" : "/s.css";
        LSendAll(fd, "GET " + path + " HTTP/1.1\r\nHost: x\r\n\r\n");
        LWebResponse response = LReadResponse(fd);
        if (path == "/logon") {
          // Pages close the connection: read to the end, then reconnect.
          std::string rest = LReadUntilClose(fd, 5000);
          if (response.status == 200 && (response.raw + rest).find("</html>") != std::string::npos) good++;
          ::close(fd);
          fd = LConnectLoopback(port_);
          if (fd < 0) return;
        } else if (response.complete && response.body == expected) {
          good++;
        }
      }
      ::close(fd);
    });
  }
  for (auto& client : clients) client.join();
  EXPECT_EQ(good.load(), 320);
}

// A client that sends nothing is dropped when the 30 s of the request line have passed.
TEST_F(WebServerTest, SilentClientIsDroppedAfterThirtySeconds) {
  int fd = LConnectLoopback(port_);
  ASSERT_GE(fd, 0);
  long long start = NowMs();
  bool closed = false;
  LReadUntilClose(fd, 40000, &closed);
  long long waited = NowMs() - start;
  EXPECT_TRUE(closed);
  EXPECT_GE(waited, 29500);
  EXPECT_LE(waited, 33000);
  ::close(fd);
}

// A client that sends its header lines one by one, each within the 20 s a line may take, is still
// dropped once the 30 s given to all the headers are over; meanwhile others are served.
TEST_F(WebServerTest, HeadersTricklingInAreCutAtTheRequestDeadline) {
  int fd = LConnectLoopback(port_);
  ASSERT_GE(fd, 0);
  ASSERT_TRUE(LSendAll(fd, "GET /s.css HTTP/1.1\r\n"));
  bool closed = false;
  long long waited = TrickleUntilClosed(port_, fd, "X-Slow: 1\r\n", 45000, closed);
  EXPECT_TRUE(closed);
  EXPECT_GE(waited, 29000);
  EXPECT_LE(waited, 34000);
  ::close(fd);
}

// A POST announcing the largest body allowed and sending a byte every two seconds would have kept
// its thread for 50 minutes at a pace of one byte a millisecond; it falls behind the 16 KB a second
// its body must keep up after the first 40 s, and is dropped when its first 64 KB are due;
// meanwhile others are served.
TEST_F(WebServerTest, BodyTricklingInIsCutWhenItFallsBehind) {
  int fd = LConnectLoopback(port_);
  ASSERT_GE(fd, 0);
  ASSERT_TRUE(LSendAll(fd, "POST /logon HTTP/1.1\r\nHost: x\r\nContent-Length: 3000000\r\n\r\n"));
  bool closed = false;
  long long waited = TrickleUntilClosed(port_, fd, "a", 60000, closed);
  EXPECT_TRUE(closed);
  EXPECT_GE(waited, 43500);
  EXPECT_LE(waited, 49000);
  ::close(fd);
  EXPECT_NE(server_->Log().find("Request body too slow or cut short: 127.0.0.1 logon"), std::string::npos);
}

// One address may hold 64 connections; the next is answered 503 at once and closed, and a slot is
// free again as soon as one of the 64 ends.
TEST_F(WebServerTest, ConnectionsBeyondTheCapAreAnswered503) {
  std::vector<int> held;
  for (int i = 0; i < 64; ++i) {
    int fd = LConnectLoopback(port_);
    ASSERT_GE(fd, 0);
    held.push_back(fd);
  }
  LSleepMs(300);  // the listener has taken them all
  LWebResponse refused = LHttpGet(port_, "/s.css");
  EXPECT_EQ(refused.status, 503);
  EXPECT_NE(refused.raw.find("Retry-After: 5\r\n"), std::string::npos) << refused.raw;
  ::close(held.back());
  held.pop_back();
  LSleepMs(300);
  EXPECT_EQ(LHttpGet(port_, "/s.css").status, 200);
  for (int fd : held) ::close(fd);
  EXPECT_NE(server_->Log().find("Too many connections: 127.0.0.1"), std::string::npos);
}

// ---- Logon, sessions and access -------------------------------------------------------------------

TEST_F(WebServerTest, LogonStartsASessionThatMainAccepts) {
  LWebResponse wrong = LHttpPost(port_, "/logon", LWebLogonBody(kWebTestAdmin, "nope"));
  EXPECT_EQ(wrong.headers["content-type"], "text/plain");
  EXPECT_NE(wrong.body.find("Échec de la connexion. Veuillez vérifier que le mot de passe est correct."),
            std::string::npos);
  EXPECT_NE(wrong.body.find("DisableSubmits(false)"), std::string::npos);
  EXPECT_EQ(LWebSessionOf(wrong), "");

  LWebResponse good = LHttpPost(port_, "/logon", LWebLogonBody("Admin%40Example.FR", kWebTestAdminPassword));
  std::string session = LWebSessionOf(good);
  ASSERT_TRUE(std::regex_match(session, std::regex("s[a-z]{8}[0-9]+"))) << good.body;
  // A header sets it, out of reach of the pages' scripts and of requests other sites start; it
  // ends with the browser, and has no Secure flag on plain HTTP (the browser would drop it).
  EXPECT_EQ(good.headers["set-cookie"], "kontavo_sess=" + session + "; Path=/; HttpOnly; SameSite=Strict");
  EXPECT_EQ(good.body.find("document.cookie"), std::string::npos);
  LWebResponse remembered = LHttpPost(port_, "/logon", LWebLogonBody(kWebTestAdmin, kWebTestAdminPassword, true));
  EXPECT_TRUE(std::regex_match(remembered.headers["set-cookie"],
                               std::regex("kontavo_sess=l[a-z]{8}[0-9]+; Path=/; HttpOnly; SameSite=Strict; "
                                          "Expires=Sun, 17 Jan 2038 19:14:07 GMT")))
      << remembered.headers["set-cookie"];
  // No business was chosen before: the chooser comes first.
  EXPECT_NE(good.body.find("window.location = 'chooseprofile';"), std::string::npos);
  EXPECT_TRUE(LFile::Exists(SessionFile(session)));
  EXPECT_NE(LReadFile(SessionFile(session)).find("user=admin%40example.fr"), std::string::npos);

  LWebResponse chooser = LHttpGet(port_, "/chooseprofile", session);
  EXPECT_NE(chooser.body.find("Principale SARL"), std::string::npos);
  LWebResponse chosen = LHttpPost(port_, "/chooseprofile", "rbg3=301&submit=++OK++", session);
  EXPECT_NE(chosen.body.find("window.location = 'main';"), std::string::npos) << chosen.body;

  LWebResponse main = LHttpGet(port_, "/main", session);
  EXPECT_EQ(main.status, 200);
  EXPECT_NE(main.body.find("<td class=headeruser colspan=3>Connecté sous Alice Admin</td>"), std::string::npos);
  EXPECT_NE(main.body.find("Principale SARL"), std::string::npos);
  EXPECT_NE(main.body.find("<td>Comptes clients</td>"), std::string::npos);
  // Without a fiscal-year end of its own, the business's year is the calendar year.
  std::string year = std::to_string(LDate::Today().year);
  EXPECT_NE(main.body.find("<caption>Exercice du " + year + "-01-01 au " + year + "-12-31</caption>"),
            std::string::npos) << main.body;
  for (const char* row : {"<td>Recettes</td>", "<td>Dépenses</td>", "<td>Bénéfice</td>", "<td>Actif</td>"})
    EXPECT_NE(main.body.find(row), std::string::npos) << row;
  // Logged on, the logon page goes on to the next page.
  EXPECT_EQ(LHttpGet(port_, "/logon?onok=userlist", session).raw,
            "HTTP/1.1 302 Found\r\nConnection: close\r\nLocation: userlist\r\nContent-Length: 0\r\n\r\n");

  // The next logon remembers the business, and the remember box makes a long-lived session.
  LWebResponse again = LHttpPost(port_, "/logon", LWebLogonBody(kWebTestAdmin, kWebTestAdminPassword, true));
  EXPECT_TRUE(std::regex_match(LWebSessionOf(again), std::regex("l[a-z]{8}[0-9]+")));
  EXPECT_NE(again.body.find("window.location = 'main';"), std::string::npos);
}

TEST_F(WebServerTest, LogoffEndsTheSession) {
  std::string session = Logon();
  ASSERT_FALSE(session.empty());
  LWebResponse off = LHttpGet(port_, "/logoff", session);
  EXPECT_EQ(off.status, 200);
  EXPECT_FALSE(LFile::Exists(SessionFile(session)));
  EXPECT_NE(server_->Log().find("L'utilisateur Web \"admin@example.fr\" a fermé sa session."), std::string::npos);
  EXPECT_EQ(LHttpGet(port_, "/main", session).headers["location"], "logon");
  // Without a session the action routes show the expired-session page.
  LWebResponse expired = LHttpGet(port_, "/logoff", session);
  EXPECT_NE(expired.body.find("<center>Votre session a expiré. Veuillez <a href=\"logon\"><b>cliquer ici</b></a> pour "
                              "rouvrir une session.</center>"),
            std::string::npos);
}

TEST_F(WebServerTest, SeventhFailureLocksTheAccountForTwentyMinutes) {
  for (int i = 0; i < 6; ++i) EXPECT_EQ(Logon(kWebTestAdmin, "wrongpass"), "");
  // The seventh attempt is refused even with the right password.
  LWebResponse locked = LHttpPost(port_, "/logon", LWebLogonBody(kWebTestAdmin, kWebTestAdminPassword));
  EXPECT_EQ(LWebSessionOf(locked), "");
  EXPECT_NE(locked.body.find("Échec de la connexion."), std::string::npos);
  LRunResult failures = LRunKontavo({"record", "get", "WebAccounts", kWebTestAdmin, "LogonFailures"});
  EXPECT_EQ(failures.out, "6\n");
  // Twenty minutes after the last failure the right password passes and resets both counters.
  long long past = static_cast<long long>(std::time(nullptr)) - 1201;
  ASSERT_EQ(LRunKontavo({"record", "set", "WebAccounts", kWebTestAdmin, "LogonFailTime=" + std::to_string(past)}).exitCode, 0);
  EXPECT_NE(Logon(), "");
  EXPECT_EQ(LRunKontavo({"record", "get", "WebAccounts", kWebTestAdmin, "LogonFailures"}).out, "0\n");
  EXPECT_EQ(LRunKontavo({"record", "get", "WebAccounts", kWebTestAdmin, "LogonFailTime"}).out, "0\n");
}

TEST_F(WebServerTest, CookiesWithPathsNeverReachTheFileSystem) {
  // A session file outside "SessionData" that a forged cookie would name.
  LWriteFile(home_.Path() + "/forged.sess", "user=admin%40example.fr");
  LWriteFile(home_.Path() + "/SessionData/..%2fforged.sess", "user=admin%40example.fr");
  for (const char* cookie : {"../forged", "..%2Fforged", "..%5Cforged", "/etc/passwd", "..\\forged"}) {
    LWebResponse response = LHttpGet(port_, "/main", cookie);
    EXPECT_EQ(response.headers["location"], "logon") << cookie;
  }
  EXPECT_TRUE(LFile::Exists(home_.Path() + "/forged.sess"));
}

TEST_F(WebServerTest, DisabledAccountLosesItsSessionOnTheNextRequest) {
  std::string session = Logon();
  ASSERT_FALSE(session.empty());
  EXPECT_EQ(LHttpGet(port_, "/main", session).status, 200);
  ASSERT_EQ(LRunKontavo({"record", "set", "WebAccounts", kWebTestAdmin, "Enabled=0"}).exitCode, 0);
  EXPECT_EQ(LHttpGet(port_, "/main", session).headers["location"], "logon");
  EXPECT_FALSE(LFile::Exists(SessionFile(session)));
  // And it cannot log on again.
  EXPECT_EQ(Logon(), "");
}

TEST_F(WebServerTest, UserNeverOpensABusinessOutsideItsProfiles) {
  ASSERT_TRUE(LFile::MakeFolder(home_.Path() + "/Shared/MultiBus/1"));
  ASSERT_EQ(LRunKontavo({"--business", "1", "record", "set", "Misc", "Company", "Name=Autre SA"}).exitCode, 0);
  ASSERT_EQ(LRunKontavo({"user", "add", "bob@example.fr", "--name", "Bob", "--user", "--profile", "Principale SARL",
                         "--password-stdin"},
                        "bobsecret\n")
                .exitCode,
            0);
  std::string session = Logon("bob@example.fr", "bobsecret");
  ASSERT_FALSE(session.empty());
  LWebResponse chooser = LHttpGet(port_, "/chooseprofile", session);
  EXPECT_NE(chooser.body.find("Principale SARL"), std::string::npos);
  EXPECT_EQ(chooser.body.find("Autre SA"), std::string::npos);
  // Choosing an id beyond the list is refused.
  EXPECT_EQ(LHttpPost(port_, "/chooseprofile", "rbg3=302&submit=++OK++", session).body.find("window.location"),
            std::string::npos);
  EXPECT_EQ(LHttpGet(port_, "/main", session).status, 200);
  // Not an administrator: the user pages send it back.
  EXPECT_EQ(LHttpGet(port_, "/userlist", session).headers["location"], "main");
  // A session that names the other business is destroyed on the next page.
  std::string file = SessionFile(session);
  LWriteFile(file, "profile=" + std::string(home_.Path()) + "%2FShared%2FMultiBus%2F1&user=bob%40example.fr");
  EXPECT_EQ(LHttpGet(port_, "/main", session).headers["location"], "logon");
  EXPECT_FALSE(LFile::Exists(file));
}

TEST_F(WebServerTest, UserWithoutProfilesCannotLogOnToItsLastBusiness) {
  ASSERT_EQ(LRunKontavo({"user", "add", "eve@example.fr", "--name", "Eve", "--password-stdin"}, "evesecret\n").exitCode,
            0);
  ASSERT_EQ(LRunKontavo({"record", "set", "WebAccounts", "eve@example.fr", "LastUsedProfiles=Principale SARL"}).exitCode, 0);
  LWebResponse response = LHttpPost(port_, "/logon", LWebLogonBody("eve@example.fr", "evesecret"));
  EXPECT_NE(response.body.find("L\\'utilisateur n\\'a pas de profils de société autorisés"), std::string::npos);
  EXPECT_EQ(LWebSessionOf(response), "");
}

TEST_F(WebServerTest, StaleSessionFilesAreCleanedUpByAge) {
  std::string folder = home_.Path() + "/SessionData";
  ASSERT_TRUE(LFile::MakeFolder(folder));
  auto age = [&](const std::string& name, long long days) {
    std::string path = folder + "/" + name;
    LWriteFile(path, "user=x");
    utimbuf times{std::time(nullptr) - days * 86400, std::time(nullptr) - days * 86400};
    ::utime(path.c_str(), &times);
    return path;
  };
  std::string oldShort = age("sabcdefgh1.sess", 8);
  std::string youngShort = age("sabcdefgh2.sess", 6);
  std::string monthLong = age("labcdefgh3.sess", 30);
  std::string veryOldLong = age("labcdefgh4.sess", 183);
  LHttpGet(port_, "/main");
  EXPECT_FALSE(LFile::Exists(oldShort));
  EXPECT_TRUE(LFile::Exists(youngShort));
  EXPECT_TRUE(LFile::Exists(monthLong));
  EXPECT_FALSE(LFile::Exists(veryOldLong));
}

// ---- User administration --------------------------------------------------------------------------

TEST_F(WebServerTest, UserDialogChecksEachFieldInOrder) {
  std::string session = Logon();
  ASSERT_EQ(LHttpPost(port_, "/chooseprofile", "rbg3=301&submit=++OK++", session).status, 200);
  LWebResponse page = LHttpGet(port_, "/userprop?onok=userlist&oncancel=userlist", session);
  EXPECT_NE(page.body.find("Mot de passe d&#39;accès Web :"), std::string::npos) << page.raw;
  EXPECT_NE(page.body.find("name=rbg3 id=301 value=301"), std::string::npos);
  auto press = [&](const std::string& fields) {
    return LHttpPost(port_, "/userprop", fields + "&200=on&rbg3=302&submit=++OK++", session).body;
  };
  EXPECT_NE(press("101=bob%40example.fr&102=&103=abcdef&104=abcdef").find("Veuillez entrer un nom pour l\\'utilisateur."),
            std::string::npos);
  EXPECT_NE(press("101=bob&102=Bob&103=abcdef&104=abcdef").find("Adresse de courriel non valide.\\nVeuillez entrer"),
            std::string::npos);
  EXPECT_NE(press("101=ADMIN%40example.fr&102=Bob&103=abcdef&104=abcdef").find("utilisée actuellement par un autre compte"),
            std::string::npos);
  EXPECT_NE(press("101=bob%40example.fr&102=Bob&103=abcde&104=abcde").find("Il doit contenir au moins 6 caractères."),
            std::string::npos);
  EXPECT_NE(press("101=bob%40example.fr&102=Bob&103=abcdef&104=abcdeg").find("Les mots de passe doivent correspondre."),
            std::string::npos);
  std::string created = press("101=Bob%40Example.fr&102=Bob&103=abcdef&104=abcdef&1000=on&onok=userlist");
  EXPECT_NE(created.find("window.location = 'userlist';"), std::string::npos) << created;
  EXPECT_EQ(LRunKontavo({"record", "get", "WebAccounts", "bob@example.fr", "Profiles"}).out, "Principale SARL\n");
  EXPECT_EQ(LRunKontavo({"record", "get", "WebAccounts", "bob@example.fr", "Priviligies"}).out, "2\n");
  EXPECT_NE(server_->Log().find("Le compte a été activé pour bob@example.fr"), std::string::npos);
  LWebResponse list = LHttpGet(port_, "/userlist", session);
  EXPECT_NE(list.body.find("bob@example.fr"), std::string::npos);
  EXPECT_NE(list.body.find("Ajouter un nouvel utilisateur"), std::string::npos);
  // A POST without "submit" or "submitdef" shows the dialog afresh; Enter counts as OK.
  EXPECT_NE(LHttpPost(port_, "/userprop", "101=x", session).body.find("<form id=dialogform"), std::string::npos);
  std::string viaEnter = LHttpPost(port_, "/userprop", "101=&102=&submitdef=++OK++", session).body;
  EXPECT_NE(viaEnter.find("Veuillez entrer un nom"), std::string::npos);

  EXPECT_EQ(LHttpGet(port_, "/userdelete?id=bob%40example.fr", session).headers["location"], "userlist");
  EXPECT_NE(LRunKontavo({"record", "get", "WebAccounts", "bob@example.fr"}).exitCode, 0);
}

TEST_F(WebServerTest, ChangePasswordChecksThenStores) {
  std::string session = Logon();
  auto press = [&](const std::string& fields) {
    return LHttpPost(port_, "/changepassword", fields + "&submit=++OK++", session).body;
  };
  EXPECT_NE(press("101=secret12&102=&103=").find("Mot de passe vide non autorisé."), std::string::npos);
  EXPECT_NE(press("101=secret12&102=abc&103=abc").find("au moins 6 caractères."), std::string::npos);
  EXPECT_NE(press("101=secret12&102=abcdefg&103=abcdefh").find("ne correspond pas"), std::string::npos);
  EXPECT_NE(press("101=wrong&102=abcdefg&103=abcdefg").find("Mot de passe non valide. Veuillez réessayer."),
            std::string::npos);
  EXPECT_NE(press("101=secret12&102=abcdefg&103=abcdefg").find("window.location = 'changepasswordchanged';"),
            std::string::npos);
  EXPECT_NE(LHttpGet(port_, "/changepasswordchanged", session).body.find("Your password has been changed."),
            std::string::npos);
  EXPECT_NE(Logon(kWebTestAdmin, "abcdefg"), "");
}

TEST_F(WebServerTest, LostPasswordResetsTheAccount) {
  auto press = [&](const std::string& fields) {
    return LHttpPost(port_, "/lostpassword", fields + "&submit=++OK++").body;
  };
  EXPECT_NE(press("101=").find("Veuillez entrer votre adresse de courriel."), std::string::npos);
  EXPECT_NE(press("101=pas-une-adresse").find("Cette adresse de courriel n\\'est pas valide."), std::string::npos);
  EXPECT_NE(press("101=nobody%40example.fr").find("Cet utilisateur n\\'existe pas"), std::string::npos);
  LSmtpTestServer smtp(home_.Path() + "/smtp", {});
  ASSERT_TRUE(smtp.IsRunning());
  ASSERT_EQ(LRunKontavo({"mail", "config", "--server", smtp.Address(), "--starttls", "off", "--sender",
                         "compta@example.fr"}).exitCode, 0);
  EXPECT_NE(press("101=admin%40example.fr").find("window.location = 'lostpasswordsent';"), std::string::npos);
  EXPECT_EQ(Logon(), "");  // the old password is gone
  for (int waited = 0; smtp.MessageCount() == 0 && waited < 20000; waited += 50) LSleepMs(50);
  ASSERT_EQ(smtp.MessageCount(), 1);
  // The mail carries a new password, which opens a session and is found nowhere in the files.
  std::smatch match;
  std::string mail = smtp.Part(1, 0);
  ASSERT_TRUE(std::regex_search(mail, match, std::regex("Mot de passe: ([a-z]{8})"))) << mail;
  EXPECT_NE(Logon(kWebTestAdmin, match[1].str()), "");
  EXPECT_EQ(LRunKontavo({"record", "get", "WebAccounts", kWebTestAdmin, "Password"}).exitCode, 1);
  EXPECT_EQ(LRunKontavo({"record", "get", "WebAccounts", kWebTestAdmin}).out.find(match[1].str()), std::string::npos);
  EXPECT_NE(LHttpGet(port_, "/lostpasswordsent").body.find("Votre mot de passe a été réinitialisé"), std::string::npos);
}

// ---- The service ----------------------------------------------------------------------------------

TEST_F(WebServerTest, WebCommandsRestartTheRunningServer) {
  EXPECT_EQ(LRunKontavo({"web", "disable"}).exitCode, 0);
  EXPECT_LT(LConnectLoopback(port_), 0);
  EXPECT_NE(server_->Log().find("Arrêt du serveur Web (Non sécurisé)"), std::string::npos);
  EXPECT_EQ(LRunKontavo({"web", "enable"}).exitCode, 0);
  EXPECT_EQ(LHttpGet(port_, "/s.css").status, 200);
  EXPECT_NE(server_->Log().find("Redémarrage du serveur Web"), std::string::npos);
  int other = LFreeLoopbackPort();
  EXPECT_EQ(LRunKontavo({"web", "port", std::to_string(other)}).exitCode, 0);
  EXPECT_EQ(LHttpGet(other, "/s.css").status, 200);
  EXPECT_LT(LConnectLoopback(port_), 0);
  LRunResult status = LRunKontavo({"--json", "web", "status"});
  EXPECT_NE(status.out.find("\"port\":" + std::to_string(other)), std::string::npos);
  EXPECT_NE(status.out.find("\"serviceRunning\":true"), std::string::npos);
  EXPECT_EQ(LRunKontavo({"web", "port", "0x50"}).exitCode, 1);
}

TEST_F(WebServerTest, RestoreSwitchesTheWebServerOffForItsDuration) {
  std::string backups = home_.Path() + "-sauvegardes";
  ASSERT_TRUE(LFile::MakeFolder(backups));
  LRunResult backup = LRunKontavo({"backup", backups});
  ASSERT_EQ(backup.exitCode, 0) << backup.err;
  std::string folder = backup.out.substr(0, backup.out.find('\n'));
  LRunResult restore = LRunKontavo({"restore", folder, "--yes"});
  EXPECT_EQ(restore.exitCode, 0) << restore.err;
  std::string log = server_->Log();
  std::size_t off = log.find("Arrêt du serveur Web (Non sécurisé)");
  ASSERT_NE(off, std::string::npos) << log;
  EXPECT_NE(log.find("Redémarrage du serveur Web", off), std::string::npos) << log;
  EXPECT_EQ(LHttpGet(port_, "/s.css").status, 200);
  LFile::RemoveTree(backups);
}

TEST_F(WebServerTest, SignalsStopTheServiceCleanly) {
  int fd = LConnectLoopback(port_);  // an idle connection must not hold the stop back
  ASSERT_GE(fd, 0);
  long long start = NowMs();
  EXPECT_EQ(server_->Stop(SIGTERM), 0);
  EXPECT_LT(NowMs() - start, 5000);
  std::string log = server_->Log();
  EXPECT_NE(log.find("[info] Arrêt du moteur du serveur"), std::string::npos);
  EXPECT_TRUE(std::regex_search(log, std::regex("[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2} \\[info\\] "
                                                "Démarrage du moteur du serveur...")));
  EXPECT_FALSE(LFile::Exists(home_.Path() + "/kontavod"));
  ::close(fd);
  StartServer();
  EXPECT_EQ(server_->Stop(SIGINT), 0);
}

TEST_F(WebServerTest, SecondServiceOnTheSameFolderIsRefused) {
  LRunResult second = LRunKontavo({"serve", "--port", std::to_string(LFreeLoopbackPort())});
  EXPECT_EQ(second.exitCode, 1);
  EXPECT_NE(second.err.find("Le service Kontavo est déjà en cours d'exécution pour ce dossier."), std::string::npos);
}

TEST_F(WebServerTest, PortHeldByAnotherProgramIsReported) {
  int other = LFreeLoopbackPort();
  LTempHome secondHome;
  LServeProcess first(other);
  ASSERT_TRUE(first.WaitReady());
  LTempHome thirdHome;
  LServeProcess blocked(other);
  for (int i = 0; i < 1000 && blocked.Log().find("Un autre programme") == std::string::npos; ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  EXPECT_NE(blocked.Log().find("Le serveur Web ne peut se mettre en relation avec le port TCP/IP."), std::string::npos);
  EXPECT_NE(blocked.Log().find("[erreur] Un autre programme utilise peut-être le port " + std::to_string(other) + "."),
            std::string::npos);
}

}  // namespace
