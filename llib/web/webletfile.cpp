#include "llib/web/webletfile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

#include "llib/gen/filelock.h"
#include "llib/gen/log.h"
#include "llib/gen/textcase.h"
#include "llib/gen/textnum.h"
#include "llib/gen/usersettings.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/webletsocket.h"

namespace {

struct MimeRow {
  const char* extension;
  LWebletMimeType mime;
};

constexpr MimeRow kMimeTable[] = {
    {"html", {"text/html", true, true}},  {"css", {"text/css", true, true}},
    {"png", {"image/png", true, true}},   {"jpg", {"image/jpeg", true, true}},
    {"jpeg", {"image/jpeg", true, true}}, {"gif", {"image/gif", true, true}},
    {"webp", {"image/webp", true, true}}, {"ico", {"image/x-icon", true, true}},
    {"js", {"text/javascript", true, true}}, {"pdf", {"application/pdf", false, false}},
};
constexpr LWebletMimeType kUnknownMime = {"application/octet-stream", false, false};

constexpr const char* kWeekDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                   "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

constexpr long long kInstalledLongAgoSeconds = 86400;
constexpr long long kQuietAfterFailureSeconds = 259200;

// A missing file is worth an error line while the program is new or when it keeps happening;
// otherwise (a stray old bookmark) a warning is enough.
void LogFileNotFound(const std::string& path, const std::string& client) {
  std::time_t now = std::time(nullptr);
  long long installed = LTextToInt64(LUserSettingGetString("Settings", "InstallDateFirst", "0"));
  long long lastFailure = LTextToInt64(LUserSettingGetString("Settings", "LastWebletErrorFileNotFound", "0"));
  bool quiet = installed > 0 && now - installed > kInstalledLongAgoSeconds &&
               now - lastFailure > kQuietAfterFailureSeconds;
  if (quiet) LLogWarning("Weblet: File not found: %s for connection %s", path.c_str(), client.c_str());
  else LLogError("Weblet: File not found: %s for connection %s", path.c_str(), client.c_str());
  if (!LUserSettingSetString("Settings", "LastWebletErrorFileNotFound", std::to_string(static_cast<long long>(now))))
    LLogWarning("Weblet: the time of this failure could not be remembered");
}

}  // namespace

LWebletMimeType LExtToMimeType(std::string_view fileName) {
  std::size_t dot = fileName.rfind('.');
  std::size_t slash = fileName.find_last_of("/\\");
  if (dot == std::string_view::npos || (slash != std::string_view::npos && dot < slash)) return kUnknownMime;
  std::string_view extension = fileName.substr(dot + 1);
  for (const MimeRow& row : kMimeTable)
    if (LSameText(extension, row.extension))
      return row.mime;
  return kUnknownMime;
}

std::string LWebletHttpDate(std::time_t time) {
  std::tm gmt{};
  ::gmtime_r(&time, &gmt);
  char text[64];
  std::snprintf(text, sizeof text, "%s, %.2d %s 20%.2d %.2d:%.2d:%.2d GMT", kWeekDays[gmt.tm_wday],
                gmt.tm_mday, kMonths[gmt.tm_mon], (gmt.tm_year + 1900) % 100, gmt.tm_hour, gmt.tm_min,
                gmt.tm_sec);
  return text;
}

std::string LWebletEntityTag(std::time_t modified, std::size_t size) {
  char text[64];
  std::snprintf(text, sizeof text, "%d%zu", static_cast<int>(modified % 10000000), size);
  return text;
}

bool LWebletParseRange(std::string_view header, long long size, long long& start, long long& end) {
  constexpr std::string_view kPrefix = "bytes=";
  if (header.substr(0, kPrefix.size()) != kPrefix) return false;
  std::string_view range = header.substr(kPrefix.size());
  std::size_t dash = range.find('-');
  if (dash == std::string_view::npos) return false;
  std::string_view first = range.substr(0, dash);
  std::string_view second = range.substr(dash + 1);
  if (first.find_first_not_of(" ") == std::string_view::npos) {
    long long count = LTextToInt64(second);
    start = count <= size ? size - count : 0;
    end = size - 1;
    return true;
  }
  start = LTextToInt64(first);
  end = second.find_first_of("0123456789") == 0 ? LTextToInt64(second) : size - 1;
  if (end > size - 1) end = size - 1;
  return true;
}

std::string LWebletFileBaseName(std::string_view path) {
  std::size_t slash = path.find_last_of("/\\");
  std::string_view name = slash == std::string_view::npos ? path : path.substr(slash + 1);
  return std::string(LTruncated(name, kMaxTextBytes - 1));
}

bool LWebletServeFile(LWebletSocket& socket, const std::string& path, const char* ifNoneMatch,
                      const char* ifModifiedSince, const LWebletForm& form) {
  LLockedFile file(path, O_RDONLY, LOCK_SH, kWebletFileLockMs);
  struct stat st{};
  if (!file.IsOpen() || ::fstat(file.Get(), &st) != 0 || !S_ISREG(st.st_mode)) {
    std::string client = form.ClientAddressText();
    LogFileNotFound(path, client.empty() ? "unknown" : client);
    return socket.Send("HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n", kWebSendHeaderMs);
  }
  std::size_t size = static_cast<std::size_t>(st.st_size);
  std::string tag = LWebletEntityTag(st.st_mtime, size);
  std::string modified = LWebletHttpDate(st.st_mtime);
  if ((ifNoneMatch != nullptr && std::string_view(ifNoneMatch).find(tag) != std::string_view::npos) ||
      (ifModifiedSince != nullptr && LSameText(ifModifiedSince, modified)))
    return socket.Send("HTTP/1.1 304 Not Modified\r\n\r\n", kWebSendHeaderMs);

  LWebletMimeType mime = LExtToMimeType(path);
  const char* cacheControl = mime.cache ? "max-age=3600" : "max-age=0";
  std::string disposition;
  if (!mime.isInline) {
    std::string name = LWebletFileBaseName(path);
    disposition = LWebFormat("Content-Disposition: attachment; filename=\"%s\"; filename*=UTF-8''%U\r\n",
                             name.c_str(), name.c_str());
  }
  long long start = 0;
  long long end = static_cast<long long>(size) - 1;
  std::string header;
  const char* range = form.GetHeader("Range");
  if (range != nullptr && LWebletParseRange(range, static_cast<long long>(size), start, end)) {
    if (end < start) {
      socket.Send("HTTP/1.1 416 Requested Range Not Satisfiable\r\n\r\n", kWebSendHeaderMs);
      return false;
    }
    header = LWebFormat(
        "HTTP/1.1 206 Partial Content\r\nContent-Length: %zu\r\nContent-Range: bytes %zu-%zu/%zu\r\n"
        "Content-Type: %s\r\n%sCache-Control: %s\r\nLast-Modified: %s\r\nETag: \"%s\"\r\n\r\n",
        static_cast<std::size_t>(end - start + 1), static_cast<std::size_t>(start),
        static_cast<std::size_t>(end), size, mime.type, disposition.c_str(), cacheControl,
        modified.c_str(), tag.c_str());
    if (::lseek(file.Get(), start, SEEK_SET) != start) return false;
  } else {
    header = LWebFormat(
        "HTTP/1.1 200 OK\r\nContent-Length: %zu\r\nContent-Type: %s\r\nAccept-Ranges: bytes\r\n"
        "%sCache-Control: %s\r\nLast-Modified: %s\r\nETag: \"%s\"\r\n\r\n",
        size, mime.type, disposition.c_str(), cacheControl, modified.c_str(), tag.c_str());
  }
  long long left = end - start + 1;
  if (!socket.Send(header, kWebSendHeaderMs, left > 0)) return false;
  char piece[kWebletFilePieceBytes];
  while (left > 0) {
    long long n = LRobustRead(file.Get(), piece, static_cast<std::size_t>(std::min<long long>(left, sizeof piece)));
    if (n <= 0) return false;  // the file shrank while it was sent: the length is now wrong
    left -= n;
    if (!socket.Send(std::string_view(piece, static_cast<std::size_t>(n)), kWebletFilePieceMs, left > 0))
      return false;
  }
  return true;
}
