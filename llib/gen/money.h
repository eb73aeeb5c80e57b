// Money: every amount is a signed 64-bit integer in minor units (cents for two currency
// digits). This is the one place amounts are rounded, and turn into text and back.
#pragma once

#include <string>
#include <string_view>

// How a business writes money: symbol and its place, separators, currency digits.
struct LCurrencyFormat {
  std::string symbol = "$";
  int order = 0;          // 0 "$1.00", 1 "1.00$", 2 "$ 1.00", 3 "1.00 $"
  int digits = 2;         // decimals of money amounts
  std::string decimal = ".";
  std::string thousands = ",";
};

// The two roundings of a computed amount to minor units; no other code rounds money.
//
// Documents, bills and their taxes round half up by floor(x + 0.5): 2.5 gives 3 and -2.5 gives -2.
// Stored documents were totalled so and must keep their totals, so this rule is not symmetric.
long long LRoundHalfUp(double x);

// Everything else (stock values, commissions, price levels, VAT return figures) rounds halves away
// from zero: 2.5 gives 3 and -2.5 gives -3, so that an amount and its reversal cancel out exactly
// (a stock movement out values the same as the movement in that it undoes).
long long LRoundHalfAwayFromZero(double x);

// The amount of one item line in minor units: unitValue × quantity, less discountPercent %, divided
// by 10^scaleDigits when scaleDigits > 0 (the decimals the unit value carries beyond the amount's),
// rounded half up. LLineAmount(1999, 3, 10, 1) == 540 (19.99 at 3 decimals × 3 less 10 %).
long long LLineAmount(long long unitValue, double quantity, double discountPercent, int scaleDigits);

// Decimal text in currency units with "." as decimal point ("1234.56", "-0.05", "12") to minor
// units. false for anything else, or for more decimals than digits; out is then unchanged.
[[nodiscard]] bool LParseAmount(std::string_view text, int digits, long long& out);

// Minor units as plain decimal text with digits decimals: 123456, 2 -> "1234.56".
std::string LFormatAmountPlain(long long amount, int digits);

// Minor units in the business's currency format: "1 234,56 €", "-$5.00", or "(1 234,56 €)"
// when parentheses are asked for negatives.
std::string LFormatMoney(long long amount, const LCurrencyFormat& format, bool parenthesesForNegative = false);

// Minor units as a number with separators, without symbol: "1 234,56".
std::string LFormatNumber(long long amount, const LCurrencyFormat& format);
