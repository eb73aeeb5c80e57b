// The chart of accounts: names, the sub-class rule, the default chart per country, creating and
// looking up accounts, opening balances and the sales-side totals.
#include "accounts/accounts.h"

#include <gtest/gtest.h>

#include <memory>

#include <tuple>

#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "tests/support/testhome.h"

namespace {

class AccountsTest : public LHomeTest {
 protected:
  // A business whose options say it is in country.
  void SetCountry(LProfile& profile, const char* country) {
    LOptions options;
    options.OpenFrom(profile);
    options.SetString("CountryCode", country);
    options.Flush();
  }
  std::unique_ptr<LAccount> Open(LProfile& profile, const char* number) {
    auto account = std::make_unique<LAccount>();
    LAccountList(profile).Open(*account, number);
    return account;
  }
  std::string Slot(LProfile& profile, int slot) {
    LOptions options;
    options.OpenFrom(profile);
    return options.GetDefAccountNumber(profile, slot);
  }
};

TEST_F(AccountsTest, TypeNamesAndNormalSides) {
  EXPECT_EQ(LAccountTypeName(1), "Actif");
  EXPECT_EQ(LAccountTypeName(2), "Passif");
  EXPECT_EQ(LAccountTypeName(3), "Capitaux propres");
  EXPECT_EQ(LAccountTypeName(4), "Recettes");
  EXPECT_EQ(LAccountTypeName(5), "Dépenses");
  EXPECT_EQ(LAccountTypeName(0), "");
  EXPECT_EQ(LAccountTypeName(6), "");
  EXPECT_EQ(LAccountNormalSideName(1), "Débit");
  EXPECT_EQ(LAccountNormalSideName(5), "Débit");
  EXPECT_EQ(LAccountNormalSideName(2), "Crédit");
  EXPECT_EQ(LAccountNormalSideName(3), "Crédit");
  EXPECT_EQ(LAccountNormalSideName(4), "Crédit");
}

TEST_F(AccountsTest, SubClassFollowsTheNumberUnlessStored) {
  LAccount account;  // detached: nothing is written
  account.SetInt("Type", kAccountExpense);
  for (auto [number, subClass] : {std::pair{"6950", 2}, std::pair{"6100", 0}, std::pair{"6400", 1}}) {
    account.SetPrimaryKey(number);
    EXPECT_EQ(account.GetSubClass(), subClass) << number;
  }
  account.SetInt("Type", kAccountIncome);
  account.SetPrimaryKey("4900");
  EXPECT_EQ(account.GetSubClass(), 1);
  account.SetPrimaryKey("4100");
  EXPECT_EQ(account.GetSubClass(), 0);
  account.SetInt("Type", kAccountAsset);
  account.SetPrimaryKey("4900");
  EXPECT_EQ(account.GetSubClass(), 0);
  account.SetInt("SubClass", 1);
  EXPECT_EQ(account.GetSubClass(), 1);
}

TEST_F(AccountsTest, DefaultChartForFranceHasFiftyOneRowsAndSlotOneEndsOn1150) {
  LProfile profile;
  SetCountry(profile, "FR");
  LAccountListCreateDefault(profile);
  std::vector<std::string> numbers = LAccountList(profile).GetNumbers();
  // 53 rows, of which the four country variants of 2390 and 2410 do not apply in France.
  EXPECT_EQ(numbers.size(), 49u);
  EXPECT_EQ(Open(profile, "2390")->GetDescription(), "Autres charges à verser");
  EXPECT_EQ(Open(profile, "2410")->GetDescription(), "Taxe à la vente perçue");
  EXPECT_EQ(Slot(profile, 1), "1150");
  EXPECT_EQ(Slot(profile, 2), "1210");
  EXPECT_EQ(Slot(profile, 3), "4110");
  EXPECT_EQ(Slot(profile, 4), "4210");
  EXPECT_EQ(Slot(profile, 5), "2410");
  EXPECT_EQ(Slot(profile, 6), "2390");
  EXPECT_EQ(Slot(profile, 7), "2210");
  EXPECT_EQ(Slot(profile, 8), "6190");
  EXPECT_EQ(Slot(profile, 9), "6110");

  auto checking = Open(profile, "1110");
  EXPECT_EQ(checking->GetDescription(), "Compte-chèque");
  EXPECT_EQ(checking->GetType(), kAccountAsset);
  EXPECT_TRUE(checking->IsCash());
  EXPECT_FALSE(checking->IsHeader());
  auto furniture = Open(profile, "1510");
  EXPECT_EQ(furniture->GetClassification(), kClassificationOperating);
  auto heading = Open(profile, "6300");
  EXPECT_TRUE(heading->IsHeader());
  EXPECT_TRUE(heading->GetBool("TaxIncluded", false));
  EXPECT_FALSE(heading->TestFieldExists("SubClass"));
  EXPECT_EQ(Open(profile, "6910")->GetSubClass(), 2);
  EXPECT_EQ(Open(profile, "6110")->GetSubClass(), 0);
  EXPECT_EQ(Open(profile, "4910")->GetSubClass(), 1);
  EXPECT_EQ(Open(profile, "3999")->GetClassification(), kClassificationFinancing);
}

TEST_F(AccountsTest, DefaultChartNamesTheTaxAccountsByCountry) {
  struct Case {
    const char* country;
    const char* paid;
    const char* collected;
  } cases[] = {{"GB", "TVA versée", "TVA perçue"},
               {"IE", "TVA versée", "TVA perçue"},
               {"ZA", "TVA versée", "TVA perçue"},
               {"AU", "TPS versée", "TPS perçue"},
               {"NZ", "TPS versée", "TPS perçue"},
               {"BE", "Autres charges à verser", "Taxe à la vente perçue"}};
  for (const Case& c : cases) {
    LTempHome home;
    LProfile profile;
    SetCountry(profile, c.country);
    LAccountListCreateDefault(profile);
    EXPECT_EQ(Open(profile, "2390")->GetDescription(), c.paid) << c.country;
    EXPECT_EQ(Open(profile, "2410")->GetDescription(), c.collected) << c.country;
    EXPECT_EQ(Slot(profile, 1), "1150") << c.country;
    EXPECT_EQ(Slot(profile, 5), "2410") << c.country;
    EXPECT_EQ(Slot(profile, 6), "2390") << c.country;
  }
}

TEST_F(AccountsTest, DefaultChartTwiceChangesNothingAndBringsDeletedAccountsBack) {
  LProfile profile;
  SetCountry(profile, "FR");
  LAccountListCreateDefault(profile);
  {
    auto renamed = Open(profile, "1110");
    renamed->SetString("Description", "Banque populaire");
    renamed->Flush();
    auto hidden = Open(profile, "1120");
    hidden->SetBool("Deleted", true);
    hidden->SetString("Description", "Ancien livret");
    hidden->Flush();
  }
  std::string before = LReadFile(home_.SharedFolder() + "/Accounts/1110.dat");
  LAccountListCreateDefault(profile);
  // A live account is never overwritten.
  EXPECT_EQ(LReadFile(home_.SharedFolder() + "/Accounts/1110.dat"), before);
  auto revived = Open(profile, "1120");
  EXPECT_FALSE(revived->IsDeleted());
  EXPECT_EQ(revived->GetDescription(), "Compte épargne");
  EXPECT_EQ(LAccountList(profile).GetNumbers().size(), 49u);
}

TEST_F(AccountsTest, CreateAccountOnlyRevivesAnExistingNumber) {
  LProfile profile;
  LCreateAccount(profile, "1112", "Caisse", kAccountAsset, true, 0, kClassificationNone);
  auto created = Open(profile, "1112");
  EXPECT_EQ(created->GetDescription(), "Caisse");
  EXPECT_TRUE(created->IsCash());
  EXPECT_EQ(created->GetString("Header"), "0");
  created->SetBool("Deleted", true);
  created->Flush();
  LCreateAccount(profile, "1112", "Autre nom", kAccountLiability, false, 1, kClassificationFinancing);
  auto revived = Open(profile, "1112");
  EXPECT_FALSE(revived->IsDeleted());
  EXPECT_EQ(revived->GetDescription(), "Caisse");
  EXPECT_EQ(revived->GetType(), kAccountAsset);
  EXPECT_TRUE(revived->IsCash());
}

TEST_F(AccountsTest, LookupByNameIsExactAndTakesTheLowestNumber) {
  LProfile profile;
  LCreateAccount(profile, "5200", "Loyer", kAccountExpense, false, 1, kClassificationNone);
  LCreateAccount(profile, "5100", "Loyer", kAccountExpense, false, 1, kClassificationNone);
  LAccountList list(profile);
  std::string number;
  LGetAccountNumberUsingName(list, "Loyer", number);
  EXPECT_EQ(number, "5100");
  LGetAccountNumberUsingName(list, "loyer", number);
  EXPECT_EQ(number, "");
  LGetAccountNumberUsingName(list, "Loyer ", number);
  EXPECT_EQ(number, "");
  EXPECT_EQ(LGetAccountNumberUsingDescription(profile, "Loyer"), "5100");
}

TEST_F(AccountsTest, OpeningBalanceIsBalancedByTheHistoricalAccount) {
  LProfile profile;
  SetCountry(profile, "FR");
  LAccountListCreateDefault(profile);
  auto loan = Open(profile, "2150");
  loan->UpdateOpeningBalance(profile, 50000);
  EXPECT_EQ(Open(profile, "2150")->GetOpeningBalance(), -50000);
  EXPECT_EQ(Open(profile, "2150")->GetTotalBalance(), -50000);
  EXPECT_TRUE(Open(profile, "2150")->IsAccountUsed());
  EXPECT_EQ(Open(profile, "3999")->GetOpeningBalance(), 50000);
  EXPECT_EQ(Open(profile, "3999")->GetTotalBalance(), 50000);

  auto bank = Open(profile, "1110");
  bank->UpdateOpeningBalance(profile, 120000);
  // Changing it again moves only the difference.
  bank->UpdateOpeningBalance(profile, 100000);
  EXPECT_EQ(Open(profile, "1110")->GetOpeningBalance(), 100000);
  EXPECT_EQ(Open(profile, "3999")->GetOpeningBalance(), 50000 - 100000);
  long long sum = 0;
  LAccountList list(profile);
  for (const std::string& number : list.GetNumbers()) sum += Open(profile, number.c_str())->GetOpeningBalance();
  EXPECT_EQ(sum, 0);
  // The same amount again changes nothing, not even the "used" mark of an untouched account->
  auto income = Open(profile, "4110");
  income->UpdateOpeningBalance(profile, 0);
  EXPECT_FALSE(Open(profile, "4110")->IsAccountUsed());
}

TEST_F(AccountsTest, BalancesByMonth) {
  LProfile profile;
  LCreateAccount(profile, "1110", "Compte-chèque", kAccountAsset, true, 0, kClassificationNone);
  auto account = Open(profile, "1110");
  account->AddBalance(2024, 1, 1500);
  EXPECT_EQ(account->GetInt64("Balance24288", 0), 1500);
  EXPECT_EQ(account->GetInt("BalanceFirst", 0), 24288);
  account->AddBalance(2023, 12, -200);
  account->AddBalance(2024, 3, 700);
  account->IncrementTotalBalance(2000);
  EXPECT_EQ(Open(profile, "1110")->GetInt("BalanceFirst", 0), 24287);
  auto stored = Open(profile, "1110");
  stored->SetInt64("OpeningBalance", 10);
  EXPECT_EQ(stored->GetBalanceAtEndOfMonth(2023, 11), 10);
  EXPECT_EQ(stored->GetBalanceAtEndOfMonth(2023, 12), -190);
  EXPECT_EQ(stored->GetBalanceAtEndOfMonth(2024, 2), 1310);
  EXPECT_EQ(stored->GetBalanceAtEndOfMonth(2030, 1), 2010);
  EXPECT_EQ(stored->GetTotalBalance(), 2000);
  stored->ResetTotalBalance();
  EXPECT_EQ(stored->GetTotalBalance(), 10);
  stored->Invalidate();
  auto buckets = Open(profile, "1110")->GetMonthBuckets();
  ASSERT_EQ(buckets.size(), 3u);
  EXPECT_EQ(buckets[0], std::make_pair(24287, -200LL));
  EXPECT_EQ(buckets[2], std::make_pair(24290, 700LL));
}

TEST_F(AccountsTest, ReceivableAndPayableTotalsSumTheStoredBalances) {
  LProfile profile;
  for (auto [list, key, balance] : {std::tuple{"Customers", "1", "1050"}, std::tuple{"Customers", "2", "-50"},
                                    std::tuple{"Suppliers", "1", "777"}}) {
    LRecord record;
    profile.List(list).OpenAlways(record, key);
    record.SetString("Balance", balance);
    record.Flush();
  }
  EXPECT_EQ(LGetTotalAccountsReceivable(profile), 1000);
  EXPECT_EQ(LGetTotalAccountsPayable(profile), 777);
}

}  // namespace
