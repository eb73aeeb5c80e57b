#include "accounts/reportperiods.h"

#include "invoice/shared/fiscalyear.h"
#include "invoice/shared/weblistperiod.h"

namespace {

constexpr LReportChoice kDates[] = {
    {"today", "Aujourd'hui"},
    {"endlastmonth", "Fin du mois dernier"},
    {"endlastquarter", "Fin du trimestre dernier"},
    {"endlastfy", "Fin de l'exercice précédent"},
    {"endfy", "Fin de l'exercice en cours"},
    {"custom", "Date choisie"},
};

constexpr LReportChoice kFroms[] = {
    {"beginning", "Début des comptes"},
    {"fystart", "Début de l'exercice"},
    {"yearstart", "Début de l'année civile"},
    {"custom", "Date choisie"},
};

LDate MonthEnd(int year, int month) { return LDate(year, month, LDaysInMonth(year, month)); }

// The month before (year, month), as a pair.
void PreviousMonth(int& year, int& month) {
  if (--month == 0) {
    month = 12;
    --year;
  }
}

struct FiscalYear {
  LDate from, to;
};

FiscalYear FiscalYearOf(LProfile& profile, const LDate& day) {
  LDTPeriod period = LFiscalYearOf(profile, day);
  FiscalYear year;
  (void)LDate::Parse(period.from, year.from);
  (void)LDate::Parse(period.to, year.to);
  return year;
}

}  // namespace

std::span<const LReportChoice> LReportDateChoices() { return kDates; }
std::span<const LReportChoice> LReportFromChoices() { return kFroms; }

bool LReportPeriodOf(LProfile& profile, std::string_view code, const LDate& today, LDate& from, LDate& to) {
  LDTPeriod period;
  LDate first, last;
  if (!LWebNamedPeriodDates(profile, code, today, period) || !LDate::Parse(period.from, first) ||
      !LDate::Parse(period.to, last))
    return false;
  from = first;
  to = last;
  return true;
}

bool LReportDateOf(LProfile& profile, std::string_view code, const LDate& today, LDate& date) {
  int year = today.year, month = today.month;
  if (code == "today") {
    date = today;
  } else if (code == "endlastmonth") {
    PreviousMonth(year, month);
    date = MonthEnd(year, month);
  } else if (code == "endlastquarter") {
    month = (month - 1) / 3 * 3 + 1;
    PreviousMonth(year, month);
    date = MonthEnd(year, month);
  } else if (code == "endlastfy") {
    date = FiscalYearOf(profile, today).from.AddDays(-1);
  } else if (code == "endfy") {
    date = FiscalYearOf(profile, today).to;
  } else {
    return false;
  }
  return true;
}

bool LReportFromOf(LProfile& profile, std::string_view code, const LDate& today, LDate& from) {
  if (code == "beginning") from = LDate();
  else if (code == "fystart") from = FiscalYearOf(profile, today).from;
  else if (code == "yearstart") from = LDate(today.year, 1, 1);
  else return false;
  return true;
}

std::string_view LMonthName(int month) {
  static constexpr std::string_view kMonths[] = {"janvier", "février", "mars",      "avril",   "mai",      "juin",
                                                 "juillet", "août",    "septembre", "octobre", "novembre", "décembre"};
  return month >= 1 && month <= 12 ? kMonths[month - 1] : std::string_view();
}
