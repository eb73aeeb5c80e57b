// The kilometric scale: the published examples worked by hand (each band, its boundaries, the
// electric increase), the year that applies to a report's distances, a year a business imports in
// place of the shipped one, and scale text that is refused with its line.
#include "accounts/mileagescale.h"

#include <gtest/gtest.h>

#include "invoice/shared/profile.h"
#include "tests/support/testhome.h"

namespace {

class MileageScaleTest : public LHomeTest {
 protected:
  long long Allowance(int year, const char* kind, int horsepower, long long km, bool electric = false) {
    LMileageScale scale;
    std::string error;
    EXPECT_TRUE(LMileageScaleFor(profile_, year, scale, error)) << error;
    long long cents = -1;
    EXPECT_TRUE(LMileageAllowance(scale, kind, horsepower, electric, km, cents)) << kind << horsepower;
    return cents;
  }
  LProfile profile_;
};

TEST_F(MileageScaleTest, PublishedExamplesBandByBand) {
  // 5 CV, 8,000 km in 2024: (8 000 × 0,357) + 1 395 = 4 251 €.
  EXPECT_EQ(Allowance(2024, "car", 5, 8000), 425100);
  EXPECT_EQ(Allowance(2024, "car", 4, 4000), 242400);     // 4 000 × 0,606
  EXPECT_EQ(Allowance(2024, "car", 3, 5000), 264500);     // the first band ends at 5 000 km inclusive
  EXPECT_EQ(Allowance(2024, "car", 3, 5001), 264532);     // 5 001 × 0,316 + 1 065 = 2 645,316
  EXPECT_EQ(Allowance(2024, "car", 2, 100), 5290);        // "3 CV et moins"
  EXPECT_EQ(Allowance(2024, "car", 11, 25000), 1175000);  // "7 CV et plus", beyond 20 000 km: 25 000 × 0,47
  EXPECT_EQ(Allowance(2024, "motorcycle", 4, 5000), 156800);  // 5 000 × 0,082 + 1 158
  EXPECT_EQ(Allowance(2024, "moped", 0, 2000), 63000);        // 2 000 × 0,315
  // Electric: 20 % more, 4 251 € × 1,2.
  EXPECT_EQ(Allowance(2024, "car", 5, 8000, true), 510120);
  // Each year its own rates: 2021 was 10 % over 2020, and had no electric increase before.
  EXPECT_EQ(Allowance(2021, "car", 5, 8000), 403200);  // 8 000 × 0,339 + 1 320
  EXPECT_EQ(Allowance(2020, "car", 5, 8000), 366400);  // 8 000 × 0,308 + 1 200
  EXPECT_EQ(Allowance(2020, "car", 5, 8000, true), 366400);

  LMileageScale scale;
  std::string error;
  ASSERT_TRUE(LMileageScaleFor(profile_, 2024, scale, error));
  long long cents = 0;
  EXPECT_FALSE(LMileageAllowance(scale, "car", 0, false, 100, cents));  // a car without horsepower
  LCurrencyFormat euros{"€", 3, 2, ",", " "}, dollars;
  EXPECT_EQ(LMileageBandFormula(*scale.BandFor("car", 5, 8000), euros), "d × 0,357 + 1 395 €");
  EXPECT_EQ(LMileageBandFormula(*scale.BandFor("car", 5, 8000), dollars), "d × 0.357 + $1,395");
  EXPECT_EQ(LMileageBandFormula(*scale.BandFor("car", 5, 30000), euros), "d × 0,427");
}

TEST_F(MileageScaleTest, YearOfTheDistancesAndImportedYears) {
  LMileageScale scale;
  std::string error;
  // A year whose scale is not yet published takes the latest one.
  ASSERT_TRUE(LMileageScaleFor(profile_, 2026, scale, error));
  EXPECT_EQ(scale.year, 2024);
  EXPECT_FALSE(LMileageScaleFor(profile_, 2019, scale, error));
  EXPECT_NE(error.find("Aucun barème kilométrique pour l'année 2019"), std::string::npos) << error;

  // The business imports 2026 and corrects 2024: both take their place, the shipped years stay.
  std::vector<LMileageScale> imported;
  ASSERT_TRUE(LMileageScaleParse("2026 electric 25\n"
                                 "2026 car 1 - 10000 0.600 0   # every car alike\n"
                                 "2026 car 1 - - 0.400 2000\n"
                                 "2024 car 1 - - 0.500 0\n",
                                 imported, error))
      << error;
  ASSERT_TRUE(LMileageScaleStore(profile_, imported, error)) << error;
  EXPECT_EQ(Allowance(2026, "car", 5, 12000), 680000);        // 12 000 × 0,4 + 2 000
  EXPECT_EQ(Allowance(2026, "car", 5, 100, true), 7500);      // 60 € and 25 %
  EXPECT_EQ(Allowance(2024, "car", 5, 8000), 400000);
  EXPECT_EQ(Allowance(2023, "car", 5, 8000), 425100);
  // An imported year is the whole year: 2026 has no band for a moped.
  ASSERT_TRUE(LMileageScaleFor(profile_, 2026, scale, error));
  long long cents = 0;
  EXPECT_FALSE(LMileageAllowance(scale, "moped", 0, false, 10, cents));

  // What the business keeps reads back as it was given.
  std::vector<LMileageScale> all = LMileageScales(profile_);
  ASSERT_EQ(all.back().year, 2026);
  std::vector<LMileageScale> again;
  ASSERT_TRUE(LMileageScaleParse(LMileageScaleText(all.back()), again, error)) << error;
  EXPECT_EQ(LMileageScaleText(again.front()), LMileageScaleText(all.back()));
  EXPECT_EQ(all.back().electricPercent, 25);
}

TEST_F(MileageScaleTest, TextThatDoesNotReadIsRefusedWithItsLine) {
  std::vector<LMileageScale> scales(1);
  std::string error;
  struct Case {
    const char* text;
    const char* message;
  };
  const Case cases[] = {
      {"# comment\n\n2025 truck 1 - - 0.5 0\n", "ligne 3 : genre inconnu"},
      {"2025 car 1 - - 0.5\n", "ligne 1 : il faut"},
      {"25 car 1 - - 0.5 0\n", "ligne 1 : année invalide"},
      {"2025 car 5 4 - 0.5 0\n", "ligne 1 : puissance fiscale invalide"},
      {"2025 car 1 - - 0.5001 0\n", "ligne 1 : taux invalide"},
      {"2025 car 1 - - 0.5 -3\n", "ligne 1 : montant fixe invalide"},
      {"2025 electric 150\n", "ligne 1 : majoration invalide"},
      {"2025 electric 20\n", "2025 : aucune tranche"},
      {"2025 car 1 - 5000 0.5 0\n", "les tranches de car 1 - doivent croître"},
      {"2025 car 1 - 5000 0.5 0\n2025 car 1 - 4000 0.4 0\n2025 car 1 - - 0.3 0\n", "doivent croître"},
  };
  for (const Case& c : cases) {
    error.clear();
    EXPECT_FALSE(LMileageScaleParse(c.text, scales, error)) << c.text;
    EXPECT_NE(error.find(c.message), std::string::npos) << c.text << " -> " << error;
  }
  EXPECT_EQ(scales.size(), 1u);  // left as it was
}

}  // namespace
