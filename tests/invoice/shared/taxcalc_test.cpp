// Tax arithmetic, item lines and the tax options: the edge cases that stored documents depend on.
#include "invoice/shared/taxcalc.h"

#include <gtest/gtest.h>

#include "invoice/shared/itemcollection.h"
#include "invoice/shared/taxoptions.h"
#include "llib/gen/textnum.h"

namespace {

// Rounding is floor(x + .5) (half up, not away from zero); compound takes rate2 on the amount
// plus the first tax; no positive rate or a zero amount gives 0 and a negative rate counts as
// absent, not as a refund; inclusive prices take the tax out (compound: rate2 first).
TEST(CalculateTax, ExclusiveInclusiveCompoundAndRounding) {
  struct Row {
    double rate1, rate2;
    long long amount;
    bool inclusive, compound;
    long long tax;
  } rows[] = {
      {5, 9.975, 10000, false, true, 1547},  // 500 + floor(10500 x 9.975 / 100 + .5) = 500 + 1047
      {5, 9.975, 10000, false, false, 1498},  // side by side: 500 + floor(997.5 + .5)
      {20, 10, 0, false, true, 0},           {20, 10, 0, true, false, 0},
      {0, 0, 12345, false, false, 0},        {-5, -1, 12345, true, true, 0},
      {10, -5, 1000, false, false, 100},
      {10, 0, 25, false, false, 3},          // 2.5 -> 3
      {10, 0, -25, false, false, -2},        // -2.5 -> -2
      {10, 0, -26, false, false, -3},        // -2.6 -> -3
      {20, 0, 12000, true, false, 2000},     // net 10000
      {10, 5, 11500, true, false, 1500},     // net 11500 x 100 / 115 = 10000: 1000 + 500
      // net = 100^2 x 5000 / (105 x 109.975) = 4329.98; rate2 first: 432, then rate1 on 4761.98: 238
      {5, 9.975, 5000, true, true, 670},
      {0, 10, 1100, true, true, 100},  // a single positive rate with the compound flag: k = 1
  };
  const LTaxOptions noOptions;
  for (const Row& r : rows)
    EXPECT_EQ(LCalculateTax(noOptions, r.rate1, r.rate2, r.amount, r.inclusive, r.compound), r.tax)
        << r.rate1 << "/" << r.rate2 << " on " << r.amount << (r.inclusive ? " inclusive" : "") << (r.compound ? " compound" : "");
}

TEST(CombinedTax, NamesPartsAndInclusiveCompoundLeftToRight) {
  LFKCombinedName name = LFKSplitCombinedName("*TPS+TVQ");
  EXPECT_TRUE(name.compound);
  EXPECT_EQ(name.parts, (std::vector<std::string>{"TPS", "TVQ"}));
  EXPECT_FALSE(LFKSplitCombinedName("A+B+C").compound);
  EXPECT_TRUE(LFKIsCombinedName("A+B"));
  EXPECT_FALSE(LFKIsCombinedName("TVA 20 %"));
  // Unlike LCalculateTax, the first part first.
  EXPECT_EQ(LFKCombinedTaxParts({5, 9.975}, true, 5000, true), (std::vector<long long>{216, 453}));
  EXPECT_EQ(LFKCombinedTaxParts({5, 9.975}, true, 10000, false), (std::vector<long long>{500, 1047}));
  EXPECT_EQ(LFKCombinedTaxParts({5, 9.975}, false, 10000, false), (std::vector<long long>{500, 998}));
  // A part without a rate contributes nothing and does not enter the net.
  EXPECT_EQ(LFKCombinedTaxParts({10, 0}, false, 1100, true), (std::vector<long long>{100, 0}));
}

// "r1/r2/c" where only c = 1 marks compound; a plain rate; garbage is zero. Written back plain
// when there is one rate, as a triple otherwise.
TEST(TaxRateText, ReadsAndWritesPlainRatesAndTriples) {
  LFKTaxRate rate = LFKParseTaxRate("5/9.975/1");
  EXPECT_DOUBLE_EQ(rate.rate2, 9.975);
  EXPECT_TRUE(rate.compound);
  EXPECT_FALSE(LFKParseTaxRate("7/6/2").compound);
  EXPECT_DOUBLE_EQ(LFKParseTaxRate("20.000000").rate1, 20);
  EXPECT_TRUE(LFKParseTaxRate("abc/x").IsZero());
  EXPECT_EQ(LFKFormatTaxRateTriple({5.5, 0, false}), "5.5/0/0");
  LTaxOptions tax;
  tax.SetTaxRate(1, {20, 0, false});
  tax.SetTaxRate(2, {5, 9.975, true});
  EXPECT_EQ(tax.GetString("TaxRate1"), "20");
  EXPECT_EQ(tax.GetString("TaxRate2"), "5/9.975/1");
}

TEST(TaxOptions, NamesFallBackToTheDefaultTax) {
  LTaxOptions tax;
  tax.SetInt("TaxSystem", 3);
  EXPECT_EQ(tax.GetTaxName(2), "Taxe à la vente");  // default tax 1
  tax.SetInt("DefaultRate", 3);
  tax.SetTaxName(3, "TVH");
  EXPECT_EQ(tax.GetTaxName(2), "TVH");
  EXPECT_EQ(tax.GetTaxNumberFromName("TVH"), 2);  // the first that answers to the name
  EXPECT_EQ(tax.GetTaxNumberFromName("TVh"), 0);  // exact comparison
  EXPECT_EQ(tax.ListNameToTax("Aucun"), 0);
  EXPECT_EQ(tax.ListNameToTax("Valeur/défaut"), 3);
  EXPECT_EQ(tax.ListNameToTax("TVQ"), -1);
}

TEST(TaxByNumber, CombinedDefinitionTakesItsPartsByName) {
  LTaxOptions tax;
  tax.SetInt("TaxSystem", 3);
  tax.SetTaxName(1, "TPS");
  tax.SetTaxRate(1, {5, 0, false});
  tax.SetTaxName(2, "TVQ");
  tax.SetTaxRate(2, {9.975, 0, false});
  tax.SetTaxName(3, "TPS+TVQ");
  tax.SetTaxRate(3, {1, 1, false});  // ignored: the combination decides
  tax.SetTaxCombined(3, "*TPS+TVQ");
  EXPECT_EQ(LCalculateTaxByNumber(tax, 3, 10000, false), 1547);
  EXPECT_EQ(LCalculateTaxByNumber(tax, 3, 5000, true), 669);
  EXPECT_EQ(LCalculateTaxByNumber(tax, 1, 10000, false), 500);
  EXPECT_EQ(LCalculateTaxByNumber(tax, 3, 0, false), 0);
}

// ---- Item lines -------------------------------------------------------------------------------

// The tax rate text of a line is an index (rates left alone) or a rate triple (index -1); the
// fixed discount line is stored one-based; the VAT amount keeps only leading digits.
TEST(ItemLines, StoredFieldsReadAsTheLinesMeanThem) {
  LRecord document;
  LFKItemCollectionRecord items(document);
  double rate1 = 7, rate2 = 7;
  bool compound = true;
  EXPECT_EQ(items.GetItemTaxRate(0, rate1, rate2, compound), -1);  // empty
  EXPECT_EQ(rate1 + rate2, 0);
  EXPECT_FALSE(compound);
  document.SetString("Item1TaxRate", "3");
  rate1 = 7;
  EXPECT_EQ(items.GetItemTaxRate(0, rate1, rate2, compound), 3);
  EXPECT_EQ(rate1, 7);
  document.SetString("Item1TaxRate", "5/9.975/1");
  EXPECT_EQ(items.GetItemTaxRate(0, rate1, rate2, compound), -1);
  EXPECT_EQ(rate1, 5);
  EXPECT_TRUE(compound);
  EXPECT_EQ(items.GetFixedPercentageDiscountItem(), kNoFixedDiscountItem);
  document.SetInt("FixedPercentageDiscountItem", 3);
  EXPECT_EQ(items.GetFixedPercentageDiscountItem(), 2);
  EXPECT_EQ(items.GetItemUnitValueDigits(0), -1);
  for (auto [text, amount] : {std::pair{"", 0}, {"1234abc56", 1234}, {"-50", 0}}) {
    document.SetString("Item1VATAmount", text);
    EXPECT_EQ(items.GetItemVATAmount(0), amount) << text;
  }
}

// The digits scale |digits - 2| divides and rounds half up (a negative scale divides by
// nothing); the discount counts unless ignored or on the fixed discount line; a read-only view
// never writes.
TEST(LineTotal, ScaleDiscountAndReadOnlyView) {
  LRecord document;
  LFKItemCollectionRecord items(document);
  auto line = [&](long long unitValue, double qty, double discount) {
    document.SetInt64("Item1UnitValue", unitValue);
    document.SetString("Item1Qty", ftotl(qty));
    document.SetString("Item1Discount", ftotl(discount));
    document.SetInt("ItemCount", 1);
  };
  line(1999, 1, 0);
  for (auto [scale, total] : {std::pair{1, 200}, {0, 1999}, {-1, 1999}, {2, 20}})
    EXPECT_EQ(LFKGetItemTotal(items, 0, true, scale), total) << scale;
  line(-25, 1, 0);
  EXPECT_EQ(LFKGetItemTotal(items, 0, true, 1), -2);  // -2.5 -> -2
  line(333, 3, 10);
  EXPECT_EQ(LFKGetItemTotal(items, 0, false, 0), 899);  // 899.1
  EXPECT_EQ(LFKGetItemTotal(items, 0, true, 0), 999);
  document.SetInt("FixedPercentageDiscountItem", 1);
  EXPECT_EQ(LFKGetItemTotal(items, 0, false, 0), 999);
  const LRecord& constDocument = document;
  LFKItemCollectionRecord view(constDocument);
  view.UpdateItemUnitValueAndTotal(0, -5, -5);
  EXPECT_EQ(view.GetItemUnitValue(0), 333);
}

}  // namespace
