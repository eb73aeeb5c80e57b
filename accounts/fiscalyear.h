// The fiscal year of the business: it ends each year on the company's "FiscalYearEnd" month and
// "FiscalYearEndDay" day (record "Company" of "Misc"; 31 December when not set or out of range,
// the day brought into the month: an end of 31 February is the month's last day). A fiscal year
// runs from the day after one end to the next end, both included.
#pragma once

#include "accounts/accounttotaller.h"
#include "llib/gen/date.h"

class LProfile;

// The fiscal year that holds date: its end is the first fiscal year end on or after date.
LDTPeriod LFiscalYearOf(LProfile& profile, const LDate& date);
