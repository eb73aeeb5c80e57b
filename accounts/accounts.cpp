#include "accounts/accounts.h"

#include <algorithm>
#include <cstdio>

#include "accounts/accountrenumber.h"
#include "accounts/ledgerlock.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "llib/gen/log.h"
#include "llib/gen/moneybounds.h"
#include "llib/gen/textnum.h"

// ---- Names ------------------------------------------------------------------------------------

std::string_view LAccountTypeName(int type) {
  switch (type) {
    case kAccountAsset: return "Actif";
    case kAccountLiability: return "Passif";
    case kAccountEquity: return "Capitaux propres";
    case kAccountIncome: return "Recettes";
    case kAccountExpense: return "Dépenses";
    default: return {};
  }
}

std::string_view LAccountNormalSideName(int type) {
  switch (type) {
    case kAccountAsset:
    case kAccountExpense: return "Débit";
    case kAccountLiability:
    case kAccountEquity:
    case kAccountIncome: return "Crédit";
    default: return {};
  }
}

std::string_view LAccountClassificationName(int classification) {
  switch (classification) {
    case kClassificationOperating: return "Exploitation";
    case kClassificationInvesting: return "Investissements";
    case kClassificationFinancing: return "Finance";
    default: return {};
  }
}

// ---- The record -------------------------------------------------------------------------------

int LAccount::GetSubClass() const {
  if (TestFieldExists("SubClass")) return GetInt("SubClass", 0);
  std::string number = GetNumber();
  auto startsWith = [&number](std::string_view prefix) { return number.compare(0, prefix.size(), prefix) == 0; };
  switch (GetType()) {
    case kAccountExpense: return startsWith("61") ? 0 : startsWith("69") ? 2 : 1;
    case kAccountIncome: return startsWith("49") ? 1 : 0;
    default: return 0;
  }
}

std::string LAccountBucketField(int monthIndex) {
  char name[32];
  std::snprintf(name, sizeof name, "Balance%d", monthIndex);
  return name;
}

bool LAccountParseBucketField(std::string_view name, int& monthIndex) {
  constexpr std::string_view kPrefix = "Balance";
  if (name.size() <= kPrefix.size() || name.substr(0, kPrefix.size()) != kPrefix) return false;
  std::string_view digits = name.substr(kPrefix.size());
  if (digits.size() > 9) return false;
  int value = 0;
  for (char c : digits) {
    if (c < '0' || c > '9') return false;
    value = value * 10 + (c - '0');
  }
  monthIndex = value;
  return true;
}

namespace {

void MarkUsed(LAccount& account) {
  if (!account.GetBool("IsAccountUsed", false)) account.SetBool("IsAccountUsed", true);
}

}  // namespace

void LAccount::AddToBucket(int monthIndex, long long amount) {
  std::string field = LAccountBucketField(monthIndex);
  SetInt64(field, LMoneySum(GetInt64(field, 0), amount));
  if (!TestFieldExists("BalanceFirst") || GetInt("BalanceFirst", 0) > monthIndex) SetInt("BalanceFirst", monthIndex);
  MarkUsed(*this);
}

bool LAccount::AddBalance(int year, int month, long long amount) {
  AddToBucket(year * 12 + month - 1, amount);
  return Flush();
}

void LAccount::MoveBalance(int monthIndex, long long amount) {
  AddToBucket(monthIndex, amount);
  SetInt64("TotalBalance", LMoneySum(GetTotalBalance(), amount));
}

bool LAccount::IncrementTotalBalance(long long amount) {
  SetInt64("TotalBalance", LMoneySum(GetTotalBalance(), amount));
  MarkUsed(*this);
  return Flush();
}

void LAccount::ResetTotalBalance() { SetInt64("TotalBalance", GetOpeningBalance()); }

long long LAccount::GetBalanceAtEndOfMonth(int year, int month) const {
  long long balance = GetOpeningBalance();
  int last = year * 12 + month - 1;
  if (!TestFieldExists("BalanceFirst")) return balance;
  for (int index = GetInt("BalanceFirst", 0); index <= last; ++index)
    balance = LMoneySum(balance, GetInt64(LAccountBucketField(index), 0));
  return balance;
}

std::vector<std::pair<int, long long>> LAccount::GetMonthBuckets() const {
  std::vector<std::pair<int, long long>> buckets;
  for (const auto& field : Fields()) {
    int monthIndex = 0;
    if (field.deleted || !LAccountParseBucketField(field.name, monthIndex)) continue;
    buckets.emplace_back(monthIndex, LTextToInt64(field.text));
  }
  std::sort(buckets.begin(), buckets.end());
  return buckets;
}

bool LAccount::UpdateOpeningBalance(LProfile& profile, long long amount) {
  LAccountList accounts(profile);
  std::string number = GetNumber();
  LLedgerLock lock(profile);
  // Read again under the lock: a posting may have moved the total since this record was opened.
  if (!Flush() || !accounts.Open(*this, number)) return false;
  int type = GetType();
  long long stored = (type == kAccountLiability || type == kAccountEquity || type == kAccountIncome) ? -amount : amount;
  long long change = stored - GetOpeningBalance();
  if (change == 0) return true;
  SetInt64("OpeningBalance", stored);
  SetInt64("TotalBalance", GetTotalBalance() + change);
  MarkUsed(*this);
  if (!Flush()) return false;
  std::string historical = LGetOpeningBalanceAccountNumber(profile);
  if (historical.empty()) return true;
  LAccount balancing;
  if (historical == number) {
    SetInt64("OpeningBalance", GetOpeningBalance() - change);
    SetInt64("TotalBalance", GetTotalBalance() - change);
    return Flush();
  }
  if (!accounts.Open(balancing, historical)) return true;
  balancing.SetInt64("OpeningBalance", balancing.GetOpeningBalance() - change);
  balancing.SetInt64("TotalBalance", balancing.GetTotalBalance() - change);
  return balancing.Flush();
}

// ---- The list ---------------------------------------------------------------------------------

LAccountList::LAccountList(const LProfile& profile)
    : LDataStoreList<LFileStoreDataStore, LAccount>(profile.GetDataStore(), kAccountsList) {}

std::vector<std::string> LAccountList::GetNumbers() const {
  std::vector<std::string> numbers;
  for (LDataStoreListIterator<LFileStoreDataStore, LAccount> it(*this); it.IsValid(); it.Next())
    numbers.push_back(it->GetPrimaryKey());
  std::sort(numbers.begin(), numbers.end());
  return numbers;
}

std::string LAccountNotInChartMessage(std::string_view number) {
  return "Le compte " + std::string(number) + " n'existe pas dans le plan comptable.";
}

int LAccountGetNumberOfDigits(const LProfile& profile) {
  LRecord company;
  profile.List(kMiscList).Open(company, "Company");
  int digits = company.GetInt("NumberOfDigits", kDefaultAccountDigits);
  return digits > 0 ? digits : kDefaultAccountDigits;
}

std::string LGetOpeningBalanceAccountNumber(const LProfile& profile) {
  std::string number = LGetAccountNumberUsingDescription(profile, kHistoricalBalanceDescription);
  return number.empty() ? LGetAccountNumberUsingDescription(profile, kOpeningBalanceSheetDescription) : number;
}

bool LCreateAccount(LProfile& profile, std::string_view number, std::string_view description, AccountType type,
                    bool cash, int subClass, AccountClassification classification) {
  LAccountList accounts(profile);
  LAccount account;
  if (accounts.Open(account, number)) {
    if (account.IsDeleted()) account.SetBool("Deleted", false);
    return account.Flush();
  }
  if (std::string refusal; !LAccountNumberClearOfRenumbering(profile, number, &refusal)) {
    LLogError("%s", refusal.c_str());
    return false;
  }
  accounts.CreateNewRecord(account, number);
  account.SetString("Description", description);
  account.SetInt("Type", type);
  account.SetBool("Cash", cash);
  account.SetInt("SubClass", subClass);
  account.SetInt("Classification", classification);
  account.SetBool("Header", false);
  return account.Flush();
}

// ---- Totals of the sales side -----------------------------------------------------------------

namespace {

long long SumOfBalances(const LProfile& profile, std::string_view listName) {
  long long total = 0;
  LRecord record;
  LFileStoreListBase list = profile.List(listName);
  for (LFileStoreIteratorBase it(list, record); record.IsAttached(); it.Next(record))
    total += record.GetInt64("Balance", 0);
  return total;
}

}  // namespace

long long LGetTotalAccountsReceivable(const LProfile& profile) { return SumOfBalances(profile, "Customers"); }
long long LGetTotalAccountsPayable(const LProfile& profile) { return SumOfBalances(profile, "Suppliers"); }
