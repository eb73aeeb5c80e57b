// The cash-flow statement of a period: net income adjusted by the movements of the operating
// accounts, then the investing and financing accounts, each grouped by the cash-flow
// classification of its account record; the net change, and the cash at the start and at the
// end of the period.
//
// Cash is what the unclassified balance-sheet accounts hold: asset, liability and equity
// accounts of classification 0 (the bank, cash and credit-card accounts of the default chart).
// "Trésorerie au début de la période" is their balance from the beginning, opening balances
// included, to the day before the period starts (0 when the period has no start, since its
// movements then include the opening balances); the end is the start plus the net change, which
// equals their balance at the period's end because the ledger is balanced.
#pragma once

#include <vector>

#include "accounts/accounttotaller.h"
#include "llib/gen/reporttable.h"

class LProfile;

// Prints the accounts of a classification (asset, liability and equity accounts only, headings
// left out) with the negative of their movement, consuming them; returns the section's net.
long long CalculateAccountsForClassification(LAccountTotalerList& totals, int classification, bool includeZero,
                                             LReportTable& table);

// Fills table; businesses empty: the open business alone. false (table untouched) when the
// dates are not calendar days.
bool LCashFlowStatement(LProfile& profile, const LDTPeriod& period, const std::vector<LProfilesAndRates>& businesses,
                        LReportTable& table);
