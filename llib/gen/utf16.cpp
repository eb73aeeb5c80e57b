#include "llib/gen/utf16.h"

namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool IsHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool IsLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

void AppendUtf8(char32_t code, std::string& out) {
  if (code < 0x80) {
    out.push_back(static_cast<char>(code));
  } else if (code < 0x800) {
    out.push_back(static_cast<char>(0xC0 | (code >> 6)));
    out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
  } else if (code < 0x10000) {
    out.push_back(static_cast<char>(0xE0 | (code >> 12)));
    out.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
  } else {
    out.push_back(static_cast<char>(0xF0 | (code >> 18)));
    out.push_back(static_cast<char>(0x80 | ((code >> 12) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
  }
}

}  // namespace

void LUtf16LeDecoder::Append(std::string_view bytes, std::string& out) {
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    char32_t unit = static_cast<unsigned char>(bytes[i]) |
                    (static_cast<char32_t>(static_cast<unsigned char>(bytes[i + 1])) << 8);
    if (pendingHigh_ != 0) {
      char32_t high = pendingHigh_;
      pendingHigh_ = 0;
      if (IsLowSurrogate(unit)) {
        AppendUtf8(0x10000 + ((high - 0xD800) << 10) + (unit - 0xDC00), out);
        continue;
      }
      AppendUtf8(kReplacement, out);
    }
    if (IsHighSurrogate(unit)) pendingHigh_ = static_cast<char16_t>(unit);
    else AppendUtf8(IsLowSurrogate(unit) ? kReplacement : unit, out);
  }
}

void LUtf16LeDecoder::Finish(std::string& out) {
  if (pendingHigh_ != 0) AppendUtf8(kReplacement, out);
  pendingHigh_ = 0;
}
