// The profit and loss statement of a period: revenue, cost of sales and gross profit, expenses
// and operating profit, other revenue and other expenses, and the net profit; one business or
// several totalled together with their conversion factors. The comparison lays two periods
// side by side, one amount column each.
#pragma once

#include <vector>

#include "accounts/accounttotaller.h"
#include "llib/gen/reporttable.h"

class LProfile;

// Fills table with the statement of period; businesses empty: the open business alone. false
// (table untouched) when the dates are not calendar days.
bool LProfitAndLoss(LProfile& profile, const LDTPeriod& period, const std::vector<LProfilesAndRates>& businesses,
                    LReportTable& table);
// The same with one column for period and one for compared, each headed by its period.
bool LProfitAndLossCompare(LProfile& profile, const LDTPeriod& period, const LDTPeriod& compared,
                           const std::vector<LProfilesAndRates>& businesses, LReportTable& table);
