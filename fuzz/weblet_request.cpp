// Fuzzes what a web client sends: the bytes go, over a socket pair, through the connection loop
// of the web server (request line, headers, cookies, percent decoding, body, static files of a
// small "Web" folder), and through the parsing functions on their own. Nothing may crash, the
// kept texts never exceed their 259 bytes, and no decoded path or cookie keeps a NUL byte.
#include <stdlib.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <thread>

#include "llib/gen/file.h"
#include "llib/gen/log.h"
#include "llib/web/webletconnection.h"
#include "llib/web/webletfile.h"
#include "llib/web/webletrequest.h"
#include "llib/web/webletsocket.h"

namespace {

std::string gWebFolder;

void Check(bool condition) {
  if (!condition) std::abort();
}

void FuzzParsers(std::string_view text) {
  LWebletRequestLine line = LWebletParseRequestLine(text);
  Check(line.uri.size() <= kWebletLineBytes);
  std::string path;
  LHashTable parameters;
  LWebletSplitUri(line.uri, path, parameters);
  Check(path.size() <= kWebletLineBytes && path.find('\0') == std::string::npos);
  std::string name, value;
  LWebletParseHeaderLine(text, name, value);
  LHashTable cookies;
  LWebletCookieData::LoadCookieData(text, cookies);
  for (const auto& [cookieName, cookieValue] : cookies)
    Check(!cookieName.empty() && cookieValue.size() <= kWebletLineBytes);
  long long start = 0, end = 0;
  if (LWebletParseRange(text, 1000, start, end)) Check(end <= 999);
  LExtToMimeType(text);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  char folder[] = "/tmp/kontavo-fuzz-XXXXXX";
  if (::mkdtemp(folder) == nullptr) std::abort();
  ::setenv("KONTAVO_HOME", folder, 1);
  gWebFolder = LFile::GetUserDataFolderAppSubFolder("Web");
  if (!LFile::WriteAllAtomic(gWebFolder + "/s.css", std::string(20000, 'c'))) std::abort();
  LLogSetSink([](LLogLevel, std::string_view) {});
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string_view text(reinterpret_cast<const char*>(data), size);
  FuzzParsers(text);

  int pair[2];
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair) != 0) return 0;
  // The client: sends everything, says it has finished, and reads the answers to the end.
  std::thread client([fd = pair[1], text] {
    std::size_t sent = 0;
    while (sent < text.size()) {
      ssize_t n = ::send(fd, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
      if (n <= 0) break;
      sent += static_cast<std::size_t>(n);
    }
    ::shutdown(fd, SHUT_WR);
    char buffer[65536];
    while (::recv(fd, buffer, sizeof buffer, 0) > 0) {
    }
    ::close(fd);
  });
  {
    LWebletSocket socket(pair[0], nullptr);
    const unsigned char address[4] = {127, 0, 0, 1};
    LWebletServeConnection(socket, address, gWebFolder);
  }
  client.join();
  return 0;
}
