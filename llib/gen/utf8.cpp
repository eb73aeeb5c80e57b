#include "llib/gen/utf8.h"

namespace {

// Windows-1252 bytes 0x80 to 0x9F; the five bytes it leaves undefined keep their Latin-1 value.
constexpr char16_t kWindows1252High[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

bool IsContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

void AppendWindows1252(unsigned char byte, std::string& out) {
  LAppendUtf8(byte >= 0x80 && byte < 0xA0 ? kWindows1252High[byte - 0x80] : byte, out);
}

}  // namespace

void LAppendUtf8(char32_t code, std::string& out) {
  if (code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) code = 0xFFFD;
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

std::size_t LUtf8CharLength(std::string_view text) {
  if (text.empty()) return 0;
  auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  unsigned char lead = byte(0);
  if (lead < 0x80) return 1;
  std::size_t length;
  char32_t code, lowest;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2, code = lead & 0x1F, lowest = 0x80;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3, code = lead & 0x0F, lowest = 0x800;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4, code = lead & 0x07, lowest = 0x10000;
  } else {
    return 0;
  }
  if (text.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if (!IsContinuation(byte(i))) return 0;
    code = (code << 6) | (byte(i) & 0x3F);
  }
  if (code < lowest || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return 0;
  return length;
}

std::size_t LUtf8CharCount(std::string_view text) {
  std::size_t count = 0;
  for (char c : text) count += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  return count;
}

bool LIsValidUtf8(std::string_view text) {
  while (!text.empty()) {
    std::size_t length = LUtf8CharLength(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

std::string LTextAsUtf8(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    if (std::size_t length = LUtf8CharLength(text); length > 0) {
      out.append(text.substr(0, length));
      text.remove_prefix(length);
      continue;
    }
    AppendWindows1252(static_cast<unsigned char>(text[0]), out);
    text.remove_prefix(1);
  }
  return out;
}

std::string LWindows1252ToUtf8(std::string_view bytes) {
  std::string out;
  out.reserve(bytes.size() + bytes.size() / 8);
  for (char byte : bytes) AppendWindows1252(static_cast<unsigned char>(byte), out);
  return out;
}

std::string LUtf8ToUpper(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    std::size_t length = LUtf8CharLength(text);
    if (length != 2) {  // ASCII (or a byte that is not UTF-8), or beyond the letters handled
      std::size_t take = length == 0 ? 1 : length;
      for (std::size_t i = 0; i < take; ++i) {
        char c = text[i];
        out += (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
      }
      text.remove_prefix(take);
      continue;
    }
    char32_t code = (static_cast<char32_t>(text[0] & 0x1F) << 6) | static_cast<char32_t>(text[1] & 0x3F);
    if (code >= 0xE0 && code <= 0xFE && code != 0xF7) code -= 0x20;  // à..þ but ÷
    else if (code == 0xFF) code = 0x178;                               // ÿ
    else if (code == 0x153) code = 0x152;                              // œ
    LAppendUtf8(code, out);
    text.remove_prefix(2);
  }
  return out;
}
