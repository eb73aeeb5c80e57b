#include "invoice/shared/fiscalyear.h"

#include <algorithm>

#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "llib/gen/record.h"

LDTPeriod LFiscalYearOf(LProfile& profile, const LDate& date) {
  LRecord company;
  int month = 12, day = 31;
  if (profile.List(kMiscList).Open(company, "Company")) {
    month = company.GetInt("FiscalYearEnd", 12);
    day = company.GetInt("FiscalYearEndDay", 31);
    company.DetachWithoutSave();
  }
  if (month < 1 || month > 12) month = 12, day = 31;
  auto endIn = [&](int year) { return LDate(year, month, std::clamp(day, 1, LDaysInMonth(year, month))); };
  LDate end = endIn(date.year);
  if (end < date) end = endIn(date.year + 1);
  return {endIn(end.year - 1).AddDays(1).ToText(), end.ToText()};
}
