// The day files and the postings: row text byte for byte, amounts written and read back,
// the month buckets a posting moves, loading, deleting and re-posting, the reconciliation
// clean-up, tolerant reading of damaged rows, and several processes posting at once.
#include "accounts/ledger.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <set>

#include "accounts/accounts.h"
#include "accounts/check.h"
#include "accounts/ledgerdelete.h"
#include "accounts/ledgeriterator.h"
#include "invoice/shared/profile.h"
#include "llib/gen/csv.h"
#include "llib/gen/date.h"
#include "llib/gen/moneybounds.h"
#include "tests/support/ledgerposters.h"
#include "tests/support/testhome.h"

namespace {

class LedgerTest : public LHomeTest {
 protected:
  void SetUp() override {
    for (const char* number : {"1110", "1120", "1130"})
      EXPECT_TRUE(LCreateAccount(profile_, number, number, kAccountAsset, true, 0, kClassificationNone));
    for (const char* number : {"6410", "6420"})
      EXPECT_TRUE(LCreateAccount(profile_, number, number, kAccountExpense, false, 1, kClassificationNone));
  }
  std::string DayFile(const std::string& date) { return home_.SharedFolder() + "/Ledger/" + date + ".csv"; }
  std::unique_ptr<LAccount> Open(const char* number) {
    auto account = std::make_unique<LAccount>();
    LAccountList(profile_).Open(*account, number);
    return account;
  }
  // A rent payment of amount cents: 6410 debited, 1110 credited.
  LLedgerTransaction Rent(const std::string& date, const std::string& reference, long long amount) {
    LLedgerTransaction txn(date, reference, "General");
    txn.AddLine("6410", "Loyer de mars", amount, "anne", "", "");
    txn.AddLine("1110", "Loyer de mars", -amount, "anne", "", "");
    return txn;
  }
  // Check of the books (writing the computed values when fix); the report.
  LCheckReport Check(bool fix = false) {
    LBookCheckProcess data;
    data.profile = &profile_;
    data.fix = fix;
    LProcessInterfaceVoid process;
    EXPECT_EQ(Process(process, data), kProcessFinished);
    return data.report;
  }

  // The dates of the lines the ledger iterator walks from from to to.
  std::vector<std::string> IteratorDates(const char* from, const char* to) {
    std::vector<std::string> dates;
    LLedgerAccountLineIterator it(profile_, from, to);
    for (it.SkipToValidLine(); it.valid; it.SkipToValidLine()) dates.push_back(it.line.date);
    return dates;
  }

  LProfile profile_;
};

// Written with a sign, whole units and two digits (the lowest amount included); read back
// tolerantly: separators and symbols skipped, a third digit cut, a trailing minus, digits after
// a second point joined, nothing readable as 0, over-long text capped.
TEST(LedgerAmounts, WrittenWithSignAndReadTolerantly) {
  EXPECT_EQ(LLedgerFormatAmount(0), "+0.00");
  EXPECT_EQ(LLedgerFormatAmount(-1), "-0.01");
  EXPECT_EQ(LLedgerFormatAmount(-9223372036854775807LL - 1), "-92233720368547758.08");
  for (auto [text, cents] : {std::pair<std::string, long long>{"1,234.56", 123456}, {"12.345", 1234}, {"$ 7.05", 705},
                             {"12.3", 1230}, {"12", 1200}, {"7.05-", -705}, {"1.2.3", 123}, {"", 0}, {"abc", 0},
                             {std::string(400, '9') + ".99", 99999999999LL * 100 + 99}})
    EXPECT_EQ(LLedgerReadAmountFromTheLedger(text), cents) << text;
  for (long long amount : {0LL, 1LL, -1LL, 99LL, -100LL, 123456LL, -987654321LL})
    EXPECT_EQ(LLedgerReadAmountFromTheLedger(LLedgerFormatAmount(amount)), amount);
}

TEST_F(LedgerTest, DayFileRowsByteForByte) {
  LLedgerTransaction txn("2024-03-31", "GJ10000", "General");
  txn.AddLine("6410", "Loyer \"mars\"", 125000, "anne", "", "");
  txn.AddLine("1110", "Loyer \"mars\"", -125000, "anne", "T 20%", "INV7");
  ASSERT_TRUE(LAccountTransactionRecord(profile_, txn));
  EXPECT_EQ(LReadFile(DayFile("2024-03-31")),
            "\"2024-03-31\",\"GJ10000\",\"General\",\"6410\",\"\",\"Loyer \"\"mars\"\"\",\"+1250.00\","
            "\"Tax=&UserName=anne\",\"\"\r\n"
            "\"2024-03-31\",\"GJ10000\",\"General\",\"1110\",\"\",\"Loyer \"\"mars\"\"\",\"-1250.00\","
            "\"Tax=T%2020%25&UserName=anne\",\"INV7\"\r\n");
  LLedgerTransaction loaded;
  ASSERT_TRUE(LLedgerTransactionLoad(profile_, loaded, "2024-03-31", "GJ10000"));
  ASSERT_EQ(loaded.Lines().size(), 2u);
  const LLedgerJournalLine& second = loaded.Lines().back();
  EXPECT_EQ(second.description, "Loyer \"mars\"");
  EXPECT_EQ(second.amount, -125000);
  EXPECT_STREQ(second.xdata.GetString("Tax", ""), "T 20%");
  EXPECT_STREQ(second.xdata.GetString("UserName", ""), "anne");
  EXPECT_EQ(second.document, "INV7");
  EXPECT_TRUE(LLedgerTransactionEqual(txn, loaded));
  txn.AddLine("6410", std::string(300, 'x'), 1, "", "", "");
  EXPECT_EQ(txn.Lines().back().description.size(), 259u);
}

TEST_F(LedgerTest, PostingMovesTheMonthBucketsAndTotals) {
  ASSERT_TRUE(LAccountTransactionRecord(profile_, Rent("2024-01-15", "GJ1", 5000)));
  ASSERT_TRUE(LAccountTransactionRecord(profile_, Rent("2024-03-01", "GJ2", 700)));
  auto rent = Open("6410");
  EXPECT_EQ(rent->GetMonthBuckets(), (std::vector<std::pair<int, long long>>{{24288, 5000}, {24290, 700}}));
  EXPECT_EQ(rent->GetInt("BalanceFirst", 0), 24288);
  EXPECT_EQ(rent->GetTotalBalance(), 5700);
  EXPECT_TRUE(rent->IsAccountUsed());
  EXPECT_EQ(Open("1110")->GetTotalBalance(), -5700);
  EXPECT_FALSE(Open("1120")->IsAccountUsed());
}

TEST_F(LedgerTest, NothingIsWrittenWithoutLinesOrADayAndUnknownAccountsStayInTheLedger) {
  LLedgerTransaction empty("2024-03-31", "GJ1", "General");
  EXPECT_TRUE(LAccountTransactionRecord(profile_, empty));
  EXPECT_FALSE(std::filesystem::exists(DayFile("2024-03-31")));
  EXPECT_FALSE(LAccountTransactionRecord(profile_, Rent("", "GJ1", 100)));
  EXPECT_FALSE(LAccountTransactionRecord(profile_, Rent("../Accounts/1110", "GJ1", 100)));
  EXPECT_EQ(Open("1110")->GetTotalBalance(), 0);
  EXPECT_FALSE(Open("1110")->IsAccountUsed());
  LTextBuffer path;
  EXPECT_FALSE(LLedgerGetCSVFilePath(profile_, path, ""));
  EXPECT_STREQ(path, "");
  LLedgerTransaction txn;
  EXPECT_FALSE(LLedgerTransactionLoad(profile_, txn, "", "GJ1"));
  EXPECT_FALSE(LLedgerTransactionTestExists(profile_, "2024-03-31", "GJ1"));
  // A line on an unknown account stays in the ledger; only the check reports it.
  txn = LLedgerTransaction("2024-03-31", "GJ1", "General");
  txn.AddLine("9999", "Inconnu", 100, "", "", "");
  txn.AddLine("1110", "Inconnu", -100, "", "", "");
  ASSERT_TRUE(LAccountTransactionRecord(profile_, txn));
  EXPECT_FALSE(std::filesystem::exists(home_.SharedFolder() + "/Accounts/9999.dat"));
  EXPECT_EQ(Open("1110")->GetTotalBalance(), -100);
  LCheckReport report = Check();
  ASSERT_EQ(report.problems.size(), 1u);
  EXPECT_EQ(report.problems[0].message, "compte inconnu");
}

TEST_F(LedgerTest, ReferencesMatchInAnyCaseAndPerDay) {
  ASSERT_TRUE(LAccountTransactionRecord(profile_, Rent("2024-03-31", "GJ10000", 100)));
  ASSERT_TRUE(LAccountTransactionRecord(profile_, Rent("2024-04-01", "GJ10000", 200)));
  ASSERT_TRUE(LAccountTransactionRecord(profile_, Rent("2024-03-31", "gj10000", 300)));
  EXPECT_TRUE(LLedgerTransactionTestExists(profile_, "2024-03-31", "Gj10000"));
  EXPECT_FALSE(LLedgerTransactionTestExists(profile_, "2024-03-31", "GJ1000"));
  LLedgerTransaction txn;
  ASSERT_TRUE(LLedgerTransactionLoad(profile_, txn, "2024-03-31", "gJ10000"));
  // Same day, same reference in any case: one transaction of four lines.
  EXPECT_EQ(txn.Lines().size(), 4u);
  EXPECT_EQ(txn.GetReference(), "gJ10000");
  EXPECT_EQ(txn.GetDate(), "2024-03-31");
  ASSERT_TRUE(LLedgerTransactionLoad(profile_, txn, "2024-04-01", "GJ10000"));
  EXPECT_EQ(txn.Lines().size(), 2u);
  EXPECT_EQ(txn.Lines().front().amount, 200);

  ASSERT_TRUE(LAccountTransactionDelete(profile_, "2024-03-31", "GJ10000"));
  EXPECT_FALSE(LLedgerTransactionTestExists(profile_, "2024-03-31", "GJ10000"));
  EXPECT_TRUE(LLedgerTransactionTestExists(profile_, "2024-04-01", "GJ10000"));
  EXPECT_EQ(Open("6410")->GetTotalBalance(), 200);
  EXPECT_FALSE(LAccountTransactionDelete(profile_, "2024-03-31", "GJ10000"));
}

TEST_F(LedgerTest, DeletedAndRepostedEqualsPostedOnce) {
  LTempHome onceHome;
  std::string onceText;
  std::string onceAccount;
  {
    LProfile once;
    EXPECT_TRUE(LCreateAccount(once, "1110", "1110", kAccountAsset, true, 0, kClassificationNone));
    EXPECT_TRUE(LCreateAccount(once, "6410", "6410", kAccountExpense, false, 1, kClassificationNone));
    ASSERT_TRUE(LAccountTransactionRecord(once, Rent("2024-03-31", "GJ7", 4200)));
    onceText = LReadFile(onceHome.SharedFolder() + "/Ledger/2024-03-31.csv");
    onceAccount = LReadFile(onceHome.SharedFolder() + "/Accounts/6410.dat");
  }
  ASSERT_TRUE(LAccountTransactionRecord(profile_, Rent("2024-03-31", "GJ7", 4200)));
  ASSERT_TRUE(LAccountTransactionDelete(profile_, "2024-03-31", "GJ7"));
  EXPECT_EQ(LReadFile(DayFile("2024-03-31")), "");
  EXPECT_EQ(Open("6410")->GetTotalBalance(), 0);
  EXPECT_EQ(Open("6410")->GetInt64("Balance24290", 0), 0);
  ASSERT_TRUE(LAccountTransactionRecord(profile_, Rent("2024-03-31", "GJ7", 4200)));
  EXPECT_EQ(LReadFile(DayFile("2024-03-31")), onceText);
  EXPECT_EQ(LReadFile(home_.SharedFolder() + "/Accounts/6410.dat"), onceAccount);
  EXPECT_TRUE(Check().differences.empty());

  // With a neighbour on the same day the rows stay, in their order, and the books still agree.
  ASSERT_TRUE(LAccountTransactionRecord(profile_, Rent("2024-03-31", "GJ8", 10)));
  ASSERT_TRUE(LAccountTransactionDelete(profile_, "2024-03-31", "GJ7"));
  ASSERT_TRUE(LAccountTransactionRecord(profile_, Rent("2024-03-31", "GJ7", 4200)));
  std::string text = LReadFile(DayFile("2024-03-31"));
  ASSERT_TRUE(text.ends_with(onceText));  // GJ8's rows first, then GJ7's as a single posting writes them
  EXPECT_EQ(text.substr(0, text.size() - onceText.size()).find("GJ7"), std::string::npos);
  LCheckReport report = Check();
  EXPECT_TRUE(report.differences.empty());
  EXPECT_TRUE(report.problems.empty());
}

TEST_F(LedgerTest, UserDeleteUsesTheLedgerAndCleansTheReconciliationFiles) {
  ASSERT_TRUE(LAccountTransactionRecord(profile_, Rent("2024-03-31", "GJ7", 4200)));
  std::filesystem::create_directories(home_.SharedFolder() + "/Reconcile");
  std::string reconcile = home_.SharedFolder() + "/Reconcile/1110.csv";
  LWriteFile(reconcile,
             "\"2024-03-31\",\"gj7\",\"-42.00\",\"x\"\r\n"     // this transaction's line: dropped
             "\"2024-03-31\",\"GJ7\",\"-42.01\",\"x\"\r\n"     // another amount: kept
             "\"2024-03-30\",\"GJ7\",\"-42.00\",\"x\"\r\n"     // another day: kept
             "\"2024-03-31\",\"GJ8\",\"-42.00\",\"x\"\r\n");   // another reference: kept
  // The user's delete of a plain transaction goes to the ledger.
  EXPECT_FALSE(LedgerTransactionDelete(profile_, "2024-03-31", "GJ9"));
  ASSERT_TRUE(LedgerTransactionDelete(profile_, "2024-03-31", "GJ7"));
  EXPECT_EQ(Open("1110")->GetTotalBalance(), 0);
  EXPECT_EQ(LReadFile(reconcile),
            "\"2024-03-31\",\"GJ7\",\"-42.01\",\"x\"\n"
            "\"2024-03-30\",\"GJ7\",\"-42.00\",\"x\"\n"
            "\"2024-03-31\",\"GJ8\",\"-42.00\",\"x\"\n");
  EXPECT_FALSE(std::filesystem::exists(home_.SharedFolder() + "/Reconcile/6410.csv"));
}

TEST_F(LedgerTest, EqualityIsLooseOnPurpose) {
  LLedgerTransaction a = Rent("2024-03-31", "GJ1", 100);
  LLedgerTransaction b("2024-03-31", "GJ1", "General");
  b.AddLine("1110", "Loyer de mars", -100, "bob", "T", "");  // other order, other extra data
  b.AddLine("6410", "Loyer de mars", 100, "", "", "");
  EXPECT_TRUE(LLedgerTransactionEqual(a, b));
  EXPECT_FALSE(LLedgerTransactionEqual(a, Rent("2024-03-31", "gj1", 100)));
  EXPECT_FALSE(LLedgerTransactionEqual(a, Rent("2024-03-30", "GJ1", 100)));
  EXPECT_FALSE(LLedgerTransactionEqual(a, Rent("2024-03-31", "GJ1", 101)));
  LLedgerTransaction described("2024-03-31", "GJ1", "General");
  described.AddLine("6410", "Loyer d'avril", 100, "", "", "");
  described.AddLine("1110", "Loyer de mars", -100, "", "", "");
  EXPECT_FALSE(LLedgerTransactionEqual(a, described));
  // One line of the second may answer for two of the first.
  LLedgerTransaction twice("2024-03-31", "GJ1", "General");
  twice.AddLine("6410", "Loyer de mars", 100, "", "", "");
  twice.AddLine("6410", "Loyer de mars", 100, "", "", "");
  EXPECT_TRUE(LLedgerTransactionEqual(twice, a));
  EXPECT_FALSE(LLedgerTransactionEqual(a, twice));
}

TEST_F(LedgerTest, DamagedDayFilesAreReadWithoutHarm) {
  std::filesystem::create_directories(home_.SharedFolder() + "/Ledger");
  LWriteFile(DayFile("2024-05-02"),
             "garbage without commas\r\n"
             "\"2024-05-02\",\"R1\"\r\n"                                                         // short row
             "\"2024-05-02\",\"R2\",\"General\",\"1110\",\"\",\"d\",\"$ 7.05\",\"\",\"\"\r\n"
             "\"2024-05-02\",\"R2\",\"General\",\"6410\",\"\",\"d\",\"1,234.56\",\"%zz&=&a\",\"\"\r\n"
             "\"2024-05-02\",\"R3\",\"General\",\"6410\",\"\",\"never closed,\"+1.00\r\n"
             "\xff\xfe\x00,,,,,,,,,,,,,,,,,,,,\r\n");
  LLedgerTransaction txn;
  ASSERT_TRUE(LLedgerTransactionLoad(profile_, txn, "2024-05-02", "R2"));
  ASSERT_EQ(txn.Lines().size(), 2u);
  EXPECT_EQ(txn.Lines().front().amount, 705);
  EXPECT_EQ(txn.Lines().back().amount, 123456);
  ASSERT_TRUE(LLedgerTransactionLoad(profile_, txn, "2024-05-02", "R1"));
  EXPECT_EQ(txn.Lines().front().account, "");
  EXPECT_EQ(txn.Lines().front().amount, 0);
  ASSERT_TRUE(LLedgerTransactionLoad(profile_, txn, "2024-05-02", "R3"));
  EXPECT_EQ(txn.Lines().front().amount, 0);

  EXPECT_EQ(IteratorDates("", "").size(), 6u);
  // The check reports what it cannot read and carries on.
  LCheckReport report = Check();
  EXPECT_EQ(report.nRows, 6);
  EXPECT_FALSE(report.problems.empty());
  // Taking one transaction out keeps every other row.
  ASSERT_TRUE(LLedgerTransactionLoadAndReverse(profile_, txn, "2024-05-02", "R2"));
  EXPECT_EQ(txn.Lines().size(), 2u);
  long nLeft = 0;
  for (LCSVFileReader reader(DayFile("2024-05-02"), 1000); reader.HasRow(); reader.Next()) ++nLeft;
  EXPECT_EQ(nLeft, 4);
}

TEST_F(LedgerTest, IteratorWalksADateRangeInDateOrder) {
  for (const char* date : {"2024-03-01", "2024-01-31", "2024-02-29", "2023-12-31", "2024-02-01"})
    ASSERT_TRUE(LAccountTransactionRecord(profile_, Rent(date, std::string("R") + date, 100)));
  EXPECT_EQ(IteratorDates("2024-01-31", "2024-02-31"), (std::vector<std::string>{"2024-01-31", "2024-01-31", "2024-02-01", "2024-02-01", "2024-02-29",
                                             "2024-02-29"}));
}

TEST_F(LedgerTest, CheckFindsAndFixesEveryDifference) {
  ASSERT_TRUE(LAccountTransactionRecord(profile_, Rent("2024-01-15", "GJ1", 5000)));
  ASSERT_TRUE(LAccountTransactionRecord(profile_, Rent("2024-03-15", "GJ2", 300)));
  {
    auto rent = Open("6410");
    rent->SetInt64("TotalBalance", 1);
    rent->DeleteField("Balance24290");
    rent->SetInt("BalanceFirst", 24300);
    EXPECT_TRUE(rent->Flush());
  }
  LCheckReport report = Check();
  std::set<std::string> fields;
  for (const auto& difference : report.differences) fields.insert(difference.key + "/" + difference.field);
  EXPECT_EQ(fields, (std::set<std::string>{"6410/TotalBalance", "6410/Balance24290", "6410/BalanceFirst"}));
  EXPECT_TRUE(report.HasUnresolved());

  EXPECT_FALSE(Check(true).HasUnresolved());
  auto rent = Open("6410");
  EXPECT_EQ(rent->GetTotalBalance(), 5300);
  EXPECT_EQ(rent->GetBalanceAtEndOfMonth(2024, 3), 5300);
  EXPECT_TRUE(Check().differences.empty());
}

// The money ceiling is what a day file reads back: a posting beyond it is refused whole before
// anything is written; lines beyond it written by another program are reported by the check, and
// no total built on them (balances, month buckets, the check's own sums) wraps to a negative.
TEST_F(LedgerTest, AmountsBeyondTheCeilingNeverWrapTheBooks) {
  ASSERT_TRUE(LAccountTransactionRecord(profile_, Rent("2024-06-03", "GJ1", kMoneyMaxMinorUnits)));
  LLedgerTransaction loaded;
  ASSERT_TRUE(LLedgerTransactionLoad(profile_, loaded, "2024-06-03", "GJ1"));
  EXPECT_EQ(loaded.Lines().front().amount, kMoneyMaxMinorUnits);
  EXPECT_FALSE(LAccountTransactionRecord(profile_, Rent("2024-06-03", "GJ2", kMoneyMaxMinorUnits + 1)));
  EXPECT_FALSE(LLedgerTransactionTestExists(profile_, "2024-06-03", "GJ2"));
  EXPECT_EQ(Open("6410")->GetTotalBalance(), kMoneyMaxMinorUnits);

  // Another program's rows: the line that once wrapped the balances, twice on the same account.
  const std::string wrapped = "\"2024-07-01\",\"X1\",\"General\",\"6410\",\"\",\"d\",\"+92233720368547758.07\",\"\",\"\"\r\n";
  LWriteFile(DayFile("2024-07-01"), wrapped + wrapped);
  LCheckReport report = Check();
  int beyond = 0;
  for (const auto& problem : report.problems) beyond += problem.message.find("au-delà du plafond") != std::string::npos;
  EXPECT_EQ(beyond, 2);
  for (const auto& difference : report.differences) EXPECT_GE(difference.computed, 0) << difference.field;
  // Postings onto a balance already at the 64-bit edge hold it there.
  {
    auto rent = Open("6410");
    rent->SetInt64("TotalBalance", 9223372036854775000LL);
    ASSERT_TRUE(rent->Flush());
  }
  ASSERT_TRUE(LAccountTransactionRecord(profile_, Rent("2024-06-04", "GJ3", kMoneyMaxMinorUnits)));
  EXPECT_EQ(Open("6410")->GetTotalBalance(), 9223372036854775807LL);
  EXPECT_EQ(Open("6410")->GetBalanceAtEndOfMonth(2024, 12), 2 * kMoneyMaxMinorUnits);
}

// Four processes post 250 transactions each onto the same three days and the same accounts:
// every row whole and once, and the accounts agree with the rows.
TEST_F(LedgerTest, FourProcessesPostingAtOnceLoseNothing) {
  constexpr int kProcesses = 4;
  constexpr int kEach = 250;
  LRunLedgerPosters(home_.SharedFolder(), kProcesses, kEach);

  std::set<std::string> seen;
  long nRows = 0;
  for (const char* date : {"2024-01-31", "2024-02-01", "2024-02-29"}) {
    std::string text = LReadFile(DayFile(date));
    // Every row ends with CR LF, and nothing else does.
    std::size_t nLineEnds = 0;
    for (std::size_t at = text.find("\r\n"); at != std::string::npos; at = text.find("\r\n", at + 2)) ++nLineEnds;
    EXPECT_EQ(text.size() >= 2 ? text.substr(text.size() - 2) : "", "\r\n");
    for (LCSVFileReader reader(DayFile(date), 1000); reader.HasRow(); reader.Next()) {
      LLedgerJournalLine line;
      std::string amountText;
      line.LoadFromCSVRow(reader.GetLine(), &amountText);
      ++nRows;
      EXPECT_EQ(line.date, date);
      EXPECT_EQ(LLedgerFormatAmount(line.amount), amountText);
      EXPECT_STREQ(line.xdata.GetString("UserName", ""), "poster");
      std::size_t dash = line.reference.find('-');
      ASSERT_NE(dash, std::string::npos) << reader.GetLine();
      int i = std::stoi(line.reference.substr(dash + 1));
      long long expected = line.amount > 0 ? i + 1 : -(i + 1);
      EXPECT_EQ(line.amount, expected);
      EXPECT_TRUE(seen.insert(line.reference + "/" + line.account).second) << "row twice: " << reader.GetLine();
    }
    EXPECT_EQ(nLineEnds, static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')));
  }
  EXPECT_EQ(nRows, 2L * kProcesses * kEach);
  // The check recomputes every "TotalBalance" and month bucket from the rows: no difference.
  LCheckReport report = Check();
  EXPECT_TRUE(report.differences.empty());
  EXPECT_TRUE(report.problems.empty());
  EXPECT_EQ(report.nRows, 2L * kProcesses * kEach);
}

}  // namespace
