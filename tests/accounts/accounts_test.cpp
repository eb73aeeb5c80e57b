// The chart of accounts: the sub-class rule, the default chart per country, creating and
// looking up accounts, opening balances, month buckets and the sales-side totals. (Type names
// and normal sides are asserted through the chart report in statements_test.cpp.)
#include "accounts/accounts.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <memory>
#include <tuple>

#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "tests/support/defaultchart.h"
#include "tests/support/fileclock.h"
#include "tests/support/testhome.h"

namespace {

class AccountsTest : public LHomeTest {
 protected:
  std::unique_ptr<LAccount> Open(const char* number) {
    auto account = std::make_unique<LAccount>();
    LAccountList(profile_).Open(*account, number);
    return account;
  }
  std::vector<std::string> Slots() {
    LOptions options;
    options.OpenFrom(profile_);
    std::vector<std::string> slots;
    for (int slot = 1; slot <= 9; ++slot) slots.push_back(options.GetDefAccountNumber(profile_, slot));
    return slots;
  }

  LProfile profile_;
};

// Expenses 69xx are sub-class 2, 64xx-68xx 1, the rest 0; income 49xx is 1; other types 0;
// a stored "SubClass" wins over the number.
TEST_F(AccountsTest, SubClassFollowsTheNumberUnlessStored) {
  LAccount account;  // detached: nothing is written
  for (auto [type, number, subClass] : {std::tuple{kAccountExpense, "6950", 2}, {kAccountExpense, "6100", 0},
                                        {kAccountExpense, "6400", 1}, {kAccountIncome, "4900", 1},
                                        {kAccountIncome, "4100", 0}, {kAccountAsset, "4900", 0}}) {
    account.SetInt("Type", type);
    account.SetPrimaryKey(number);
    EXPECT_EQ(account.GetSubClass(), subClass) << number;
  }
  account.SetInt("SubClass", 1);
  EXPECT_EQ(account.GetSubClass(), 1);
}

TEST_F(AccountsTest, DefaultChartForFranceHasFortyNineRowsAndSlotOneEndsOn1150) {
  LSetUpDefaultChart(profile_, "FR");
  // 53 rows, of which the four country variants of 2390 and 2410 do not apply in France.
  EXPECT_EQ(LAccountList(profile_).GetNumbers().size(), 49u);
  EXPECT_EQ(Slots(), (std::vector<std::string>{"1150", "1210", "4110", "4210", "2410", "2390", "2210", "6190", "6110"}));
  auto checking = Open("1110");
  EXPECT_EQ(checking->GetDescription(), "Compte-chèque");
  EXPECT_EQ(checking->GetType(), kAccountAsset);
  EXPECT_TRUE(checking->IsCash());
  EXPECT_FALSE(checking->IsHeader());
  EXPECT_EQ(Open("1510")->GetClassification(), kClassificationOperating);
  EXPECT_EQ(Open("3999")->GetClassification(), kClassificationFinancing);
  auto heading = Open("6300");
  EXPECT_TRUE(heading->IsHeader());
  EXPECT_TRUE(heading->GetBool("TaxIncluded", false));
  EXPECT_FALSE(heading->TestFieldExists("SubClass"));
}

// Each country of the include lists gets its own tax-account names; the others the general ones.
TEST_F(AccountsTest, DefaultChartNamesTheTaxAccountsByCountry) {
  for (auto [country, paid, collected] : {std::tuple{"FR", "Autres charges à verser", "Taxe à la vente perçue"},
                                          {"GB", "TVA versée", "TVA perçue"}, {"IE", "TVA versée", "TVA perçue"},
                                          {"ZA", "TVA versée", "TVA perçue"}, {"AU", "TPS versée", "TPS perçue"},
                                          {"NZ", "TPS versée", "TPS perçue"},
                                          {"BE", "Autres charges à verser", "Taxe à la vente perçue"}}) {
    profile_.SetDatabaseName(home_.SharedFolder() + "/MultiBus/" + country);
    LSetUpDefaultChart(profile_, country);
    EXPECT_EQ(Open("2390")->GetDescription(), paid) << country;
    EXPECT_EQ(Open("2410")->GetDescription(), collected) << country;
    std::vector<std::string> slots = Slots();
    EXPECT_EQ(slots[0] + " " + slots[4] + " " + slots[5], "1150 2410 2390") << country;
  }
}

TEST_F(AccountsTest, DefaultChartTwiceChangesNothingAndBringsDeletedAccountsBack) {
  LSetUpDefaultChart(profile_, "FR");
  {
    auto renamed = Open("1110");
    renamed->SetString("Description", "Banque populaire");
    EXPECT_TRUE(renamed->Flush());
    auto hidden = Open("1120");
    hidden->SetBool("Deleted", true);
    hidden->SetString("Description", "Ancien livret");
    EXPECT_TRUE(hidden->Flush());
  }
  std::string before = LReadFile(home_.SharedFolder() + "/Accounts/1110.dat");
  EXPECT_TRUE(LAccountListCreateDefault(profile_));
  // A live account is never overwritten.
  EXPECT_EQ(LReadFile(home_.SharedFolder() + "/Accounts/1110.dat"), before);
  auto revived = Open("1120");
  EXPECT_FALSE(revived->IsDeleted());
  EXPECT_EQ(revived->GetDescription(), "Compte épargne");
  EXPECT_EQ(LAccountList(profile_).GetNumbers().size(), 49u);
}

TEST_F(AccountsTest, CreateAccountOnlyRevivesAnExistingNumber) {
  EXPECT_TRUE(LCreateAccount(profile_, "1112", "Caisse", kAccountAsset, true, 0, kClassificationNone));
  auto created = Open("1112");
  EXPECT_EQ(created->GetString("Header"), "0");
  created->SetBool("Deleted", true);
  EXPECT_TRUE(created->Flush());
  EXPECT_TRUE(LCreateAccount(profile_, "1112", "Autre nom", kAccountLiability, false, 1, kClassificationFinancing));
  auto revived = Open("1112");
  EXPECT_FALSE(revived->IsDeleted());
  EXPECT_EQ(revived->GetDescription(), "Caisse");
  EXPECT_EQ(revived->GetType(), kAccountAsset);
  EXPECT_TRUE(revived->IsCash());
}

TEST_F(AccountsTest, LookupByNameIsExactAndTakesTheLowestNumber) {
  EXPECT_TRUE(LCreateAccount(profile_, "5200", "Loyer", kAccountExpense, false, 1, kClassificationNone));
  EXPECT_TRUE(LCreateAccount(profile_, "5100", "Loyer", kAccountExpense, false, 1, kClassificationNone));
  for (auto [name, expected] : {std::pair{"Loyer", "5100"}, {"loyer", ""}, {"Loyer ", ""}})
    EXPECT_EQ(LGetAccountNumberUsingDescription(profile_, name), expected) << name;
}

// The chart's names are kept per process once read: what another process changes afterwards (a
// description, a new account of the same name, an account deleted) shows at the next lookup.
TEST_F(AccountsTest, LookupsSeeWhatAnotherProcessChangedInTheChart) {
  EXPECT_TRUE(LCreateAccount(profile_, "5100", "Loyer", kAccountExpense, false, 1, kClassificationNone));
  EXPECT_TRUE(LCreateAccount(profile_, "5200", "Bureau", kAccountExpense, false, 1, kClassificationNone));
  LWaitFileClockTick();  // the names read next are trusted without reading the folder again
  EXPECT_EQ(LGetAccountNumberUsingDescription(profile_, "Loyer"), "5100");
  EXPECT_TRUE(LAccountIsLive(profile_, "5200"));

  pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    LProfile other;
    auto renamed = std::make_unique<LAccount>();
    bool ok = LAccountList(other).Open(*renamed, "5100");
    renamed->SetString("Description", "Entrepôt");
    ok = ok && renamed->Flush();
    ok = ok && LCreateAccount(other, "5050", "Loyer", kAccountExpense, false, 1, kClassificationNone);
    LAccount deleted;
    ok = ok && LAccountList(other).Open(deleted, "5200");
    deleted.SetBool("Deleted", true);
    ok = ok && deleted.Flush();
    ::_exit(ok ? 0 : 1);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);

  EXPECT_EQ(LGetAccountNumberUsingDescription(profile_, "Loyer"), "5050");
  EXPECT_EQ(LGetAccountNumberUsingDescription(profile_, "Entrepôt"), "5100");
  EXPECT_FALSE(LAccountIsLive(profile_, "5200"));
  EXPECT_TRUE(LAccountIsLive(profile_, "5050"));
}

TEST_F(AccountsTest, OpeningBalanceIsBalancedByTheHistoricalAccount) {
  LSetUpDefaultChart(profile_, "FR");
  EXPECT_TRUE(Open("2150")->UpdateOpeningBalance(profile_, 50000));
  EXPECT_EQ(Open("2150")->GetOpeningBalance(), -50000);  // a liability keeps it on the credit side
  EXPECT_EQ(Open("2150")->GetTotalBalance(), -50000);
  EXPECT_TRUE(Open("2150")->IsAccountUsed());
  EXPECT_EQ(Open("3999")->GetTotalBalance(), 50000);
  auto bank = Open("1110");
  EXPECT_TRUE(bank->UpdateOpeningBalance(profile_, 120000));
  EXPECT_TRUE(bank->UpdateOpeningBalance(profile_, 100000));  // changing it again moves only the difference
  EXPECT_EQ(Open("3999")->GetOpeningBalance(), 50000 - 100000);
  long long sum = 0;
  for (const std::string& number : LAccountList(profile_).GetNumbers()) sum += Open(number.c_str())->GetOpeningBalance();
  EXPECT_EQ(sum, 0);
  // The same amount again changes nothing, not even the "used" mark of an untouched account.
  EXPECT_TRUE(Open("4110")->UpdateOpeningBalance(profile_, 0));
  EXPECT_FALSE(Open("4110")->IsAccountUsed());
}

TEST_F(AccountsTest, BalancesByMonth) {
  EXPECT_TRUE(LCreateAccount(profile_, "1110", "Compte-chèque", kAccountAsset, true, 0, kClassificationNone));
  auto account = Open("1110");
  EXPECT_TRUE(account->AddBalance(2024, 1, 1500));
  EXPECT_EQ(account->GetInt64("Balance24288", 0), 1500);  // year * 12 + month - 1
  EXPECT_TRUE(account->AddBalance(2023, 12, -200));
  EXPECT_TRUE(account->AddBalance(2024, 3, 700));
  EXPECT_TRUE(account->IncrementTotalBalance(2000));
  auto stored = Open("1110");
  EXPECT_EQ(stored->GetInt("BalanceFirst", 0), 24287);
  stored->SetInt64("OpeningBalance", 10);
  EXPECT_EQ(stored->GetBalanceAtEndOfMonth(2023, 11), 10);
  EXPECT_EQ(stored->GetBalanceAtEndOfMonth(2024, 2), 1310);
  EXPECT_EQ(stored->GetBalanceAtEndOfMonth(2030, 1), 2010);
  stored->ResetTotalBalance();
  EXPECT_EQ(stored->GetTotalBalance(), 10);
  stored->Invalidate();
  EXPECT_EQ(Open("1110")->GetMonthBuckets(),
            (std::vector<std::pair<int, long long>>{{24287, -200}, {24288, 1500}, {24290, 700}}));
}

TEST_F(AccountsTest, ReceivableAndPayableTotalsSumTheStoredBalances) {
  for (auto [list, key, balance] : {std::tuple{"Customers", "1", "1050"}, std::tuple{"Customers", "2", "-50"},
                                    std::tuple{"Suppliers", "1", "777"}}) {
    LRecord record;
    profile_.List(list).OpenAlways(record, key);
    record.SetString("Balance", balance);
    EXPECT_TRUE(record.Flush());
  }
  EXPECT_EQ(LGetTotalAccountsReceivable(profile_), 1000);
  EXPECT_EQ(LGetTotalAccountsPayable(profile_), 777);
}

}  // namespace
