// "kontavo report" through the real binary: each report and format, the period options and
// their defaults, consolidation, and the refusals.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "accounts/accounts.h"
#include "accounts/ledger.h"
#include "invoice/shared/profile.h"
#include "llib/gen/file.h"
#include "tests/support/testhome.h"

namespace {

class ReportCliTest : public LHomeTest {
 protected:
  void SetUp() override {
    LProfile profile;
    EXPECT_TRUE(LAccountListCreateDefault(profile));
    Post(profile, "2023-06-15", "1110", "4110", 200000);
    Post(profile, "2024-01-10", "1110", "4110", 500000);
    Post(profile, "2024-03-06", "6410", "1110", 80000);
  }
  static void Post(LProfile& profile, const char* date, const char* debit, const char* credit, long long amount) {
    static int counter = 0;
    LLedgerTransaction txn(date, "GJ" + std::to_string(++counter), "General");
    txn.AddLine(debit, "test", amount, "", "", "");
    txn.AddLine(credit, "test", -amount, "", "", "");
    ASSERT_TRUE(LAccountTransactionRecord(profile, txn));
  }
  static nlohmann::json RowOf(const nlohmann::json& report, const std::string& label) {
    for (const auto& row : report["rows"])
      if (row["label"] == label) return row;
    ADD_FAILURE() << "no row " << label;
    return {};
  }
};

TEST_F(ReportCliTest, ProfitAndLossAsJsonWithKindsAndCents) {
  nlohmann::json report = LRunKontavoJson({"report", "pl", "--from", "2024-01-01", "--to", "2024-12-31"});
  EXPECT_EQ(report["title"], "Compte de résultat");
  EXPECT_EQ(report["columns"], nlohmann::json::array({"Du 2024-01-01 au 2024-12-31"}));
  EXPECT_EQ(RowOf(report, "Recettes")["kind"], "heading");
  EXPECT_EQ(RowOf(report, "4110 Recettes générales")["values"][0], 500000);
  EXPECT_EQ(RowOf(report, "4110 Recettes générales")["kind"], "account");
  EXPECT_EQ(RowOf(report, "Revenu total :")["kind"], "total");
  EXPECT_EQ(RowOf(report, "Bénéfice net")["kind"], "result");
  EXPECT_EQ(RowOf(report, "Bénéfice net")["values"][0], 420000);
  // "--format json" gives the same document as the global --json.
  LRunResult asFormat = LRunKontavo({"report", "pl", "--from", "2024-01-01", "--to", "2024-12-31", "--format", "json"});
  EXPECT_EQ(nlohmann::json::parse(asFormat.out, nullptr, false), report);
}

TEST_F(ReportCliTest, ComparisonDefaultsToTheYearBefore) {
  nlohmann::json report = LRunKontavoJson({"report", "pl-compare", "--from", "2024-01-01", "--to", "2024-12-31"});
  EXPECT_EQ(report["columns"][1], "Du 2023-01-01 au 2023-12-31");
  EXPECT_EQ(RowOf(report, "Bénéfice net")["values"], nlohmann::json::array({420000, 200000}));
  nlohmann::json chosen = LRunKontavoJson({"report", "pl-compare", "--from", "2024-01-01", "--to", "2024-01-31", "--compare-from",
                                "2024-03-01", "--compare-to", "2024-03-31"});
  EXPECT_EQ(RowOf(chosen, "Bénéfice net")["values"], nlohmann::json::array({500000, -80000}));
}

TEST_F(ReportCliTest, BalanceSheetAsAtDateAsText) {
  LRunResult run = LRunKontavo({"report", "bs", "--date", "2024-12-31"});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_NE(run.out.find("Bilan\nAu 2024-12-31\n"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("Bénéfices non distribués"), std::string::npos);
  EXPECT_NE(run.out.find("Total capitaux propres :"), std::string::npos);
  nlohmann::json report = LRunKontavoJson({"report", "bs", "--date", "2023-12-31"});
  EXPECT_EQ(RowOf(report, "Bénéfices non distribués")["values"][0], 200000);
  EXPECT_EQ(RowOf(report, "Total capitaux propres :")["values"][0], RowOf(report, "Actif net")["values"][0]);
}

TEST_F(ReportCliTest, TrialBalanceAsCsvAndChartAsHtml) {
  LRunResult csv = LRunKontavo({"report", "tb", "--to", "2024-12-31", "--format", "csv"});
  ASSERT_EQ(csv.exitCode, 0) << csv.err;
  EXPECT_NE(csv.out.find("\"\",\"Débit\",\"Crédit\"\r\n"), std::string::npos) << csv.out;
  EXPECT_NE(csv.out.find("\"Total\",\"7000.00\",\"7000.00\"\r\n"), std::string::npos) << csv.out;

  LRunResult html = LRunKontavo({"report", "coa", "--format", "html"});
  ASSERT_EQ(html.exitCode, 0) << html.err;
  EXPECT_NE(html.out.find("<td class=\"label indent1\">1110 Compte-chèque</td><td class=\"detail\">Débit</td>"),
            std::string::npos)
      << html.out;
}

TEST_F(ReportCliTest, CashFlowForTheYearOfTheEndDate) {
  nlohmann::json report = LRunKontavoJson({"report", "cf", "--to", "2024-12-31"});
  EXPECT_EQ(report["columns"][0], "Du 2024-01-01 au 2024-12-31");
  EXPECT_EQ(RowOf(report, "Trésorerie au début de la période")["values"][0], 200000);
  EXPECT_EQ(RowOf(report, "Trésorerie à la fin de la période")["values"][0], 620000);
}

// With a year ending on 31 March, the default period is the fiscal year of the end date, the
// compared one the fiscal year before; the mileage report stays on the calendar year.
TEST_F(ReportCliTest, DefaultPeriodIsTheFiscalYearOfTheEndDate) {
  ASSERT_EQ(LRunKontavo({"record", "set", "Misc", "Company", "FiscalYearEnd=3", "FiscalYearEndDay=31"}).exitCode, 0);
  nlohmann::json pl = LRunKontavoJson({"report", "pl", "--to", "2024-03-31"});
  EXPECT_EQ(pl["columns"], nlohmann::json::array({"Du 2023-04-01 au 2024-03-31"}));
  EXPECT_EQ(RowOf(pl, "Bénéfice net")["values"][0], 200000 + 500000 - 80000);
  nlohmann::json cf = LRunKontavoJson({"report", "cf", "--to", "2024-02-29"});
  EXPECT_EQ(cf["columns"][0], "Du 2023-04-01 au 2024-02-29");
  EXPECT_EQ(RowOf(cf, "Trésorerie au début de la période")["values"][0], 0);
  nlohmann::json compared = LRunKontavoJson({"report", "pl-compare", "--to", "2024-03-31"});
  EXPECT_EQ(compared["columns"], nlohmann::json::array({"Du 2023-04-01 au 2024-03-31", "Du 2022-04-01 au 2023-03-31"}));
  LRunResult mileage = LRunKontavo({"report", "mileage", "--to", "2024-03-31"});
  ASSERT_EQ(mileage.exitCode, 0) << mileage.err;
  EXPECT_NE(mileage.out.find("2024-01-01"), std::string::npos) << mileage.out;
}

TEST_F(ReportCliTest, ConsolidationOverBusinessesByNumber) {
  ASSERT_TRUE(LFile::MakeFolder(home_.SharedFolder() + "/MultiBus/1"));
  {
    LProfile other(home_.SharedFolder() + "/MultiBus/1");
    EXPECT_TRUE(LAccountListCreateDefault(other));
    Post(other, "2024-02-02", "1110", "4110", 1001);
  }
  nlohmann::json report = LRunKontavoJson({"report", "pl", "--from", "2024-01-01", "--to", "2024-12-31", "--consolidate",
                                "0=1,1=0.5"});
  EXPECT_EQ(RowOf(report, "4110 Recettes générales")["values"][0], 500000 + 500);
  LRunResult bad = LRunKontavo({"report", "pl", "--consolidate", "7=1"});
  EXPECT_EQ(bad.exitCode, 1);
  EXPECT_FALSE(bad.err.empty());
}

TEST_F(ReportCliTest, NegativeAmountsInParenthesesWhenTheOptionIsOn) {
  std::vector<std::string> march = {"report", "pl", "--from", "2024-03-01", "--to", "2024-03-31"};
  LRunResult minus = LRunKontavo(march);
  ASSERT_EQ(minus.exitCode, 0) << minus.err;
  EXPECT_NE(minus.out.find("-$800.00\n"), std::string::npos) << minus.out;
  ASSERT_EQ(LRunKontavo({"record", "set", "Misc", "Options", "UseParenthesesForNegative=1"}).exitCode, 0);
  LRunResult parentheses = LRunKontavo(march);
  EXPECT_NE(parentheses.out.find("($800.00)\n"), std::string::npos) << parentheses.out;
  EXPECT_EQ(parentheses.out.find("-$"), std::string::npos);
}

TEST_F(ReportCliTest, WrongUsageExitsTwo) {
  EXPECT_EQ(LRunKontavo({"report"}).exitCode, 2);
  EXPECT_EQ(LRunKontavo({"report", "nothing"}).exitCode, 2);
  EXPECT_EQ(LRunKontavo({"report", "pl", "--from", "2024-02-30"}).exitCode, 2);
  EXPECT_EQ(LRunKontavo({"report", "pl", "--format", "odt"}).exitCode, 2);
  EXPECT_EQ(LRunKontavo({"report", "pl", "--bogus"}).exitCode, 2);
}

}  // namespace
