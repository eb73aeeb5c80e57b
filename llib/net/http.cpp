#include "llib/net/http.h"

#include <charconv>

#include "llib/gen/textcase.h"
#include "llib/net/ipaddress.h"
#include "llib/net/socket.h"

namespace {

std::string_view Trim(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r')) text.remove_suffix(1);
  return text;
}

unsigned MsLeft(const LNetDeadline& deadline) {
  int left = deadline.PollMs();
  return left < 0 ? 0xFFFFFFFFu : static_cast<unsigned>(left);
}

constexpr std::size_t kMaxHeaderBytes = 65536;

enum class BodyState { kComplete, kIncomplete, kBad };

// Decodes a chunked body from the start of data; kIncomplete until the last chunk and the
// trailer's empty line arrived.
BodyState DecodeChunked(std::string_view data, std::string& body, std::size_t maxBytes) {
  body.clear();
  std::size_t at = 0;
  for (;;) {
    std::size_t lineEnd = data.find("\r\n", at);
    if (lineEnd == std::string_view::npos) return data.size() - at > 1024 ? BodyState::kBad : BodyState::kIncomplete;
    std::string_view sizeText = data.substr(at, lineEnd - at);
    sizeText = sizeText.substr(0, sizeText.find(';'));
    sizeText = Trim(sizeText);
    std::size_t size = 0;
    auto parsed = std::from_chars(sizeText.data(), sizeText.data() + sizeText.size(), size, 16);
    if (sizeText.empty() || parsed.ec != std::errc() || parsed.ptr != sizeText.data() + sizeText.size())
      return BodyState::kBad;
    at = lineEnd + 2;
    if (size == 0) {
      // Trailer lines up to an empty one.
      for (;;) {
        std::size_t end = data.find("\r\n", at);
        if (end == std::string_view::npos) return BodyState::kIncomplete;
        if (end == at) return BodyState::kComplete;
        at = end + 2;
      }
    }
    if (size > maxBytes || body.size() + size > maxBytes) return BodyState::kBad;
    if (data.size() - at < size + 2) return BodyState::kIncomplete;
    body.append(data.substr(at, size));
    if (data.substr(at + size, 2) != "\r\n") return BodyState::kBad;
    at += size + 2;
  }
}

}  // namespace

LHttpAnswerState LHttpParseAnswer(std::string_view data, bool closed, std::size_t maxBytes, LHttpResponse& response) {
  response = LHttpResponse();
  std::size_t found = data.find("\r\n\r\n");
  if (found == std::string_view::npos)
    return data.size() > kMaxHeaderBytes ? LHttpAnswerState::kBad : LHttpAnswerState::kIncomplete;
  if (found > kMaxHeaderBytes) return LHttpAnswerState::kBad;
  std::string_view head = data.substr(0, found + 2);
  std::size_t lineEnd = head.find("\r\n");
  std::string_view statusLine = head.substr(0, lineEnd);
  std::size_t blank = statusLine.find(' ');
  if (!statusLine.starts_with("HTTP/") || blank == std::string_view::npos || statusLine.size() < blank + 4)
    return LHttpAnswerState::kBad;
  std::string_view codeText = statusLine.substr(blank + 1, 3);
  int code = 0;
  auto parsed = std::from_chars(codeText.data(), codeText.data() + codeText.size(), code);
  if (parsed.ec != std::errc() || parsed.ptr != codeText.data() + 3 || code < 100) return LHttpAnswerState::kBad;
  response.status = code;
  response.headers = std::string(head.substr(lineEnd + 2));

  std::string_view rest = data.substr(found + 4);
  if (code == 204 || code == 304 || code < 200) return LHttpAnswerState::kComplete;
  if (response.Header("Transfer-Encoding").find("chunked") != std::string::npos) {
    BodyState state = DecodeChunked(rest, response.body, maxBytes);
    return state == BodyState::kComplete ? LHttpAnswerState::kComplete
           : state == BodyState::kBad    ? LHttpAnswerState::kBad
                                         : LHttpAnswerState::kIncomplete;
  }
  std::string length = response.Header("Content-Length");
  if (!length.empty()) {
    std::size_t contentLength = 0;
    auto lengthParsed = std::from_chars(length.data(), length.data() + length.size(), contentLength);
    if (lengthParsed.ec != std::errc() || lengthParsed.ptr != length.data() + length.size() || contentLength > maxBytes)
      return LHttpAnswerState::kBad;
    if (rest.size() < contentLength) return LHttpAnswerState::kIncomplete;
    response.body = std::string(rest.substr(0, contentLength));
    return LHttpAnswerState::kComplete;
  }
  // Without a length the body ends with the connection.
  if (rest.size() > maxBytes) return LHttpAnswerState::kBad;
  if (!closed) return LHttpAnswerState::kIncomplete;
  response.body = std::string(rest);
  return LHttpAnswerState::kComplete;
}

std::string LHttpResponse::Header(std::string_view name) const {
  std::string_view rest = headers;
  while (!rest.empty()) {
    std::size_t end = rest.find("\r\n");
    std::string_view line = rest.substr(0, end);
    rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 2);
    std::size_t colon = line.find(':');
    if (colon != std::string_view::npos && LSameText(Trim(line.substr(0, colon)), name))
      return std::string(Trim(line.substr(colon + 1)));
  }
  return {};
}

bool LHttpSplitUrl(std::string_view url, std::string& host, int& port, std::string& target) {
  constexpr std::string_view kScheme = "https://";
  if (url.size() < kScheme.size() || !LSameText(url.substr(0, kScheme.size()), kScheme)) return false;
  url.remove_prefix(kScheme.size());
  std::size_t slash = url.find_first_of("/?");
  std::string_view authority = url.substr(0, slash);
  target = slash == std::string_view::npos ? "/" : std::string(url.substr(slash));
  if (!target.empty() && target[0] == '?') target.insert(0, "/");
  port = 443;
  std::string_view hostPart = authority;
  if (!authority.empty() && authority[0] == '[') {
    std::size_t close = authority.find(']');
    if (close == std::string_view::npos) return false;
    hostPart = authority.substr(1, close - 1);
    authority.remove_prefix(close + 1);
    if (!authority.empty() && authority[0] != ':') return false;
  } else {
    std::size_t colon = authority.find(':');
    hostPart = authority.substr(0, colon);
    authority = colon == std::string_view::npos ? std::string_view() : authority.substr(colon);
  }
  if (!authority.empty()) {
    std::string_view portText = authority.substr(1);
    auto parsed = std::from_chars(portText.data(), portText.data() + portText.size(), port);
    if (portText.empty() || parsed.ec != std::errc() || parsed.ptr != portText.data() + portText.size() || port < 1 ||
        port > 65535)
      return false;
  }
  if (hostPart.empty() || hostPart.find_first_of(" \t\r\n@") != std::string_view::npos) return false;
  host = std::string(hostPart);
  return true;
}

LNetStatus LHttpExchange(const LHttpRequest& request, const LHttpOptions& options, LHttpResponse& response,
                         std::string& error) {
  response = LHttpResponse();
  std::string host, target;
  int port = 0;
  if (!LHttpSplitUrl(request.url, host, port, target)) {
    error = "not an https address: " + request.url;
    return LNetStatus::kFailed;
  }
  LNetDeadline deadline = LNetDeadline::After(options.timeoutMs);
  LSocket socket;
  socket.SetStopTest(options.stopTest);
  LNetStatus status = socket.Connect(LIPAddressWithPort(host, port), MsLeft(deadline));
  if (status != LNetStatus::kOk) {
    error = socket.LastError().empty() ? "cannot connect to " + host : socket.LastError();
    return status;
  }
  LTlsClientOptions tls;
  tls.verifyPeer = true;
  tls.caFile = options.caFile;
  tls.hostName = host;
  status = socket.StartTls(tls, MsLeft(deadline));
  if (status != LNetStatus::kOk) {
    error = socket.LastError().empty() ? "TLS handshake failed" : socket.LastError();
    return status;
  }

  std::string hostHeader = host.find(':') != std::string::npos ? "[" + host + "]" : host;
  if (port != 443) hostHeader += ":" + std::to_string(port);
  std::string text = request.method + " " + target + " HTTP/1.1\r\nHost: " + hostHeader +
                     "\r\nUser-Agent: Kontavo\r\nConnection: close\r\n" + request.headers;
  if (request.method != "GET") {
    if (!request.contentType.empty()) text += "Content-Type: " + request.contentType + "\r\n";
    text += "Content-Length: " + std::to_string(request.body.size()) + "\r\n";
  }
  text += "\r\n";
  if (request.method != "GET") text += request.body;
  status = socket.Send(text, MsLeft(deadline));
  if (status != LNetStatus::kOk) {
    error = socket.LastError().empty() ? "cannot send the request" : socket.LastError();
    return status;
  }

  // The answer, read until it is complete, malformed or the connection ends.
  std::string data;
  for (;;) {
    LHttpAnswerState state = LHttpParseAnswer(data, false, options.maxAnswerBytes, response);
    if (state == LHttpAnswerState::kComplete) return LNetStatus::kOk;
    if (state == LHttpAnswerState::kBad) {
      error = "malformed or too long answer";
      return LNetStatus::kFailed;
    }
    status = socket.Receive(65536, deadline);
    if (status == LNetStatus::kClosed &&
        LHttpParseAnswer(data, true, options.maxAnswerBytes, response) == LHttpAnswerState::kComplete)
      return LNetStatus::kOk;
    if (status != LNetStatus::kOk) {
      error = status == LNetStatus::kClosed    ? "the server closed the connection before the end of its answer"
              : status == LNetStatus::kTimedOut ? "no complete answer in time"
              : status == LNetStatus::kStopped  ? "stopped"
                                                : socket.LastError();
      return status;
    }
    data.append(socket.Buffered());
    socket.Consume(socket.Buffered().size());
  }
}
