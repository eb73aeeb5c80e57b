#include "llib/gen/trim.h"

std::string_view LTrim(std::string_view text, std::string_view blanks) {
  std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string_view LTrimControls(std::string_view text) {
  while (!text.empty() && static_cast<unsigned char>(text.front()) < 33) text.remove_prefix(1);
  while (!text.empty() && static_cast<unsigned char>(text.back()) < 33) text.remove_suffix(1);
  return text;
}
