// The report of a budget against what was posted: for each account of the budget, each month of
// the period with its budget, its actual amount (from the account totaller, on the account's
// natural side), the difference (actual less budget) and that difference as a percentage of the
// budget; then the account's totals over the period and the budget's grand total.
#pragma once

#include <string>

#include "accounts/budgets.h"
#include "llib/gen/reporttable.h"

// Title "Budget et réalisé : NAME", columns "Budget", "Réel", "Écart", "Écart %" (a text cell,
// "20,0 %", empty when the budget is zero). A month of the period outside the budget's fiscal
// year has a budget of zero. false with a French error when the period does not read or ends
// before it starts.
bool LBudgetReport(LProfile& profile, const LBudget& budget, const LDTPeriod& period, LReportTable& table,
                   std::string& error);
