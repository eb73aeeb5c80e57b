// The one ceiling of amounts and the clamp of currency digits: hostile amounts and damaged
// options are refused or read within bounds, never a crash or a wrapped number.
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "llib/gen/money.h"
#include "llib/gen/moneybounds.h"

namespace {

TEST(MoneyBounds, AmountsBeyondTheCeilingAreRefused) {
  long long cents = 7;
  ASSERT_TRUE(LParseAmount("10000000000000", 2, cents));
  EXPECT_EQ(cents, kMoneyMaxMinorUnits);
  ASSERT_TRUE(LParseAmount("-10000000000000.00", 2, cents));
  EXPECT_EQ(cents, -kMoneyMaxMinorUnits);
  cents = 7;
  // One cent above, the line that once wrapped the balances, and the 64-digit unit price that once
  // divided by zero.
  for (const std::string& bad : {std::string("10000000000000.01"), std::string("-10000000000000.01"),
                                 std::string("92233720368547758.07"), "1." + std::string(64, '0') + "1",
                                 std::string(64, '9')}) {
    EXPECT_FALSE(LParseAmount(bad, 2, cents)) << bad;
    EXPECT_EQ(cents, 7);
  }
}

TEST(MoneyBounds, DamagedCurrencyDigitsAreClampedNotDividedBy) {
  // "CurrencyDigits=64" in the options: read as six digits, every amount still formats and reads.
  long long amount = 0;
  ASSERT_TRUE(LParseAmount("1.5", 64, amount));
  EXPECT_EQ(amount, 1500000);
  EXPECT_EQ(LFormatAmountPlain(amount, 64), "1.500000");
  EXPECT_EQ(LFormatAmountPlain(1234, -3), "1234");
  LCurrencyFormat odd{"€", 3, 99, ",", " "};
  EXPECT_EQ(LFormatNumber(-kMoneyMaxMinorUnits, odd), "-1 000 000 000,000000");
  // Sums of bounded amounts stay exact far beyond any real document.
  static_assert(9000 * kMoneyMaxMinorUnits < std::numeric_limits<long long>::max());
}

}  // namespace
