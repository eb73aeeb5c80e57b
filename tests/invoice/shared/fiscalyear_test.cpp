// The fiscal year of a date, from the company's year end: the ends of the countries the start
// wizard knows, a date on the end day itself, and an end that falls on a day some years lack.
#include <gtest/gtest.h>

#include "invoice/shared/fiscalyear.h"
#include "invoice/shared/options.h"
#include "tests/support/salestestbusiness.h"

namespace {

class FiscalYearTest : public LSalesTestBusiness {
 protected:
  void SetYearEnd(int month, int day) {
    LRecord company;
    Profile().List(kMiscList).OpenAlways(company, "Company");
    company.SetInt("FiscalYearEnd", month);
    company.SetInt("FiscalYearEndDay", day);
    ASSERT_TRUE(company.Flush());
  }
  std::string YearOf(int year, int month, int day) {
    LDTPeriod period = LFiscalYearOf(Profile(), LDate(year, month, day));
    return period.from + ".." + period.to;
  }
};

TEST_F(FiscalYearTest, WithoutYearEndTheCalendarYear) {
  EXPECT_EQ(YearOf(2026, 1, 1), "2026-01-01..2026-12-31");
  EXPECT_EQ(YearOf(2026, 12, 31), "2026-01-01..2026-12-31");
  SetYearEnd(13, 5);  // a month that is none: the calendar year again
  EXPECT_EQ(YearOf(2026, 7, 14), "2026-01-01..2026-12-31");
}

TEST_F(FiscalYearTest, TheEndDayBelongsToTheYearItEnds) {
  SetYearEnd(4, 5);
  EXPECT_EQ(YearOf(2026, 4, 5), "2025-04-06..2026-04-05");
  EXPECT_EQ(YearOf(2026, 4, 6), "2026-04-06..2027-04-05");
  EXPECT_EQ(YearOf(2026, 1, 1), "2025-04-06..2026-04-05");
  SetYearEnd(6, 30);
  EXPECT_EQ(YearOf(2026, 6, 30), "2025-07-01..2026-06-30");
  EXPECT_EQ(YearOf(2026, 7, 1), "2026-07-01..2027-06-30");
}

TEST_F(FiscalYearTest, AnEndPastTheMonthsLastDayIsThatLastDay) {
  SetYearEnd(2, 31);
  EXPECT_EQ(YearOf(2024, 2, 29), "2023-03-01..2024-02-29");
  EXPECT_EQ(YearOf(2024, 3, 1), "2024-03-01..2025-02-28");
  EXPECT_EQ(YearOf(2025, 2, 28), "2024-03-01..2025-02-28");
}

}  // namespace
