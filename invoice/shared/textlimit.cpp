#include "invoice/shared/textlimit.h"

#include "llib/gen/utf8.h"

bool LTypedTextIsTooLong(std::string_view text, std::size_t& count) {
  count = LUtf8CharCount(text);
  return count > kTypedTextMaxChars;
}

std::string LTypedTextTooLongEnd(std::size_t count) {
  return " : " + std::to_string(count) + " caractères (" + std::to_string(kTypedTextMaxChars) + " au plus).";
}
