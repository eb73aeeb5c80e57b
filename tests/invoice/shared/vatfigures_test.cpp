// The boxes of a VAT return from what the user gives and the running figures: the defaults of
// box 3 and box 5, the whole pounds of boxes 6 and 8, and taking out exactly what a submission
// used, so that a sale recorded meanwhile still counts toward the next return.
#include <gtest/gtest.h>

#include "invoice/shared/mtdvat.h"
#include "invoice/shared/vatfigures.h"
#include "tests/support/salestestbusiness.h"

namespace {

TEST(VatReturnFigures, UngivenBoxesTakeTheRunningFiguresAndTheirSums) {
  const FKVatRunningFigures running{12345, 123456, 5099};
  FKVatReturns r;
  FKVatRunningFigures used;
  FKVatReturnFromFigures({}, running, r, used);
  EXPECT_DOUBLE_EQ(r.vatDueSales, 123.45);
  EXPECT_DOUBLE_EQ(r.totalVatDue, 123.45);
  EXPECT_DOUBLE_EQ(r.netVatDue, 123.45);
  EXPECT_EQ(r.totalValueSalesExVAT, 1234);
  EXPECT_EQ(r.totalValueGoodsSuppliedExVAT, 50);
  EXPECT_EQ(used.outputTax, 12345);
  EXPECT_EQ(used.salesExVat, 123400);  // the pence left out of box 6 stay for the next return
  EXPECT_EQ(used.goodsSuppliedExVat, 5000);

  // Box 5 is the difference either way round; a given box is used as given and not taken out.
  FKVatGivenFigures given;
  given.box[2] = 1000;
  given.box[4] = 20000;
  given.box[6] = 999;
  FKVatReturnFromFigures(given, running, r, used);
  EXPECT_DOUBLE_EQ(r.totalVatDue, 133.45);
  EXPECT_DOUBLE_EQ(r.netVatDue, 66.55);
  EXPECT_EQ(r.totalValueSalesExVAT, 999);
  EXPECT_EQ(used.outputTax, 12345);
  EXPECT_EQ(used.salesExVat, 0);
  given.box[3] = 50000;
  given.box[5] = 7;
  FKVatReturnFromFigures(given, running, r, used);
  EXPECT_DOUBLE_EQ(r.totalVatDue, 500.0);
  EXPECT_DOUBLE_EQ(r.netVatDue, 0.07);
}

class VatRunningFiguresTest : public LSalesTestBusiness {};

TEST_F(VatRunningFiguresTest, TakingOutLeavesWhatCameMeanwhile) {
  EXPECT_TRUE(FKAdjustOutputTax(Profile(), 2000));
  EXPECT_TRUE(FKAdjustTotalValueSalesExVat(Profile(), 10050));
  EXPECT_TRUE(FKAdjustTotalValueGoodsSuppliedExVat(Profile(), 10050));
  FKVatReturns r;
  FKVatRunningFigures used;
  FKVatReturnFromFigures({}, FKVatRunningFiguresLoad(Profile()), r, used);
  EXPECT_TRUE(FKAdjustOutputTax(Profile(), 300));  // a sale recorded while the return was on its way
  EXPECT_TRUE(FKVatRunningFiguresTakeOut(Profile(), used));
  FKVatRunningFigures left = FKVatRunningFiguresLoad(Profile());
  EXPECT_EQ(left.outputTax, 300);
  EXPECT_EQ(left.salesExVat, 50);
  EXPECT_EQ(left.goodsSuppliedExVat, 50);
}

}  // namespace
