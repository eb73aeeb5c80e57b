#include "tests/support/webclient.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "tests/support/testhome.h"

namespace {

long long NowMs() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

std::string HomeFolder() {
  const char* home = std::getenv("KONTAVO_HOME");
  return home != nullptr ? home : "/tmp";
}

// Parses the head of an answer in raw; false while it is not complete.
bool ParseHead(const std::string& raw, LWebResponse& response, std::size_t& bodyStart) {
  std::size_t end = raw.find("\r\n\r\n");
  if (end == std::string::npos) return false;
  bodyStart = end + 4;
  std::size_t lineEnd = raw.find("\r\n");
  response.statusLine = raw.substr(0, lineEnd);
  if (response.statusLine.size() > 12) response.status = std::atoi(response.statusLine.c_str() + 9);
  std::size_t pos = lineEnd + 2;
  while (pos < end) {
    std::size_t next = raw.find("\r\n", pos);
    std::string line = raw.substr(pos, next - pos);
    std::size_t colon = line.find(':');
    if (colon != std::string::npos) {
      std::string name = line.substr(0, colon);
      for (char& c : name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
      std::size_t valueStart = line.find_first_not_of(' ', colon + 1);
      response.headers[name] = valueStart == std::string::npos ? "" : line.substr(valueStart);
    }
    pos = next + 2;
  }
  return true;
}

}  // namespace

int LFreeLoopbackPort() {
  int fd = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = 0;
  socklen_t length = sizeof address;
  if (::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
      ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
    ::close(fd);
    return -1;
  }
  ::close(fd);
  return ntohs(address.sin_port);
}

LServeProcess::LServeProcess(int port, const std::string& program, const std::string& workingFolder)
    : port_(port) {
  static int serial = 0;
  std::string base = HomeFolder() + "/serve" + std::to_string(serial++);
  outPath_ = base + ".out";
  errPath_ = base + ".err";
  pid_ = ::fork();
  if (pid_ == 0) {
    int out = ::open(outPath_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    int err = ::open(errPath_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    ::dup2(out, 1);
    ::dup2(err, 2);
    std::string portText = std::to_string(port);
    if (!workingFolder.empty() && ::chdir(workingFolder.c_str()) != 0) ::_exit(126);
    ::execl(program.c_str(), program.c_str(), "serve", "--port", portText.c_str(), static_cast<char*>(nullptr));
    ::_exit(127);
  }
}

LServeProcess::~LServeProcess() {
  if (pid_ > 0) {
    ::kill(pid_, SIGKILL);
    ::waitpid(pid_, nullptr, 0);
  }
}

bool LServeProcess::WaitReady(int timeoutMs) {
  long long deadline = NowMs() + timeoutMs;
  while (NowMs() < deadline) {
    if (Out().find("http://") != std::string::npos) return true;
    if (pid_ > 0 && ::waitpid(pid_, nullptr, WNOHANG) == pid_) {
      pid_ = -1;
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return false;
}

int LServeProcess::Stop(int signal, int timeoutMs) {
  if (pid_ <= 0) return -1;
  ::kill(pid_, signal);
  long long deadline = NowMs() + timeoutMs;
  while (NowMs() < deadline) {
    int status = 0;
    if (::waitpid(pid_, &status, WNOHANG) == pid_) {
      pid_ = -1;
      return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return -1;
}

std::string LServeProcess::Out() const { return LReadFile(outPath_); }
std::string LServeProcess::Log() const { return LReadFile(errPath_); }

std::string LOtherLocalAddress() {
  ifaddrs* list = nullptr;
  if (::getifaddrs(&list) != 0) return {};
  std::string found;
  for (ifaddrs* entry = list; entry != nullptr && found.empty(); entry = entry->ifa_next) {
    if (entry->ifa_addr == nullptr || entry->ifa_addr->sa_family != AF_INET) continue;
    in_addr address = reinterpret_cast<sockaddr_in*>(entry->ifa_addr)->sin_addr;
    if ((ntohl(address.s_addr) >> 24) == 127) continue;
    char text[INET_ADDRSTRLEN];
    found = ::inet_ntop(AF_INET, &address, text, sizeof text);
  }
  ::freeifaddrs(list);
  return found;
}

int LConnectLoopback(int port) { return LConnectAddress("127.0.0.1", port); }

int LConnectAddress(const std::string& ipv4, int port) {
  int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  if (::inet_pton(AF_INET, ipv4.c_str(), &address.sin_addr) != 1) {
    ::close(fd);
    return -1;
  }
  address.sin_port = htons(static_cast<uint16_t>(port));
  if (::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
    ::close(fd);
    return -1;
  }
  return fd;
}

bool LSendAll(int fd, const std::string& data) {
  std::size_t sent = 0;
  while (sent < data.size()) {
    ssize_t n = ::send(fd, data.data() + sent, data.size() - sent, MSG_NOSIGNAL);
    if (n <= 0) return false;
    sent += static_cast<std::size_t>(n);
  }
  return true;
}

std::string LReadUntilClose(int fd, int timeoutMs, bool* closed) {
  std::string out;
  long long deadline = NowMs() + timeoutMs;
  if (closed != nullptr) *closed = false;
  for (;;) {
    long long left = deadline - NowMs();
    if (left <= 0) return out;
    pollfd pfd{fd, POLLIN, 0};
    if (::poll(&pfd, 1, static_cast<int>(left)) <= 0) return out;
    char buffer[65536];
    ssize_t n = ::recv(fd, buffer, sizeof buffer, 0);
    if (n <= 0) {
      if (closed != nullptr) *closed = true;
      return out;
    }
    out.append(buffer, static_cast<std::size_t>(n));
  }
}

LWebResponse LReadResponse(int fd, int timeoutMs) {
  LWebResponse response;
  long long deadline = NowMs() + timeoutMs;
  std::size_t bodyStart = 0;
  bool headParsed = false;
  for (;;) {
    if (!headParsed && ParseHead(response.raw, response, bodyStart)) headParsed = true;
    if (headParsed && response.headers.count("content-length") != 0) {
      std::size_t length = std::strtoull(response.headers["content-length"].c_str(), nullptr, 10);
      if (response.raw.size() >= bodyStart + length) {
        response.body = response.raw.substr(bodyStart, length);
        response.raw.resize(bodyStart + length);
        response.complete = true;
        return response;
      }
    }
    if (headParsed && response.status == 304) {
      response.complete = true;
      return response;
    }
    long long left = deadline - NowMs();
    if (left <= 0) return response;
    pollfd pfd{fd, POLLIN, 0};
    if (::poll(&pfd, 1, static_cast<int>(left)) <= 0) return response;
    char buffer[65536];
    ssize_t n = ::recv(fd, buffer, sizeof buffer, 0);
    if (n <= 0) {
      if (headParsed && response.headers.count("content-length") == 0) {
        response.body = response.raw.substr(bodyStart);
        response.complete = true;
      }
      return response;
    }
    response.raw.append(buffer, static_cast<std::size_t>(n));
  }
}

LWebResponse LHttpExchange(int port, const std::string& request, int timeoutMs) {
  return LHttpExchangeAt("127.0.0.1", port, request, timeoutMs);
}

LWebResponse LHttpExchangeAt(const std::string& ipv4, int port, const std::string& request, int timeoutMs) {
  LWebResponse response;
  int fd = LConnectAddress(ipv4, port);
  if (fd < 0) return response;
  if (LSendAll(fd, request)) {
    std::string raw = LReadUntilClose(fd, timeoutMs);
    std::size_t bodyStart = 0;
    if (ParseHead(raw, response, bodyStart)) {
      response.body = raw.substr(bodyStart);
      response.complete = true;
    }
    response.raw = raw;
  }
  ::close(fd);
  return response;
}

LWebResponse LHttpGet(int port, const std::string& path, const std::string& session) {
  std::string request = "GET " + path + " HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n";
  if (!session.empty()) request += "Cookie: kontavo_sess=" + session + "\r\n";
  return LHttpExchange(port, request + "\r\n");
}

LWebResponse LHttpPost(int port, const std::string& path, const std::string& body, const std::string& session) {
  std::string request = "POST " + path + " HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Type: application/x-www-form-urlencoded\r\n";
  if (!session.empty()) request += "Cookie: theme=clair; kontavo_sess=" + session + "\r\n";
  request += "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
  return LHttpExchange(port, request);
}
