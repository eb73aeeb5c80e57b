// The balance sheet as at one date: assets, liabilities, net assets, and equity, whose total
// is the net assets by construction: income and expense accounts are never closed, so the
// retained earnings ("Bénéfices non distribués") are the figure that balances the sheet.
#pragma once

#include <string>
#include <vector>

#include "accounts/accounttotaller.h"
#include "llib/gen/reporttable.h"

class LProfile;

// Totals from the beginning (opening balances included) to date and fills table; businesses
// empty: the open business alone. false (table untouched) when date is not a calendar day.
bool LBalanceSheet(LProfile& profile, const std::string& date, const std::vector<LProfilesAndRates>& businesses,
                   LReportTable& table);
