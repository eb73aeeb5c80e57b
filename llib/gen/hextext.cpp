#include "llib/gen/hextext.h"

std::string LHexText(std::string_view data) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  text.reserve(2 * data.size());
  for (char c : data) {
    unsigned char byte = static_cast<unsigned char>(c);
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}
