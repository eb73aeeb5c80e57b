#include "llib/web/webletconnection.h"

#include <pthread.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <cstring>
#include <map>
#include <mutex>
#include <thread>

#include "llib/gen/file.h"
#include "llib/gen/log.h"
#include "llib/gen/textnum.h"
#include "llib/web/webjob.h"
#include "llib/web/webletfile.h"
#include "llib/web/webletform.h"
#include "llib/web/webletrequest.h"
#include "llib/web/webletroutes.h"
#include "llib/web/webletsocket.h"
#include "llib/web/webdesk.h"

namespace {

std::atomic<int> gConnectionCount{0};  // connection threads of the process

// The listener sends a refusal itself: it must not wait on a client that does not read.
constexpr unsigned kWebletRefuseSendMs = 100;


// Open connections per client address (IPv4, in network order), guarded by its mutex.
struct LAddressCounts {
  std::mutex mutex;
  std::map<std::uint32_t, int> open;
};

LAddressCounts& AddressCounts() {
  static LAddressCounts counts;
  return counts;
}

std::uint32_t AddressKey(const unsigned char clientAddress[4]) {
  std::uint32_t key;
  std::memcpy(&key, clientAddress, 4);
  return key;
}

// Counts one more connection of the address; false (nothing counted) when it or the process is
// at its limit.
bool TakeConnectionSlot(std::uint32_t address) {
  LAddressCounts& counts = AddressCounts();
  std::lock_guard<std::mutex> lock(counts.mutex);
  int& open = counts.open[address];
  if (open >= kWebletMaxConnectionsPerAddress || gConnectionCount.load() >= kWebletMaxConnections) {
    if (open == 0) counts.open.erase(address);
    return false;
  }
  ++open;
  gConnectionCount.fetch_add(1);
  return true;
}

void ReleaseConnectionSlot(std::uint32_t address) {
  LAddressCounts& counts = AddressCounts();
  std::lock_guard<std::mutex> lock(counts.mutex);
  if (--counts.open[address] <= 0) counts.open.erase(address);
  gConnectionCount.fetch_sub(1);
}

constexpr std::string_view kUnavailable =
    "HTTP/1.1 503 Service Unavailable\r\nRetry-After: 5\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";

// Answers 503 and lets the client read it: closing a socket with unread bytes (the request the
// client sent at once) would reset the connection and could destroy the answer on its way, so
// what already arrived is read and dropped first. The listener waits on nobody.
void Refuse(LWebletSocket& socket) {
  if (!socket.Send(kUnavailable, kWebletRefuseSendMs)) return;
  ::shutdown(socket.Fd(), SHUT_WR);
  char sink[4096];
  while (::recv(socket.Fd(), sink, sizeof sink, MSG_DONTWAIT) > 0) {
  }
}

constexpr std::string_view kNotImplemented = "HTTP/1.1 501 Not Implemented\r\nConnection: close\r\n\r\n";
constexpr std::string_view kNotFound = "HTTP/1.1 404 Not Found\r\nConnection: close\r\n\r\n";
constexpr std::string_view kHttpsOnly =
    "HTTP/1.1 403 Forbidden\r\nContent-Type: text/plain; charset=utf-8\r\nConnection: close\r\n\r\n"
    "Ce serveur Kontavo n'accepte que les connexions HTTPS depuis le réseau : ouvrez son adresse en https://.";
constexpr std::string_view kTooLong = "HTTP/1.1 500 Content Length Too Long\r\nConnection: close\r\n\r\n";

std::string HeaderOr(const LWebletForm& form, std::string_view name, std::string_view def) {
  const char* value = form.GetHeader(name);
  return value != nullptr ? std::string(value) : std::string(def);
}

// Answers a method other than GET and POST; the connection ends after it.
void RefuseMethod(LWebletSocket& socket, const std::string& method, const std::string& client) {
  if (method == "OPTIONS" || method == "HEAD")
    LLogWarning("Weblet: %s requested: %s (return error 501 Not Implemented)", method.c_str(), client.c_str());
  else if (method != "PROPFIND")
    LLogError("Weblet: Bad request method: %s %s", client.c_str(), method.c_str());
  socket.Send(kNotImplemented, kWebSendHeaderMs);
}

// Reads header lines up to the empty line. false when the connection must end.
bool ReadHeaders(LWebletSocket& socket, LHashTable& headers) {
  std::string line, name, value;
  for (int count = 0;; ++count) {
    if (!socket.ReadLine(line, kWebletLineBytes, kWebletHeaderLineMs)) return false;
    if (line.empty()) return true;
    if (count >= kWebletMaxHeaderLines) return false;
    if (LWebletParseHeaderLine(line, name, value)) headers.SetParm(name, value);
  }
}

enum class Outcome { kNext, kEnd };

// The answer to any route while an exclusive job runs.
std::string BusyAnswer() {
  std::string page = "<!DOCTYPE html><html lang=fr><head><meta charset=utf-8><meta http-equiv=refresh content=5>"
                     "<title>Kontavo</title><link href=s.css rel=stylesheet></head><body><div class=contenttable><p>" +
                     std::string(kWebJobBusyMessage) + "</p></div></body></html>";
  return "HTTP/1.1 503 Service Unavailable\r\nContent-Type: text/html; charset=utf-8\r\nRetry-After: 5\r\n"
         "Content-Length: " + std::to_string(page.size()) + "\r\nConnection: close\r\n\r\n" + page;
}

// Runs a routed request. The form is destroyed (and its session written back) before the
// connection goes on.
Outcome RunRoute(LWebletSocket& socket, std::unique_ptr<LWebletForm> form, LWebletHandler rawHandler,
                 LWebletHandler handler) {
  LWebletSetThreadName("WEB-" + form->scriptName);
  if (LWebJobRefusesRoute(form->scriptName)) {
    // A restore is replacing the files every page reads: nothing else is served meanwhile.
    socket.Send(BusyAnswer(), kWebSendHeaderMs);
    return Outcome::kEnd;
  }
  LWebletCookieData::LoadCookieData(HeaderOr(*form, "Cookie", ""), form->cookies);
  if (form->scriptName != "_fault") {
    std::string id;
    form->cookies.GetString(kWebSessionCookie, "", id);
    form->session.LoadSession(id);
  }
  form->keepAlive = false;
  if (rawHandler != nullptr) {
    rawHandler(*form);
  } else {
    if (form->kind == kWebletPost) {
      long long length = LTextToInt64(HeaderOr(*form, "Content-Length", "0"));
      if (length > kWebletMaxBodyBytes) {
        LLogError("Weblet: Content too long: %s %s", form->ClientAddressText().c_str(), form->scriptName.c_str());
        socket.Send(kTooLong, kWebSendHeaderMs);
        return Outcome::kEnd;
      }
      if (length > 0) {
        std::string body;
        if (!LWebletReadBody(socket, body, static_cast<std::size_t>(length))) {
          LLogWarning("Weblet: Request body too slow or cut short: %s %s", form->ClientAddressText().c_str(),
                      form->scriptName.c_str());
          return Outcome::kEnd;
        }
        form->parameters.LoadHTTPStringUTF8(body);
      }
    }
    handler(*form);
  }
  LWebletSetThreadName("WEBC");
  bool again = form->keepAlive && !form->WriteFailed();
  form.reset();
  socket.Push();
  return again ? Outcome::kNext : Outcome::kEnd;
}

// Sends a plain request that should have come over TLS to the same address and path over https;
// without a usable "Host" header, says so.
void SendToHttps(LWebletSocket& socket, const LWebletForm& form, const std::string& uri) {
  std::string host = HeaderOr(form, "Host", "");
  bool usable = !host.empty();
  for (char c : host)
    if (!std::isalnum(static_cast<unsigned char>(c)) && c != '.' && c != '-' && c != ':' && c != '[' && c != ']')
      usable = false;
  bool cleanUri = uri.find_first_of("\r\n") == std::string::npos;
  if (usable && cleanUri) {
    socket.Send("HTTP/1.1 301 Moved Permanently\r\nLocation: https://" + host + uri +
                    "\r\nContent-Length: 0\r\nConnection: close\r\n\r\n",
                kWebSendHeaderMs);
    return;
  }
  socket.Send(kHttpsOnly, kWebSendHeaderMs);
}

// Reads and answers one request. plainRefused: the request came in plain text from another
// machine to a server that speaks HTTPS; it is sent to https.
Outcome ServeOneRequest(LWebletSocket& socket, const unsigned char clientAddress[4], const std::string& webFolder,
                        bool plainRefused) {
  std::string line;
  if (!socket.ReadLine(line, kWebletLineBytes, kWebletRequestLineMs)) return Outcome::kEnd;
  LWebletRequestLine request = LWebletParseRequestLine(line);
  auto form = std::make_unique<LWebletForm>(&socket);
  std::memcpy(form->clientAddress, clientAddress, 4);
  int kind = LWebletRequestKind(request.method);
  if (kind < 0) {
    RefuseMethod(socket, request.method, form->ClientAddressText());
    return Outcome::kEnd;
  }
  form->kind = kind;
  std::string path;
  LWebletSplitUri(request.uri, path, form->parameters);
  if (path.empty() || path[0] != '/') {
    LLogWarning("Weblet: Invalid Request URI: %s %s", form->ClientAddressText().c_str(), request.uri.c_str());
    socket.Send(kNotFound, kWebSendHeaderMs);
    return Outcome::kEnd;
  }
  form->scriptName = path.substr(1);
  socket.SetReadDeadline(LWebletNowMs() + kWebletHeadersMs);
  bool headersRead = ReadHeaders(socket, form->headers);
  socket.SetReadDeadline(0);
  if (!headersRead) return Outcome::kEnd;
  if (plainRefused) {
    SendToHttps(socket, *form, request.uri);
    return Outcome::kEnd;
  }
  form->isSecure = socket.IsTls();
  bool keepAlive = LWebletKeepAlive(request.version, kind, HeaderOr(*form, "Connection", ""));

  LWebletHandler rawHandler = kind == kWebletPost ? LWebletFindPostScript(form->scriptName) : nullptr;
  LWebletHandler handler = rawHandler == nullptr ? LWebletFindScript(form->scriptName) : nullptr;
  if (rawHandler != nullptr || handler != nullptr)
    return RunRoute(socket, std::move(form), rawHandler, handler);

  if (form->scriptName.find("..") != std::string::npos) {
    LLogWarning("Weblet: Bad request: %s %s", form->ClientAddressText().c_str(), form->scriptName.c_str());
    socket.Send(kNotFound, kWebSendHeaderMs);
    return Outcome::kEnd;
  }
  // Concatenation, not path resolution: a script name that starts with "/" still stays below
  // the "Web" folder, and ".." was refused above.
  std::string filePath = webFolder + "/" + form->scriptName;
  const char* ifNoneMatch = form->GetHeader("If-None-Match");
  const char* ifModifiedSince = form->GetHeader("If-Modified-Since");
  bool mayStay = LWebletServeFile(socket, filePath, ifNoneMatch, ifModifiedSince, *form);
  return mayStay && keepAlive ? Outcome::kNext : Outcome::kEnd;
}

}  // namespace

bool LWebletReadBody(LWebletSocket& socket, std::string& body, std::size_t size,
                     const std::function<void(std::size_t)>& progress) {
  long long startMs = LWebletNowMs();
  std::size_t read = 0;
  while (read < size) {
    std::size_t piece = std::min(kWebletBodyPieceBytes, size - read);
    read += piece;
    long long leftMs = startMs + kWebletBodyExtraMs + static_cast<long long>(read) / kWebletBodyMinBytesPerMs -
                       LWebletNowMs();
    if (leftMs <= 0 || !socket.ReadExact(body, piece, static_cast<unsigned>(leftMs))) return false;
    if (progress) progress(read);
  }
  return true;
}

void LWebletSetThreadName(const std::string& name) {
  std::string shortName = name.substr(0, 15);
  ::pthread_setname_np(::pthread_self(), shortName.c_str());
}

void LWebletServeConnection(LWebletSocket& socket, const unsigned char clientAddress[4],
                            const std::string& webFolder, const LTlsServerContext* tls) {
  LWebletSetThreadName("WEBC");
  bool plainRefused = false;
  if (tls != nullptr) {
    int first = socket.PeekFirstByte(kWebletRequestLineMs);
    if (first < 0) return;
    if (first == kTlsHandshakeRecordByte) {
      std::string error;
      if (!socket.StartTls(*tls, kWebletHeadersMs, error)) {
        LLogWarning("Weblet: TLS handshake failed: %u.%u.%u.%u %s", clientAddress[0], clientAddress[1],
                    clientAddress[2], clientAddress[3], error.c_str());
        return;
      }
    } else {
      plainRefused = !LWebIsLoopbackAddress(clientAddress);
    }
  }
  while (ServeOneRequest(socket, clientAddress, webFolder, plainRefused) == Outcome::kNext) {
  }
}

int LWebletConnectionCount() { return gConnectionCount.load(); }

bool LWebletConnectionRegistry::StartConnection(const std::shared_ptr<LWebletConnectionRegistry>& registry,
                                                int fd, const unsigned char clientAddress[4]) {
  auto socket = std::make_shared<LWebletSocket>(fd, &registry->StopSignal());
  std::uint32_t key = AddressKey(clientAddress);
  if (!TakeConnectionSlot(key)) {
    LLogWarning("Weblet: Too many connections: %u.%u.%u.%u (return error 503 Service Unavailable)", clientAddress[0],
                clientAddress[1], clientAddress[2], clientAddress[3]);
    Refuse(*socket);
    return false;
  }
  std::array<unsigned char, 4> address;
  std::memcpy(address.data(), clientAddress, 4);
  registry->Add(socket.get());
  std::thread([registry, socket, address, key] {
    LWebletServeConnection(*socket, address.data(), registry->WebFolder(), registry->Tls());
    registry->Remove(socket.get());
    ReleaseConnectionSlot(key);
  }).detach();
  return true;
}

void LWebletConnectionRegistry::Add(LWebletSocket* socket) {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  sockets_.push_back(socket);
}

void LWebletConnectionRegistry::Remove(LWebletSocket* socket) {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  std::erase(sockets_, socket);
}

int LWebletConnectionRegistry::Count() const {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  return static_cast<int>(sockets_.size());
}

int LWebletConnectionRegistry::StopAll(unsigned timeoutMs) {
  stop_.Set();
  {
    std::lock_guard<std::recursive_mutex> lock(mutex_);
    for (LWebletSocket* socket : sockets_) socket->ShutdownNow();
  }
  long long deadline = LWebletNowMs() + timeoutMs;
  while (Count() > 0 && LWebletNowMs() < deadline) LSleepMs(10);
  return Count();
}
