#include "accounts/fec.h"

#include <cstdio>
#include <cstdlib>

#include "llib/gen/money.h"

std::string LFecDateText(const LDate& date) {
  char text[16];
  std::snprintf(text, sizeof text, "%.4d%.2d%.2d", date.year, date.month, date.day);
  return text;
}

bool LFecParseDate(std::string_view text, LDate& out) {
  if (text.size() != 8) return false;
  for (char c : text)
    if (c < '0' || c > '9') return false;
  auto number = [&](std::size_t at, std::size_t length) {
    int value = 0;
    for (std::size_t i = at; i < at + length; ++i) value = value * 10 + (text[i] - '0');
    return value;
  };
  LDate date(number(0, 4), number(4, 2), number(6, 2));
  if (!date.IsValid()) return false;
  out = date;
  return true;
}

std::string LFecAmountText(long long cents, int digits) {
  LCurrencyFormat format;
  format.digits = digits;
  format.decimal = ",";
  format.thousands = "";
  return LFormatNumber(cents < 0 ? -cents : cents, format);
}

bool LFecParseAmount(std::string_view text, int digits, long long& out) {
  std::string plain(text);
  for (char& c : plain)
    if (c == ',') c = '.';
  return LParseAmount(plain, digits, out);
}

std::string LFecFileName(std::string_view siren, const LDate& closing) {
  return std::string(siren) + "FEC" + LFecDateText(closing) + ".txt";
}

std::string LFecReferenceKey(std::string_view reference) {
  std::string key(reference);
  for (char& c : key)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return key;
}

bool LFecIsSiren(std::string_view siren) {
  if (siren.size() != 9) return false;
  for (char c : siren)
    if (c < '0' || c > '9') return false;
  return true;
}
