// Calendar dates as business data keeps them: text "YYYY-MM-DD" (%.4d-%.2d-%.2d). The ledger's
// day files are named by it and an account's month buckets are indexed by
// year * 12 + month - 1 ("Balance%d").
#pragma once

#include <ctime>
#include <string>
#include <string_view>

struct LDate {
  int year = 0;   // 1 to 9999
  int month = 0;  // 1 to 12
  int day = 0;    // 1 to the month's length

  LDate() = default;
  LDate(int y, int m, int d) : year(y), month(m), day(d) {}

  // A real calendar day.
  bool IsValid() const;
  // "%.4d-%.2d-%.2d".
  std::string ToText() const;
  // Strict "YYYY-MM-DD" of a real day; false leaves out unchanged.
  static bool Parse(std::string_view text, LDate& out);
  int MonthIndex() const { return year * 12 + month - 1; }
  // Days since 1970-01-01 (negative before).
  long DayNumber() const;
  static LDate FromDayNumber(long dayNumber);
  LDate AddDays(long days) const { return FromDayNumber(DayNumber() + days); }
  // 0 Sunday .. 6 Saturday.
  int DayOfWeek() const;
  static LDate Today();
  static LDate FromTime(time_t time);  // local date of a Unix time
  // The Unix time of this date at hour:00:00 on the local clock (daylight saving as the day has it).
  time_t ToLocalTime(int hour = 0) const;

  friend bool operator==(const LDate&, const LDate&) = default;
  friend auto operator<=>(const LDate&, const LDate&) = default;
};

bool LIsLeapYear(int year);
int LDaysInMonth(int year, int month);
// Local date and time of a Unix time as "YYYY-MM-DD HH:MM:SS".
std::string LDateTimeText(time_t time);
