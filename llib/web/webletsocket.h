// The sockets of the web server: the listening socket, and one accepted connection with the time
// limits of every wait. A connection is read through its own buffer (request lines, header
// lines, bodies) and written in whole pieces; every wait is also cut short when the server's
// stop signal is set, so that stopping the server never waits for a slow client.
//
// Traps this layer depends on:
//   - a send to a peer that has gone raises SIGPIPE unless MSG_NOSIGNAL is given: every send
//     here gives it;
//   - with Nagle's algorithm on, a small second write waits for the peer's delayed ACK (40 ms):
//     TCP_NODELAY is set, and pieces known to be followed at once are sent with MSG_MORE so
//     that headers and body still share packets; Push() sends what MSG_MORE held back.
//
// A connection may turn to TLS before its first request (StartTls): from then on every read and
// write goes through the TLS channel, which moves its records over the same descriptor with the
// same deadlines and stop signal.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "llib/net/tls.h"

class LSignalObject;
class LTlsServerContext;

// The first byte a TLS client sends (a handshake record): how a server that speaks both on one
// port tells a TLS client from a plain HTTP one.
inline constexpr int kTlsHandshakeRecordByte = 0x16;

// A listening TCP socket on every IPv4 interface of the machine (SO_REUSEADDR set, non-blocking,
// close-on-exec). Returns the descriptor, or -1 with errno set (EADDRINUSE: the port is taken).
int LWebletListenSocket(int port);

class LWebletSocket : private LTlsTransport {
 public:
  // Takes over fd (made non-blocking). stop may be null.
  LWebletSocket(int fd, const LSignalObject* stop);
  ~LWebletSocket() override;
  LWebletSocket(const LWebletSocket&) = delete;
  LWebletSocket& operator=(const LWebletSocket&) = delete;

  // Reads one line ended by "\n" (a "\r" before it is dropped). At most maxKept bytes of it are
  // kept in line; the rest of the line is read and dropped. false on end of stream, error,
  // stop, or when the whole line did not arrive within timeoutMs; line is then unspecified.
  bool ReadLine(std::string& line, std::size_t maxKept, unsigned timeoutMs);
  // Appends exactly size bytes to out within timeoutMs; false as above (out then holds what
  // arrived).
  bool ReadExact(std::string& out, std::size_t size, unsigned timeoutMs);
  // Sends every byte within timeoutMs. more: another piece follows at once. false on error,
  // stop or time-out; nothing more should be sent then.
  bool Send(std::string_view data, unsigned timeoutMs, bool more = false);
  // Sends whatever pieces marked "more" are still held by the system.
  void Push();
  // The first byte the peer sent, left unread, within timeoutMs; -1 on end of stream, error,
  // stop or time-out.
  int PeekFirstByte(unsigned timeoutMs);
  // Runs the server side of a TLS handshake with server's certificate within timeoutMs; true
  // when the connection is secure from now on. false: the connection must end (the reason in
  // error).
  bool StartTls(const LTlsServerContext& server, unsigned timeoutMs, std::string& error);
  bool IsTls() const { return tls_ != nullptr; }
  // Ends both directions at once, waking any thread that waits on this connection.
  void ShutdownNow();
  // A deadline (steady clock, ms; 0: none) that cuts every read short whatever its own time-out:
  // what a client is given for the whole of a request, however it spreads its bytes.
  void SetReadDeadline(long long deadlineMs) { readDeadlineMs_ = deadlineMs; }
  // Bytes already read from the peer but not yet taken.
  std::size_t Buffered() const { return buffer_.size() - pos_; }
  int Fd() const { return fd_; }

 private:
  // Waits until fd_ is ready for events (POLLIN or POLLOUT) or the deadline (steady clock, ms);
  // false on time-out, stop or error.
  bool WaitReady(short events, long long deadlineMs);
  // Reads what the peer has sent into the buffer; false on end of stream, error, stop or time-out.
  bool Fill(long long deadlineMs);
  // Plain transfers on the descriptor, for the connection itself or under its TLS channel.
  bool RawSend(std::string_view data, long long deadlineMs, int flags);
  LNetStatus TransportSend(const char* data, std::size_t size, const LNetDeadline& deadline) override;
  LNetStatus TransportReceive(char* buffer, std::size_t size, std::size_t& got, const LNetDeadline& deadline) override;

  int fd_ = -1;
  const LSignalObject* stop_ = nullptr;  // the server's stop signal (not owned), may be null
  std::string buffer_;                   // bytes received
  std::size_t pos_ = 0;                  // first byte of buffer_ not yet taken
  long long readDeadlineMs_ = 0;         // see SetReadDeadline; 0 when none
  std::unique_ptr<LTlsChannel> tls_;     // set by StartTls: every transfer goes through it
  // now + timeoutMs, or the read deadline when it comes first.
  long long ReadDeadline(unsigned timeoutMs) const;
};

// Milliseconds of the steady clock, for deadlines.
long long LWebletNowMs();
