#include "llib/web/webformat.h"

#include <cstdio>
#include <cstring>

#include "llib/gen/percent.h"

// ---- Escapes ----------------------------------------------------------------------------------

std::string LJScriptEscape(std::string_view text) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  std::string out;
  out.reserve(text.size());
  for (char c : text) {
    unsigned char byte = static_cast<unsigned char>(c);
    switch (c) {
      case '\\': out += "\\\\"; break;
      case '\'': out += "\\'"; break;
      case '"': out += "\\\""; break;
      case '\n': out += "\\n"; break;
      case '\r': out += "\\r"; break;
      case '\t': out += "\\t"; break;
      default:
        if (byte < 0x20 || c == '<' || c == '>' || byte == 0x7F) {
          out += "\\x";
          out.push_back(kHex[byte >> 4]);
          out.push_back(kHex[byte & 0x0F]);
        } else {
          out.push_back(c);
        }
    }
  }
  return out;
}

// ---- Formatting ------------------------------------------------------------------------------
//
// printf cannot be taught new conversions, so the format is walked here: each conversion is cut
// out with its flags, width, precision and length, its argument taken with the type that the
// length and conversion letter demand, and that one conversion handed to snprintf.

namespace {

void AppendOne(std::string& out, const std::string& directive, auto value) {
  char small[128];
  int n = std::snprintf(small, sizeof small, directive.c_str(), value);
  if (n < 0) return;
  if (static_cast<std::size_t>(n) < sizeof small) {
    out.append(small, static_cast<std::size_t>(n));
    return;
  }
  std::string big(static_cast<std::size_t>(n) + 1, '\0');
  std::snprintf(big.data(), big.size(), directive.c_str(), value);
  out.append(big.data(), static_cast<std::size_t>(n));
}

}  // namespace

std::string LWebFormatV(const char* format, va_list args) {
  std::string out;
  const char* p = format;
  while (*p != '\0') {
    if (*p != '%') {
      const char* next = std::strchr(p, '%');
      std::size_t length = next ? static_cast<std::size_t>(next - p) : std::strlen(p);
      out.append(p, length);
      p += length;
      continue;
    }
    const char* start = p++;
    if (*p == '%') {
      out.push_back('%');
      ++p;
      continue;
    }
    std::string directive = "%";
    while (*p != '\0' && std::strchr("-+ #0'", *p) != nullptr) directive.push_back(*p++);
    if (*p == '*') {
      directive += std::to_string(va_arg(args, int));
      ++p;
    } else {
      while (*p >= '0' && *p <= '9') directive.push_back(*p++);
    }
    if (*p == '.') {
      directive.push_back(*p++);
      if (*p == '*') {
        directive += std::to_string(va_arg(args, int));
        ++p;
      } else {
        while (*p >= '0' && *p <= '9') directive.push_back(*p++);
      }
    }
    std::string length;
    while (*p != '\0' && std::strchr("hlLqjzt", *p) != nullptr) length.push_back(*p++);
    char conversion = *p;
    if (conversion == '\0') {
      out.append(start);
      break;
    }
    ++p;
    directive += length;
    directive.push_back(conversion);
    switch (conversion) {
      case 'H': {
        const char* text = va_arg(args, const char*);
        out += LHtmlEscape(text ? text : "");
        break;
      }
      case 'U': {
        const char* text = va_arg(args, const char*);
        LPercentEncodeAppend(text ? text : "", out);
        break;
      }
      case 'd': case 'i':
        if (length == "ll" || length == "q" || length == "j") AppendOne(out, directive, va_arg(args, long long));
        else if (length == "l" || length == "z" || length == "t") AppendOne(out, directive, va_arg(args, long));
        else AppendOne(out, directive, va_arg(args, int));
        break;
      case 'u': case 'o': case 'x': case 'X':
        if (length == "ll" || length == "q" || length == "j") AppendOne(out, directive, va_arg(args, unsigned long long));
        else if (length == "l" || length == "z" || length == "t") AppendOne(out, directive, va_arg(args, unsigned long));
        else AppendOne(out, directive, va_arg(args, unsigned));
        break;
      case 'c':
        AppendOne(out, directive, va_arg(args, int));
        break;
      case 'f': case 'F': case 'e': case 'E': case 'g': case 'G': case 'a': case 'A':
        if (length == "L") AppendOne(out, directive, va_arg(args, long double));
        else AppendOne(out, directive, va_arg(args, double));
        break;
      case 's': {
        const char* text = va_arg(args, const char*);
        if (directive == "%s") out.append(text ? text : "(null)");  // the common case, without a copy
        else AppendOne(out, directive, text ? text : "(null)");
        break;
      }
      case 'p':
        AppendOne(out, directive, va_arg(args, void*));
        break;
      default:
        out.append(start, static_cast<std::size_t>(p - start));
    }
  }
  return out;
}

std::string LWebFormat(const char* format, ...) {
  va_list args;
  va_start(args, format);
  std::string out = LWebFormatV(format, args);
  va_end(args);
  return out;
}
