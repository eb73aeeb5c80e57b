// The connections of the web server. The listener thread accepts each client and starts a
// detached connection thread ("WEBC" while idle, "WEB-<script>" while a handler runs) that reads
// the client's requests one after the other: the request line (30 s), the header lines (20 s
// each, and 30 s for all of them together, so that a client sending a byte now and then cannot
// keep its thread), the body of a POST (40 s, then at least 16 KB a second on average, however
// long the body it announced), then routes the request or
// sends a static file of the "Web" folder. The connection stays open for another request only
// when the answer allows it (keep-alive: an HTTP/1.1 GET without "Connection: close", answered
// by a static file or a handler that says so).
//
// A listener with a certificate (HTTPS switched on) serves TLS and plain HTTP on the same port:
// a connection whose first byte opens a TLS handshake turns secure; a plain one is served from
// the loopback only (the desk on this machine keeps working without a certificate warning), and
// a plain request from any other address is sent to the same address over https.
//
// The listener keeps its connection threads in a registry guarded by a recursive mutex; stopping
// the server sets the registry's stop signal (every wait of every connection wakes up on it),
// shuts every socket down, and waits until the last thread has left.
#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "llib/gen/signalobject.h"

inline constexpr unsigned kWebletRequestLineMs = 30000;
inline constexpr unsigned kWebletHeaderLineMs = 20000;
// A request body may take this long to start coming, and must then keep up an average of
// kWebletBodyMinBytesPerMs: a client announcing a large body and sending a byte now and then is
// dropped as soon as it falls behind, not when a time in proportion to that length is over.
inline constexpr unsigned kWebletBodyExtraMs = 40000;
inline constexpr long long kWebletBodyMinBytesPerMs = 16;
// A body is read in pieces of this size, each due by the pace above.
inline constexpr std::size_t kWebletBodyPieceBytes = 65536;
// All the header lines of one request, however slowly they come.
inline constexpr unsigned kWebletHeadersMs = 30000;
inline constexpr long long kWebletMaxBodyBytes = 3000000;
// More header lines than this end the connection: the table of one request must stay small.
inline constexpr int kWebletMaxHeaderLines = 200;
// Beyond this many open connections, in all or from one client address, a new client is answered
// "503 Service Unavailable" and closed rather than given a thread.
inline constexpr int kWebletMaxConnections = 1000;
inline constexpr int kWebletMaxConnectionsPerAddress = 64;

class LWebletSocket;
class LTlsServerContext;

// Connections of one listener.
class LWebletConnectionRegistry {
 public:
  // tls: the certificate of HTTPS; null to serve plain HTTP only.
  LWebletConnectionRegistry(std::string webFolder, std::shared_ptr<const LTlsServerContext> tls)
      : webFolder_(std::move(webFolder)), tls_(std::move(tls)) {}

  // Starts a detached connection thread for an accepted socket. false (503 sent, socket closed)
  // when a limit of open connections is reached.
  static bool StartConnection(const std::shared_ptr<LWebletConnectionRegistry>& registry, int fd,
                              const unsigned char clientAddress[4]);
  // Asks every connection to stop, ends their sockets, and waits up to timeoutMs for the threads
  // to leave. Returns the number still running.
  int StopAll(unsigned timeoutMs);
  int Count() const;

  const LSignalObject& StopSignal() const { return stop_; }
  const std::string& WebFolder() const { return webFolder_; }
  const LTlsServerContext* Tls() const { return tls_.get(); }

 private:
  void Add(LWebletSocket* socket);
  void Remove(LWebletSocket* socket);

  mutable std::recursive_mutex mutex_;   // guards sockets_
  std::vector<LWebletSocket*> sockets_;  // sockets of the running connection threads (not owned)
  LSignalObject stop_;                   // set once: the server is stopping
  std::string webFolder_;                // the "Web" folder of the static files
  std::shared_ptr<const LTlsServerContext> tls_;  // HTTPS certificate; null: plain HTTP only
};

// Open connections of the whole process.
int LWebletConnectionCount();

// Reads and answers the requests of one client until the connection ends. Used by the
// connection threads; exposed for the fuzz target, which runs it over a socket pair.
void LWebletServeConnection(LWebletSocket& socket, const unsigned char clientAddress[4],
                            const std::string& webFolder, const LTlsServerContext* tls = nullptr);

// Appends a request body of size bytes to body, read in pieces of kWebletBodyPieceBytes each due
// by the pace of kWebletBodyMinBytesPerMs after kWebletBodyExtraMs; progress (may be empty) is
// called with the bytes read after each piece. false when the client fell behind or the
// connection ended (body then holds what arrived).
[[nodiscard]] bool LWebletReadBody(LWebletSocket& socket, std::string& body, std::size_t size,
                                   const std::function<void(std::size_t)>& progress = {});

// Names the calling thread (cut to the 15 bytes the system keeps).
void LWebletSetThreadName(const std::string& name);
