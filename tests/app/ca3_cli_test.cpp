// The CA3 figures of a quarter worked out by hand: sales at three rates, a credit note, a
// fixed-asset purchase, a purchase at 5,5 % and a journal adjustment of deductible VAT; what
// lies outside the quarter is left out, and each figure lists its sources.
#include <gtest/gtest.h>

#include "tests/app/clitest.h"
#include "tests/support/envscope.h"

namespace {

class Ca3Cli : public LHomeTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(LExpectSuccess({"business", "add", "--name", "Atelier", "--country", "FR"}), "1\n");
    LExpectSuccess({"business", "use", "1"});
    LExpectSuccess({"customer", "add", "C1", "Name=Dupont"});
    LExpectSuccess({"supplier", "add", "S1", "Name=Fournil"});
    LExpectSuccess({"invoice", "new", "--customer", "C1", "--date", "2026-01-15", "--line", "|Pose|1|1000|TVA 20 %|",
                    "--line", "|Livre|2|100|TVA 5,5 %|"});
    LExpectSuccess({"invoice", "new", "--customer", "C1", "--date", "2026-02-10", "--line", "|Repas|1|500|TVA 10 %|"});
    LExpectSuccess({"creditnote", "new", "--customer", "C1", "--date", "2026-03-05", "--line", "|Remise|1|100|TVA 20 %|"});
    LExpectSuccess({"invoice", "new", "--customer", "C1", "--date", "2026-04-02", "--line", "|Avril|1|300|TVA 20 %|"});
    LExpectSuccess({"bill", "add", "--supplier", "S1", "--date", "2026-02-01", "218300:2000:TVA 20 %", "--tax", "1=400"});
    LExpectSuccess({"bill", "add", "--supplier", "S1", "--date", "2026-03-01", "607000:300:TVA 5,5 %", "--tax", "3=16.50"});
    LExpectSuccess({"journal", "add", "--date", "2026-03-31", "--ref", "GJ1", "--desc", "Régularisation",
                    "dr:445660:5", "cr:771000:5"});
  }
  static nlohmann::json Row(const nlohmann::json& report, const std::string& label) {
    for (const auto& row : report["rows"])
      if (row["label"] == label) return row["values"];
    return {};
  }
  LEnvScope country_{"KONTAVO_COUNTRY", "FR"};
};

TEST_F(Ca3Cli, AQuarterByHand) {
  nlohmann::json report = LRunKontavoJson({"report", "tva-ca3", "--from", "2026-01-01", "--to", "2026-03-31"});
  ASSERT_EQ(report["title"], "TVA - déclaration CA3") << report.dump();
  using J = nlohmann::json;
  // Sales: 1000 at 20 % less the credit note's 100; 500 at 10 %; 200 at 5,5 %.
  EXPECT_EQ(Row(report, "08 TVA 20 %"), (J{90000, 18000}));
  EXPECT_EQ(Row(report, "9B TVA 10 %"), (J{50000, 5000}));
  EXPECT_EQ(Row(report, "09 TVA 5,5 %"), (J{20000, 1100}));
  EXPECT_EQ(Row(report, "Facture 1 du 2026-01-15"), (J{100000, 20000}));
  EXPECT_EQ(Row(report, "Avoir 1 du 2026-03-05"), (J{-10000, -2000}));
  EXPECT_EQ(Row(report, "16 Total de la TVA brute due"), (J{nullptr, 24100}));
  // Deductible: the computer on the fixed assets, the goods at 5,5 % and the adjustment on the rest.
  EXPECT_EQ(Row(report, "19 Biens constituant des immobilisations"), (J{200000, 40000}));
  EXPECT_EQ(Row(report, "20 Autres biens et services"), (J{30000, 2150}));
  EXPECT_EQ(Row(report, "Écriture GJ1 du 2026-03-31"), (J{0, 500}));
  EXPECT_EQ(Row(report, "23 Total TVA déductible"), (J{nullptr, 42150}));
  EXPECT_EQ(Row(report, "25 Crédit de TVA"), (J{nullptr, 18050}));
  EXPECT_TRUE(Row(report, "28 TVA nette due").is_null());
  EXPECT_TRUE(Row(report, "Facture 3 du 2026-04-02").is_null());

  // The next quarter by default from the end date: April's invoice alone, VAT due.
  nlohmann::json april = LRunKontavoJson({"report", "tva-ca3", "--to", "2026-06-30"});
  EXPECT_EQ(Row(april, "08 TVA 20 %"), (J{30000, 6000}));
  EXPECT_EQ(Row(april, "28 TVA nette due"), (J{nullptr, 6000}));
  LRunResult text = LRunKontavo({"report", "tva-ca3", "--from", "2026-04-01", "--to", "2026-06-30"});
  EXPECT_NE(text.out.find("Du 2026-04-01 au 2026-06-30"), std::string::npos) << text.out;
}

}  // namespace
