// The financial statements over a business with the default chart and real postings: which
// sections, headings and accounts show (zero balances on and off), the heading totals, the
// results, the balance sheet balancing on its retained earnings, the trial balance columns,
// the cash-flow statement tying to the cash accounts, the chart report's section order. The
// comparison and the consolidation over businesses are proved through the command line
// (tests/app/report_cli_test.cpp).
#include <gtest/gtest.h>

#include <initializer_list>
#include <utility>

#include "accounts/accounts.h"
#include "accounts/balancesheet.h"
#include "accounts/cfstmt.h"
#include "accounts/chartofaccounts.h"
#include "accounts/ledger.h"
#include "accounts/profitandloss.h"
#include "accounts/trialbalance.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "tests/support/testhome.h"

namespace {

using Lines = std::initializer_list<std::pair<const char*, long long>>;

void Post(LProfile& profile, const char* date, Lines lines) {
  static int counter = 0;
  LLedgerTransaction txn(date, "GJ" + std::to_string(++counter), "General");
  for (const auto& [account, amount] : lines) txn.AddLine(account, "écriture", amount, "", "", "");
  ASSERT_EQ(txn.Sum(), 0);
  ASSERT_TRUE(LAccountTransactionRecord(profile, txn));
}

const LReportRow* Row(const LReportTable& table, std::string_view label) {
  for (const auto& row : table.rows)
    if (row.label == label) return &row;
  return nullptr;
}

long long Value(const LReportTable& table, std::string_view label, std::size_t column = 0) {
  const LReportRow* row = Row(table, label);
  if (row == nullptr || column >= row->values.size() || !row->values[column]) {
    ADD_FAILURE() << "no amount for " << label;
    return -999999;
  }
  return *row->values[column];
}

// The amounts of several rows in one column.
std::vector<long long> Values(const LReportTable& table, std::initializer_list<std::string_view> labels,
                              std::size_t column = 0) {
  std::vector<long long> values;
  for (std::string_view label : labels) values.push_back(Value(table, label, column));
  return values;
}

std::vector<std::string> Labels(const LReportTable& table) {
  std::vector<std::string> labels;
  for (const auto& row : table.rows) labels.push_back(std::string(row.indent * 2, ' ') + row.label);
  return labels;
}

class StatementsTest : public LHomeTest {
 protected:
  void SetUp() override {
    EXPECT_TRUE(LAccountListCreateDefault(profile_));
    // 2023: capital 10,000.00; 2024: sales, cost of sales, rent, advertising under 6300, a loan.
    Post(profile_, "2023-12-15", {{"1110", 1000000}, {"3010", -1000000}});
    Post(profile_, "2024-01-10", {{"1210", 500000}, {"4110", -500000}});
    Post(profile_, "2024-02-10", {{"1110", 400000}, {"1210", -400000}});
    Post(profile_, "2024-03-05", {{"6110", 120000}, {"1110", -120000}});
    Post(profile_, "2024-03-06", {{"6410", 80000}, {"1110", -80000}});
    Post(profile_, "2024-04-01", {{"6310", 15000}, {"6320", 5000}, {"2110", -20000}});
    Post(profile_, "2024-05-20", {{"1110", 300000}, {"2150", -300000}});
    Post(profile_, "2024-06-30", {{"1530", 250000}, {"1110", -250000}});
  }
  void SetOption(const char* name, bool on) {
    LOptions options;
    options.OpenFrom(profile_);
    options.SetBool(name, on);
    EXPECT_TRUE(options.Flush());
  }
  void DeleteAccount(const char* number) {
    LAccount account;
    LAccountList(profile_).Open(account, number);
    account.SetBool("Deleted", true);
    EXPECT_TRUE(account.Flush());
  }
  LReportTable ProfitAndLoss(std::string from = "2024-01-01", std::string to = "2024-12-31") {
    LReportTable table;
    EXPECT_TRUE(LProfitAndLoss(profile_, {from, to}, {}, table));
    return table;
  }

  LProfile profile_;
};

TEST_F(StatementsTest, ProfitAndLossSectionsHeadingsAndResults) {
  LReportTable table = ProfitAndLoss();
  EXPECT_EQ(Labels(table), (std::vector<std::string>{
                               "Recettes", "  4110 Recettes générales", "Revenu total :",
                               "Prix de revient de distribution", "  6110 Achats de produits généraux",
                               "Prix de revient de distribution total :", "Bénéfice brut", "Frais",
                               "  Publicité et promotion", "    6310 Publicité", "    6320 Site Web",
                               "  Total Publicité et promotion", "  6410 Loyer", "Total charges :",
                               "Total bénéfice d'exploitation", "Bénéfice net"}));
  EXPECT_EQ(Values(table, {"Revenu total :", "Bénéfice brut", "Total Publicité et promotion", "Total charges :",
                           "Total bénéfice d'exploitation", "Bénéfice net"}),
            (std::vector<long long>{500000, 380000, 20000, 100000, 280000, 280000}));
  EXPECT_EQ(Row(table, "Recettes")->kind, LReportRowKind::kHeading);
  EXPECT_EQ(Row(table, "Revenu total :")->kind, LReportRowKind::kTotal);
  EXPECT_EQ(Row(table, "Bénéfice net")->kind, LReportRowKind::kResult);
}

TEST_F(StatementsTest, ZeroBalancesOnShowEmptySectionsAndHeadingsWithZeroTotals) {
  Post(profile_, "2025-02-01", {{"6410", 100}, {"1110", -100}});
  LReportTable off = ProfitAndLoss("2025-01-01", "2025-12-31");
  for (const char* label : {"Autres revenus", "Total autres revenus :", "Publicité et promotion",
                            "6420 Frais généraux et de bureau"})
    EXPECT_EQ(Row(off, label), nullptr) << label;
  EXPECT_EQ(Value(off, "Bénéfice net"), -100);
  SetOption("IncludeZeroBalances", true);
  LReportTable on = ProfitAndLoss("2025-01-01", "2025-12-31");
  ASSERT_NE(Row(on, "Autres revenus"), nullptr);
  ASSERT_NE(Row(on, "Publicité et promotion"), nullptr);
  EXPECT_EQ(Values(on, {"Total autres revenus :", "Total Publicité et promotion", "6420 Frais généraux et de bureau",
                        "Bénéfice net"}),
            (std::vector<long long>{0, 0, 0, -100}));
}

TEST_F(StatementsTest, BalanceSheetBalancesOnRetainedEarnings) {
  LReportTable table;
  ASSERT_TRUE(LBalanceSheet(profile_, "2024-12-31", {}, table));
  EXPECT_EQ(Values(table, {"1110 Compte-chèque", "Total des actifs :", "Total du passif :", "Actif net",
                           "3010 Capital émis", "Bénéfices non distribués", "Total capitaux propres :"}),
            (std::vector<long long>{1250000, 1600000, 320000, 1280000, 1000000, 280000, 1280000}));
}

TEST_F(StatementsTest, BalanceSheetIncludesOpeningBalances) {
  LAccount account;
  LAccountList(profile_).Open(account, "1120");
  EXPECT_TRUE(account.UpdateOpeningBalance(profile_, 70000));
  LReportTable table;
  ASSERT_TRUE(LBalanceSheet(profile_, "2023-12-31", {}, table));
  EXPECT_EQ(Values(table, {"1120 Compte épargne", "3999 Comptabilité historique", "Total capitaux propres :"}),
            (std::vector<long long>{70000, 70000, 1070000}));
  EXPECT_EQ(Row(table, "Bénéfices non distribués"), nullptr);
}

TEST_F(StatementsTest, TrialBalanceColumnsAreEqualAndDeletedAccountsLeftOut) {
  Post(profile_, "2024-07-01", {{"1120", 100}, {"1110", -100}});
  Post(profile_, "2024-07-02", {{"1120", -100}, {"1110", 100}});
  DeleteAccount("1120");
  LReportTable table;
  ASSERT_TRUE(LTrialBalance(profile_, {"", "2024-06-30"}, {}, table));
  EXPECT_EQ(table.columns, (std::vector<std::string>{"Débit", "Crédit"}));
  const LReportRow* total = Row(table, "Total");
  ASSERT_NE(total, nullptr);
  EXPECT_EQ(*total->values[0], *total->values[1]);
  EXPECT_EQ(*total->values[0], 1250000 + 100000 + 250000 + 120000 + 80000 + 15000 + 5000);
  EXPECT_EQ(*Row(table, "4110 Recettes générales")->values[1], 500000);
  EXPECT_FALSE(Row(table, "4110 Recettes générales")->values[0].has_value());
  SetOption("IncludeZeroBalances", true);
  LReportTable withZero;
  ASSERT_TRUE(LTrialBalance(profile_, {"", "2024-06-30"}, {}, withZero));
  EXPECT_EQ(Row(withZero, "1120 Compte épargne"), nullptr);
  EXPECT_EQ(Value(withZero, "1190 Fonds de caisse"), 0);
}

TEST_F(StatementsTest, CashFlowTiesToTheCashAccounts) {
  LReportTable table;
  ASSERT_TRUE(LCashFlowStatement(profile_, {"2024-01-01", "2024-12-31"}, {}, table));
  // Cash: 1110 (10,000.00 at the start, 12,500.00 at the end) and the credit card 2110.
  EXPECT_EQ(Values(table, {"Revenu net", "1210 Comptes clients", "1530 Ordinateurs", "2150 Prêt",
                           "Net à payer réalisé par les activités d'exploitation",
                           "Net à payer réalisé par les activités de financement", "Trésorerie au début de la période",
                           "Net à payer modifié pour la période", "Trésorerie à la fin de la période"}),
            (std::vector<long long>{280000, -100000, -250000, 300000, 280000 - 100000 - 250000 + 300000, 0, 1000000,
                                    250000 - 20000, 1250000 - 20000}));
  EXPECT_EQ(Row(table, "3010 Capital émis"), nullptr);
  LReportTable fromStart;
  ASSERT_TRUE(LCashFlowStatement(profile_, {"", "2024-12-31"}, {}, fromStart));
  EXPECT_EQ(Values(fromStart, {"Trésorerie au début de la période", "3010 Capital émis", "Trésorerie à la fin de la période"}),
            (std::vector<long long>{0, 1000000, 1250000 - 20000}));
}

TEST_F(StatementsTest, ChartReportSectionsInTheirFixedOrder) {
  DeleteAccount("1120");
  LReportTable table;
  LChartOfAccounts(profile_).GenerateReport(table);
  std::vector<std::string> headings;
  for (const auto& row : table.rows)
    if (row.kind == LReportRowKind::kHeading) headings.push_back(row.label);
  EXPECT_EQ(headings, (std::vector<std::string>{"Actif", "Recettes", "Passif", "Dépenses", "Capitaux propres"}));
  EXPECT_EQ(Row(table, "1120 Compte épargne"), nullptr);
  // Each account shows its normal side.
  for (auto [label, side] : {std::pair{"1110 Compte-chèque", "Débit"}, {"2110 Carte de crédit", "Crédit"},
                             {"3999 Comptabilité historique", "Crédit"}, {"4110 Recettes générales", "Crédit"},
                             {"6410 Loyer", "Débit"}}) {
    ASSERT_NE(Row(table, label), nullptr) << label;
    EXPECT_EQ(Row(table, label)->detail, side) << label;
  }
  EXPECT_EQ(table.rows[1].label, "1110 Compte-chèque");
}

}  // namespace
