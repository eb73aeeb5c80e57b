// The days a report is asked for by name in the report pages ("Aujourd'hui", "Fin de l'exercice
// précédent"), and the first days of a period that may start with the books: each choice is a
// code, a French text and the rule that turns it into a date from a given today and the
// business's fiscal year. A link made with a code ("generatereportdate?report=bs&when=endlastfy")
// keeps meaning the current day as time passes. Named periods are those of the lists
// (LWebNamedPeriods, invoice/shared/weblistperiod.h); LReportPeriodOf reads them as dates.
#pragma once

#include <span>
#include <string_view>

#include "llib/gen/date.h"

class LProfile;

struct LReportChoice {
  std::string_view code;  // as links carry it: "fy", "lastmonth", ...
  std::string_view text;  // as the pull-down lists show it
};

// Days "as at": today, the ends of last month, last quarter, last fiscal year, this fiscal year,
// and "custom".
std::span<const LReportChoice> LReportDateChoices();
// First days of a period that may start at the beginning of the books ("beginning": no first
// day), the fiscal year's or the calendar year's first day, and "custom".
std::span<const LReportChoice> LReportFromChoices();

// The named period code (LWebNamedPeriods) as of today; false for "custom", "all" (no dates) or an
// unknown code (from and to unchanged).
bool LReportPeriodOf(LProfile& profile, std::string_view code, const LDate& today, LDate& from, LDate& to);
// The day of a date code; false for "custom" or an unknown code (date unchanged).
bool LReportDateOf(LProfile& profile, std::string_view code, const LDate& today, LDate& date);
// The first day of a from code; "beginning" gives an invalid date (from the beginning). false for
// "custom" or an unknown code (from unchanged).
bool LReportFromOf(LProfile& profile, std::string_view code, const LDate& today, LDate& from);
// The French name of month 1 to 12 ("janvier" ... "décembre"), as reports name a month.
std::string_view LMonthName(int month);
