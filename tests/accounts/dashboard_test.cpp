// The main page's charts: the months of a fiscal year with their income, expenses and cash at
// the month's end, worked by hand from real postings, and the charts' figures tables.
#include "accounts/dashboard.h"

#include <gtest/gtest.h>

#include "accounts/accounts.h"
#include "accounts/ledger.h"
#include "accounts/webdashboard.h"
#include "invoice/shared/profile.h"
#include "tests/support/testhome.h"

namespace {

class DashboardTest : public LHomeTest {
 protected:
  void SetUp() override { ASSERT_TRUE(LAccountListCreateDefault(profile_)); }
  void Post(const char* date, const char* debit, const char* credit, long long amount) {
    static int counter = 0;
    LLedgerTransaction txn(date, "D" + std::to_string(++counter), "General");
    txn.AddLine(debit, "test", amount, "", "", "");
    txn.AddLine(credit, "test", -amount, "", "", "");
    ASSERT_TRUE(LAccountTransactionRecord(profile_, txn));
  }
  LProfile profile_;
};

TEST_F(DashboardTest, MonthsOfTheYearWithIncomeExpensesAndCashAtEachEnd) {
  LAccount bank;
  ASSERT_TRUE(LAccountList(profile_).Open(bank, "1110"));
  ASSERT_TRUE(bank.UpdateOpeningBalance(profile_, 100000));  // 1,000.00 in the bank before any posting
  bank.DetachWithoutSave();
  Post("2024-12-20", "1110", "4110", 50000);   // last year: in the cash, not in the months
  Post("2025-02-03", "1110", "4110", 300000);  // a sale paid at once
  Post("2025-02-28", "6410", "1110", 120000);  // rent
  Post("2025-03-10", "1210", "4110", 70000);   // a sale on credit: income, not cash
  Post("2025-05-02", "1110", "1210", 70000);   // ... paid in May: cash, not income
  Post("2025-06-30", "6410", "2110", 20000);   // paid by credit card: cash goes down (a liability of class 0)
  Post("2025-08-01", "1110", "4110", 99900);   // after today: income of August, no cash yet

  std::vector<LDashboardMonth> months = LDashboardMonths(profile_, {"2025-01-01", "2025-12-31"}, LDate(2025, 6, 15));
  ASSERT_EQ(months.size(), 12u);
  struct Expected {
    long long income, expense;
    std::optional<long long> cash;
  };
  const Expected expected[12] = {{0, 0, 150000},      {300000, 120000, 330000}, {70000, 0, 330000},
                                 {0, 0, 330000},      {0, 0, 400000},           {0, 20000, 380000},
                                 {0, 0, std::nullopt}, {99900, 0, std::nullopt}, {0, 0, std::nullopt},
                                 {0, 0, std::nullopt}, {0, 0, std::nullopt},    {0, 0, std::nullopt}};
  for (int m = 0; m < 12; ++m) {
    SCOPED_TRACE(m + 1);
    EXPECT_EQ(months[m].year, 2025);
    EXPECT_EQ(months[m].month, m + 1);
    EXPECT_EQ(months[m].income, expected[m].income);
    EXPECT_EQ(months[m].expense, expected[m].expense);
    EXPECT_EQ(months[m].cash, expected[m].cash);
  }

  // A fiscal year across two calendar years has its months in order, year carried over.
  std::vector<LDashboardMonth> across = LDashboardMonths(profile_, {"2024-07-01", "2025-06-30"}, LDate(2025, 6, 15));
  ASSERT_EQ(across.size(), 12u);
  EXPECT_EQ(across.front().month, 7);
  EXPECT_EQ(across[5].income, 50000);  // December 2024
  EXPECT_EQ(across[7].income, 300000);  // February 2025

  // The page: both charts drawn, their figures in tables, a month not begun left empty.
  std::string html = LWebDashboardCharts(profile_, LDate(2025, 6, 15));
  EXPECT_NE(html.find("<svg class='chart barchart'"), std::string::npos);
  EXPECT_NE(html.find("<svg class='chart linechart'"), std::string::npos);
  EXPECT_NE(html.find("<table class=charttable><caption>Recettes et dépenses par mois</caption>"), std::string::npos);
  EXPECT_NE(html.find("<tr><th scope=row>févr.</th><td>$3,000.00</td><td>$1,200.00</td></tr>"), std::string::npos)
      << html;
  EXPECT_NE(html.find("<tr><th scope=row>mai</th><td>$4,000.00</td></tr>"), std::string::npos);
  EXPECT_NE(html.find("<tr><th scope=row>juil.</th><td></td></tr>"), std::string::npos);
  EXPECT_NE(html.find("<tr><th scope=row>janv. 25</th>"), std::string::npos);
}

}  // namespace
