// The pieces of an HTTP request as the web server reads them, each a plain function over text so
// that the parser can be tested and fuzzed without a socket:
//
//     GET /userprop?id=a%40b.fr HTTP/1.1        request line: method, URI, version
//     Cookie: kontavo_sess=sabcdefgh3           header lines: name ':' value
//
// Every text that comes from the client is cut at 259 bytes, as the server's buffers are.
#pragma once

#include <string>
#include <string_view>

#include "llib/gen/hashtable.h"

inline constexpr std::size_t kWebletLineBytes = 259;  // request line, header line, URI, path

// Request kinds of LWebletForm.
inline constexpr int kWebletGet = 0;
inline constexpr int kWebletPost = 1;

struct LWebletRequestLine {
  std::string method;    // first word
  std::string uri;       // second word
  double version = 0.0;  // the number after the first '/' of the third word; 0 when absent
};

// Splits the request line at runs of blanks and tabs.
//   "GET /main HTTP/1.1" -> {"GET", "/main", 1.1}
LWebletRequestLine LWebletParseRequestLine(std::string_view line);

// 0 for "GET", 1 for "POST", -1 for anything else (compared exactly).
int LWebletRequestKind(std::string_view method);

// Cuts the URI at its first '?': the query goes into parameters (HTTP-string decoding) and the
// rest is percent-decoded into path (at most 259 bytes; decoded NUL bytes are dropped).
void LWebletSplitUri(std::string_view uri, std::string& path, LHashTable& parameters);

// Splits a header line at its first ':'; the value loses its leading bytes below 33. false for a
// line without ':' (name and value then empty).
bool LWebletParseHeaderLine(std::string_view line, std::string& name, std::string& value);

// The value of a request header, the name compared without regard to case (clients differ in
// how they spell "Content-Length"); null when absent.
const char* LWebletFindHeader(const LHashTable& headers, std::string_view name);

// The cookies of a "Cookie" header: items split at ';', each at its first '='; bytes below 33
// before a name are skipped; values percent-decoded and cut at 259 bytes; empty names dropped.
class LWebletCookieData {
 public:
  static void LoadCookieData(std::string_view header, LHashTable& cookies);
};

// The keep-alive rule: HTTP/1.1 or later, a GET, and no "close" in the "Connection" header.
bool LWebletKeepAlive(double version, int kind, std::string_view connectionHeader);
