// The figures of the main page's charts: for each calendar month of a fiscal year, the income
// and the expenses posted in it and the cash held at its end. Read from the month buckets of the
// account records alone (no journal file), so the main page costs one pass over the chart.
//
// Income is credit-positive (income accounts negated), expenses debit-positive; cash is what the
// cash-flow statement calls cash: the asset, liability and equity accounts of classification 0,
// opening balances included, headings left out. A fiscal year that does not start on the 1st counts its first and last
// months whole.
#pragma once

#include <optional>
#include <vector>

#include "invoice/shared/fiscalyear.h"
#include "llib/gen/date.h"

class LProfile;

struct LDashboardMonth {
  int year = 0, month = 0;         // the calendar month
  long long income = 0;            // cents
  long long expense = 0;           // cents
  std::optional<long long> cash;   // at the month's end; none for a month that has not begun
};

// The months of period (its first to its last month), cash up to the month of today.
std::vector<LDashboardMonth> LDashboardMonths(LProfile& profile, const LDTPeriod& period, const LDate& today);
