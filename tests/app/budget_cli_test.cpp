// Budgets through the real binary: a budget typed as a yearly figure (spread to the cent) and as
// twelve months, listed, replaced, and compared with the books month by month on a hand-worked
// example; the refusals.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/support/testhome.h"

namespace {

class BudgetCliTest : public LHomeTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(LRunKontavo({"account", "defaults"}).exitCode, 0);
    Journal("2025-01-20", "dr:1110:5000", "cr:4110:5000");  // January's sales
    Journal("2025-02-28", "dr:6410:1200", "cr:1110:1200");  // rent
    Journal("2025-03-31", "dr:6410:1000", "cr:1110:1000");
  }
  static void Journal(const char* date, const char* debit, const char* credit) {
    static int counter = 0;
    LRunResult run = LRunKontavo({"--yes", "journal", "add", "--date", date, "--type", "0", "--ref",
                                  "B" + std::to_string(++counter), "--desc", "x", debit, credit});
    ASSERT_EQ(run.exitCode, 0) << run.err;
  }
};

TEST_F(BudgetCliTest, BudgetAgainstActualMonthByMonthWithDifferenceAndPercentage) {
  LRunResult added = LRunKontavo({"budget", "add", "Plan", "--year", "2025", "6410=12000.05",
                                  "4110=5000/0/0/0/0/0/0/0/0/0/0/0"});
  ASSERT_EQ(added.exitCode, 0) << added.err;
  EXPECT_EQ(LRunKontavo({"budget", "list"}).out, "Plan\t2025\t2\t17000.05\n");
  // 1,200,005 cents over twelve months: 100,001 for the first five, 100,000 after.
  nlohmann::json list = LRunKontavoJson({"budget", "list"});
  EXPECT_EQ(list[0]["lines"][0]["months"][4], 100001);
  EXPECT_EQ(list[0]["lines"][0]["months"][5], 100000);

  nlohmann::json report = LRunKontavoJson({"report", "budget", "Plan", "--from", "2025-01-01", "--to", "2025-03-31"});
  EXPECT_EQ(report["title"], "Budget et réalisé : Plan");
  EXPECT_EQ(report["columns"], nlohmann::json::array({"Budget", "Réel", "Écart", "Écart %"}));
  struct Row {
    const char* label;
    const char* kind;
    nlohmann::json values;
    const char* percent;
  };
  const Row expected[] = {
      {"6410 Loyer", "heading", {nullptr, nullptr, nullptr, nullptr}, nullptr},
      {"janvier 2025", "account", {100001, 0, -100001, nullptr}, "-100,0 %"},
      {"février 2025", "account", {100001, 120000, 19999, nullptr}, "20,0 %"},
      {"mars 2025", "account", {100001, 100000, -1, nullptr}, "0,0 %"},
      {"Total 6410 Loyer", "total", {300003, 220000, -80003, nullptr}, "-26,7 %"},
      {"4110 Recettes générales", "heading", {nullptr, nullptr, nullptr, nullptr}, nullptr},
      {"janvier 2025", "account", {500000, 500000, 0, nullptr}, "0,0 %"},
      {"février 2025", "account", {0, 0, 0, nullptr}, ""},
      {"mars 2025", "account", {0, 0, 0, nullptr}, ""},
      {"Total 4110 Recettes générales", "total", {500000, 500000, 0, nullptr}, "0,0 %"},
      {"Total du budget", "result", {800003, 720000, -80003, nullptr}, "-10,0 %"},
  };
  ASSERT_EQ(report["rows"].size(), std::size(expected)) << report.dump(1);
  for (std::size_t r = 0; r < std::size(expected); ++r) {
    const nlohmann::json& row = report["rows"][r];
    EXPECT_EQ(row["label"], expected[r].label);
    EXPECT_EQ(row["kind"], expected[r].kind);
    if (expected[r].percent == nullptr) continue;
    EXPECT_EQ(row["values"], expected[r].values) << expected[r].label;
    EXPECT_EQ(row["texts"][3], expected[r].percent) << expected[r].label;
  }

  // Without dates: the budget's fiscal year, twelve months an account.
  nlohmann::json year = LRunKontavoJson({"report", "budget", "Plan"});
  EXPECT_EQ(year["rows"].size(), 2u * 14 + 1);
  EXPECT_EQ(year["rows"].back()["values"][0], 1700005);

  // Replaced under the same name: the account left out goes.
  ASSERT_EQ(LRunKontavo({"budget", "add", "Plan", "--year", "2025", "6410=1200"}).exitCode, 0);
  EXPECT_EQ(LRunKontavo({"budget", "list"}).out, "Plan\t2025\t1\t1200.00\n");
}

TEST_F(BudgetCliTest, RefusalsLeaveTheBudgetsAsTheyWere) {
  LRunResult unknown = LRunKontavo({"budget", "add", "B", "--year", "2025", "9999=10"});
  EXPECT_EQ(unknown.exitCode, 1);
  EXPECT_NE(unknown.err.find("9999"), std::string::npos) << unknown.err;
  EXPECT_EQ(LRunKontavo({"budget", "add", "B", "--year", "2025", "6410=1/2/3"}).exitCode, 2);
  EXPECT_EQ(LRunKontavo({"budget", "add", "B", "--year", "2025", "6410=abc"}).exitCode, 2);
  EXPECT_EQ(LRunKontavo({"budget", "add", "B", "--year", "2025", "6410=1", "6410=2"}).exitCode, 1);
  EXPECT_EQ(LRunKontavo({"budget", "add", "B", "--year", "2025", "6300=1"}).exitCode, 1);  // a heading
  EXPECT_EQ(LRunKontavo({"budget", "list"}).out, "");
  LRunResult missing = LRunKontavo({"report", "budget", "Nope"});
  EXPECT_EQ(missing.exitCode, 1);
  EXPECT_NE(missing.err.find("Budget introuvable : Nope"), std::string::npos);
  EXPECT_EQ(LRunKontavo({"report", "pl", "extra"}).exitCode, 2);  // only a budget or vehicle takes a subject
  EXPECT_EQ(LRunKontavo({"budget", "delete", "Nope"}).exitCode, 1);
}

}  // namespace
