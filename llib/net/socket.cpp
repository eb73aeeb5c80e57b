#include "llib/net/socket.h"

#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace {

// Longest single poll(2) while a stop test is set: a cancel is seen within this time.
constexpr int kStopSliceMs = 100;
// Bytes asked of the system per read when the reader does not limit them.
constexpr std::size_t kReadChunkBytes = 16 * 1024;

std::string ErrnoText(const char* call, int err) { return std::string(call) + ": " + std::strerror(err); }

}  // namespace

LSocket::~LSocket() { Close(); }

LNetStatus LSocket::Fail(std::string text) {
  lastError_ = std::move(text);
  return LNetStatus::kFailed;
}

void LSocket::Adopt(int fd) {
  Close();
  ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) | O_NONBLOCK);
  ::fcntl(fd, F_SETFD, FD_CLOEXEC);
  fd_ = fd;
}

void LSocket::Close() {
  if (tls_ != nullptr && fd_ >= 0) tls_->Shutdown(*this);
  tls_.reset();
  if (fd_ >= 0) ::close(fd_);
  fd_ = -1;
  input_.clear();
  inputStart_ = 0;
}

LNetStatus LSocket::WaitFor(short events, const LNetDeadline& deadline) {
  for (;;) {
    if (stopTest_ && stopTest_()) return LNetStatus::kStopped;
    int waitMs = deadline.PollMs();
    if (stopTest_ && (waitMs < 0 || waitMs > kStopSliceMs)) waitMs = kStopSliceMs;
    pollfd entry{fd_, events, 0};
    int ready = ::poll(&entry, 1, waitMs);
    if (ready < 0) {
      if (errno == EINTR) continue;
      return Fail(ErrnoText("poll", errno));
    }
    // An error or hang-up is "ready" too: the following call reports what happened.
    if (ready > 0) return LNetStatus::kOk;
    if (deadline.IsOver()) return LNetStatus::kTimedOut;
  }
}

// ---- Connecting -------------------------------------------------------------------------------

LNetStatus LSocket::ConnectOne(const void* address, unsigned addressLength, int family,
                               const LNetDeadline& deadline) {
  int fd = ::socket(family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  if (fd < 0) return Fail(ErrnoText("socket", errno));
  fd_ = fd;
  int result = ::connect(fd, static_cast<const sockaddr*>(address), addressLength);
  if (result != 0 && errno != EINPROGRESS && errno != EINTR) {
    int err = errno;
    Close();
    return Fail(ErrnoText("connect", err));
  }
  if (result != 0) {
    LNetStatus waited = WaitFor(POLLOUT, deadline);
    int err = 0;
    socklen_t size = sizeof err;
    if (waited == LNetStatus::kOk && ::getsockopt(fd, SOL_SOCKET, SO_ERROR, &err, &size) != 0) err = errno;
    if (waited != LNetStatus::kOk || err != 0) {
      Close();
      return waited != LNetStatus::kOk ? waited : Fail(ErrnoText("connect", err));
    }
  }
  // Commands and replies are small and answered one by one: do not hold them back.
  int on = 1;
  ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  return LNetStatus::kOk;
}

LNetStatus LSocket::Connect(const LIPAddressWithPort& address, unsigned timeoutMs) {
  Close();
  LNetDeadline deadline = LNetDeadline::After(timeoutMs);
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = AI_ADDRCONFIG;
  addrinfo* found = nullptr;
  std::string port = std::to_string(address.Port());
  int resolved = ::getaddrinfo(address.Host().c_str(), port.c_str(), &hints, &found);
  if (resolved != 0) return Fail("getaddrinfo " + address.Host() + ": " + ::gai_strerror(resolved));
  LNetStatus status = Fail("no address for " + address.Host());
  for (addrinfo* entry = found; entry != nullptr; entry = entry->ai_next) {
    status = ConnectOne(entry->ai_addr, entry->ai_addrlen, entry->ai_family, deadline);
    if (status == LNetStatus::kOk || status == LNetStatus::kStopped || status == LNetStatus::kTimedOut) break;
  }
  ::freeaddrinfo(found);
  return status;
}

// ---- Raw transfers ----------------------------------------------------------------------------

LNetStatus LSocket::TransportSend(const char* data, std::size_t size, const LNetDeadline& deadline) {
  if (fd_ < 0) return LNetStatus::kClosed;
  while (size > 0) {
    ssize_t sent = ::send(fd_, data, size, MSG_NOSIGNAL);
    if (sent > 0) {
      data += sent;
      size -= static_cast<std::size_t>(sent);
      continue;
    }
    if (errno == EINTR) continue;
    if (errno == EPIPE || errno == ECONNRESET) return LNetStatus::kClosed;
    if (errno != EAGAIN && errno != EWOULDBLOCK) return Fail(ErrnoText("send", errno));
    LNetStatus waited = WaitFor(POLLOUT, deadline);
    if (waited != LNetStatus::kOk) return waited;
  }
  return LNetStatus::kOk;
}

LNetStatus LSocket::TransportReceive(char* buffer, std::size_t size, std::size_t& got,
                                     const LNetDeadline& deadline) {
  got = 0;
  if (fd_ < 0) return LNetStatus::kClosed;
  for (;;) {
    ssize_t count = ::recv(fd_, buffer, size, 0);
    if (count > 0) {
      got = static_cast<std::size_t>(count);
      return LNetStatus::kOk;
    }
    if (count == 0) return LNetStatus::kClosed;
    if (errno == EINTR) continue;
    if (errno == ECONNRESET) return LNetStatus::kClosed;
    if (errno != EAGAIN && errno != EWOULDBLOCK) return Fail(ErrnoText("recv", errno));
    LNetStatus waited = WaitFor(POLLIN, deadline);
    if (waited != LNetStatus::kOk) return waited;
  }
}

// ---- Sending and receiving --------------------------------------------------------------------

LNetStatus LSocket::Send(std::string_view data, unsigned timeoutMs) {
  LNetDeadline deadline = LNetDeadline::After(timeoutMs);
  if (tls_ == nullptr) return TransportSend(data.data(), data.size(), deadline);
  return tls_->Write(*this, data.data(), data.size(), deadline, lastError_);
}

LNetStatus LSocket::Receive(std::size_t maxBytes, const LNetDeadline& deadline) {
  // Readers take from the front; the taken part is dropped before the buffer grows.
  if (inputStart_ > 0) {
    input_.erase(0, inputStart_);
    inputStart_ = 0;
  }
  std::size_t before = input_.size();
  input_.resize(before + maxBytes);
  std::size_t got = 0;
  LNetStatus status = tls_ == nullptr
                          ? TransportReceive(input_.data() + before, maxBytes, got, deadline)
                          : tls_->Read(*this, input_.data() + before, maxBytes, got, deadline, lastError_);
  input_.resize(before + got);
  return status;
}

void LSocket::Consume(std::size_t count) {
  inputStart_ += std::min(count, input_.size() - inputStart_);
  if (inputStart_ == input_.size()) {
    input_.clear();
    inputStart_ = 0;
  }
}

LNetStatus LSocket::ReadLine(std::string& line, std::size_t maxBytes, unsigned timeoutMs) {
  LNetDeadline deadline = LNetDeadline::After(timeoutMs);
  std::size_t scanned = 0;  // bytes of the buffer already known to hold no LF
  for (;;) {
    std::string_view buffered = Buffered();
    std::size_t end = buffered.find('\n', scanned);
    if (end != std::string_view::npos && end <= maxBytes) {
      std::size_t length = end > 0 && buffered[end - 1] == '\r' ? end - 1 : end;
      line.assign(buffered.substr(0, length));
      Consume(end + 1);
      return LNetStatus::kOk;
    }
    if (buffered.size() > maxBytes || (end != std::string_view::npos && end > maxBytes)) {
      line.assign(buffered.substr(0, maxBytes));
      return LNetStatus::kTooLong;
    }
    scanned = buffered.size();
    LNetStatus status = Receive(std::min(kReadChunkBytes, maxBytes + 1 - buffered.size()), deadline);
    if (status != LNetStatus::kOk) return status;
  }
}

LNetStatus LSocket::StartTls(const LTlsClientOptions& options, unsigned timeoutMs) {
  if (fd_ < 0) return LNetStatus::kClosed;
  input_.clear();
  inputStart_ = 0;
  LNetStatus status = LNetStatus::kFailed;
  std::string error;
  tls_ = LTlsChannel::Connect(*this, options, LNetDeadline::After(timeoutMs), status, error);
  if (tls_ == nullptr) {
    Close();
    lastError_ = !error.empty() ? error : status == LNetStatus::kClosed ? "connection closed during the TLS handshake" : lastError_;
  }
  return status;
}
