// The period of the document lists: named periods around a fiscal year that does not end in
// December and across the turn of a year, and what a request's parameters make of the filter
// (named period first, typed dates, garbage, nothing at all).
#include <gtest/gtest.h>

#include "invoice/shared/options.h"
#include "invoice/shared/weblistperiod.h"
#include "tests/support/salestestbusiness.h"

namespace {

void NoParties(LProfile&, std::vector<std::string>& texts, std::vector<std::string>& values) {
  texts = {""};
  values = {""};
}

const LWebPeriodList kTestList{"billlist", "supplier", "Fournisseur", NoParties};

class WebListPeriodTest : public LSalesTestBusiness {
 protected:
  void SetUp() override {
    LSalesTestBusiness::SetUp();
    LRecord company;
    Profile().List(kMiscList).OpenAlways(company, "Company");
    company.SetInt("FiscalYearEnd", 3);  // the year ends on 31 March
    company.SetInt("FiscalYearEndDay", 31);
    ASSERT_TRUE(company.Flush());
  }
  std::string Dates(std::string_view code, const LDate& today) {
    LDTPeriod period;
    if (!LWebNamedPeriodDates(Profile(), code, today, period)) return "refused";
    return period.from + ".." + period.to;
  }
  LWebListFilter Read(const std::string& query) {
    LWebletForm form(nullptr);
    form.parameters.LoadHTTPString(query);
    return LWebReadListFilter(form, Profile(), kTestList);
  }
};

TEST_F(WebListPeriodTest, NamedPeriodsFollowTheFiscalYearAndTheCalendar) {
  const LDate january(2027, 1, 15);
  EXPECT_EQ(Dates("fy", january), "2026-04-01..2027-03-31");
  EXPECT_EQ(Dates("pfy", january), "2025-04-01..2026-03-31");
  EXPECT_EQ(Dates("m", january), "2027-01-01..2027-01-31");
  EXPECT_EQ(Dates("pm", january), "2026-12-01..2026-12-31");  // across the turn of the year
  EXPECT_EQ(Dates("q", january), "2027-01-01..2027-03-31");
  EXPECT_EQ(Dates("pq", january), "2026-10-01..2026-12-31");
  EXPECT_EQ(Dates("y", january), "2027-01-01..2027-12-31");
  EXPECT_EQ(Dates("py", january), "2026-01-01..2026-12-31");
  EXPECT_EQ(Dates("all", january), "..");
  EXPECT_EQ(Dates("pm", LDate(2028, 3, 31)), "2028-02-01..2028-02-29");  // a leap February
  EXPECT_EQ(Dates("fy", LDate(2027, 3, 31)), "2026-04-01..2027-03-31");  // the end day is the year's
  EXPECT_EQ(Dates(kLWebPeriodCustom, january), "refused");
  EXPECT_EQ(Dates("yesterday", january), "refused");
  EXPECT_EQ(LWebNamedPeriods().front().code, std::string("fy"));
}

TEST_F(WebListPeriodTest, RequestsGiveTheFilterTheFiscalYearByDefault) {
  LDTPeriod year = LFiscalYearOf(Profile(), LDate::Today());
  LWebListFilter none = Read("");
  EXPECT_EQ(none.periodCode, "fy");
  EXPECT_EQ(none.period.from, year.from);
  EXPECT_EQ(none.period.to, year.to);
  EXPECT_EQ(none.page, 1);
  EXPECT_TRUE(none.error.empty());

  // A named period wins over dates that came with it; the party is the list's own parameter.
  LWebListFilter named = Read("prd=all&from=2020-01-01&to=2020-12-31&supplier=ACME&customer=DUP&page=3");
  EXPECT_EQ(named.periodCode, "all");
  EXPECT_TRUE(named.Holds("1999-12-31"));
  EXPECT_EQ(named.party, "ACME");
  EXPECT_EQ(named.page, 3);

  // Typed dates are a custom period; an open end holds everything on its side.
  LWebListFilter dates = Read("prd=custom&from=2026-02-01&to=");
  EXPECT_EQ(dates.periodCode, kLWebPeriodCustom);
  EXPECT_FALSE(dates.Holds("2026-01-31"));
  EXPECT_TRUE(dates.Holds("2026-02-01 10:30:00"));  // a time after the date is ignored
  EXPECT_TRUE(dates.Holds("2999-01-01"));
  EXPECT_TRUE(Read("from=2026-02-01&to=2026-02-28").Holds("2026-02-28"));
  EXPECT_FALSE(Read("from=2026-02-01&to=2026-02-28").Holds("2026-03-01"));

  // Garbage: a French message naming it, the fiscal year's bound kept, page 1.
  LWebListFilter garbage = Read("prd=%3Cscript%3E&from=hier&to=2026-02-30&page=-4");
  EXPECT_EQ(garbage.periodCode, kLWebPeriodCustom);
  EXPECT_EQ(garbage.error, "Date invalide : 2026-02-30.");
  EXPECT_EQ(garbage.period.from, year.from);
  EXPECT_EQ(garbage.page, 1);

  LWebletForm sorted(nullptr);
  sorted.parameters.LoadHTTPString("iCol=2&bAsc=0");
  EXPECT_EQ(LWebListFilterQuery(kTestList, dates, sorted), "prd=custom&from=2026-02-01&to=&supplier=&iCol=2&bAsc=0");
  EXPECT_EQ(LWebListFilterQuery(kTestList, named, LWebletForm(nullptr)), "prd=all&from=&to=&supplier=ACME");
}

}  // namespace
