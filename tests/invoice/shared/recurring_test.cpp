// The schedule of recurring documents: next due dates (month spill-over with a 28-day February,
// weekly periods back to local midnight across daylight-saving changes, never-due templates) and
// the test for anything due.
#include "invoice/shared/recurring.h"

#include <gtest/gtest.h>

#include <ctime>

#include "llib/gen/date.h"
#include "tests/support/envscope.h"
#include "tests/support/salestestbusiness.h"

namespace {

// Central European time with its daylight-saving rules, written out so that no zone files are
// needed: summer time from the last Sunday of March, 02:00, to the last Sunday of October, 03:00.
constexpr const char* kZoneWithDst = "CET-1CEST,M3.5.0,M10.5.0/3";

// The start of a day ("YYYY-MM-DD") on this machine's clock.
time_t LocalMidnight(const char* text) {
  LDate date;
  EXPECT_TRUE(LDate::Parse(text, date)) << text;
  return date.ToLocalTime();
}

// The C library reads TZ again only when told: on the way in, and once the old value is back.
class ZoneScope {
  struct ReadZoneOnExit {
    ~ReadZoneOnExit() { ::tzset(); }
  } readOnExit_;  // destroyed last, after zone_ has put TZ back
  LEnvScope zone_;

 public:
  explicit ZoneScope(const char* zone) : zone_("TZ", zone) { ::tzset(); }
};

class RecurringSchedule : public ::testing::Test {
 protected:
  ZoneScope zone_{kZoneWithDst};

  static std::string After(const char* last, int code) {
    LRecord schedule;
    schedule.SetString("RecurStart", "2000-01-01");
    schedule.SetString("RecurLast", last);
    schedule.SetInt("RecurInterval", code);
    return LRecurringGetDueDateText(schedule);
  }
};

TEST_F(RecurringSchedule, MonthsKeepTheDayAndSpillOverA28DayFebruary) {
  EXPECT_EQ(After("2023-01-31", 2), "2023-03-03");
  EXPECT_EQ(After("2024-01-31", 2), "2024-03-03");  // a leap year counts February as 28 days too
  EXPECT_EQ(After("2024-01-29", 2), "2024-03-01");
  EXPECT_EQ(After("2024-01-28", 2), "2024-02-28");
  EXPECT_EQ(After("2024-11-15", 4), "2025-02-15");
  EXPECT_EQ(After("2024-10-31", 2), "2024-12-01");
  EXPECT_EQ(After("2024-12-31", 3), "2025-03-03");
  EXPECT_EQ(After("2024-08-31", 5), "2025-03-03");
  EXPECT_EQ(After("2024-02-28", 6), "2025-02-28");
  EXPECT_EQ(After("2024-05-10", 7), "2026-05-10");
  EXPECT_EQ(After("2024-12-05", 2), "2025-01-05");
}

TEST_F(RecurringSchedule, WeeksEndAtLocalMidnightAcrossDaylightSaving) {
  LRecord schedule;
  schedule.SetString("RecurLast", "2024-03-25");  // a Monday; summer time starts on the 31st
  schedule.SetInt("RecurInterval", 0);
  time_t due = LRecurringGetDueDate(schedule);
  EXPECT_EQ(due, LocalMidnight("2024-04-01"));
  tm local{};
  localtime_r(&due, &local);
  EXPECT_EQ(local.tm_hour, 0);
  EXPECT_EQ(local.tm_wday, 1);

  schedule.SetString("RecurLast", "2024-10-21");  // winter time is back on the 27th
  schedule.SetInt("RecurInterval", 1);
  EXPECT_EQ(LRecurringGetDueDate(schedule), LocalMidnight("2024-11-04"));

  // On the day summer time starts, taking off the time of day (13:00 then) lands an hour before
  // that day's midnight: 23:00 the evening before.
  schedule.SetString("RecurLast", "2024-03-24");
  schedule.SetInt("RecurInterval", 0);
  EXPECT_EQ(LRecurringGetDueDate(schedule), LocalMidnight("2024-03-31") - 3600);
}

TEST_F(RecurringSchedule, StartBeforeTheFirstRunAndNeverDueTemplates) {
  LRecord schedule;
  EXPECT_EQ(LRecurringGetDueDate(schedule), kRecurNever);
  EXPECT_EQ(LRecurringGetDueDate(schedule), 2147483647);
  EXPECT_EQ(LRecurringGetDueDateText(schedule), "");
  schedule.SetString("RecurStart", "2024-06-15");
  EXPECT_EQ(LRecurringGetDueDate(schedule), LocalMidnight("2024-06-15"));
  schedule.SetString("RecurLast", "");  // an empty last run is no run
  EXPECT_EQ(LRecurringGetDueDateText(schedule), "2024-06-15");
  schedule.SetString("RecurLast", "2024-06-15");
  EXPECT_EQ(LRecurringGetDueDateText(schedule), "2024-07-15");  // "RecurInterval" defaults to monthly
  schedule.SetInt("RecurInterval", 9);
  EXPECT_EQ(LRecurringGetDueDate(schedule), kRecurNever);
  schedule.SetInt("RecurInterval", 8);
  EXPECT_EQ(LRecurringGetDueDate(schedule), kRecurNever);
  schedule.SetInt("RecurInterval", 2);
  schedule.SetString("RecurLast", "15/06/2024");
  EXPECT_EQ(LRecurringGetDueDate(schedule), kRecurNever);
}

class RecurringTemplates : public LSalesTestBusiness {};

TEST_F(RecurringTemplates, AnythingDueLooksAtInvoiceTemplatesOnly) {
  time_t now = LocalMidnight("2024-06-01");
  LRecord order;
  Profile().List(kRecurringOrdersList).OpenAlways(order, "1");
  order.SetString("RecurStart", "2024-01-01");
  EXPECT_TRUE(order.Flush());
  EXPECT_FALSE(LRecurringTest(Profile(), now));
  EXPECT_TRUE(LRecurringTestList(Profile(), kRecurringOrdersList, now));

  LRecord invoice;
  Profile().List(kRecurringInvoicesList).OpenAlways(invoice, "1");
  invoice.SetString("RecurStart", "2024-06-02");
  EXPECT_TRUE(invoice.Flush());
  EXPECT_FALSE(LRecurringTest(Profile(), now));
  EXPECT_TRUE(LRecurringTest(Profile(), LocalMidnight("2024-06-02")));
}

}  // namespace
