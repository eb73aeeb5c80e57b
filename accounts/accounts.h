// The chart of accounts: the "Accounts" list of a business, one LAccount record per ledger
// account, keyed by its account number ("ID"). Besides what the account is (name, type, heading
// and cash flags, cash-flow classification), each record carries the running balances that the
// ledger keeps in step with every posting: "TotalBalance", one "Balance%d" bucket per month
// (month index = year * 12 + month - 1) and "BalanceFirst", the smallest month index that has a
// bucket. Amounts are cents, debit-positive.
//
// Account numbers are "NumberOfDigits" characters long (the "Company" option record, default
// 4); a heading account's number without its trailing zeros is the prefix of its sub-accounts.
// Accounts are first marked "Deleted" and only removed by a second delete.
//
// The balance fields are written only under the ledger lock (accounts/ledgerlock.h): the
// methods that change them say so.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "llib/gen/datastore.h"

class LProfile;

inline constexpr std::string_view kAccountsList = "Accounts";
inline constexpr int kDefaultAccountDigits = 4;
// The equity account that balances every opening balance; found by this description, or in the
// French general chart by the second.
inline constexpr std::string_view kHistoricalBalanceDescription = "Comptabilité historique";
inline constexpr std::string_view kOpeningBalanceSheetDescription = "Bilan d'ouverture";

enum AccountType : int {
  kAccountAsset = 1,
  kAccountLiability = 2,
  kAccountEquity = 3,
  kAccountIncome = 4,
  kAccountExpense = 5,
};

// Where an account's movements appear in the cash-flow statement.
enum AccountClassification : int {
  kClassificationNone = 0,
  kClassificationOperating = 1,   // "Exploitation"
  kClassificationInvesting = 2,   // "Investissements"
  kClassificationFinancing = 3,   // "Finance"
};

// "Actif", "Passif", "Capitaux propres", "Recettes", "Dépenses"; empty for any other value.
std::string_view LAccountTypeName(int type);
// "Débit" for asset and expense, "Crédit" for liability, equity and income, else empty.
std::string_view LAccountNormalSideName(int type);
// "Exploitation", "Investissements", "Finance"; empty for 0 and unknown values.
std::string_view LAccountClassificationName(int classification);

class LAccount : public LRecord {
 public:
  std::string GetNumber() const { return GetPrimaryKey(); }
  std::string GetDescription() const { return GetString("Description"); }
  int GetType() const { return GetInt("Type", 0); }
  std::string_view GetTypeString() const { return LAccountTypeName(GetType()); }
  std::string_view GetNormalSideString() const { return LAccountNormalSideName(GetType()); }
  // The stored "SubClass"; without one, derived from the number: expense 0 for "61...",
  // 2 for "69...", else 1; income 1 for "49...", else 0; other types 0.
  int GetSubClass() const;
  bool IsHeader() const { return GetBool("Header", false); }
  bool IsCash() const { return GetBool("Cash", false); }
  bool IsDeleted() const { return GetBool("Deleted", false); }
  bool IsAccountUsed() const { return GetBool("IsAccountUsed", false); }
  int GetClassification() const { return GetInt("Classification", 0); }
  long long GetOpeningBalance() const { return GetInt64("OpeningBalance", 0); }
  long long GetTotalBalance() const { return GetInt64("TotalBalance", 0); }

  // ---- Balances (callers hold the ledger lock) -----------------------------------------
  // Adds amount to the bucket of (year, month), lowers "BalanceFirst" to that month when
  // needed, marks the account used, and flushes; false when the flush failed.
  [[nodiscard]] bool AddBalance(int year, int month, long long amount);
  // Adds amount to "TotalBalance", marks the account used, and flushes; false as above.
  [[nodiscard]] bool IncrementTotalBalance(long long amount);
  // Both at once without flushing: what one posting does to an account, saved by one flush.
  void MoveBalance(int monthIndex, long long amount);
  // "TotalBalance" back to the opening balance (not flushed).
  void ResetTotalBalance();
  // "OpeningBalance" plus every bucket from "BalanceFirst" to (year, month) included; the
  // opening balance alone when "BalanceFirst" lies beyond that month.
  long long GetBalanceAtEndOfMonth(int year, int month) const;
  // The month buckets as (month index, amount), in index order.
  std::vector<std::pair<int, long long>> GetMonthBuckets() const;

  // Sets the opening balance from an amount on the account's natural side (stored negated for
  // liability, equity and income). When it changes by d: "TotalBalance" += d, the account is
  // marked used and flushed, and the opening-balance account (LGetOpeningBalanceAccountNumber)
  // takes -d on both its opening and total balance, so that opening balances always sum to zero.
  // Takes the ledger lock itself and re-reads the record under it (pending changes are flushed
  // first). false when the account is gone or a record could not be written.
  [[nodiscard]] bool UpdateOpeningBalance(LProfile& profile, long long amount);

 private:
  void AddToBucket(int monthIndex, long long amount);
};

// "Balance%d" of a month index.
std::string LAccountBucketField(int monthIndex);
// The month index of a "Balance%d" field name; false for other names ("BalanceFirst" too).
bool LAccountParseBucketField(std::string_view name, int& monthIndex);

class LAccountList : public LDataStoreList<LFileStoreDataStore, LAccount> {
 public:
  explicit LAccountList(const LProfile& profile);
  // Every account number, in ascending order: the order in which lookups by name search.
  std::vector<std::string> GetNumbers() const;
};

// The refusal for a number that names no live account of the chart.
std::string LAccountNotInChartMessage(std::string_view number);
// Whether number names an account of the chart that is not deleted. Answered, as the lookup by
// description below, from a copy of the chart's names kept per process and checked against the
// accounts folder at each call (accountnames.cpp).
bool LAccountIsLive(const LProfile& profile, std::string_view number);

// "NumberOfDigits" of the "Company" option record (default 4).
int LAccountGetNumberOfDigits(const LProfile& profile);

// The number of the first account (in number order) whose "Description" is exactly description
// (case-sensitive); empty when none.
std::string LGetAccountNumberUsingDescription(const LProfile& profile, std::string_view description);
// The account that balances opening balances: the first described "Comptabilité historique",
// else "Bilan d'ouverture"; empty when the chart has neither.
std::string LGetOpeningBalanceAccountNumber(const LProfile& profile);

// An existing number only brings a deleted account back ("Deleted" = "0"), changing nothing
// else; otherwise the account is created with these values and "Header" = "0". false when the
// account could not be written.
[[nodiscard]] bool LCreateAccount(LProfile& profile, std::string_view number, std::string_view description, AccountType type,
                    bool cash, int subClass, AccountClassification classification);

// Creates the default chart of a new business: the fixed table, rows chosen by the business's
// country, live accounts left alone, deleted ones brought back, the linked-account slots set
// in table order; then the default tax accounts (see LAccountsSetTaxAccountsCreator). false when
// a record could not be written.
[[nodiscard]] bool LAccountListCreateDefault(LProfile& profile);
// The tax side registers here how the default tax accounts of a new business are made; the
// default chart calls it last. Until one is registered there is no such step. The creator
// returns false when an account could not be written.
using LTaxAccountsCreator = bool (*)(LProfile& profile);
void LAccountsSetTaxAccountsCreator(LTaxAccountsCreator creator);

// The sum of "Balance" over the "Customers" list, respectively the "Suppliers" list.
long long LGetTotalAccountsReceivable(const LProfile& profile);
long long LGetTotalAccountsPayable(const LProfile& profile);
