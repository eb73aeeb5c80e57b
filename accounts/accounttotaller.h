// Account totals over a period: every report that needs balances (statements, dashboards)
// asks LAccountTotalerProcess for each account's net movement between two dates. Whole months
// come from the month buckets of the account records; only the partial months at either end
// are read from the ledger's day files, so a period of years costs one pass over the chart
// plus at most two months of journal lines. Several businesses can be totalled together, each
// scaled by a conversion factor (consolidated reports).
//
//     LAccountTotalerProcess totaler(profile);
//     totaler.from = "2024-01-01";
//     totaler.to = "2024-12-31";
//     LProcessInterfaceVoid quiet;
//     Process(quiet, totaler);
//     long long expenses = 0;
//     CalculateSubAccounts(totaler, "", expenses, kAccountExpense, 1, +1, true);
//
// Amounts are cents, debit-positive, as in the ledger.
#pragma once

#include <list>
#include <string>
#include <string_view>
#include <vector>

#include "accounts/accounts.h"
#include "invoice/shared/fiscalyear.h"
#include "llib/gen/process.h"

class LProfile;

// One account's total over the period.
struct LAccountTotalerItem {
  std::string number;       // at most 259 bytes
  std::string description;  // at most 259 bytes
  int type = 0;             // AccountType
  int subClass = 0;         // as LAccount::GetSubClass
  int classification = 0;   // AccountClassification
  bool header = false;
  bool deleted = false;     // the account is marked "Deleted" (the trial balance leaves it out)
  long long amount = 0;
};

// The result of a run: items in ascending byte order of account number; an item whose number
// equals an existing one goes after it.
class LAccountTotalerList {
 public:
  // Adds amount to the first item whose number is number; dropped when there is none.
  void AddBalanceToAccount(std::string_view number, long long amount);
  // Adds the item's amount to the item with the same number and description, or inserts it.
  void AddOrInsert(const LAccountTotalerItem& item);

  std::list<LAccountTotalerItem>& Items() { return items_; }
  const std::list<LAccountTotalerItem>& Items() const { return items_; }
  // The first item of that number; null when none.
  const LAccountTotalerItem* Find(std::string_view number) const;

 private:
  std::list<LAccountTotalerItem> items_;
};

// A business of a consolidated run and the factor its amounts are multiplied by.
struct LProfilesAndRates {
  std::string databaseName;  // the business's data folder
  double factor = 1.0;
};

// Input and output of one run. Filled, run once with Process, read, discarded; the folds below
// consume the result list, so callers that need it twice keep a copy.
struct LAccountTotalerProcess {
  explicit LAccountTotalerProcess(LProfile& openProfile) : profile(openProfile) {}

  LProfile& profile;   // the open business, totalled alone when businesses is empty
  std::string from;    // "YYYY-MM-DD"; empty: from the beginning, opening balances included
  std::string to;      // "YYYY-MM-DD", required
  std::string filter;  // an account number: only that account; empty: every account
  std::vector<LProfilesAndRates> businesses;
  LAccountTotalerList result;
};

// How a period is split before any account is read: month buckets startIndex..endIndex
// (month index = year * 12 + month - 1; none when endIndex < startIndex), the opening balance
// when there is no from date, and up to two ranges of day files for the partial months.
struct LAccountTotalerSplit {
  int startIndex = 0;
  int endIndex = -1;
  bool includeOpening = false;
  std::string rangeAFrom, rangeATo;  // the partial first month; empty when none
  std::string rangeBFrom, rangeBTo;  // the partial last month; empty when none
};
// false when to (or a given from) is not a calendar day.
bool LAccountTotalerSplitPeriod(std::string_view from, std::string_view to, LAccountTotalerSplit& split);

// Totals the period over the businesses. kProcessFinished; kProcessCancelled when the interface
// asked to stop (checked before the work and after each business's accounts: the list is then
// partial); kProcessFailed when the dates are not calendar days. A business that cannot be
// opened and a missing day file contribute nothing.
LProcessResult Process(LProcessInterface& process, LAccountTotalerProcess& totaler);

// The heading rule: false when header is empty or number begins with the whole header;
// otherwise true when number begins with header stripped of its trailing '0's (false when
// nothing remains). 6300 covers 6310 to 6399; 6000 covers 6xxx except 6000xxx.
bool LAccountIsHeaderOf(std::string_view header, std::string_view number);

// Folds the items of type (and of subClass when filterSubClass) under header (every item when
// header is empty) into total, each amount times multiplier; a heading item adds the fold of
// its own sub-accounts (sub-class filter forced on). Every item visited is removed from the
// list, so an account is counted at most once and later folds see only what is left.
void CalculateSubAccounts(LAccountTotalerProcess& totaler, std::string_view header, long long& total,
                          AccountType type, int subClass, long long multiplier, bool filterSubClass);

// Income (credit-positive), expense and profit = income - expense of the open business over the
// period.
void LGetTotalIncomeExpenseProfit(LProfile& profile, const LDTPeriod& period, long long& income,
                                  long long& expense, long long& profit);
// Total assets as of today, opening balances included.
void LGetAssets(LProfile& profile, long long& assets);
