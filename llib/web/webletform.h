// LWebletForm: one request to the web server, from its parsing to the end of its answer. The
// connection thread fills it (kind, parameters from the query and the body, headers, cookies,
// the session named by the "kontavo_sess" cookie, the client's address, the script name) and
// hands it to the route's handler, which writes its answer through it straight to the client:
// nothing is buffered, so the status line and headers go first. One exception: a head given to
// HoldHeader waits for the first piece of the body, so that the handler can still add header
// lines (the session cookie of a logon) after the head was chosen.
//
// Destroying the form sends a head still held and writes back a session that the request
// changed.
#pragma once

#include <string>
#include <string_view>

#include "llib/gen/hashtable.h"
#include "llib/web/websession.h"

class LWebletSocket;

inline constexpr unsigned kWebSendHeaderMs = 20000;   // fixed header pieces
inline constexpr unsigned kWebSendContentMs = 600000;  // page content
inline constexpr std::string_view kWebSessionCookie = "kontavo_sess";

class LWebletForm {
 public:
  // socket: the client connection that every write goes to. A form without socket keeps what is
  // written in Captured() (used to build answers before sending them, and by tests).
  explicit LWebletForm(LWebletSocket* socket);
  ~LWebletForm();
  LWebletForm(const LWebletForm&) = delete;
  LWebletForm& operator=(const LWebletForm&) = delete;

  LWebletSocket* Socket() const { return socket_; }

  // ---- The request ---------------------------------------------------------------------------
  int kind = 0;                            // 0 GET, 1 POST
  LHashTable parameters;                   // query string, then the POST body
  LHashTable headers;                      // request headers, name as sent -> value
  LHashTable cookies;                      // cookie name -> decoded value
  LWebletSessionDataFileBased session;     // the session of the "kontavo_sess" cookie
  unsigned char clientAddress[4] = {};     // IPv4 address of the client
  std::string scriptName;                  // decoded path without its "/" and query, <= 259 bytes
  bool keepAlive = false;                  // set by a handler whose answer allows another request
  bool responseSent = false;               // a redirect was written: write nothing more

  // "%d.%d.%d.%d" of the client's address.
  std::string ClientAddressText() const;
  // A header by name, compared without regard to case; null when absent.
  const char* GetHeader(std::string_view name) const;
  // A parameter's text; def when absent.
  std::string GetParam(std::string_view name, std::string_view def = {}) const;

  // ---- The answer ---------------------------------------------------------------------------
  // Writes data within timeoutMs. After one failed write every later write does nothing and
  // returns false: the connection is closed when the handler returns.
  bool Write(std::string_view data, unsigned timeoutMs = kWebSendContentMs);
  // Writes a head (status line and header lines, ending in the empty line). Unless the handler
  // keeps the connection, the head says "Connection: close": a client that believed the
  // connection stays would send its next request into a closed socket and see it reset.
  bool WriteHeader(std::string_view head) { return Write(ClosingHead(head), kWebSendHeaderMs); }
  // Keeps head (as for WriteHeader) until the next Write or the form's end.
  void HoldHeader(std::string_view head) { heldHead_ = ClosingHead(head); }
  // Adds one header line (without its line end) to the held head. false when no head is held:
  // the head has gone and the line cannot follow it.
  bool AddHeaderLine(std::string_view line);
  // Sends a held head now; false when sending failed.
  bool SendHeldHead() { return Write({}); }
  // true when the client reached the server over TLS (set by the connection).
  bool isSecure = false;
  // Formatted page content, with the writer's %H and %U (llib/web/webformat.h).
  void wfprintf(const char* format, ...);
  void wfprintfutf8(const char* format, ...);
  bool WriteFailed() const { return writeFailed_; }
  // Everything written so far by a form without socket.
  const std::string& Captured() const { return captured_; }

 private:
  std::string ClosingHead(std::string_view head) const;

  LWebletSocket* socket_;     // the client connection, not owned; null: capture
  std::string captured_;      // what a form without socket was given
  bool writeFailed_ = false;  // a write failed or timed out
  std::string heldHead_;      // see HoldHeader; empty when none
};

// Writes "HTTP/1.1 302 Found" with location (line ends removed) and marks the response sent.
void WLRedirect(LWebletForm& form, std::string_view location);

// target when it names a page of this server (a relative address: no scheme, no "//", no quote,
// backslash, angle bracket or control byte), else fallback. Targets taken from a request
// ("onok", "oncancel") pass through here before they reach a Location header or a script.
std::string LWebSafeTarget(std::string_view target, std::string_view fallback);
