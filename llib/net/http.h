// The HTTPS client: one request, one answer, over a connection of its own (socket.h, tls.h).
// Used by the OAuth calls of the VAT submission (oauth.h).
//
// Only "https://" addresses are taken, and the server's certificate is always checked: its chain
// must lead to the system's roots or to the extra trusted certificates of options.caFile, and it
// must name the host. The whole exchange (connect, handshake, request, answer) runs against one
// time limit, and the stop test (the progress interface's cancel) ends any wait within about
// 100 ms. The request asks the server to close the connection after its answer, so an answer
// without a length ends where the connection ends.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "llib/net/netwait.h"

struct LHttpRequest {
  std::string method = "GET";
  std::string url;          // "https://host[:port]/path[?query]"
  std::string headers;      // extra header lines, each ended by CRLF ("Accept: ...\r\n")
  std::string contentType;  // sent with the body when not empty
  std::string body;         // sent (with its Content-Length) when the method is not GET
};

struct LHttpResponse {
  int status = 0;       // the status code of the answer, 0 before one arrived
  std::string headers;  // the header lines as received, each ended by CRLF
  std::string body;     // decoded from chunks when the answer was chunked

  // The value of the first header of that name (case-insensitive), blanks trimmed; "" when absent.
  std::string Header(std::string_view name) const;
};

struct LHttpOptions {
  std::string caFile;                        // extra trusted certificates (PEM); "": the system's only
  unsigned timeoutMs = 60000;                // for the whole exchange
  std::size_t maxAnswerBytes = 8u << 20;     // a longer answer is refused
  LNetStopTest stopTest;                     // empty: never stop
};

// The parts of an address. false when it is not "https://" followed by a host.
// "https://h:8443/a?b" gives host "h", port 8443, target "/a?b"; the port defaults to 443 and
// the target to "/".
bool LHttpSplitUrl(std::string_view url, std::string& host, int& port, std::string& target);

// How far an answer has arrived.
enum class LHttpAnswerState { kIncomplete, kComplete, kBad };

// Reads an answer from the bytes received so far (closed: the connection has ended, so an answer
// without a length is complete). kComplete fills response; kBad for a malformed status line or
// chunk, a header block over 64 KB, or a body over maxBytes.
LHttpAnswerState LHttpParseAnswer(std::string_view data, bool closed, std::size_t maxBytes, LHttpResponse& response);

// Sends the request and reads the answer. kOk with response filled when a complete answer
// arrived (whatever its status); kStopped when the stop test ended it; kTimedOut; kFailed
// (error says why: a bad address, a refused connection or certificate, a malformed or too long
// answer); kClosed when the server closed before a complete answer.
LNetStatus LHttpExchange(const LHttpRequest& request, const LHttpOptions& options, LHttpResponse& response,
                         std::string& error);
