#include "tests/support/scriptedserver.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>

namespace {

int ListenOnLoopback(int& port) {
  int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  int on = 1;
  ::setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  if (::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 || ::listen(fd, 16) != 0) {
    ::close(fd);
    return -1;
  }
  socklen_t size = sizeof address;
  ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size);
  port = ntohs(address.sin_port);
  return fd;
}

}  // namespace

int LRefusingPort() {
  int port = 0;
  int fd = ListenOnLoopback(port);
  ::close(fd);
  return port;
}

// ---- Connection -------------------------------------------------------------------------------

LScriptedTcpConnection::~LScriptedTcpConnection() {
  if (ssl_ != nullptr) ::SSL_free(ssl_);
  if (context_ != nullptr) ::SSL_CTX_free(context_);
  ::close(fd_);
}

bool LScriptedTcpConnection::IsStopping() const { return server_.stopping_; }

bool LScriptedTcpConnection::WaitReadable(int timeoutMs) {
  if (ssl_ != nullptr && ::SSL_pending(ssl_) > 0) return true;
  auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  for (;;) {
    if (IsStopping()) return false;
    pollfd entries[2] = {{fd_, POLLIN, 0}, {server_.stopPipe_[0], POLLIN, 0}};
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0) return false;
    int ready = ::poll(entries, 2, static_cast<int>(left.count()));
    if (ready > 0) return (entries[0].revents != 0) && !IsStopping();
  }
}

bool LScriptedTcpConnection::Fill(int timeoutMs) {
  if (!WaitReadable(timeoutMs)) return false;
  char chunk[4096];
  int count = ssl_ != nullptr ? ::SSL_read(ssl_, chunk, sizeof chunk)
                              : static_cast<int>(::recv(fd_, chunk, sizeof chunk, 0));
  if (count <= 0) return false;
  buffer_.append(chunk, static_cast<std::size_t>(count));
  return true;
}

bool LScriptedTcpConnection::Send(std::string_view bytes) {
  while (!bytes.empty()) {
    if (IsStopping()) return false;
    pollfd entry{fd_, POLLOUT, 0};
    if (::poll(&entry, 1, 100) <= 0) continue;
    int count = ssl_ != nullptr ? ::SSL_write(ssl_, bytes.data(), static_cast<int>(bytes.size()))
                                : static_cast<int>(::send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT));
    if (count <= 0) {
      if (ssl_ == nullptr && (errno == EAGAIN || errno == EWOULDBLOCK)) continue;
      return false;
    }
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

bool LScriptedTcpConnection::ReadLine(std::string& line, int timeoutMs) {
  auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  for (;;) {
    std::size_t end = buffer_.find('\n');
    if (end != std::string::npos) {
      line = buffer_.substr(0, end > 0 && buffer_[end - 1] == '\r' ? end - 1 : end);
      buffer_.erase(0, end + 1);
      server_.Record(line);
      return true;
    }
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0 || !Fill(static_cast<int>(left.count()))) return false;
  }
}

bool LScriptedTcpConnection::WaitForClose(int timeoutMs) {
  auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  for (;;) {
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0 || IsStopping()) return false;
    if (!WaitReadable(static_cast<int>(left.count()))) return false;
    char chunk[4096];
    int count = ssl_ != nullptr ? ::SSL_read(ssl_, chunk, sizeof chunk)
                                : static_cast<int>(::recv(fd_, chunk, sizeof chunk, 0));
    if (count <= 0) return true;
  }
}

bool LScriptedTcpConnection::AcceptTls(const std::string& certFile, const std::string& keyFile) {
  context_ = ::SSL_CTX_new(::TLS_server_method());
  if (context_ == nullptr || ::SSL_CTX_use_certificate_chain_file(context_, certFile.c_str()) != 1 ||
      ::SSL_CTX_use_PrivateKey_file(context_, keyFile.c_str(), SSL_FILETYPE_PEM) != 1)
    return false;
  ssl_ = ::SSL_new(context_);
  ::SSL_set_fd(ssl_, fd_);
  // The descriptor is blocking; the client's handshake time limit bounds this side too.
  return ::SSL_accept(ssl_) == 1;
}

// ---- Server -----------------------------------------------------------------------------------

LScriptedTcpServer::LScriptedTcpServer(Script script) : script_(std::move(script)) {
  listenFd_ = ListenOnLoopback(port_);
  if (::pipe2(stopPipe_, O_CLOEXEC) != 0) return;
  thread_ = std::thread(&LScriptedTcpServer::Serve, this);
}

LScriptedTcpServer::~LScriptedTcpServer() {
  stopping_ = true;
  char byte = 1;
  if (::write(stopPipe_[1], &byte, 1) < 0) {
  }
  if (thread_.joinable()) thread_.join();
  ::close(listenFd_);
  ::close(stopPipe_[0]);
  ::close(stopPipe_[1]);
}

void LScriptedTcpServer::Serve() {
  while (!stopping_) {
    pollfd entries[2] = {{listenFd_, POLLIN, 0}, {stopPipe_[0], POLLIN, 0}};
    if (::poll(entries, 2, -1) <= 0 || entries[1].revents != 0) continue;
    int fd = ::accept4(listenFd_, nullptr, nullptr, SOCK_CLOEXEC);
    if (fd < 0) continue;
    ++connections_;
    LScriptedTcpConnection connection(*this, fd);
    script_(connection);
  }
}

void LScriptedTcpServer::Record(const std::string& line) {
  std::lock_guard<std::mutex> lock(mutex_);
  received_.push_back(line);
}

std::vector<std::string> LScriptedTcpServer::Received() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return received_;
}
