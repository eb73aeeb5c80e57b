// Fuzzes a folder upload as a browser sends it: the bytes are a multipart/form-data body whose
// file names carry folders; every path the restore page would write must stay inside its
// target: no empty, "." or ".." part, no leading "/", no NUL.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "llib/gen/hashtable.h"
#include "llib/web/webupload.h"

namespace {

void Check(bool condition) {
  if (!condition) std::abort();
}

void CheckInside(const std::string& relative) {
  Check(!relative.empty() && relative.front() != '/' && relative.find('\0') == std::string::npos);
  std::size_t start = 0;
  for (;;) {
    std::size_t end = relative.find('/', start);
    std::string part = relative.substr(start, end == std::string::npos ? std::string::npos : end - start);
    Check(!part.empty() && part != "." && part != "..");
    if (end == std::string::npos) break;
    start = end + 1;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string_view bytes(reinterpret_cast<const char*>(data), size);
  LHashTable parameters;
  std::vector<LWebletUploadedFile> files;
  if (LWebletParseMultipart("multipart/form-data; boundary=kb42", bytes, parameters, files)) {
    for (const LWebletUploadedFile& file : files) {
      std::string relative;
      if (LWebletUploadedRelativePath(file.path, relative)) CheckInside(relative);
    }
  }
  // The bytes as one path too.
  std::string relative;
  if (LWebletUploadedRelativePath(bytes, relative)) CheckInside(relative);
  return 0;
}
