// Account totals: how a period is split between month buckets and day files (and which day
// files are read), opening balances, the account filter, several businesses with their
// factors, the order and merging of items, the heading rule and the folds that consume items.
#include "accounts/accounttotaller.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <limits>
#include <tuple>

#include "accounts/accounts.h"
#include "accounts/ledger.h"
#include "invoice/shared/profile.h"
#include "llib/gen/file.h"
#include "tests/support/testhome.h"

namespace {

// Buckets and day files are written separately so that each test sees which source a total
// came from: a whole month counted from its bucket never shows the day-file amounts of that
// month, and a partial month never shows the bucket.
class TotalerTest : public LHomeTest {
 protected:
  void SetUp() override {
    EXPECT_TRUE(LCreateAccount(profile_, "1110", "Compte-chèque", kAccountAsset, true, 0, kClassificationNone));
    EXPECT_TRUE(LCreateAccount(profile_, "6410", "Loyer", kAccountExpense, false, 1, kClassificationNone));
  }
  static void SetBucket(LProfile& profile, const char* number, int year, int month, long long amount) {
    LAccount account;
    LAccountList(profile).Open(account, number);
    int index = year * 12 + month - 1;
    account.SetInt64(LAccountBucketField(index), amount);
    if (account.GetInt64("BalanceFirst", index) >= index) account.SetInt64("BalanceFirst", index);
    EXPECT_TRUE(account.Flush());
  }
  void SetField(const char* number, const char* field, long long value) {
    LAccount account;
    LAccountList(profile_).Open(account, number);
    account.SetInt64(field, value);
    EXPECT_TRUE(account.Flush());
  }
  // A journal line in the day file only (no bucket moves).
  static void DayLine(LProfile& profile, const std::string& date, const char* account, long long amount) {
    LLedgerTransaction txn(date, "GJ1", "General");
    txn.AddLine(account, "test", amount, "", "", "");
    ASSERT_TRUE(LLedgerTransactionRecord(profile, txn));
  }
  LAccountTotalerList Total(std::string from, std::string to, std::string filter = "",
                            std::vector<LProfilesAndRates> businesses = {}) {
    LAccountTotalerProcess totaler(profile_);
    totaler.from = std::move(from);
    totaler.to = std::move(to);
    totaler.filter = std::move(filter);
    totaler.businesses = std::move(businesses);
    LProcessInterfaceVoid quiet;
    EXPECT_EQ(Process(quiet, totaler), kProcessFinished);
    return std::move(totaler.result);
  }
  static long long Amount(const LAccountTotalerList& list, const char* number) {
    const LAccountTotalerItem* item = list.Find(number);
    return item == nullptr ? -999999 : item->amount;
  }

  LProfile profile_;
};

// The split as text: "opening+" when opening balances count, the whole months "YYYY-MM..YYYY-MM"
// (or "-" when none), then the partial first (A) and last (B) months read from day files.
std::string Describe(const LAccountTotalerSplit& s) {
  auto month = [](int index) {
    char text[16];
    std::snprintf(text, sizeof text, "%.4d-%.2d", index / 12, index % 12 + 1);
    return std::string(text);
  };
  std::string text = s.includeOpening ? "opening+" : "";
  text += s.endIndex < s.startIndex ? "-" : month(s.startIndex) + ".." + month(s.endIndex);
  if (!s.rangeAFrom.empty()) text += " A " + s.rangeAFrom + ".." + s.rangeATo;
  if (!s.rangeBFrom.empty()) text += " B " + s.rangeBFrom + ".." + s.rangeBTo;
  return text;
}

// Partial months close on day 31 whatever the month; the first of a month and its last day are
// whole months; dates that are not days are refused.
TEST(TotalerSplit, WholeMonthsAndPartialMonths) {
  struct Row {
    const char* from;
    const char* to;
    const char* split;  // nullptr: refused
  } rows[] = {
      {"2024-01-01", "2024-12-31", "2024-01..2024-12"},
      {"", "2024-06-30", "opening+0000-01..2024-06"},
      {"2024-03-15", "2024-03-20", "- A 2024-03-15..2024-03-20"},
      {"2024-03-15", "2024-03-31", "- A 2024-03-15..2024-03-31"},
      {"2024-02-10", "2024-04-15", "2024-03..2024-03 A 2024-02-10..2024-02-31 B 2024-04-01..2024-04-15"},
      {"2024-02-01", "2024-02-29", "2024-02..2024-02"},
      {"2023-02-01", "2023-02-28", "2023-02..2023-02"},
      {"2024-01-01", "", nullptr},
      {"2024-13-01", "2024-12-31", nullptr},
      {"", "2023-02-29", nullptr},
  };
  for (const Row& row : rows) {
    LAccountTotalerSplit split;
    bool ok = LAccountTotalerSplitPeriod(row.from, row.to, split);
    EXPECT_EQ(ok, row.split != nullptr) << row.from << " " << row.to;
    if (ok && row.split != nullptr) {
      EXPECT_EQ(Describe(split), row.split) << row.from << " " << row.to;
    }
  }
}

// Day lines worth powers of two and buckets worth tens of thousands show exactly which day files
// and which buckets each period read.
TEST_F(TotalerTest, PeriodsReadWholeMonthsFromBucketsAndPartialMonthsFromTheirDays) {
  SetBucket(profile_, "6410", 2019, 1, 500000);
  SetBucket(profile_, "6410", 2024, 2, 10000);
  SetBucket(profile_, "6410", 2024, 3, 20000);
  SetBucket(profile_, "6410", 2024, 4, 40000);
  SetField("6410", "OpeningBalance", 1000000);
  long long bit = 1;
  for (const char* day : {"02-09", "02-10", "02-29", "03-04", "03-05", "03-20", "03-21", "04-15", "04-16"}) {
    DayLine(profile_, std::string("2024-") + day, "6410", bit);
    bit *= 2;
  }
  for (auto [from, to, expected] : {std::tuple{"2024-01-01", "2024-12-31", 70000LL},
                                    {"2024-03-01", "2024-03-31", 20000LL},
                                    {"2024-03-05", "2024-03-20", 16LL + 32},
                                    {"2024-02-10", "2024-04-15", 2LL + 4 + 20000 + 128},
                                    {"", "2024-03-31", 1000000LL + 500000 + 10000 + 20000}})
    EXPECT_EQ(Amount(Total(from, to), "6410"), expected) << from << " " << to;
  // Buckets below "BalanceFirst" are not counted.
  SetField("6410", "BalanceFirst", 2024 * 12 + 2);
  EXPECT_EQ(Amount(Total("2024-01-01", "2024-12-31"), "6410"), 60000);
}

TEST_F(TotalerTest, FilterKeepsOneAccountInRecordsAndDayFiles) {
  SetBucket(profile_, "6410", 2024, 3, 100);
  DayLine(profile_, "2024-04-02", "6410", 5);
  DayLine(profile_, "2024-04-02", "1110", -5);
  LAccountTotalerList list = Total("2024-03-01", "2024-04-10", "6410");
  ASSERT_EQ(list.Items().size(), 1u);
  EXPECT_EQ(Amount(list, "6410"), 105);
}

TEST_F(TotalerTest, EveryAccountGetsAnItemInNumberOrderDeletedIncludedUnknownDropped) {
  EXPECT_TRUE(LCreateAccount(profile_, "1000", "Actifs", kAccountAsset, false, 0, kClassificationNone));
  EXPECT_TRUE(LCreateAccount(profile_, "3000", "Vide", kAccountEquity, false, 0, kClassificationNone));
  SetField("3000", "Deleted", 1);
  DayLine(profile_, "2024-04-02", "9999", 5);  // a day line of an unknown account
  LAccountTotalerList list = Total("2024-01-01", "2024-04-10");
  std::vector<std::string> numbers;
  for (const auto& item : list.Items()) numbers.push_back(item.number);
  EXPECT_EQ(numbers, (std::vector<std::string>{"1000", "1110", "3000", "6410"}));
  EXPECT_TRUE(list.Find("3000")->deleted);
  EXPECT_EQ(list.Find("6410")->subClass, 1);
}

TEST_F(TotalerTest, SeveralBusinessesAreScaledTruncatedAndMergedByNumberAndDescription) {
  std::string otherFolder = home_.SharedFolder() + "/MultiBus/1";
  ASSERT_TRUE(LFile::MakeFolder(otherFolder));
  {
    LProfile other(otherFolder);
    EXPECT_TRUE(LCreateAccount(other, "1110", "Compte-chèque", kAccountAsset, true, 0, kClassificationNone));
    EXPECT_TRUE(LCreateAccount(other, "6410", "Loyer du dépôt", kAccountExpense, false, 1, kClassificationNone));
    SetBucket(other, "1110", 2024, 1, 3);
    SetBucket(other, "6410", 2024, 1, -3);
    DayLine(other, "2024-02-10", "1110", 1001);
  }
  SetBucket(profile_, "1110", 2024, 1, 100);
  SetBucket(profile_, "6410", 2024, 1, 40);
  LAccountTotalerList list = Total("2024-01-01", "2024-02-15", "", {{home_.SharedFolder(), 1.0}, {otherFolder, 0.5}});
  std::vector<std::pair<std::string, long long>> items;
  for (const auto& item : list.Items()) items.emplace_back(item.number + " " + item.description, item.amount);
  // 0.5 on 3 gives 1 and on -3 gives -1 (toward zero); 1001 * 0.5 gives 500 on the first 1110.
  EXPECT_EQ(items, (std::vector<std::pair<std::string, long long>>{
                       {"1110 Compte-chèque", 100 + 1 + 500}, {"6410 Loyer", 40}, {"6410 Loyer du dépôt", -1}}));
}

// A factor too large (or not a number) for the amounts gives figures held at the 64-bit limits, or
// nothing: never an undefined conversion of the product (UBSan proves it in the sanitized build).
TEST_F(TotalerTest, FactorsBeyondSixtyFourBitsAreHeldNotUndefined) {
  SetBucket(profile_, "1110", 2024, 1, 3);
  SetBucket(profile_, "6410", 2024, 1, -3);
  constexpr long long kHeld = 9200000000000000000LL;  // what money.h holds a conversion to
  for (auto [factor, asset, expense] : {std::tuple{1e300, kHeld, -kHeld},
                                        {-std::numeric_limits<double>::infinity(), -kHeld, kHeld},
                                        {std::numeric_limits<double>::quiet_NaN(), 0LL, 0LL}}) {
    LAccountTotalerList list = Total("2024-01-01", "2024-01-31", "", {{home_.SharedFolder(), factor}});
    EXPECT_EQ(Amount(list, "1110"), asset) << factor;
    EXPECT_EQ(Amount(list, "6410"), expense) << factor;
  }
}

class StopAfterFirstBusiness : public LProcessInterfaceVoid {
 public:
  bool IsToStop() override { return ++asked_ > 1; }

 private:
  int asked_ = 0;
};

TEST_F(TotalerTest, CancellationStopsAfterTheAccountsOfABusinessAndBadDatesFail) {
  DayLine(profile_, "2024-04-02", "6410", 5);
  LAccountTotalerProcess totaler(profile_);
  totaler.from = "2024-04-01";
  totaler.to = "2024-04-10";
  StopAfterFirstBusiness stopping;
  EXPECT_EQ(Process(stopping, totaler), kProcessCancelled);
  EXPECT_EQ(Amount(totaler.result, "6410"), 0);  // its day files were not read
  LAccountTotalerProcess badDates(profile_);
  badDates.to = "demain";
  LProcessInterfaceVoid quiet;
  EXPECT_EQ(Process(quiet, badDates), kProcessFailed);
}

TEST(TotalerList, EqualNumbersGoAfterAndBalancesGoToTheFirst) {
  LAccountTotalerList list;
  list.AddOrInsert({"6410", "B", kAccountExpense, 1, 0, false, false, 1});
  list.AddOrInsert({"1110", "A", kAccountAsset, 0, 0, false, false, 2});
  list.AddOrInsert({"6410", "C", kAccountExpense, 1, 0, false, false, 3});
  list.AddOrInsert({"6410", "B", kAccountExpense, 1, 0, false, false, 10});
  list.AddBalanceToAccount("6410", 100);
  list.AddBalanceToAccount("7000", 100);
  std::vector<std::string> seen;
  for (const auto& item : list.Items()) seen.push_back(item.number + item.description + std::to_string(item.amount));
  EXPECT_EQ(seen, (std::vector<std::string>{"1110A2", "6410B111", "6410C3"}));
}

// A heading is a prefix of the other number once its trailing zeros are dropped, never itself,
// never longer numbers, never an all-zero or empty heading.
TEST(HeadingRule, PrefixWithoutTrailingZeros) {
  for (auto [heading, account, expected] :
       {std::tuple{"6300", "6310", true}, {"6300", "6399", true}, {"6000", "6999", true}, {"6310", "6311", true},
        {"6300", "6300", false}, {"6300", "6400", false}, {"6000", "600012", false}, {"6000", "7000", false},
        {"", "6310", false}, {"0000", "0010", false}})
    EXPECT_EQ(LAccountIsHeaderOf(heading, account), expected) << heading << " " << account;
}

TEST_F(TotalerTest, FoldCountsHeadingAndSubAccountsOnceThenYieldsZero) {
  LAccountTotalerProcess totaler(profile_);
  auto add = [&](const char* number, int type, int subClass, bool header, long long amount) {
    totaler.result.AddOrInsert({number, number, type, subClass, 0, header, false, amount});
  };
  add("4110", kAccountIncome, 0, false, -70000);
  add("6210", kAccountExpense, 1, false, 1000);
  add("6300", kAccountExpense, 1, true, 0);
  add("6310", kAccountExpense, 1, false, 200);
  add("6320", kAccountExpense, 1, false, 30);
  add("6330", kAccountExpense, 2, false, 4);  // below the heading, but of another sub-class
  add("6910", kAccountExpense, 2, false, 5);
  auto fold = [&](AccountType type, int subClass, long long sign, bool filterSubClass) {
    long long total = 0;
    CalculateSubAccounts(totaler, "", total, type, subClass, sign, filterSubClass);
    return total;
  };
  EXPECT_EQ(fold(kAccountExpense, 1, 1, true), 1230);
  EXPECT_EQ(totaler.result.Find("6310"), nullptr);
  EXPECT_EQ(totaler.result.Find("6300"), nullptr);
  ASSERT_NE(totaler.result.Find("6330"), nullptr);
  EXPECT_EQ(fold(kAccountExpense, 1, 1, true), 0);  // consumed
  EXPECT_EQ(fold(kAccountIncome, 0, -1, true), 70000);
  EXPECT_EQ(fold(kAccountExpense, 0, 1, false), 9);  // every sub-class
  EXPECT_TRUE(totaler.result.Items().empty());
}

TEST_F(TotalerTest, IncomeExpenseAndProfitOfAPeriodAndAssets) {
  EXPECT_TRUE(LCreateAccount(profile_, "4110", "Recettes générales", kAccountIncome, false, 0, kClassificationNone));
  EXPECT_TRUE(LCreateAccount(profile_, "4910", "Revenu d'intérêt", kAccountIncome, false, 1, kClassificationNone));
  EXPECT_TRUE(LCreateAccount(profile_, "6910", "Frais financiers", kAccountExpense, false, 2, kClassificationNone));
  for (auto [number, amount] : {std::pair{"4110", -100000}, {"4910", -500}, {"6410", 30000}, {"6910", 700}, {"1110", 70800}})
    SetBucket(profile_, number, 2024, 5, amount);
  long long income = 0, expense = 0, profit = 0, assets = 0;
  LGetTotalIncomeExpenseProfit(profile_, {"2024-01-01", "2024-12-31"}, income, expense, profit);
  LGetAssets(profile_, assets);
  EXPECT_EQ(std::vector<long long>({income, expense, profit, assets}), (std::vector<long long>{100500, 30700, 69800, 70800}));
}

}  // namespace
