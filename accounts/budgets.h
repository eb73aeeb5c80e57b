// Budgets: a named budget for one fiscal year, with an amount per account and month. A budget is
// a record of the list "Budgets" keyed by its name: "Year" (the fiscal year ending in that
// calendar year), "Accounts" (the account numbers it covers, comma-separated, in the order
// given) and one field "Budget<NUMBER>M<m>" per account and month of the fiscal year (m = 1 for
// its first month, cents on the account's natural side: income and expenses both positive).
//
// An account's year is typed month by month or spread from a yearly figure: the cents are
// shared evenly and what does not divide goes one cent each to the first months, so that the
// months always add up to the year.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "invoice/shared/fiscalyear.h"

class LProfile;

inline constexpr std::string_view kBudgetsList = "Budgets";

using LBudgetMonths = std::array<long long, 12>;  // cents, month 1 = the fiscal year's first

struct LBudgetLine {
  std::string account;   // an account number
  LBudgetMonths months{};
};

struct LBudget {
  std::string name;
  int year = 0;                    // the fiscal year ending in this calendar year
  std::vector<LBudgetLine> lines;  // in the order given

  long long Total() const;
};

// The yearly amount shared over twelve months (see above).
LBudgetMonths LBudgetSpread(long long yearly);

// Reads the budget of that name; false when there is none (budget unchanged).
bool LBudgetLoad(LProfile& profile, std::string_view name, LBudget& budget);
// The budgets' names, sorted.
std::vector<std::string> LBudgetNames(LProfile& profile);
// Writes the budget under its name (replacing one of that name when replace, else refusing it).
// false with a French error: an empty name, a year outside 1900..9999, an account that is not in
// the chart or is a heading, an account twice, an existing name, a write that failed.
[[nodiscard]] bool LBudgetSave(LProfile& profile, const LBudget& budget, bool replace, std::string& error);
// "Budget introuvable : <name>", for a budget that is not there.
std::string LBudgetNotFoundMessage(std::string_view name);
// Removes the budget; false when there was none.
bool LBudgetDelete(LProfile& profile, std::string_view name);
// The fiscal year of the budget (from its first to its last day).
LDTPeriod LBudgetPeriod(LProfile& profile, int year);
