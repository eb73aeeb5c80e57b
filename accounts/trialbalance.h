// The trial balance of a period: every live account with its balance in a debit column when
// positive or a credit column when negative, and a "Total" row whose two sums are equal
// whenever the ledger is balanced.
#pragma once

#include <vector>

#include "accounts/accounttotaller.h"
#include "llib/gen/reporttable.h"

class LProfile;

// Fills table; a period without a start includes the opening balances. businesses empty: the
// open business alone. false (table untouched) when the dates are not calendar days.
bool LTrialBalance(LProfile& profile, const LDTPeriod& period, const std::vector<LProfilesAndRates>& businesses,
                   LReportTable& table);
