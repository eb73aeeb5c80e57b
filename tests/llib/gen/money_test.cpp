// The two roundings of money and the arithmetic of an item line. Documents round half up
// (floor(x + 0.5): negative halves go toward zero, as stored documents were totalled); everything
// else rounds halves away from zero so that an amount and its reversal cancel. The discount comes
// before the scale, and a line whose unit value carries extra decimals is divided once.
#include <gtest/gtest.h>

#include "llib/gen/money.h"

namespace {

TEST(Money, DocumentsRoundHalvesUpAndEverythingElseAwayFromZero) {
  struct Case {
    double x;
    long long up, away;
  };
  for (auto [x, up, away] : {Case{2.5, 3, 3}, {-2.5, -2, -3}, {2.4999, 2, 2}, {-2.5001, -3, -3}, {0.5, 1, 1},
                             {-0.5, 0, -1}, {-0.4, 0, 0}, {0.0, 0, 0}, {-1234567.5, -1234567, -1234568}}) {
    EXPECT_EQ(LRoundHalfUp(x), up) << x;
    EXPECT_EQ(LRoundHalfAwayFromZero(x), away) << x;
    // Away from zero is symmetric: the reversal of an amount rounds to its opposite.
    EXPECT_EQ(LRoundHalfAwayFromZero(-x), -away) << x;
  }
}

TEST(Money, LineAmountsAsDocumentsAndBillsTakeThem) {
  EXPECT_EQ(LLineAmount(250, 3, 0, 0), 750);
  EXPECT_EQ(LLineAmount(1999, 3, 10, 1), 540);     // 5997 × 0.9 = 5397.3, / 10 = 539.73
  EXPECT_EQ(LLineAmount(1999, 1, 0, 1), 200);      // 199.9 cents up to 200
  EXPECT_EQ(LLineAmount(333, 1.5, 0, 0), 500);     // 499.5 up
  EXPECT_EQ(LLineAmount(-333, 1.5, 0, 0), -499);   // -499.5 up, toward zero
  EXPECT_EQ(LLineAmount(1000, 1, 100, 0), 0);      // a line given away
  EXPECT_EQ(LLineAmount(12345, 1, 0, -2), 12345);  // no scale below zero
  EXPECT_EQ(LLineAmount(123456789, 2, 0, 4), 24691);  // 246913578 / 10^4 = 24691.3578
}

}  // namespace
