// Static files of the web server: everything that no route names is a file of the "Web" folder
// of the application folder (style sheets, scripts, images, help pages). Files are sent with
// caching headers (ETag, Last-Modified, max-age) so that a browser asks for each at most once an
// hour and then gets "304 Not Modified", and with byte ranges for partial downloads.
#pragma once

#include <ctime>
#include <string>
#include <string_view>

class LWebletForm;
class LWebletSocket;

inline constexpr std::size_t kWebletFilePieceBytes = 8192;
inline constexpr unsigned kWebletFilePieceMs = 60000;
inline constexpr unsigned kWebletFileLockMs = 1000;

struct LWebletMimeType {
  const char* type;  // "text/css", ...
  bool cache;        // may be cached for an hour
  bool isInline;     // shown in the browser rather than saved
};

// The row of the MIME table for a file name, by its extension in lower case; the last row
// ("application/octet-stream", no cache, not inline) for anything unknown.
LWebletMimeType LExtToMimeType(std::string_view fileName);

// "Mon, 06 May 2024 09:12:44 GMT": time in GMT with the year written "20" and two digits.
std::string LWebletHttpDate(std::time_t time);

// "%d%zu": the modification time modulo 10,000,000, then the size.
std::string LWebletEntityTag(std::time_t modified, std::size_t size);

// Reads a "Range" header "bytes=A-B", "bytes=A-" or "bytes=-N" against a file of size bytes.
// An end past the file is moved to its last byte; "-N" beyond the size starts at 0. false when
// the header is not of that form (the whole file is sent). start > end means unsatisfiable.
bool LWebletParseRange(std::string_view header, long long size, long long& start, long long& end);

// Sends the file at path as the answer: 404 when it cannot be opened or is not a regular file,
// 304 when ifNoneMatch contains its tag or ifModifiedSince equals its date, 416 for a range it
// cannot satisfy, 206 for a range, else 200. Either header may be null. The form gives the
// "Range" header and the client's address for the log. Returns true when the connection may
// carry another request (false after a failed send or a 416, whose length is unknown).
bool LWebletServeFile(LWebletSocket& socket, const std::string& path, const char* ifNoneMatch,
                      const char* ifModifiedSince, const LWebletForm& form);

// The base name of a path: the part after the last '/' or '\\', at most 258 bytes.
std::string LWebletFileBaseName(std::string_view path);
