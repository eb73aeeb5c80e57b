// Fuzzes the e-mail address rules: no input may crash them; an address that passes never holds
// what would break an SMTP command built from it (blanks, controls, '<', '>', a second '@'),
// respects every length limit, and a list that passes splits into addresses that each pass.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "llib/net/emailaddress.h"

namespace {

void Check(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string_view text(reinterpret_cast<const char*>(data), size);
  if (LEmail::ValidateAddressSingle(text)) {
    Check(text.size() <= LEmail::kMaxAddressBytes);
    std::size_t at = text.find('@');
    Check(at != std::string_view::npos && at >= 1 && at <= LEmail::kMaxLocalPartBytes);
    Check(text.find('@', at + 1) == std::string_view::npos);
    for (char c : text) Check(static_cast<unsigned char>(c) > 32 && static_cast<unsigned char>(c) < 127 && c != '<' && c != '>');
  }
  if (LEmail::ValidateAddress(text)) {
    std::string address;
    int count = 0;
    for (LEmailAddressListIterator it(text); it.Next(address); ++count) Check(LEmail::ValidateAddressSingle(address));
    Check(count >= 1);
  }
  return 0;
}
