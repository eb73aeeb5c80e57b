// The bounds of money: the one ceiling of any amount, the currency digits an amount may have, and
// the sum that cannot wrap. The ceiling, 9 999 999 999 999 minor units (99 999 999 999,99 € for a
// two-digit currency), is the largest amount a day file of the ledger reads back, so whatever is
// accepted can be posted and read again; it lies far inside 64 bits: nearly a million amounts at
// the ceiling still add without overflow, so a balance or a document total that sums bounded
// amounts stays exact.
#pragma once

#include <limits>
#include <string>
#include <string_view>

struct LCurrencyFormat;

inline constexpr long long kMoneyMaxMinorUnits = 9999999999999LL;
// Digits of currencies and unit prices: more are read as this many.
inline constexpr int kMoneyMaxDigits = 6;

// The currency digits a business may use: digits clamped to 0..kMoneyMaxDigits.
constexpr int LMoneyClampDigits(int digits) {
  return digits < 0 ? 0 : digits > kMoneyMaxDigits ? kMoneyMaxDigits : digits;
}
// -ceiling <= amount <= ceiling.
constexpr bool LMoneyIsWithinBounds(long long amount) {
  return amount >= -kMoneyMaxMinorUnits && amount <= kMoneyMaxMinorUnits;
}

// a + b held at the 64-bit limits (± 9 223 372 036 854 775 807, so that any total negates) instead of wrapping: books
// damaged by another program total to a figure too large to be true, never to a wrapped negative.
// Every running total of amounts (balances, month buckets, trial balance, document and bill
// totals) adds through it.
constexpr long long LMoneySum(long long a, long long b) {
  constexpr long long kHeld = std::numeric_limits<long long>::max();
  long long sum = 0;
  if (__builtin_add_overflow(a, b, &sum)) return b > 0 ? kHeld : -kHeld;
  return sum < -kHeld ? -kHeld : sum;  // the lowest value has no opposite: a total must negate
}

// Whether plain is a decimal number ("-12", "3.50") whose whole part alone passes the ceiling at
// digits currency digits: what tells "too large" from "not an amount" when LParseAmount refuses.
bool LAmountTextIsBeyondCeiling(std::string_view plain, int digits);
// The ceiling the business's way, "99 999 999 999,99 €", for the messages that refuse an amount.
std::string LMoneyCeilingText(const LCurrencyFormat& format);
// "Montant trop grand pour <what> : <typed> (plafond 99 999 999 999,99 €)." when typed is a
// number beyond the ceiling, "Montant invalide pour <what> : <typed>." for anything else that
// LParseAmount refused; without what, "Montant trop grand : …" and "Montant invalide : …". plain
// is typed as LParseAmount was given it.
std::string LAmountRefusal(std::string_view what, std::string_view typed, std::string_view plain,
                           const LCurrencyFormat& format);
