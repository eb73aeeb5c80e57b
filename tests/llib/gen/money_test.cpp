// The one rounding of amounts and the arithmetic of an item line: halves go up (toward +∞, so
// negative halves toward zero, as stored documents were totalled), the discount comes before the
// scale, and a line whose unit value carries extra decimals is divided once.
#include <gtest/gtest.h>

#include "llib/gen/money.h"

namespace {

TEST(Money, HalvesRoundUpOnBothSidesOfZero) {
  EXPECT_EQ(LRoundHalfUp(2.5), 3);
  EXPECT_EQ(LRoundHalfUp(2.4999), 2);
  EXPECT_EQ(LRoundHalfUp(-2.5), -2);
  EXPECT_EQ(LRoundHalfUp(-2.5001), -3);
  EXPECT_EQ(LRoundHalfUp(0.0), 0);
  EXPECT_EQ(LRoundHalfUp(-0.4), 0);
}

TEST(Money, LineAmountsAsDocumentsAndBillsTakeThem) {
  EXPECT_EQ(LLineAmount(250, 3, 0, 0), 750);
  EXPECT_EQ(LLineAmount(1999, 3, 10, 1), 540);     // 5.397 at 3 decimals, less 10 %
  EXPECT_EQ(LLineAmount(1999, 1, 0, 1), 200);      // 199.9 cents up to 200
  EXPECT_EQ(LLineAmount(333, 1.5, 0, 0), 500);     // 499.5 up
  EXPECT_EQ(LLineAmount(-333, 1.5, 0, 0), -499);   // -499.5 up, toward zero
  EXPECT_EQ(LLineAmount(1000, 1, 100, 0), 0);      // a line given away
  EXPECT_EQ(LLineAmount(12345, 1, 0, -2), 12345);  // no scale below zero
  EXPECT_EQ(LLineAmount(123456789, 2, 0, 4), 24691);
}

}  // namespace
