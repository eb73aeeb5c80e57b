#include "llib/gen/moneybounds.h"

#include "llib/gen/money.h"

bool LAmountTextIsBeyondCeiling(std::string_view plain, int digits) {
  if (!plain.empty() && (plain[0] == '-' || plain[0] == '+')) plain.remove_prefix(1);
  std::size_t point = plain.find('.');
  std::string_view whole = plain.substr(0, point);
  std::string_view fraction = point == std::string_view::npos ? std::string_view() : plain.substr(point + 1);
  if (whole.empty() || whole.find_first_not_of("0123456789") != std::string_view::npos ||
      fraction.find_first_not_of("0123456789") != std::string_view::npos)
    return false;
  long long scale = 1;
  for (int i = 0; i < LMoneyClampDigits(digits); ++i) scale *= 10;
  unsigned long long units = 0;
  for (char c : whole) {
    units = units * 10 + static_cast<unsigned>(c - '0');
    if (units > static_cast<unsigned long long>(kMoneyMaxMinorUnits / scale)) return true;
  }
  return false;
}

std::string LMoneyCeilingText(const LCurrencyFormat& format) { return LFormatMoney(kMoneyMaxMinorUnits, format); }

std::string LAmountRefusal(std::string_view what, std::string_view typed, std::string_view plain,
                           const LCurrencyFormat& format) {
  std::string subject = what.empty() ? std::string() : " pour " + std::string(what);
  if (LAmountTextIsBeyondCeiling(plain, format.digits))
    return "Montant trop grand" + subject + " : " + std::string(typed) + " (plafond " + LMoneyCeilingText(format) + ").";
  return "Montant invalide" + subject + " : " + std::string(typed) + ".";
}
