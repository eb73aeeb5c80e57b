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
  ASSERT_TRUE(LParseAmount("99999999999.99", 2, cents));
  EXPECT_EQ(cents, kMoneyMaxMinorUnits);
  ASSERT_TRUE(LParseAmount("-99999999999.99", 2, cents));
  EXPECT_EQ(cents, -kMoneyMaxMinorUnits);
  cents = 7;
  // One cent above, the line that once wrapped the balances, and the 64-digit unit price that once
  // divided by zero.
  for (const std::string& bad : {std::string("100000000000"), std::string("-100000000000.00"),
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
  EXPECT_EQ(LFormatNumber(-kMoneyMaxMinorUnits, odd), "-9 999 999,999999");
  // Sums of bounded amounts stay exact far beyond any real document.
  static_assert(900000 * kMoneyMaxMinorUnits < std::numeric_limits<long long>::max());
}

TEST(MoneyBounds, SumsAreHeldAtTheLimitsNeverWrapped) {
  constexpr long long kMax = std::numeric_limits<long long>::max();
  EXPECT_EQ(LMoneySum(kMoneyMaxMinorUnits, -kMoneyMaxMinorUnits), 0);
  EXPECT_EQ(LMoneySum(kMax - 5, 5), kMax);
  EXPECT_EQ(LMoneySum(kMax, 1), kMax);
  EXPECT_EQ(LMoneySum(-kMax, -1), -kMax);
  EXPECT_EQ(LMoneySum(std::numeric_limits<long long>::min(), -1), -kMax);
  // The line of 92233720368547758.07 that once wrapped a balance, added twice.
  long long balance = 0;
  for (int i = 0; i < 2; ++i) balance = LMoneySum(balance, 9223372036854775807LL);
  EXPECT_EQ(balance, kMax);
}

TEST(MoneyBounds, RefusalsNameTheCeilingTheBusinessesWay) {
  LCurrencyFormat euro{"€", 3, 2, ",", " "};
  EXPECT_EQ(LAmountRefusal("Prix", "100 000 000 000,00", "100000000000.00", euro),
            "Montant trop grand pour Prix : 100 000 000 000,00 (plafond 99 999 999 999,99 €).");
  EXPECT_EQ(LAmountRefusal("Prix", "-1e20", "-1e20", euro), "Montant invalide pour Prix : -1e20.");
  EXPECT_EQ(LAmountRefusal("Prix", "1,234", "1.234", euro), "Montant invalide pour Prix : 1,234.");
  LCurrencyFormat yen{"¥", 0, 0, ".", ","};
  EXPECT_EQ(LAmountRefusal("Solde", "10000000000000", "10000000000000", yen),
            "Montant trop grand pour Solde : 10000000000000 (plafond ¥9,999,999,999,999).");
}

}  // namespace
