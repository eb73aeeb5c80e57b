#include "llib/gen/latin9.h"

namespace {

// The eight code points where Latin-9 departs from Latin-1, byte and character.
struct LLatin9Difference {
  unsigned char byte;
  char32_t codePoint;
};
constexpr LLatin9Difference kDifferences[] = {
    {0xA4, 0x20AC},  // €
    {0xA6, 0x0160},  // Š
    {0xA8, 0x0161},  // š
    {0xB4, 0x017D},  // Ž
    {0xB8, 0x017E},  // ž
    {0xBC, 0x0152},  // Œ
    {0xBD, 0x0153},  // œ
    {0xBE, 0x0178},  // Ÿ
};

// The byte of a code point, or -1 when Latin-9 has none.
int Latin9Byte(char32_t codePoint) {
  for (const auto& difference : kDifferences) {
    if (difference.codePoint == codePoint) return difference.byte;
    if (difference.byte == codePoint) return -1;  // a Latin-1 sign that Latin-9 gave up
  }
  return codePoint < 0x100 ? static_cast<int>(codePoint) : -1;
}

// Decodes one UTF-8 sequence at text[at]; its length in length (1 for a bad byte, which gives
// false).
bool DecodeUtf8(std::string_view text, std::size_t at, char32_t& codePoint, std::size_t& length) {
  auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[at + i]); };
  unsigned char lead = byte(0);
  length = 1;
  if (lead < 0x80) {
    codePoint = lead;
    return true;
  }
  std::size_t need = lead >= 0xF0 && lead <= 0xF4 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC2 && lead < 0xE0 ? 2 : 0;
  if (need == 0 || lead > 0xF4 || at + need > text.size()) return false;
  char32_t value = lead & (need == 2 ? 0x1F : need == 3 ? 0x0F : 0x07);
  for (std::size_t i = 1; i < need; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return false;
    value = (value << 6) | (byte(i) & 0x3F);
  }
  // Overlong forms, surrogates and code points beyond U+10FFFF are not text.
  static constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  if (value < kSmallest[need] || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) return false;
  codePoint = value;
  length = need;
  return true;
}

}  // namespace

std::size_t LUtf8ToLatin9(std::string_view utf8, std::string& out) {
  std::size_t replaced = 0;
  out.reserve(out.size() + utf8.size());
  for (std::size_t at = 0; at < utf8.size();) {
    auto lead = static_cast<unsigned char>(utf8[at]);
    if (lead < 0x80) {  // the common case, kept fast for large exports
      out += static_cast<char>(lead);
      ++at;
      continue;
    }
    char32_t codePoint = 0;
    std::size_t length = 1;
    int byte = DecodeUtf8(utf8, at, codePoint, length) ? Latin9Byte(codePoint) : -1;
    if (byte < 0) {
      out += '?';
      ++replaced;
    } else {
      out += static_cast<char>(byte);
    }
    at += length;
  }
  return replaced;
}

