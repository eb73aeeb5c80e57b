#include "llib/gen/money.h"

#include <climits>
#include <cmath>

#include "llib/gen/moneybounds.h"

namespace {

unsigned long long Magnitude(long long amount) {
  return amount < 0 ? 0ULL - static_cast<unsigned long long>(amount) : static_cast<unsigned long long>(amount);
}

// 10^digits, digits clamped first: a damaged "CurrencyDigits=64" would make it 0 (10^64 is a
// multiple of 2^64) and every division by it a crash.
unsigned long long PowerOfTen(int digits) {
  unsigned long long scale = 1;
  for (int i = 0; i < LMoneyClampDigits(digits); ++i) scale *= 10;
  return scale;
}

// Whole part with thousands separators, then the decimals.
std::string Digits(unsigned long long magnitude, int digits, std::string_view decimal,
                   std::string_view thousands) {
  digits = LMoneyClampDigits(digits);
  unsigned long long scale = PowerOfTen(digits);
  std::string whole = std::to_string(magnitude / scale);
  std::string grouped;
  for (std::size_t i = 0; i < whole.size(); ++i) {
    if (i > 0 && (whole.size() - i) % 3 == 0) grouped += thousands;
    grouped.push_back(whole[i]);
  }
  if (digits > 0) {
    std::string fraction = std::to_string(magnitude % scale);
    grouped += decimal;
    grouped.append(static_cast<std::size_t>(digits) - fraction.size(), '0');
    grouped += fraction;
  }
  return grouped;
}

}  // namespace

bool LParseAmount(std::string_view text, int digits, long long& out) {
  digits = LMoneyClampDigits(digits);
  std::size_t pos = 0;
  bool negative = false;
  if (pos < text.size() && (text[pos] == '-' || text[pos] == '+')) negative = text[pos++] == '-';
  unsigned long long whole = 0;
  std::size_t wholeDigits = 0;
  const unsigned long long limit = static_cast<unsigned long long>(kMoneyMaxMinorUnits) / PowerOfTen(digits);
  while (pos < text.size() && text[pos] >= '0' && text[pos] <= '9') {
    whole = whole * 10 + static_cast<unsigned>(text[pos++] - '0');
    if (whole > limit) return false;
    ++wholeDigits;
  }
  unsigned long long fraction = 0;
  int fractionDigits = 0;
  if (pos < text.size() && text[pos] == '.') {
    ++pos;
    while (pos < text.size() && text[pos] >= '0' && text[pos] <= '9') {
      if (++fractionDigits > digits) return false;
      fraction = fraction * 10 + static_cast<unsigned>(text[pos++] - '0');
    }
  }
  if (pos != text.size() || (wholeDigits == 0 && fractionDigits == 0)) return false;
  fraction *= PowerOfTen(digits - fractionDigits);
  long long value = static_cast<long long>(whole * PowerOfTen(digits) + fraction);
  if (!LMoneyIsWithinBounds(value)) return false;
  out = negative ? -value : value;
  return true;
}

std::string LFormatAmountPlain(long long amount, int digits) {
  std::string text = Digits(Magnitude(amount), digits, ".", "");
  return amount < 0 ? "-" + text : text;
}

std::string LFormatNumber(long long amount, const LCurrencyFormat& format) {
  std::string text = Digits(Magnitude(amount), format.digits, format.decimal, format.thousands);
  return amount < 0 ? "-" + text : text;
}

std::string LFormatMoney(long long amount, const LCurrencyFormat& format, bool parenthesesForNegative) {
  std::string number = Digits(Magnitude(amount), format.digits, format.decimal, format.thousands);
  std::string text;
  switch (format.order) {
    case 1: text = number + format.symbol; break;
    case 2: text = format.symbol + " " + number; break;
    case 3: text = number + " " + format.symbol; break;
    default: text = format.symbol + number; break;
  }
  if (amount >= 0) return text;
  return parenthesesForNegative ? "(" + text + ")" : "-" + text;
}

namespace {

// x as a 64-bit integer, held inside the 64-bit range (NaN as 0): a quantity of 1e300 or an
// infinite one yields an amount the ceiling then refuses, never an undefined conversion.
long long HeldToRange(double x) {
  if (std::isnan(x)) return 0;
  constexpr double kLimit = 9.2e18;  // below 2^63 and exactly representable
  if (x >= kLimit) return static_cast<long long>(kLimit);
  if (x <= -kLimit) return -static_cast<long long>(kLimit);
  return static_cast<long long>(x);
}

}  // namespace

long long LRoundHalfUp(double x) { return HeldToRange(std::floor(x + 0.5)); }

long long LRoundHalfAwayFromZero(double x) { return HeldToRange(std::round(x)); }

long long LLineAmount(long long unitValue, double quantity, double discountPercent, int scaleDigits) {
  double x = static_cast<double>(unitValue) * quantity;
  if (discountPercent != 0) x = x * ((100 - discountPercent) / 100);
  // 10^scale as an integer: one division, as stored documents were computed.
  if (scaleDigits > 0) x = x / static_cast<double>(static_cast<long long>(std::pow(10.0, scaleDigits)));
  return LRoundHalfUp(x);
}
