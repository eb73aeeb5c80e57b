// LDateTime: a local clock date and time to the second, as a statement line or a period bound
// carries it. It is built from broken-down fields the way the C library's mktime takes them
// (years since 1900, and fields out of their range carried into the next larger field: second
// -30 is 23:59:30 of the day before), and read back as the ledger's date text "YYYY-MM-DD" or as
// "YYYY-MM-DD HH:MM:SS". It knows no time zone: it is the wall-clock time of this machine, with
// no daylight-saving gaps, so the same fields always give the same value.
#pragma once

#include <string>

#include "llib/gen/date.h"

class LDateTime {
 public:
  // 1970-01-01 00:00:00.
  LDateTime() = default;

  // Sets the date and time from mktime-like fields: yearsSince1900 (124 is 2024), month 1 to 12,
  // day 1 to 31, hour, minute, second. Any field may lie outside its range (negative too) and is
  // carried into the larger ones: month 13 is January of the next year, day 0 the last day of
  // the month before, second 3600 one hour later.
  void SetDateTime(int yearsSince1900, int month, int day, int hour, int minute, int second);

  // The date part as the ledger writes dates: "%.4d-%.2d-%.2d".
  std::string GetDateTime() const;
  // "YYYY-MM-DD HH:MM:SS".
  std::string GetDateTimeText() const;

  LDate GetDate() const;
  int GetHour() const;
  int GetMinute() const;
  int GetSecond() const;
  // Seconds since 1970-01-01 00:00:00 of the same clock (negative before).
  long long GetSeconds() const { return seconds_; }

  friend bool operator==(const LDateTime&, const LDateTime&) = default;
  friend auto operator<=>(const LDateTime&, const LDateTime&) = default;

 private:
  long long seconds_ = 0;  // seconds since 1970-01-01 00:00:00 of the local clock
  long long SecondOfDay() const;
};

// How far this machine's clock is ahead of UTC at this moment, in seconds (3600 in Paris in
// winter, -18000 in New York in winter). Daylight saving counts as it stands now.
long LLocalClockAheadOfUtcNow();
