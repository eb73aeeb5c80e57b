#include "llib/gen/textcase.h"

#include <algorithm>

namespace {

char FoldAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

}  // namespace

bool LSameText(std::string_view a, std::string_view b) {
  return a.size() == b.size() &&
         std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) { return FoldAscii(x) == FoldAscii(y); });
}

std::string LLowerText(std::string_view text) {
  std::string lowered(text);
  for (char& c : lowered) c = FoldAscii(c);
  return lowered;
}

bool LStartsWithText(std::string_view text, std::string_view prefix) {
  return text.size() >= prefix.size() && LSameText(text.substr(0, prefix.size()), prefix);
}

bool LEndsWithText(std::string_view text, std::string_view suffix) {
  return text.size() >= suffix.size() && LSameText(text.substr(text.size() - suffix.size()), suffix);
}
