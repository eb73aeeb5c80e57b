// Account totals: how a period is split between month buckets and day files (and which day
// files are read), opening balances, the account filter, several businesses with their
// factors, the order and merging of items, the heading rule and the folds that consume items.
#include "accounts/accounttotaller.h"

#include <gtest/gtest.h>

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
    LCreateAccount(profile_, "1110", "Compte-chèque", kAccountAsset, true, 0, kClassificationNone);
    LCreateAccount(profile_, "6410", "Loyer", kAccountExpense, false, 1, kClassificationNone);
  }
  static void SetBucket(LProfile& profile, const char* number, int year, int month, long long amount) {
    LAccount account;
    LAccountList(profile).Open(account, number);
    int index = year * 12 + month - 1;
    account.SetInt64(LAccountBucketField(index), amount);
    if (account.GetInt64("BalanceFirst", index) >= index) account.SetInt64("BalanceFirst", index);
    account.Flush();
  }
  static void SetField(LProfile& profile, const char* number, const char* field, long long value) {
    LAccount account;
    LAccountList(profile).Open(account, number);
    account.SetInt64(field, value);
    account.Flush();
  }
  // A journal line in the day file only (no bucket moves).
  static void DayLine(LProfile& profile, const std::string& date, const char* account, long long amount) {
    LLedgerTransaction txn(date, "GJ1", "General");
    txn.AddLine(account, "test", amount, "", "", "");
    ASSERT_TRUE(LLedgerTransactionRecord(profile, txn));
  }
  static LAccountTotalerList Total(LProfile& profile, std::string from, std::string to, std::string filter = "",
                                   std::vector<LProfilesAndRates> businesses = {}) {
    LAccountTotalerProcess totaler(profile);
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

TEST(TotalerSplit, WholeYearUsesTwelveBucketsAndNoDayFile) {
  LAccountTotalerSplit split;
  ASSERT_TRUE(LAccountTotalerSplitPeriod("2024-01-01", "2024-12-31", split));
  EXPECT_EQ(split.startIndex, 2024 * 12);
  EXPECT_EQ(split.endIndex, 2024 * 12 + 11);
  EXPECT_FALSE(split.includeOpening);
  EXPECT_TRUE(split.rangeAFrom.empty());
  EXPECT_TRUE(split.rangeBFrom.empty());
}

TEST(TotalerSplit, NoStartIncludesOpeningAndEveryBucket) {
  LAccountTotalerSplit split;
  ASSERT_TRUE(LAccountTotalerSplitPeriod("", "2024-06-30", split));
  EXPECT_TRUE(split.includeOpening);
  EXPECT_EQ(split.startIndex, 0);
  EXPECT_EQ(split.endIndex, 2024 * 12 + 5);
  EXPECT_TRUE(split.rangeAFrom.empty());
  EXPECT_TRUE(split.rangeBFrom.empty());
}

TEST(TotalerSplit, BothEndsInOneMonthReadOnlyThoseDays) {
  LAccountTotalerSplit split;
  ASSERT_TRUE(LAccountTotalerSplitPeriod("2024-03-15", "2024-03-20", split));
  EXPECT_LT(split.endIndex, split.startIndex);
  EXPECT_EQ(split.rangeAFrom, "2024-03-15");
  EXPECT_EQ(split.rangeATo, "2024-03-20");
  EXPECT_TRUE(split.rangeBFrom.empty());
}

TEST(TotalerSplit, PartialMonthsAtBothEndsCloseWithDay31) {
  LAccountTotalerSplit split;
  ASSERT_TRUE(LAccountTotalerSplitPeriod("2024-02-10", "2024-04-15", split));
  EXPECT_EQ(split.startIndex, 2024 * 12 + 2);
  EXPECT_EQ(split.endIndex, 2024 * 12 + 2);
  EXPECT_EQ(split.rangeAFrom, "2024-02-10");
  EXPECT_EQ(split.rangeATo, "2024-02-31");
  EXPECT_EQ(split.rangeBFrom, "2024-04-01");
  EXPECT_EQ(split.rangeBTo, "2024-04-15");
}

TEST(TotalerSplit, FirstOfMonthAndLastDayOfFebruaryAreWholeMonths) {
  LAccountTotalerSplit split;
  ASSERT_TRUE(LAccountTotalerSplitPeriod("2024-02-01", "2024-02-29", split));
  EXPECT_EQ(split.startIndex, 2024 * 12 + 1);
  EXPECT_EQ(split.endIndex, 2024 * 12 + 1);
  EXPECT_TRUE(split.rangeAFrom.empty());
  EXPECT_TRUE(split.rangeBFrom.empty());
  ASSERT_TRUE(LAccountTotalerSplitPeriod("2023-02-01", "2023-02-28", split));
  EXPECT_TRUE(split.rangeBFrom.empty());
  ASSERT_TRUE(LAccountTotalerSplitPeriod("2024-03-15", "2024-03-31", split));
  EXPECT_EQ(split.rangeATo, "2024-03-31");
  EXPECT_LT(split.endIndex, split.startIndex);
}

TEST(TotalerSplit, RefusesDatesThatAreNotDays) {
  LAccountTotalerSplit split;
  EXPECT_FALSE(LAccountTotalerSplitPeriod("2024-01-01", "", split));
  EXPECT_FALSE(LAccountTotalerSplitPeriod("2024-13-01", "2024-12-31", split));
  EXPECT_FALSE(LAccountTotalerSplitPeriod("", "2023-02-29", split));
}

TEST_F(TotalerTest, WholeMonthsComeFromBucketsOnly) {
  SetBucket(profile_, "6410", 2024, 3, 100000);
  SetField(profile_, "6410", "OpeningBalance", 5);
  DayLine(profile_, "2024-03-15", "6410", 7);
  EXPECT_EQ(Amount(Total(profile_, "2024-01-01", "2024-12-31"), "6410"), 100000);
}

TEST_F(TotalerTest, PeriodInsideOneMonthReadsOnlyItsDays) {
  SetBucket(profile_, "6410", 2024, 3, 100000);
  DayLine(profile_, "2024-03-14", "6410", 1);
  DayLine(profile_, "2024-03-15", "6410", 20);
  DayLine(profile_, "2024-03-20", "6410", 300);
  DayLine(profile_, "2024-03-21", "6410", 4000);
  EXPECT_EQ(Amount(Total(profile_, "2024-03-15", "2024-03-20"), "6410"), 320);
}

TEST_F(TotalerTest, PartialMonthsAtBothEndsReadTheirDaysAndTheMiddleBucket) {
  SetBucket(profile_, "6410", 2024, 2, 900000);
  SetBucket(profile_, "6410", 2024, 3, 100000);
  SetBucket(profile_, "6410", 2024, 4, 800000);
  DayLine(profile_, "2024-02-09", "6410", 1);
  DayLine(profile_, "2024-02-10", "6410", 20);
  DayLine(profile_, "2024-02-29", "6410", 300);
  DayLine(profile_, "2024-03-05", "6410", 4000);
  DayLine(profile_, "2024-04-15", "6410", 50000);
  DayLine(profile_, "2024-04-16", "6410", 600000);
  EXPECT_EQ(Amount(Total(profile_, "2024-02-10", "2024-04-15"), "6410"), 100000 + 20 + 300 + 50000);
}

TEST_F(TotalerTest, NoStartAddsOpeningBalanceAndBucketsUpToTheEnd) {
  SetField(profile_, "1110", "OpeningBalance", 5000);
  SetBucket(profile_, "1110", 2019, 1, 10);
  SetBucket(profile_, "1110", 2024, 6, 200);
  SetBucket(profile_, "1110", 2024, 7, 3000);
  EXPECT_EQ(Amount(Total(profile_, "", "2024-06-30"), "1110"), 5210);
  EXPECT_EQ(Amount(Total(profile_, "2024-01-01", "2024-06-30"), "1110"), 200);
}

TEST_F(TotalerTest, BucketsBelowBalanceFirstAreNotCounted) {
  SetBucket(profile_, "1110", 2024, 5, 200);
  SetBucket(profile_, "1110", 2024, 2, 7);
  SetField(profile_, "1110", "BalanceFirst", 2024 * 12 + 4);
  EXPECT_EQ(Amount(Total(profile_, "2024-01-01", "2024-12-31"), "1110"), 200);
}

TEST_F(TotalerTest, FilterKeepsOneAccountInRecordsAndDayFiles) {
  SetBucket(profile_, "6410", 2024, 3, 100);
  DayLine(profile_, "2024-04-02", "6410", 5);
  DayLine(profile_, "2024-04-02", "1110", -5);
  LAccountTotalerList list = Total(profile_, "2024-03-01", "2024-04-10", "6410");
  ASSERT_EQ(list.Items().size(), 1u);
  EXPECT_EQ(Amount(list, "6410"), 105);
}

TEST_F(TotalerTest, EveryAccountGetsAnItemInNumberOrderDeletedAndZeroIncluded) {
  LCreateAccount(profile_, "1000", "Actifs", kAccountAsset, false, 0, kClassificationNone);
  LCreateAccount(profile_, "3000", "Vide", kAccountEquity, false, 0, kClassificationNone);
  SetField(profile_, "3000", "Deleted", 1);
  LAccountTotalerList list = Total(profile_, "2024-01-01", "2024-12-31");
  std::vector<std::string> numbers;
  for (const auto& item : list.Items()) numbers.push_back(item.number);
  EXPECT_EQ(numbers, (std::vector<std::string>{"1000", "1110", "3000", "6410"}));
  EXPECT_TRUE(list.Find("3000")->deleted);
  EXPECT_EQ(list.Find("6410")->subClass, 1);
}

TEST_F(TotalerTest, DayLinesOfUnknownAccountsAreDropped) {
  DayLine(profile_, "2024-04-02", "9999", 5);
  LAccountTotalerList list = Total(profile_, "2024-04-02", "2024-04-03");
  EXPECT_EQ(list.Find("9999"), nullptr);
  EXPECT_EQ(list.Items().size(), 2u);
}

TEST_F(TotalerTest, SeveralBusinessesAreScaledTruncatedAndMergedByNumberAndDescription) {
  std::string otherFolder = home_.SharedFolder() + "/MultiBus/1";
  ASSERT_TRUE(LFile::MakeFolder(otherFolder));
  {
    LProfile other(otherFolder);
    LCreateAccount(other, "1110", "Compte-chèque", kAccountAsset, true, 0, kClassificationNone);
    LCreateAccount(other, "6410", "Loyer du dépôt", kAccountExpense, false, 1, kClassificationNone);
    SetBucket(other, "1110", 2024, 1, 3);
    SetBucket(other, "6410", 2024, 1, -3);
    DayLine(other, "2024-02-10", "1110", 1001);
  }
  SetBucket(profile_, "1110", 2024, 1, 100);
  SetBucket(profile_, "6410", 2024, 1, 40);
  LAccountTotalerList list = Total(profile_, "2024-01-01", "2024-02-15", "",
                                   {{home_.SharedFolder(), 1.0}, {otherFolder, 0.5}});
  std::vector<std::pair<std::string, long long>> items;
  for (const auto& item : list.Items()) items.emplace_back(item.number + " " + item.description, item.amount);
  // 0.5 on 3 gives 1 and on -3 gives -1 (toward zero); 1001 * 0.5 gives 500 on the first 1110.
  EXPECT_EQ(items, (std::vector<std::pair<std::string, long long>>{
                       {"1110 Compte-chèque", 100 + 1 + 500}, {"6410 Loyer", 40}, {"6410 Loyer du dépôt", -1}}));
}

TEST_F(TotalerTest, BusinessesCancelEachOther) {
  std::string otherFolder = home_.SharedFolder() + "/MultiBus/2";
  ASSERT_TRUE(LFile::MakeFolder(otherFolder));
  {
    LProfile other(otherFolder);
    LCreateAccount(other, "6410", "Loyer", kAccountExpense, false, 1, kClassificationNone);
    SetBucket(other, "6410", 2024, 1, -250);
  }
  SetBucket(profile_, "6410", 2024, 1, 500);
  LAccountTotalerList list =
      Total(profile_, "2024-01-01", "2024-01-31", "", {{home_.SharedFolder(), 1.0}, {otherFolder, 2.0}});
  EXPECT_EQ(Amount(list, "6410"), 0);
}

class StopAfterFirstBusiness : public LProcessInterfaceVoid {
 public:
  bool IsToStop() override { return ++asked_ > 1; }

 private:
  int asked_ = 0;
};

TEST_F(TotalerTest, CancellationStopsAfterTheAccountsOfABusinessWithoutItsDayFiles) {
  DayLine(profile_, "2024-04-02", "6410", 5);
  LAccountTotalerProcess totaler(profile_);
  totaler.from = "2024-04-01";
  totaler.to = "2024-04-10";
  StopAfterFirstBusiness stopping;
  EXPECT_EQ(Process(stopping, totaler), kProcessCancelled);
  EXPECT_EQ(Amount(totaler.result, "6410"), 0);
}

TEST_F(TotalerTest, BadDatesFail) {
  LAccountTotalerProcess totaler(profile_);
  totaler.to = "demain";
  LProcessInterfaceVoid quiet;
  EXPECT_EQ(Process(quiet, totaler), kProcessFailed);
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

TEST(HeadingRule, PrefixWithoutTrailingZeros) {
  EXPECT_TRUE(LAccountIsHeaderOf("6300", "6310"));
  EXPECT_TRUE(LAccountIsHeaderOf("6300", "6399"));
  EXPECT_FALSE(LAccountIsHeaderOf("6300", "6300"));
  EXPECT_FALSE(LAccountIsHeaderOf("6300", "6400"));
  EXPECT_TRUE(LAccountIsHeaderOf("6000", "6999"));
  EXPECT_FALSE(LAccountIsHeaderOf("6000", "600012"));
  EXPECT_FALSE(LAccountIsHeaderOf("6000", "7000"));
  EXPECT_FALSE(LAccountIsHeaderOf("", "6310"));
  EXPECT_FALSE(LAccountIsHeaderOf("0000", "0010"));
  EXPECT_TRUE(LAccountIsHeaderOf("6310", "6311"));
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
  long long total = 0;
  CalculateSubAccounts(totaler, "", total, kAccountExpense, 1, 1, true);
  EXPECT_EQ(total, 1230);
  EXPECT_EQ(totaler.result.Find("6310"), nullptr);
  EXPECT_EQ(totaler.result.Find("6300"), nullptr);
  ASSERT_NE(totaler.result.Find("6330"), nullptr);
  long long again = 0;
  CalculateSubAccounts(totaler, "", again, kAccountExpense, 1, 1, true);
  EXPECT_EQ(again, 0);
  long long income = 0;
  CalculateSubAccounts(totaler, "", income, kAccountIncome, 0, -1, true);
  EXPECT_EQ(income, 70000);
  long long rest = 0;
  CalculateSubAccounts(totaler, "", rest, kAccountExpense, 0, 1, false);
  EXPECT_EQ(rest, 9);
  EXPECT_TRUE(totaler.result.Items().empty());
}

TEST_F(TotalerTest, IncomeExpenseAndProfitOfAPeriod) {
  LCreateAccount(profile_, "4110", "Recettes générales", kAccountIncome, false, 0, kClassificationNone);
  LCreateAccount(profile_, "4910", "Revenu d'intérêt", kAccountIncome, false, 1, kClassificationNone);
  LCreateAccount(profile_, "6910", "Frais financiers", kAccountExpense, false, 2, kClassificationNone);
  SetBucket(profile_, "4110", 2024, 5, -100000);
  SetBucket(profile_, "4910", 2024, 5, -500);
  SetBucket(profile_, "6410", 2024, 5, 30000);
  SetBucket(profile_, "6910", 2024, 5, 700);
  SetBucket(profile_, "1110", 2024, 5, 70800);
  long long income = 0, expense = 0, profit = 0;
  LGetTotalIncomeExpenseProfit(profile_, {"2024-01-01", "2024-12-31"}, income, expense, profit);
  EXPECT_EQ(income, 100500);
  EXPECT_EQ(expense, 30700);
  EXPECT_EQ(profit, 69800);
  long long assets = 0;
  LGetAssets(profile_, assets);
  EXPECT_EQ(assets, 70800);
}

}  // namespace
