// Documents totalled by hand. Each case gives its lines, shipping and mode, the total and the
// separate tax amounts (sorted by name) worked out on paper, and the working beside it. The
// taxes are those of LSalesTestBusiness (A 10 %, B 5 %, C 9.975 %, AB = A+B, BC = *B+C,
// Z 0 %, T = 10/5/0); a tax rate text "2" is tax 1 (A), "6" is tax 5 (BC). Rounding is
// floor(x + 0.5) everywhere except the fixed-percentage discount, which truncates.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "invoice/shared/itemcollection.h"
#include "invoice/shared/totals.h"
#include "tests/support/salestestbusiness.h"

namespace {

struct Line {
  long long unit;
  int digits;
  double qty;
  double discount;
  std::string taxRate;
  std::string taxName;
};

struct Case {
  std::string name;
  std::vector<Line> lines;
  long long shipping = 0;
  std::string shippingTax;
  int taxMode = 0;            // the document's "TaxRate"
  bool inclusive = false;     // the business's prices include tax
  bool discountsShown = false;
  int fixedDiscountLine = 0;  // 1-based, 0: none
  bool useOldTaxRates = true;
  long long total = 0;
  std::map<std::string, long long> taxes;
  std::map<std::string, long long> combined = {};  // checked when not empty
  long long discountLineAmount = 0;                // checked when a fixed discount line exists

  Case&& Ship(long long amount, std::string tax) && { shipping = amount, shippingTax = tax; return std::move(*this); }
  Case&& Mode(int mode) && { taxMode = mode; return std::move(*this); }
  Case&& Inclusive() && { inclusive = true; return std::move(*this); }
  Case&& Discounts() && { discountsShown = true; return std::move(*this); }
  Case&& TodaysRates() && { useOldTaxRates = false; return std::move(*this); }
  Case&& Fixed(int line, long long amount) && {
    fixedDiscountLine = line, discountLineAmount = amount;
    return std::move(*this);
  }
  Case&& Combined(std::map<std::string, long long> amounts) && { combined = amounts; return std::move(*this); }
};

Case Doc(std::string name, std::vector<Line> lines, long long total, std::map<std::string, long long> taxes) {
  Case c;
  c.name = name, c.lines = lines, c.total = total, c.taxes = taxes;
  return c;
}

const std::vector<Case> kCases = {
  // ---- Line totals and digits ----------------------------------------------------------------
  // 10000; A 10 % = 1000; total 11000
  Doc("OneLineTaxA", {{10000, -1, 1, 0, "2", ""}}, 11000, {{"A", 1000}}),
  // scale |3-2| = 1: 1999/10 = 199.9 -> 200; A floor(20 + .5) = 20; 220
  Doc("ThreeDigitPrice", {{1999, 3, 1, 0, "2", ""}}, 220, {{"A", 20}}),
  // scale |0-2| = 2 divides: 123.45 -> 123; A floor(12.3 + .5) = 12; 135
  Doc("ZeroDigitPriceIsDivided", {{12345, 0, 1, 0, "2", ""}}, 135, {{"A", 12}}),
  // 250 / 10 = 25 (not 2500); A floor(2.5 + .5) = 3; 28
  Doc("OneDigitPriceIsDivided", {{125, 1, 2, 0, "2", ""}}, 28, {{"A", 3}}),
  // 1498.5 -> 1499; A floor(149.9 + .5) = 150; 1649
  Doc("FractionalQuantity", {{999, -1, 1.5, 0, "2", ""}}, 1649, {{"A", 150}}),
  // base A 999; floor(99.9 + .5) = 100 (per line it would be 3 x 33 = 99); 1099
  Doc("TaxOnTheBaseNotPerLine", {{333, -1, 1, 0, "2", ""}, {333, -1, 1, 0, "2", ""}, {333, -1, 1, 0, "2", ""}},
      1099, {{"A", 100}}),
  // ---- Which tax a line gets -----------------------------------------------------------------
  // A 1000, B 5 % of 20000 = 1000; 30000 + 2000
  Doc("TwoTaxes", {{10000, -1, 1, 0, "2", ""}, {20000, -1, 1, 0, "3", ""}}, 32000, {{"A", 1000}, {"B", 1000}}),
  // 10000 untaxed; A 500; 15500
  Doc("AucunIsUntaxed", {{10000, -1, 1, 0, "", "Aucun"}, {5000, -1, 1, 0, "2", ""}}, 15500, {{"A", 500}}),
  // "TaxRate" 1: no tax at all; 10000 + 5000 + shipping 1000
  Doc("DocumentUntaxed", {{10000, -1, 1, 0, "2", ""}, {5000, -1, 1, 0, "3", ""}}, 16000, {}).Ship(1000, "A").Mode(1),
  // index 0: the default tax A; 1000; 11000
  Doc("IndexZeroIsTheDefaultTax", {{10000, -1, 1, 0, "0", ""}}, 11000, {{"A", 1000}}),
  // reserved name -> default tax A; 300; 3300
  Doc("ValeurDefautIsTheDefaultTax", {{3000, -1, 1, 0, "", "Valeur/défaut"}}, 3300, {{"A", 300}}),
  // X is not a tax of the business; the line's own rate 20 %: 1000; 6000
  Doc("StoredRateOfUnknownName", {{5000, -1, 1, 0, "20/0/0", "X"}}, 6000, {{"X", 1000}}),
  // no rate anywhere: untaxed; 7000
  Doc("UnknownNameIsUntaxed", {{7000, -1, 1, 0, "", "Y"}}, 7000, {}),
  // index 1 = tax number 0, whose missing name falls back to the default tax's name: A; 11000
  Doc("IndexOneIsTaxZeroNamedAsDefault", {{10000, -1, 1, 0, "1", ""}}, 11000, {{"A", 1000}}),
  // "TaxRate" 2: default tax number 0, named as the default tax A; 11000
  Doc("OtherDocumentModeUsesTaxZero", {{10000, -1, 1, 0, "0", ""}}, 11000, {{"A", 1000}}).Mode(2),
  // "UseOldTaxRates" true: the stored 20 % beats today's 10 %: 2000; 12000
  Doc("OldRatesFirst", {{10000, -1, 1, 0, "20/0/0", "A"}}, 12000, {{"A", 2000}}),
  // "UseOldTaxRates" false: today's A 10 %: 1000; 11000
  Doc("TodaysRatesFirst", {{10000, -1, 1, 0, "20/0/0", "A"}}, 11000, {{"A", 1000}}).TodaysRates(),
  // X at 20 % (first line) on base 2000: 400; 2400
  Doc("FirstDefinitionOfANameWins", {{1000, -1, 1, 0, "20/0/0", "X"}, {1000, -1, 1, 0, "10/0/0", "X"}},
      2400, {{"X", 400}}),
  // Z 0 %: listed with 0; 10000
  Doc("ZeroRated", {{10000, -1, 1, 0, "7", ""}}, 10000, {{"Z", 0}}),
  // ---- Two rates, compound and combined ------------------------------------------------------
  // BC = *B+C: B 500; base 10500: C floor(1047.375 + .5) = 1047; 11547
  Doc("CompoundCombinedByNumber", {{10000, -1, 1, 0, "6", ""}},
      11547, {{"B", 500}, {"C", 1047}}).Combined({{"*B+C", 1547}}),
  // T = 10/5 not compound: 1000 + 500; 11500
  Doc("TwoRatesSideBySide", {{10000, -1, 1, 0, "8", ""}}, 11500, {{"T", 1500}}),
  // 500; base 10500 -> 1047; 1547 (not the 1498 of side by side); 11547
  Doc("StoredCompoundTriple", {{10000, -1, 1, 0, "5/9.975/1", "Q"}}, 11547, {{"Q", 1547}}),
  // 500 + floor(997.5 + .5) = 998; 1498; 11498
  Doc("StoredTripleNotCompound", {{10000, -1, 1, 0, "5/9.975/0", "Q"}}, 11498, {{"Q", 1498}}),
  // AB = A+B: A 1000, B 500; combined A+B 1500; 11500
  Doc("CombinedNotCompound", {{10000, -1, 1, 0, "5", ""}}, 11500, {{"A", 1000}, {"B", 500}}).Combined({{"A+B", 1500}}),
  // AB: A 1000 + B 500; A line: 200. Separate A 1200, B 500; combined A 200, A+B 1500;
  // 12000 + 1700
  Doc("CombinedBesideItsPart", {{10000, -1, 1, 0, "5", ""}, {2000, -1, 1, 0, "2", ""}},
      13700, {{"A", 1200}, {"B", 500}}).Combined({{"A", 200}, {"A+B", 1500}}),
  // ---- Shipping ------------------------------------------------------------------------------
  // base A 10000 + 1500 = 11500: 1150; 10000 + 1500 + 1150
  Doc("ShippingTaxed", {{10000, -1, 1, 0, "2", ""}}, 12650, {{"A", 1150}}).Ship(1500, "A"),
  // shipping untaxed; A 1000; 12500
  Doc("ShippingAucun", {{10000, -1, 1, 0, "2", ""}}, 12500, {{"A", 1000}}).Ship(1500, "Aucun"),
  // A 1000; shipping *B+C: B 100, base 2100: C floor(209.475 + .5) = 209; 10000 + 2000 + 1309
  Doc("ShippingCompoundCombinedName", {{10000, -1, 1, 0, "2", ""}},
      13309, {{"A", 1000}, {"B", 100}, {"C", 209}}).Ship(2000, "*B+C").Combined({{"*B+C", 309}, {"A", 1000}}),
  // shipping A+B: A 100, B 50; 5000 + 1000 + 150
  Doc("ShippingCombinedName", {{5000, -1, 1, 0, "", "Aucun"}},
      6150, {{"A", 100}, {"B", 50}}).Ship(1000, "A+B").Combined({{"A+B", 150}}),
  // B 200; shipping under the default A: 100; 5000 + 300
  Doc("ShippingDefaultTax", {{4000, -1, 1, 0, "3", ""}}, 5300, {{"A", 100}, {"B", 200}}).Ship(1000, "Valeur/défaut"),
  // W unknown: shipping untaxed; A 100; 2100
  Doc("ShippingUnknownTax", {{1000, -1, 1, 0, "2", ""}}, 2100, {{"A", 100}}).Ship(1000, "W"),
  // ---- Negative lines ------------------------------------------------------------------------
  // base 7500: 750; 8250
  Doc("NegativeLine", {{10000, -1, 1, 0, "2", ""}, {-2500, -1, 1, 0, "2", ""}}, 8250, {{"A", 750}}),
  // A: floor(-100.5 + .5) = -100 (half up, not away from zero); -1105
  Doc("NegativeHalfRoundsUp", {{-1005, -1, 1, 0, "2", ""}}, -1105, {{"A", -100}}),
  // -2.5 -> floor(-2.0) = -2; A floor(-0.2 + .5) = 0; -2
  Doc("NegativeThreeDigits", {{-25, 3, 1, 0, "2", ""}}, -2, {{"A", 0}}),
  // ---- Discounts -----------------------------------------------------------------------------
  // sub-total 15000; A base 10000 - 1000 = 9000: 900; untaxed 5000 - 500 = 4500;
  // discount line -1500; 13500 + 900
  Doc("FixedDiscountLine", {{10000, -1, 1, 0, "2", ""}, {5000, -1, 1, 0, "", "Aucun"}, {0, -1, 1, 10, "", ""}},
      14400, {{"A", 900}}).Fixed(3, -1500),
  // A 999 - trunc(124.875) = 875: floor(87.5 + .5) = 88; B 333 - trunc(41.625) = 292:
  // floor(14.6 + .5) = 15; discount -trunc(1332 x .125 = 166.5) = -166; 875 + 292 + 103
  Doc("FixedDiscountTruncates", {{999, -1, 1, 0, "2", ""}, {333, -1, 1, 0, "3", ""}, {0, -1, 1, 12.5, "", ""}},
      1270, {{"A", 88}, {"B", 15}}).Fixed(3, -166),
  // sub-total 1000; A 2000 - 200 = 1800: 180; untaxed -1000 - trunc(-100) = -900;
  // discount line -100; 900 + 180
  Doc("FixedDiscountOnNegativeUntaxed", {{-1000, -1, 1, 0, "", "Aucun"}, {2000, -1, 1, 0, "2", ""}, {0, -1, 1, 10, "", ""}},
      1080, {{"A", 180}}).Fixed(3, -100),
  // "DontShowDiscountColumn" true: the 10 % changes nothing; 11000
  Doc("LineDiscountIgnoredByDefault", {{10000, -1, 1, 10, "2", ""}}, 11000, {{"A", 1000}}),
  // 10000 x .9 = 9000: 900; 9900
  Doc("LineDiscountShown", {{10000, -1, 1, 10, "2", ""}}, 9900, {{"A", 900}}).Discounts(),
  // 999 x .9 = 899.1 -> 899; floor(89.9 + .5) = 90; 989
  Doc("LineDiscountRounds", {{333, -1, 3, 10, "2", ""}}, 989, {{"A", 90}}).Discounts(),
  // ---- Prices that include tax ---------------------------------------------------------------
  // floor(11000 / (100/10 + 1) + .5) = 1000, inside the price; total 11000
  Doc("InclusiveExact", {{11000, -1, 1, 0, "2", ""}}, 11000, {{"A", 1000}}).Inclusive(),
  // 10000 / 11 = 909.09 -> 909; total 10000
  Doc("InclusiveRounds", {{10000, -1, 1, 0, "2", ""}}, 10000, {{"A", 909}}).Inclusive(),
  // net 5000 x 100^2 / (105 x 109.975) = 4329.98; B floor(216.499 + .5) = 216; net 4545.98:
  // C floor(453.46 + .5) = 453; total 5000
  Doc("InclusiveCompoundCombinedLeftToRight", {{5000, -1, 1, 0, "6", ""}},
      5000, {{"B", 216}, {"C", 453}}).Inclusive().Combined({{"*B+C", 669}}),
  // net 4329.98; rate2 first: floor(431.92 + .5) = 432; net 4761.98: floor(238.10 + .5) = 238;
  // 670 (the combined name gives 669); total 5000
  Doc("InclusiveCompoundTripleRate2First", {{5000, -1, 1, 0, "5/9.975/1", "Q"}}, 5000, {{"Q", 670}}).Inclusive(),
  // net 11500 x 100 / 115 = 10000: 1000 + 500; total 11500
  Doc("InclusiveTwoRates", {{11500, -1, 1, 0, "8", ""}}, 11500, {{"T", 1500}}).Inclusive(),
  // net 10000: A 1000, B 500; total 11500
  Doc("InclusiveCombined", {{11500, -1, 1, 0, "5", ""}},
      11500, {{"A", 1000}, {"B", 500}}).Inclusive().Combined({{"A+B", 1500}}),
  // base 6600 / 11 = 600; total 5500 + 1100
  Doc("InclusiveWithShipping", {{5500, -1, 1, 0, "2", ""}}, 6600, {{"A", 600}}).Ship(1100, "A").Inclusive(),
  // "TaxRate" 1: nothing; 5500
  Doc("InclusiveUntaxedDocument", {{5500, -1, 1, 0, "2", ""}}, 5500, {}).Mode(1).Inclusive(),
  // -1100 / 11 = -100 exactly -> floor(-99.5) = -100; total -1100
  Doc("InclusiveNegative", {{-1100, -1, 1, 0, "2", ""}}, -1100, {{"A", -100}}).Inclusive(),
};

void PrintTo(const Case& c, std::ostream* os) { *os << c.name; }

class TotalsTable : public LSalesTestBusiness, public ::testing::WithParamInterface<Case> {};

void Build(const Case& c, LSalesDocument& document) {
  for (const auto& line : c.lines)
    LSalesTestBusiness::AddLine(document, line.unit, line.digits, line.qty, line.discount, line.taxRate, line.taxName);
  if (c.shipping != 0) document.SetInt64("ShippingCosts", c.shipping);
  if (!c.shippingTax.empty()) document.SetString("ShippingTaxName", c.shippingTax);
  if (c.taxMode != 0) document.SetInt("TaxRate", c.taxMode);
  if (c.fixedDiscountLine != 0) document.SetInt("FixedPercentageDiscountItem", c.fixedDiscountLine);
  if (!c.useOldTaxRates) document.SetBool("UseOldTaxRates", false);
}

std::map<std::string, long long> Amounts(const LSalesDocument& document, const char* count, const char* amount,
                                         const char* name) {
  std::map<std::string, long long> amounts;
  int n = document.GetInt(count, 0);
  std::string previous;
  for (int i = 1; i <= n; ++i) {
    std::string taxName = document.GetString(name + std::to_string(i));
    EXPECT_LT(previous, taxName) << "amounts are sorted by name";
    previous = taxName;
    amounts[taxName] = document.GetInt64(amount + std::to_string(i), 0);
  }
  return amounts;
}

TEST_P(TotalsTable, TotalAndTaxAmountsAsWorkedByHand) {
  const Case& c = GetParam();
  SetTaxInclusive(c.inclusive);
  SetDiscountsShown(c.discountsShown);
  for (bool creditNote : {false, true}) {
    SCOPED_TRACE(creditNote ? "credit note" : "invoice");
    LSalesDocument document;
    Build(c, document);
    LFKTotalsChange change = creditNote ? LCreditNoteSumTotals(Profile(), document) : LInvoiceSumTotals(Profile(), document);
    EXPECT_EQ(change.newTotal, c.total);
    EXPECT_EQ(document.GetTotal(), c.total);
    EXPECT_EQ(Amounts(document, "TaxAmountCount", "TaxAmount", "TaxAmountName"), c.taxes);
    if (!c.combined.empty()) {
      EXPECT_EQ(Amounts(document, "TaxAmountCountCombined", "TaxAmountCombined", "TaxAmountNameCombined"), c.combined);
    }
    long long taxSum = 0;
    for (const auto& tax : c.taxes) taxSum += tax.second;
    EXPECT_EQ(document.GetTaxTotal(), taxSum);
    EXPECT_EQ(document.GetSubTotal(), c.total - c.shipping - taxSum);
    if (c.fixedDiscountLine != 0) {
      LFKItemCollectionRecord items = document.Items();
      EXPECT_EQ(items.GetItemUnitValue(c.fixedDiscountLine - 1), c.discountLineAmount);
      EXPECT_EQ(items.GetItemTotal(c.fixedDiscountLine - 1), c.discountLineAmount);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Documents, TotalsTable, ::testing::ValuesIn(kCases),
                         [](const ::testing::TestParamInfo<Case>& info) { return info.param.name; });

}  // namespace
