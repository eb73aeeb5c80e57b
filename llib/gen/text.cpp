#include "llib/gen/text.h"

#include <cstring>

std::size_t LCopyTruncated(char* out, std::size_t outSize, std::string_view text) {
  if (outSize == 0) return 0;
  std::size_t n = text.size() < outSize - 1 ? text.size() : outSize - 1;
  if (n > 0) std::memcpy(out, text.data(), n);
  out[n] = '\0';
  return n;
}
