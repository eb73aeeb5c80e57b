#include "llib/web/webletsocket.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>

#include "llib/gen/signalobject.h"

namespace {

constexpr std::size_t kReadPieceBytes = 16384;  // one recv into the connection buffer

}  // namespace

long long LWebletNowMs() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(
             std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

// Milliseconds of the steady clock at which deadline passes.
static long long DeadlineMs(const LNetDeadline& deadline) {
  int left = deadline.PollMs();
  return LWebletNowMs() + (left < 0 ? 24LL * 3600 * 1000 : left);
}

int LWebletListenSocket(int port) {
  int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  if (fd < 0) return -1;
  int on = 1;
  ::setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_ANY);
  address.sin_port = htons(static_cast<uint16_t>(port));
  if (::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
      ::listen(fd, SOMAXCONN) != 0) {
    int saved = errno;
    ::close(fd);
    errno = saved;
    return -1;
  }
  return fd;
}

LWebletSocket::LWebletSocket(int fd, const LSignalObject* stop) : fd_(fd), stop_(stop) {
  int flags = ::fcntl(fd_, F_GETFL);
  if (flags >= 0) ::fcntl(fd_, F_SETFL, flags | O_NONBLOCK);
  int on = 1;
  ::setsockopt(fd_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

LWebletSocket::~LWebletSocket() {
  if (tls_) tls_->Shutdown(*this);
  if (fd_ >= 0) ::close(fd_);
}

bool LWebletSocket::WaitReady(short events, long long deadlineMs) {
  for (;;) {
    long long left = deadlineMs - LWebletNowMs();
    if (left <= 0) return false;
    pollfd fds[2] = {{fd_, events, 0}, {stop_ ? stop_->ReadFd() : -1, POLLIN, 0}};
    int n = ::poll(fds, stop_ ? 2 : 1, static_cast<int>(left > 1000000 ? 1000000 : left));
    if (n < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    if (stop_ && (fds[1].revents & POLLIN)) return false;
    if (fds[0].revents & (events | POLLERR | POLLHUP | POLLNVAL)) return true;
  }
}

bool LWebletSocket::Fill(long long deadlineMs) {
  if (pos_ > 0 && pos_ == buffer_.size()) {
    buffer_.clear();
    pos_ = 0;
  }
  if (tls_) {
    char piece[kReadPieceBytes];
    std::size_t got = 0;
    std::string error;
    long long left = deadlineMs - LWebletNowMs();
    if (left <= 0) return false;
    if (tls_->Read(*this, piece, sizeof piece, got, LNetDeadline::After(static_cast<unsigned>(left)), error) !=
        LNetStatus::kOk)
      return false;
    buffer_.append(piece, got);
    return true;
  }
  for (;;) {
    char piece[kReadPieceBytes];
    ssize_t n = ::recv(fd_, piece, sizeof piece, 0);
    if (n > 0) {
      buffer_.append(piece, static_cast<std::size_t>(n));
      return true;
    }
    if (n == 0) return false;  // the peer closed its side
    if (errno == EINTR) continue;
    if (errno != EAGAIN && errno != EWOULDBLOCK) return false;
    if (!WaitReady(POLLIN, deadlineMs)) return false;
  }
}

long long LWebletSocket::ReadDeadline(unsigned timeoutMs) const {
  long long deadline = LWebletNowMs() + timeoutMs;
  return readDeadlineMs_ > 0 && readDeadlineMs_ < deadline ? readDeadlineMs_ : deadline;
}

bool LWebletSocket::ReadLine(std::string& line, std::size_t maxKept, unsigned timeoutMs) {
  long long deadline = ReadDeadline(timeoutMs);
  line.clear();
  std::size_t rawLength = 0;  // bytes of the line seen so far, kept or not
  bool lastWasCr = false;     // the last byte seen was "\r"
  for (;;) {
    std::size_t end = buffer_.find('\n', pos_);
    std::size_t stop = end == std::string::npos ? buffer_.size() : end;
    if (stop > pos_) {
      if (line.size() < maxKept) line.append(buffer_, pos_, std::min(stop - pos_, maxKept - line.size()));
      lastWasCr = buffer_[stop - 1] == '\r';
      rawLength += stop - pos_;
    }
    if (end != std::string::npos) {
      if (lastWasCr && rawLength <= maxKept) line.pop_back();
      pos_ = end + 1;
      return true;
    }
    pos_ = buffer_.size();
    if (!Fill(deadline)) return false;
  }
}

bool LWebletSocket::ReadExact(std::string& out, std::size_t size, unsigned timeoutMs) {
  long long deadline = ReadDeadline(timeoutMs);
  while (size > 0) {
    if (pos_ == buffer_.size() && !Fill(deadline)) return false;
    std::size_t take = std::min(size, buffer_.size() - pos_);
    out.append(buffer_, pos_, take);
    pos_ += take;
    size -= take;
  }
  return true;
}

bool LWebletSocket::Send(std::string_view data, unsigned timeoutMs, bool more) {
  if (tls_) {
    std::string error;
    return data.empty() ||
           tls_->Write(*this, data.data(), data.size(), LNetDeadline::After(timeoutMs), error) == LNetStatus::kOk;
  }
  return RawSend(data, LWebletNowMs() + timeoutMs, MSG_NOSIGNAL | (more ? MSG_MORE : 0));
}

bool LWebletSocket::RawSend(std::string_view data, long long deadline, int flags) {
  while (!data.empty()) {
    ssize_t n = ::send(fd_, data.data(), data.size(), flags);
    if (n > 0) {
      data.remove_prefix(static_cast<std::size_t>(n));
      continue;
    }
    if (n < 0 && errno == EINTR) continue;
    if (n < 0 && errno != EAGAIN && errno != EWOULDBLOCK) return false;
    if (!WaitReady(POLLOUT, deadline)) return false;
  }
  return true;
}

void LWebletSocket::Push() {
  int on = 1;  // setting TCP_NODELAY again sends what MSG_MORE held back
  ::setsockopt(fd_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

int LWebletSocket::PeekFirstByte(unsigned timeoutMs) {
  long long deadline = ReadDeadline(timeoutMs);
  for (;;) {
    unsigned char byte = 0;
    ssize_t n = ::recv(fd_, &byte, 1, MSG_PEEK);
    if (n == 1) return byte;
    if (n == 0) return -1;
    if (errno == EINTR) continue;
    if (errno != EAGAIN && errno != EWOULDBLOCK) return -1;
    if (!WaitReady(POLLIN, deadline)) return -1;
  }
}

bool LWebletSocket::StartTls(const LTlsServerContext& server, unsigned timeoutMs, std::string& error) {
  LNetStatus status = LNetStatus::kOk;
  tls_ = LTlsChannel::Accept(*this, server, LNetDeadline::After(timeoutMs), status, error);
  return tls_ != nullptr;
}

LNetStatus LWebletSocket::TransportSend(const char* data, std::size_t size, const LNetDeadline& deadline) {
  return RawSend(std::string_view(data, size), DeadlineMs(deadline), MSG_NOSIGNAL) ? LNetStatus::kOk
                                                                                   : LNetStatus::kFailed;
}

LNetStatus LWebletSocket::TransportReceive(char* buffer, std::size_t size, std::size_t& got,
                                           const LNetDeadline& deadline) {
  long long deadlineMs = DeadlineMs(deadline);
  for (;;) {
    ssize_t n = ::recv(fd_, buffer, size, 0);
    if (n > 0) {
      got = static_cast<std::size_t>(n);
      return LNetStatus::kOk;
    }
    if (n == 0) return LNetStatus::kClosed;
    if (errno == EINTR) continue;
    if (errno != EAGAIN && errno != EWOULDBLOCK) return LNetStatus::kFailed;
    if (!WaitReady(POLLIN, deadlineMs)) return LNetStatus::kTimedOut;
  }
}

void LWebletSocket::ShutdownNow() { ::shutdown(fd_, SHUT_RDWR); }
