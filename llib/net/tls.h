// TLS connections through OpenSSL, laid over a socket that is already connected (a connection
// that starts in plain text and turns secure, as STARTTLS does, or one secure from the first
// byte, as HTTPS is): the client side for mail and the tax authority, the server side for the
// web server (Accept, with the certificate of an LTlsServerContext, llib/net/tlsserver.h).
//
// OpenSSL never touches the descriptor: it reads and writes memory buffers, and the channel moves
// the records between those buffers and the socket's transport under the caller's deadline and
// stop test. So a handshake with a peer that stays silent, or that answers in plain text, ends
// like any other wait, and a peer that went away never raises SIGPIPE.
//
// Certificate checks: with verifyPeer the peer's chain must lead to a trusted root (the
// system's roots, plus caFile when given) and the certificate must name hostName (a DNS name, or
// an IP address written literally). Without verifyPeer any certificate is taken: the link is
// private but the peer unproven.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "llib/net/netwait.h"

class LTlsServerContext;

// host is a literal IPv4 or IPv6 address (certificates name those as IP entries, not DNS ones).
bool LTlsIsAddressLiteral(const std::string& host);
// Empties OpenSSL's error queue of the calling thread into one line ("" when it was empty).
std::string LTlsTakeErrors();

struct LTlsClientOptions {
  bool verifyPeer = true;  // check the chain and the name (see above)
  std::string caFile;      // extra trusted certificates (PEM file); empty: the system's only
  std::string hostName;    // the name checked against the certificate and sent as SNI
};

// Raw byte transfers of the connection under the TLS layer (implemented by LSocket).
class LTlsTransport {
 public:
  virtual ~LTlsTransport() = default;
  // Writes all size bytes.
  virtual LNetStatus TransportSend(const char* data, std::size_t size, const LNetDeadline& deadline) = 0;
  // Waits for at least one byte, then reads at most size bytes; got is their count.
  virtual LNetStatus TransportReceive(char* buffer, std::size_t size, std::size_t& got,
                                      const LNetDeadline& deadline) = 0;
};

class LTlsChannel {
 public:
  ~LTlsChannel();
  LTlsChannel(const LTlsChannel&) = delete;
  LTlsChannel& operator=(const LTlsChannel&) = delete;

  // Sets up a client and runs the handshake over transport. The channel on success; null with
  // status (kTimedOut, kClosed, kStopped, kFailed) and error (OpenSSL's reason, or the
  // certificate check that failed) otherwise.
  static std::unique_ptr<LTlsChannel> Connect(LTlsTransport& transport, const LTlsClientOptions& options,
                                              const LNetDeadline& deadline, LNetStatus& status,
                                              std::string& error);

  // Runs the server side of the handshake over transport with the certificate of server. The
  // channel on success; null with status and error as Connect.
  static std::unique_ptr<LTlsChannel> Accept(LTlsTransport& transport, const LTlsServerContext& server,
                                             const LNetDeadline& deadline, LNetStatus& status, std::string& error);

  // Writes all size bytes as TLS records.
  LNetStatus Write(LTlsTransport& transport, const char* data, std::size_t size,
                   const LNetDeadline& deadline, std::string& error);
  // Waits for application data and reads at most size bytes of it. kClosed once the peer sent
  // close_notify or dropped the connection.
  LNetStatus Read(LTlsTransport& transport, char* buffer, std::size_t size, std::size_t& got,
                  const LNetDeadline& deadline, std::string& error);
  // Queues close_notify and sends it if the socket takes it at once; never waits.
  void Shutdown(LTlsTransport& transport);

 private:
  struct Impl;
  explicit LTlsChannel(std::unique_ptr<Impl> impl);
  std::unique_ptr<Impl> impl_;
};
