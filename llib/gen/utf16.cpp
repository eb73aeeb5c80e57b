#include "llib/gen/utf16.h"

#include "llib/gen/utf8.h"

namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool IsHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool IsLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

}  // namespace

void LUtf16LeDecoder::Append(std::string_view bytes, std::string& out) {
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    char32_t unit = static_cast<unsigned char>(bytes[i]) |
                    (static_cast<char32_t>(static_cast<unsigned char>(bytes[i + 1])) << 8);
    if (pendingHigh_ != 0) {
      char32_t high = pendingHigh_;
      pendingHigh_ = 0;
      if (IsLowSurrogate(unit)) {
        LAppendUtf8(0x10000 + ((high - 0xD800) << 10) + (unit - 0xDC00), out);
        continue;
      }
      LAppendUtf8(kReplacement, out);
    }
    if (IsHighSurrogate(unit)) pendingHigh_ = static_cast<char16_t>(unit);
    else LAppendUtf8(IsLowSurrogate(unit) ? kReplacement : unit, out);
  }
}

void LUtf16LeDecoder::Finish(std::string& out) {
  if (pendingHigh_ != 0) LAppendUtf8(kReplacement, out);
  pendingHigh_ = 0;
}
