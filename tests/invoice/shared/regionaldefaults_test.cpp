// The taxes and payment terms a new business receives for its country, and the Canadian rates
// by province.
#include <gtest/gtest.h>

#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/regionaldefaults.h"
#include "invoice/shared/taxcalc.h"
#include "invoice/shared/taxoptions.h"
#include "llib/gen/file.h"
#include "tests/support/envscope.h"
#include "tests/support/testhome.h"

namespace {

struct Expected {
  std::string name;
  std::string rate;
  bool zeroRated;
  std::string account;
};

class RegionalDefaults : public LHomeTest {
 protected:
  // Opens a new business in country and checks its taxes.
  void ExpectTaxes(const char* country, const std::vector<Expected>& taxes, int termsDays) {
    SCOPED_TRACE(country);
    LEnvScope scope("KONTAVO_COUNTRY", country);
    std::string folder = home_.SharedFolder() + "/MultiBus/" + country;
    ASSERT_TRUE(LFile::MakeFolder(folder));
    LProfile profile(folder);
    LTaxOptions tax;
    tax.OpenFrom(profile);
    ASSERT_EQ(tax.GetTaxCount(), static_cast<int>(taxes.size()));
    EXPECT_EQ(tax.GetDefaultRate(), 1);
    EXPECT_FALSE(tax.IsTaxInclusive());
    for (std::size_t i = 0; i < taxes.size(); ++i) {
      int n = static_cast<int>(i) + 1;
      EXPECT_EQ(tax.GetTaxName(n), taxes[i].name);
      EXPECT_EQ(tax.GetTaxRateText(n), taxes[i].rate);
      EXPECT_EQ(tax.IsZeroRate(n), taxes[i].zeroRated);
      EXPECT_EQ(tax.GetTaxAccountPayable(n), taxes[i].account);
    }
    LRecord invoice;
    profile.List(kMiscList).OpenAlways(invoice, "Invoice");
    EXPECT_EQ(invoice.GetInt("PaymentTermsDays", 0), termsDays);
    LRecord order;
    profile.List(kMiscList).OpenAlways(order, "Order");
    EXPECT_EQ(order.GetInt("PaymentTermsDays", 0), termsDays);
  }
};

TEST_F(RegionalDefaults, EachCountryGetsItsTaxesAndTerms) {
  const std::string fr = "Taxe à la vente perçue";
  ExpectTaxes("FR", {{"TVA 20 %", "20", false, fr}, {"TVA 10 %", "10", false, fr}, {"TVA 5,5 %", "5.5", false, fr},
                     {"TVA 2,1 %", "2.1", false, fr}}, 30);
  ExpectTaxes("GB", {{"TVA 20 %", "20", false, "TVA perçue"}, {"TVA 5 %", "5", false, "TVA perçue"},
                     {"TVA 0 %", "0", true, "TVA perçue"}}, 30);
  ExpectTaxes("AU", {{"TPS", "10", false, "TPS perçue"}}, 14);
  ExpectTaxes("NZ", {{"TPS", "15", false, "TPS perçue"}}, 14);
  ExpectTaxes("US", {{"Taxe à la vente", "0", false, fr}}, 30);  // one sales tax to set
}

TEST(CanadaRates, QuebecCompoundsTheQstOnTheGst) {
  LTaxOptions tax;
  ASSERT_TRUE(LTaxOptionsSetCanadaRates(tax, kProvinceQuebec));
  ASSERT_EQ(tax.GetTaxCount(), 3);
  EXPECT_EQ(tax.GetTaxName(1) + " " + tax.GetTaxName(2) + " " + tax.GetTaxRateText(2) + " " + tax.GetTaxCombined(3),
            "TPS TVQ 9.975 *TPS+TVQ");
  EXPECT_EQ(tax.GetDefaultRate(), 3);
  // 10000: TPS 500, TVQ on 10500 = 1047.
  EXPECT_EQ(LCalculateTaxByNumber(tax, 3, 10000, false), 1547);
  EXPECT_EQ(LCalculateTaxByNumber(tax, 1, 10000, false), 500);
}

TEST(CanadaRates, HarmonisedAndProvincialProvinces) {
  LTaxOptions tax;
  ASSERT_TRUE(LTaxOptionsSetCanadaRates(tax, kProvinceOntario));
  EXPECT_EQ(tax.GetTaxCount(), 2);
  EXPECT_EQ(tax.GetTaxName(1) + " " + tax.GetTaxRateText(1) + " " + tax.GetTaxName(2), "TVH 13 TPS");
  ASSERT_TRUE(LTaxOptionsSetCanadaRates(tax, 2));  // Colombie-Britannique
  EXPECT_EQ(tax.GetTaxCount(), 3);
  EXPECT_EQ(tax.GetTaxRateText(2) + " " + tax.GetTaxCombined(3), "7 TPS+TVP");
  EXPECT_EQ(LCalculateTaxByNumber(tax, 3, 10000, false), 1200);
  ASSERT_TRUE(LTaxOptionsSetCanadaRates(tax, 1));  // Alberta: the federal tax alone
  EXPECT_EQ(tax.GetTaxCount(), 1);
  EXPECT_FALSE(tax.TestFieldExists("TaxName2"));
  EXPECT_FALSE(LTaxOptionsSetCanadaRates(tax, 0));
  EXPECT_FALSE(LTaxOptionsSetCanadaRates(tax, kCanadaProvinceCount + 1));
  EXPECT_EQ(LCanadaProvinceName(kProvinceQuebec), "Québec");
}

}  // namespace
