// Client-side TCP connections, plain or turned into TLS part-way (STARTTLS), shared by the mail
// sender, the HTTPS client of the VAT submission and the web server's tests.
//
// Every operation that waits takes a time limit and ends with a status instead of blocking:
// the socket is non-blocking and each wait is a poll(2). When a stop test is set (the progress
// interface's IsToStop, a thread's stop signal), waits are cut into slices of at most 100 ms and
// the test is asked between slices, so a cancel ends any wait within about 100 ms.
//
// Input is buffered: Receive appends what arrives to the socket's input buffer, and readers
// (ReadLine, the SMTP reply reader) take complete lines from its front, leaving any bytes that
// follow for the next reader. The buffer never grows by more than what one reader allows.
//
// Writes never raise SIGPIPE: plain writes use MSG_NOSIGNAL and TLS records are moved to the
// socket by this class (tls.h), not by OpenSSL.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "llib/net/ipaddress.h"
#include "llib/net/netwait.h"
#include "llib/net/tls.h"

class LSocket : private LTlsTransport {
 public:
  LSocket() = default;
  ~LSocket() override;
  LSocket(const LSocket&) = delete;
  LSocket& operator=(const LSocket&) = delete;

  // Resolves the host and connects to its addresses in turn until one accepts, all within
  // timeoutMs. kOk when connected; otherwise the socket stays closed (kFailed when the name does
  // not resolve or every address refused, kTimedOut, kStopped).
  LNetStatus Connect(const LIPAddressWithPort& address, unsigned timeoutMs);
  // Takes over an already connected descriptor (set non-blocking here).
  void Adopt(int fd);
  // Closes the connection (a TLS connection without waiting for the peer's close_notify). The
  // input buffer is emptied.
  void Close();
  bool IsOpen() const { return fd_ >= 0; }
  int Fd() const { return fd_; }

  void SetStopTest(LNetStopTest stopTest) { stopTest_ = std::move(stopTest); }

  // Writes all of data within timeoutMs (through TLS once it is on).
  LNetStatus Send(std::string_view data, unsigned timeoutMs);

  // Waits until at least one byte arrives, then appends what is there, at most maxBytes, to the
  // input buffer. kClosed when the peer closed and nothing came.
  LNetStatus Receive(std::size_t maxBytes, const LNetDeadline& deadline);
  // The bytes received and not yet taken by a reader.
  std::string_view Buffered() const { return std::string_view(input_).substr(inputStart_); }
  // Takes count bytes from the front of the input buffer.
  void Consume(std::size_t count);

  // Reads one line ended by LF (the LF and a CR before it removed) within timeoutMs. kTooLong
  // when maxBytes arrive without a LF (line then holds those bytes; the rest of the connection is
  // not worth reading). On kTimedOut/kClosed/kStopped the partial line stays buffered.
  LNetStatus ReadLine(std::string& line, std::size_t maxBytes, unsigned timeoutMs);

  // Turns the connection into a TLS client connection: handshake within timeoutMs. Bytes
  // already buffered as plain text are dropped first (a server must not send any after its
  // go-ahead). On failure the socket is closed and LastError() says why.
  LNetStatus StartTls(const LTlsClientOptions& options, unsigned timeoutMs);
  bool IsTls() const { return tls_ != nullptr; }

  // The system's or the TLS layer's explanation of the last kFailed (English, for logs).
  const std::string& LastError() const { return lastError_; }

 private:
  // Waits for events on the descriptor; kOk when ready.
  LNetStatus WaitFor(short events, const LNetDeadline& deadline);
  // Raw transfers on the descriptor, used directly or under TLS.
  LNetStatus TransportSend(const char* data, std::size_t size, const LNetDeadline& deadline) override;
  LNetStatus TransportReceive(char* buffer, std::size_t size, std::size_t& got,
                              const LNetDeadline& deadline) override;
  LNetStatus ConnectOne(const void* address, unsigned addressLength, int family,
                        const LNetDeadline& deadline);
  LNetStatus Fail(std::string text);

  int fd_ = -1;                         // the connected descriptor, non-blocking; -1 when closed
  std::unique_ptr<LTlsChannel> tls_;    // set once StartTls succeeded
  std::string input_;                   // received bytes; the unread ones begin at inputStart_
  std::size_t inputStart_ = 0;          // bytes of input_ already taken by readers
  LNetStopTest stopTest_;               // asked between wait slices; empty: never stop
  std::string lastError_;
};
