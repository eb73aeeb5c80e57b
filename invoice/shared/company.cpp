#include "invoice/shared/company.h"

#include <algorithm>

#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"

void LCompanyOptions::OpenFrom(const LProfile& profile) { profile.List(kMiscList).OpenAlways(*this, kCompanyRecord); }

LDate LCompanyOptions::GetFiscalYearEnd(int year) const {
  int month = GetInt("FiscalYearEnd", 12);
  int day = GetInt("FiscalYearEndDay", 31);
  if (month < 1 || month > 12) month = 12, day = 31;
  return LDate(year, month, std::clamp(day, 1, LDaysInMonth(year, month)));
}
