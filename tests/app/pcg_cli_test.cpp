// A new French business on the "Plan comptable général": an invoice, a bill and both payments
// land on the six-digit accounts of the chart, and the statements read right on it.
#include <gtest/gtest.h>

#include "tests/app/clitest.h"
#include "tests/support/envscope.h"

namespace {

class PcgCli : public LHomeTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(LExpectSuccess({"business", "add", "--name", "Atelier", "--country", "FR", "--opening-checking", "1000"}),
              "1\n");
    LExpectSuccess({"business", "use", "1"});
  }
  // The ledger's lines of one reference as "account amount" in posting order.
  static std::vector<std::string> Lines(const std::string& reference) {
    std::vector<std::string> lines;
    for (const auto& line : LRunKontavoJson({"ledger"}))
      if (line["reference"] == reference)
        lines.push_back(line["account"].get<std::string>() + " " + std::to_string(line["amount"].get<long long>()));
    return lines;
  }
  static nlohmann::json Row(const nlohmann::json& report, const std::string& label) {
    for (const auto& row : report["rows"])
      if (row["label"] == label) return row;
    return {};
  }
  LEnvScope country_{"KONTAVO_COUNTRY", "FR"};
};

TEST_F(PcgCli, DocumentsPostOnTheChartsAccountsAndStatementsReadRight) {
  // The chart: six digits, the linked accounts where a French accountant expects them, and the
  // taxes collected into and deducted from the chart's VAT accounts.
  EXPECT_EQ(LStoredField("Misc", "Company", "NumberOfDigits"), "6");
  const char* const slots[] = {"512000", "411000", "706000", "708500", "445710", "445660", "401000", "624100", "607000"};
  for (int slot = 1; slot <= 9; ++slot)
    EXPECT_EQ(LStoredField("Misc", "Options", "DefAccount" + std::to_string(slot) + "Number"), slots[slot - 1]);
  EXPECT_EQ(LStoredField("Misc", "Tax", "TaxAccountPayable1"), "TVA collectée");
  EXPECT_EQ(LStoredField("Misc", "Tax", "TaxAccountPaid3"), "TVA déductible");
  EXPECT_EQ(LStoredField("Accounts", "600000", "Header"), "1");
  EXPECT_EQ(LStoredField("Accounts", "512000", "OpeningBalance"), "100000");

  LExpectSuccess({"customer", "add", "C1", "Name=Dupont"});
  LExpectSuccess({"supplier", "add", "S1", "Name=Fournil"});
  LExpectSuccess({"invoice", "new", "--customer", "C1", "--date", "2026-03-02", "--line", "|Pose|1|100|TVA 20 %|"});
  EXPECT_EQ(Lines("SLS10000"), (std::vector<std::string>{"445710 -2000", "706000 -10000", "411000 12000"}));
  LExpectSuccess({"bill", "add", "--supplier", "S1", "--date", "2026-03-03", "607000:200", "--tax", "1=40"});
  EXPECT_EQ(Lines("PRC10000"), (std::vector<std::string>{"401000 -24000", "607000 20000", "445660 4000"}));
  LExpectSuccess({"payment", "add", "--customer", "C1", "--amount", "120", "--date", "2026-03-10", "--apply", "1=120"});
  EXPECT_EQ(Lines("REC10000"), (std::vector<std::string>{"411000 -12000", "512000 12000"}));
  LExpectSuccess({"billpayment", "add", "--supplier", "S1", "--amount", "240", "--date", "2026-03-11", "--account",
                  "Banque"});
  EXPECT_EQ(Lines("PMT10000"), (std::vector<std::string>{"401000 24000", "512000 -24000"}));
  EXPECT_EQ(LExpectSuccess({"check"}), "");

  nlohmann::json pl = LRunKontavoJson({"report", "pl", "--from", "2026-01-01", "--to", "2026-12-31"});
  EXPECT_EQ(Row(pl, "706000 Prestations de services")["values"][0], 10000) << pl.dump();
  EXPECT_EQ(Row(pl, "607000 Achats de marchandises")["values"][0], 20000) << pl.dump();
  EXPECT_EQ(Row(pl, "Bénéfice net")["values"][0], -10000);
  nlohmann::json bs = LRunKontavoJson({"report", "bs", "--date", "2026-12-31"});
  EXPECT_EQ(Row(bs, "512000 Banque")["values"][0], 88000) << bs.dump();
  EXPECT_EQ(Row(bs, "445660 TVA déductible")["values"][0], 4000);
  EXPECT_EQ(Row(bs, "Bénéfices non distribués")["values"][0], -10000);
  EXPECT_EQ(Row(bs, "Total capitaux propres :")["values"][0], Row(bs, "Actif net")["values"][0]);
  nlohmann::json tb = LRunKontavoJson({"report", "tb", "--to", "2026-12-31"});
  EXPECT_EQ(Row(tb, "Total")["values"][0], Row(tb, "Total")["values"][1]);

  // Elsewhere, and when asked, the generic chart stays.
  EXPECT_EQ(LExpectSuccess({"business", "add", "--name", "Atelier 2", "--country", "FR", "--chart", "generic"}), "2\n");
  EXPECT_EQ(LStoredField("Accounts", "1110", "Description", "2"), "Compte-chèque");
  EXPECT_EQ(LExpectSuccess({"business", "add", "--name", "Workshop", "--country", "US"}), "3\n");
  EXPECT_EQ(LStoredField("Accounts", "512000", "Description", "3"), "<absent>");
  LExpectRefused({"business", "add", "--name", "Atelier 3", "--chart", "ifrs"},
                 "Veuillez choisir le plan comptable : pcg (plan comptable général) ou generic.");
}

}  // namespace
