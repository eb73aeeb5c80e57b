// A real `kontavo serve` for the benchmarks of the web pages: started on a free loopback port
// over the application folder the benchmark made (KONTAVO_HOME), logged on, stopped at the end.
// Each request goes on a new connection and its answer is read whole, so that a figure is the
// time from the request sent to the answer read.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <regex>
#include <string>
#include <thread>

#include "bench/benchfolder.h"
#include "bench/benchport.h"

// One request on a new connection; the whole answer (the server closes after it).
inline std::string LBenchExchange(int port, const std::string& request) {
  int fd = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  std::string answer;
  if (::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
      ::send(fd, request.data(), request.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(request.size())) {
    char buffer[65536];
    for (ssize_t n; (n = ::recv(fd, buffer, sizeof buffer, 0)) > 0;) answer.append(buffer, static_cast<std::size_t>(n));
  }
  ::close(fd);
  return answer;
}

// Opens the primary business under name through the binary, with the user the server logs on as
// (an administrator, "bench@example.fr").
inline void LBenchInitBusiness(const std::string& name) {
  std::string bin = KONTAVO_BIN;
  (void)std::system((bin + " init --name '" + name + "' >/dev/null 2>&1").c_str());
  (void)std::system(("echo benchpass | " + bin +
                     " user add bench@example.fr --name Banc --admin --password-stdin >/dev/null 2>&1").c_str());
}

class LBenchServer {
 public:
  // Starts the binary's server, its output into logFolder/serve.log, and logs on as the user of
  // LBenchInitBusiness; Session() is empty when the logon failed.
  explicit LBenchServer(const std::string& logFolder) {
    std::string bin = KONTAVO_BIN;
    pid_ = ::fork();
    if (pid_ == 0) {
      std::freopen((logFolder + "/serve.log").c_str(), "w", stdout);
      std::freopen((logFolder + "/serve.log").c_str(), "a", stderr);
      ::execl(bin.c_str(), bin.c_str(), "serve", "--port", std::to_string(port_).c_str(), nullptr);
      ::_exit(127);
    }
    for (int wait = 0; wait < 100 && LBenchExchange(port_, "GET /s.css HTTP/1.0\r\n\r\n").empty(); ++wait)
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    std::string answer = Post("/logon", "101=bench%40example.fr&102=benchpass&submit=++Connexion++");
    std::smatch match;
    if (std::regex_search(answer, match, std::regex("kontavo_sess=([a-z0-9]+);"))) session_ = match[1].str();
    Post("/chooseprofile", "rbg3=301&submit=++OK++");
  }
  ~LBenchServer() {
    if (pid_ > 0) {
      ::kill(pid_, SIGTERM);
      ::waitpid(pid_, nullptr, 0);
    }
  }
  LBenchServer(const LBenchServer&) = delete;
  LBenchServer& operator=(const LBenchServer&) = delete;

  const std::string& Session() const { return session_; }

  std::string Get(const std::string& path) const {
    return LBenchExchange(port_, "GET " + path + " HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\nCookie: kontavo_sess=" +
                                     session_ + "\r\n\r\n");
  }
  std::string Post(const std::string& path, const std::string& body) const {
    return LBenchExchange(port_, "POST " + path + " HTTP/1.1\r\nHost: 127.0.0.1\r\nCookie: kontavo_sess=" + session_ +
                                     "\r\nContent-Type: application/x-www-form-urlencoded\r\nContent-Length: " +
                                     std::to_string(body.size()) + "\r\n\r\n" + body);
  }

 private:
  int port_ = LBenchFreePort();
  pid_t pid_ = -1;
  std::string session_;
};

// The server of a benchmark program, made once for all its measures: a French business in the
// folder named after name, filled by make(business folder) before the server starts, then
// firstShowing asked once (a first showing may store what the pages cache).
template <class Make>
const LBenchServer& LBenchServerOnce(const std::string& name, Make make, const std::string& firstShowing) {
  struct Held {
    LBenchHome home;
    std::unique_ptr<LBenchServer> web;
    Held(const std::string& name, Make& make, const std::string& firstShowing) : home(name) {
      ::setenv("KONTAVO_COUNTRY", "FR", 1);
      ::setenv("LC_ALL", "fr_FR.UTF-8", 1);  // amounts typed "125,50"
      LBenchInitBusiness("Banc SARL");
      make(home.Business());
      web = std::make_unique<LBenchServer>(home.Path());
      web->Get(firstShowing);
    }
  };
  static Held held(name, make, firstShowing);
  return *held.web;
}

// Times request(web), one per iteration of state (web is made before, outside the measure); the
// answer must hold expected.
template <class State, class Request>
void LBenchMeasureAnswer(State& state, const LBenchServer& web, const std::string& expected, Request request) {
  for (auto _ : state) {
    std::string answer = request(web);
    if (answer.find(expected) == std::string::npos) {
      state.SkipWithError(("unexpected answer: " + answer.substr(0, 300)).c_str());
      return;
    }
  }
}
