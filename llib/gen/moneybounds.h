// The bounds of money: the one ceiling of any amount, and the currency digits an amount may
// have. The ceiling, 10^15 minor units (ten thousand billion units of a two-digit currency), lies
// far inside 64 bits: about nine thousand amounts at the ceiling still add without overflow, so
// a balance or a document total that sums bounded amounts stays exact.
#pragma once

inline constexpr long long kMoneyMaxMinorUnits = 1000000000000000LL;  // 10^15
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
