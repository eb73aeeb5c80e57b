// Fuzzes the percent decoding of HTTP strings (record files, web parameters, session files):
// no input may crash it, decoded pairs never hold NUL bytes, and encoding then decoding any
// decoded value gives it back.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "llib/gen/hashtable.h"
#include "llib/gen/percent.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string_view text(reinterpret_cast<const char*>(data), size);
  LParseHTTPString(text, [](std::string&& name, std::string&& value) {
    if (name.find('\0') != std::string::npos || value.find('\0') != std::string::npos) std::abort();
    if (LPercentDecode(LPercentEncode(value)) != value) std::abort();
  });
  LHashTable table;
  table.LoadHTTPStringUTF8(text);
  std::string saved;
  table.SaveHTTPString(saved);
  LHashTable again;
  again.LoadHTTPString(saved);
  if (again.Count() != table.Count()) std::abort();
  return 0;
}
