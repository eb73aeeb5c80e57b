// The account totals against a real peer: a book of random balanced entries over three years
// (opening balances included) is posted with Kontavo and written as a ledger-cli journal; the
// trial balance and the profit and loss of several periods (whole years, partial months at
// either end, days inside one month, from the beginning) must give every account the amount
// that `ledger balance` gives it, to the cent, and the trial balance's columns must be equal.
#include <gtest/gtest.h>

#include <map>
#include <random>
#include <sstream>

#include "accounts/accounts.h"
#include "accounts/ledger.h"
#include "accounts/profitandloss.h"
#include "accounts/trialbalance.h"
#include "invoice/shared/profile.h"
#include "llib/gen/date.h"
#include "llib/gen/money.h"
#include "tests/support/testhome.h"

namespace {

constexpr const char* kLedgerProgram = "/usr/bin/ledger";

struct Chart {
  std::vector<std::string> postable;  // live accounts that are not headings
  std::map<std::string, int> types;
};

Chart ReadChart(const LProfile& profile) {
  Chart chart;
  LAccountList accounts(profile);
  for (LDataStoreListIterator<LFileStoreDataStore, LAccount> it(accounts); it.IsValid(); it.Next()) {
    chart.types[it->GetNumber()] = it->GetType();
    if (!it->IsHeader()) chart.postable.push_back(it->GetNumber());
  }
  return chart;
}

std::string LedgerAmount(long long cents) { return LFormatAmountPlain(cents, 2); }

class LedgerCrossCheck : public LHomeTest {
 protected:
  void SetUp() override {
    EXPECT_TRUE(LAccountListCreateDefault(profile_));
    chart_ = ReadChart(profile_);
    std::mt19937 random(20240611);
    // Opening balances on a few balance-sheet accounts; 3999 takes the other side of each.
    journal_ << "2000/01/01 Soldes d'ouverture\n";
    long long openingSum = 0;
    for (const char* number : {"1110", "1120", "1210", "1510", "2150", "2210", "3010"}) {
      long long amount = std::uniform_int_distribution<long long>(1, 5000000)(random);
      LAccount account;
      LAccountList(profile_).Open(account, number);
      EXPECT_TRUE(account.UpdateOpeningBalance(profile_, amount));
      long long stored = account.GetType() == kAccountAsset ? amount : -amount;
      journal_ << "    " << number << "  " << LedgerAmount(stored) << "\n";
      openingSum += stored;
    }
    journal_ << "    3999  " << LedgerAmount(-openingSum) << "\n\n";

    long first = LDate(2022, 1, 1).DayNumber();
    long last = LDate(2024, 12, 31).DayNumber();
    std::uniform_int_distribution<long> day(first, last);
    std::uniform_int_distribution<std::size_t> account(0, chart_.postable.size() - 1);
    std::uniform_int_distribution<long long> amount(-2000000, 2000000);
    std::uniform_int_distribution<int> lineCount(1, 3);
    for (int entry = 1; entry <= kEntries; ++entry) {
      LDate date = LDate::FromDayNumber(day(random));
      LLedgerTransaction txn(date.ToText(), "GJ" + std::to_string(entry), "General");
      long long sum = 0;
      int lines = lineCount(random);
      for (int line = 0; line < lines; ++line) {
        long long cents = amount(random);
        txn.AddLine(chart_.postable[account(random)], "écriture", cents, "", "", "");
        sum += cents;
      }
      txn.AddLine(chart_.postable[account(random)], "écriture", -sum, "", "", "");
      ASSERT_TRUE(LAccountTransactionRecord(profile_, txn));
      journal_ << date.ToText() << " GJ" << entry << "\n";
      for (const auto& line : txn.Lines()) journal_ << "    " << line.account << "  " << LedgerAmount(line.amount) << "\n";
      journal_ << "\n";
    }
    journalPath_ = home_.Path() + "/book.ledger";
    LWriteFile(journalPath_, journal_.str());
  }

  // Every account's non-zero balance over the period, as ledger-cli computes it.
  std::map<std::string, long long> Peer(const LDTPeriod& period) {
    std::vector<std::string> args = {"-f", journalPath_, "balance", "--flat", "--no-total", "--format",
                                     "%(account)|%(display_total)\n"};
    if (!period.from.empty()) {
      args.push_back("-b");
      args.push_back(period.from);
    }
    LDate to;
    EXPECT_TRUE(LDate::Parse(period.to, to));
    args.push_back("-e");
    args.push_back(to.AddDays(1).ToText());  // ledger's end date is exclusive
    LRunResult run = LRunProgram(kLedgerProgram, args);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    std::map<std::string, long long> balances;
    std::istringstream lines(run.out);
    for (std::string line; std::getline(lines, line);) {
      std::size_t bar = line.find('|');
      long long cents = 0;
      EXPECT_TRUE(bar != std::string::npos && LParseAmount(line.substr(bar + 1), 2, cents)) << line;
      if (cents != 0) balances[line.substr(0, bar)] = cents;
    }
    return balances;
  }

  static std::string NumberOf(const std::string& label) { return label.substr(0, label.find(' ')); }

  static constexpr int kEntries = 2500;
  LProfile profile_;
  Chart chart_;
  std::ostringstream journal_;
  std::string journalPath_;
};

const LDTPeriod kPeriods[] = {
    {"2022-01-01", "2022-12-31"}, {"2023-01-01", "2023-12-31"}, {"2024-01-01", "2024-12-31"},
    {"2022-02-10", "2024-04-15"}, {"2023-03-15", "2023-03-20"}, {"2023-01-01", "2023-05-17"},
    {"2022-07-19", "2022-10-31"}, {"", "2023-06-30"},           {"", "2024-02-29"},
    {"", "2024-12-31"},           {"2024-02-01", "2024-02-29"}, {"2023-11-30", "2024-01-01"},
};

// One book serves every period and both statements: posting it is most of the test's time.
TEST_F(LedgerCrossCheck, TrialBalanceAndProfitAndLossAgreeWithLedgerBalance) {
  for (const LDTPeriod& period : kPeriods) {
    SCOPED_TRACE(period.from + " .. " + period.to);
    std::map<std::string, long long> peer = Peer(period);
    LReportTable trial;
    ASSERT_TRUE(LTrialBalance(profile_, period, {}, trial));
    std::map<std::string, long long> ours;
    for (const auto& row : trial.rows)
      if (row.kind == LReportRowKind::kAccount) ours[NumberOf(row.label)] = row.values[0] ? *row.values[0] : -*row.values[1];
    EXPECT_EQ(ours, peer);
    ASSERT_EQ(trial.rows.back().label, "Total");
    EXPECT_EQ(*trial.rows.back().values[0], *trial.rows.back().values[1]);
    EXPECT_GT(*trial.rows.back().values[0], 0);

    // The profit and loss shows income with its sign turned; the peer's net profit is minus the
    // sum of the income and expense accounts.
    LReportTable profit;
    ASSERT_TRUE(LProfitAndLoss(profile_, period, {}, profit));
    ours.clear();
    for (const auto& row : profit.rows) {
      if (row.kind != LReportRowKind::kAccount) continue;
      std::string number = NumberOf(row.label);
      ours[number] = chart_.types[number] == kAccountIncome ? -*row.values[0] : *row.values[0];
    }
    std::erase_if(peer, [&](const auto& entry) {
      return chart_.types[entry.first] != kAccountIncome && chart_.types[entry.first] != kAccountExpense;
    });
    long long netProfit = 0;
    for (const auto& entry : peer) netProfit -= entry.second;
    EXPECT_FALSE(peer.empty());
    EXPECT_EQ(ours, peer);
    ASSERT_EQ(profit.rows.back().label, "Bénéfice net");
    EXPECT_EQ(*profit.rows.back().values[0], netProfit);
  }
}

}  // namespace
