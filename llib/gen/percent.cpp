#include "llib/gen/percent.h"

namespace {

constexpr char kHexDigits[] = "0123456789ABCDEF";

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return 0;  // not a hexadecimal digit: counts as 0
}

// Decodes text from pos up to the first byte in stops (or the end), appending to out. Returns
// the position of the stop byte, or text.size() when the text ended (also when it ended inside
// a truncated escape).
std::size_t DecodeUntil(std::string_view text, std::size_t pos, std::string_view stops,
                        std::string& out) {
  while (pos < text.size()) {
    char c = text[pos];
    if (stops.find(c) != std::string_view::npos) return pos;
    if (c == '+') {
      out.push_back(' ');
      ++pos;
    } else if (c == '%') {
      if (text.size() - pos < 3) return text.size();  // a cut escape ends the text
      int byte = HexValue(text[pos + 1]) * 16 + HexValue(text[pos + 2]);
      if (byte != 0) out.push_back(static_cast<char>(byte));
      pos += 3;
    } else {
      out.push_back(c);
      ++pos;
    }
  }
  return pos;
}

}  // namespace

bool LPercentIsKept(unsigned char byte) {
  return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') ||
         (byte >= '0' && byte <= '9') || byte == '!' || byte == '-' || byte == '.' ||
         byte == '_' || byte == '~';
}

void LPercentEncodeAppend(std::string_view text, std::string& out) {
  for (unsigned char byte : text) {
    if (LPercentIsKept(byte)) {
      out.push_back(static_cast<char>(byte));
    } else {
      out.push_back('%');
      out.push_back(kHexDigits[byte >> 4]);
      out.push_back(kHexDigits[byte & 0x0F]);
    }
  }
}

std::string LPercentEncode(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  LPercentEncodeAppend(text, out);
  return out;
}

std::string LPercentDecode(std::string_view text) {
  text = text.substr(0, text.find('\0'));
  std::string out;
  DecodeUntil(text, 0, {}, out);
  return out;
}

void LParseHTTPString(std::string_view text,
                      const std::function<void(std::string&& name, std::string&& value)>& onPair) {
  text = text.substr(0, text.find('\0'));  // the text has always ended at a raw NUL byte
  std::size_t pos = 0;
  while (pos < text.size()) {
    std::string name;
    std::string value;
    pos = DecodeUntil(text, pos, "=&", name);
    if (pos < text.size() && text[pos] == '=') pos = DecodeUntil(text, pos + 1, "&", value);
    if (pos < text.size() && text[pos] == '&') ++pos;
    onPair(std::move(name), std::move(value));
  }
}
