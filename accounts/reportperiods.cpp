#include "accounts/reportperiods.h"

#include "accounts/fiscalyear.h"

namespace {

constexpr LReportChoice kPeriods[] = {
    {"fy", "Exercice en cours"},         {"lastfy", "Exercice précédent"}, {"fytd", "Exercice à ce jour"},
    {"month", "Mois en cours"},          {"lastmonth", "Mois dernier"},    {"quarter", "Trimestre en cours"},
    {"lastquarter", "Trimestre dernier"}, {"year", "Année civile en cours"}, {"lastyear", "Année civile précédente"},
    {"custom", "Période choisie"},
};

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

std::span<const LReportChoice> LReportPeriodChoices() { return kPeriods; }
std::span<const LReportChoice> LReportDateChoices() { return kDates; }
std::span<const LReportChoice> LReportFromChoices() { return kFroms; }

bool LReportPeriodOf(LProfile& profile, std::string_view code, const LDate& today, LDate& from, LDate& to) {
  int year = today.year, month = today.month;
  int quarterFirst = (month - 1) / 3 * 3 + 1;
  if (code == "fy" || code == "fytd") {
    FiscalYear fiscal = FiscalYearOf(profile, today);
    from = fiscal.from;
    to = code == "fy" ? fiscal.to : today;
  } else if (code == "lastfy") {
    FiscalYear fiscal = FiscalYearOf(profile, FiscalYearOf(profile, today).from.AddDays(-1));
    from = fiscal.from;
    to = fiscal.to;
  } else if (code == "month") {
    from = LDate(year, month, 1);
    to = MonthEnd(year, month);
  } else if (code == "lastmonth") {
    PreviousMonth(year, month);
    from = LDate(year, month, 1);
    to = MonthEnd(year, month);
  } else if (code == "quarter") {
    from = LDate(year, quarterFirst, 1);
    to = MonthEnd(year, quarterFirst + 2);
  } else if (code == "lastquarter") {
    month = quarterFirst;
    PreviousMonth(year, month);
    from = LDate(year, month - 2, 1);
    to = MonthEnd(year, month);
  } else if (code == "year" || code == "lastyear") {
    if (code == "lastyear") --year;
    from = LDate(year, 1, 1);
    to = LDate(year, 12, 31);
  } else {
    return false;
  }
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
