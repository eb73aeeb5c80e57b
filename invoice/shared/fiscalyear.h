// The fiscal year of the business: it ends each year on the company's "FiscalYearEnd" month and
// "FiscalYearEndDay" day (record "Company" of "Misc"; 31 December when not set or out of range,
// the day brought into the month: an end of 31 February is the month's last day). A fiscal year
// runs from the day after one end to the next end, both included.
#pragma once

#include <string>

#include "llib/gen/date.h"

class LProfile;

// A period in the ledger's date form, both ends included; an empty from means "from the
// beginning".
struct LDTPeriod {
  std::string from;
  std::string to;
};

// The fiscal year that holds date: its end is the first fiscal year end on or after date.
LDTPeriod LFiscalYearOf(LProfile& profile, const LDate& date);
