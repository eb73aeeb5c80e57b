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
  auto isStop = [stops](char c) {
    for (char stop : stops)
      if (c == stop) return true;
    return false;
  };
  while (pos < text.size()) {
    // Plain bytes go over by runs: record files are mostly plain text.
    std::size_t plain = pos;
    while (plain < text.size() && text[plain] != '+' && text[plain] != '%' && !isStop(text[plain])) ++plain;
    out.append(text.data() + pos, plain - pos);
    pos = plain;
    if (pos == text.size()) break;
    char c = text[pos];
    if (isStop(c)) return pos;
    if (c == '+') {
      out.push_back(' ');
      ++pos;
    } else {  // '%'
      if (text.size() - pos < 3) return text.size();  // a cut escape ends the text
      int byte = HexValue(text[pos + 1]) * 16 + HexValue(text[pos + 2]);
      if (byte != 0) out.push_back(static_cast<char>(byte));
      pos += 3;
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
  // Kept bytes go over by runs, escapes one by one.
  std::size_t run = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    auto byte = static_cast<unsigned char>(text[i]);
    if (LPercentIsKept(byte)) continue;
    out.append(text.data() + run, i - run);
    const char escape[3] = {'%', kHexDigits[byte >> 4], kHexDigits[byte & 0x0F]};
    out.append(escape, sizeof escape);
    run = i + 1;
  }
  out.append(text.data() + run, text.size() - run);
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
