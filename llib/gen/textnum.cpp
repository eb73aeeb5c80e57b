#include "llib/gen/textnum.h"

#include <charconv>
#include <climits>
#include <cstdio>

#include "llib/gen/text.h"

std::string ftotl(double value) {
  char buffer[kTextBufferSize];
  std::snprintf(buffer, sizeof buffer, "%.6lf", value);
  std::string text(buffer);
  if (auto comma = text.find(','); comma != std::string::npos) text[comma] = '.';
  // Some locales use the middle dot (UTF-8 C2 B7) as decimal point: one "." replaces both bytes.
  if (auto dot = text.find("\xC2\xB7"); dot != std::string::npos) {
    text[dot] = '.';
    text.erase(dot + 1, 1);
  }
  return text;
}

double ttofl(std::string_view text) {
  // Parsed by hand so the process locale can never change what a stored number means.
  std::size_t pos = 0;
  while (pos < text.size() && static_cast<unsigned char>(text[pos]) <= ' ') ++pos;
  bool negative = false;
  if (pos < text.size() && (text[pos] == '-' || text[pos] == '+')) negative = text[pos++] == '-';
  std::string digits;  // normalised "123.456e7", read by from_chars
  while (pos < text.size() && text[pos] >= '0' && text[pos] <= '9') digits.push_back(text[pos++]);
  if (pos < text.size() && (text[pos] == '.' || text[pos] == ',')) {
    ++pos;
    digits.push_back('.');
    while (pos < text.size() && text[pos] >= '0' && text[pos] <= '9') digits.push_back(text[pos++]);
  }
  if (digits.empty() || digits == ".") return 0.0;
  if (pos < text.size() && (text[pos] == 'e' || text[pos] == 'E')) {
    std::size_t expPos = pos + 1;
    std::string exponent = "e";
    if (expPos < text.size() && (text[expPos] == '-' || text[expPos] == '+'))
      exponent.push_back(text[expPos++]);
    std::size_t firstDigit = expPos;
    while (expPos < text.size() && text[expPos] >= '0' && text[expPos] <= '9')
      exponent.push_back(text[expPos++]);
    if (expPos > firstDigit) digits += exponent;
  }
  double value = 0.0;
  std::from_chars(digits.data(), digits.data() + digits.size(), value);  // locale-free, exact
  return negative ? -value : value;
}

long long LTextToInt64(std::string_view text) {
  std::size_t pos = 0;
  while (pos < text.size() && static_cast<unsigned char>(text[pos]) <= ' ') ++pos;
  bool negative = false;
  if (pos < text.size() && (text[pos] == '-' || text[pos] == '+')) negative = text[pos++] == '-';
  unsigned long long value = 0;
  const unsigned long long limit =
      negative ? static_cast<unsigned long long>(LLONG_MAX) + 1 : static_cast<unsigned long long>(LLONG_MAX);
  for (; pos < text.size() && text[pos] >= '0' && text[pos] <= '9'; ++pos) {
    unsigned digit = static_cast<unsigned>(text[pos] - '0');
    if (value > (limit - digit) / 10) {
      value = limit;
      break;
    }
    value = value * 10 + digit;
  }
  if (negative) return value == static_cast<unsigned long long>(LLONG_MAX) + 1 ? LLONG_MIN : -static_cast<long long>(value);
  return static_cast<long long>(value);
}

int LTextToInt(std::string_view text) {
  long long value = LTextToInt64(text);
  if (value > INT_MAX) return INT_MAX;
  if (value < INT_MIN) return INT_MIN;
  return static_cast<int>(value);
}
