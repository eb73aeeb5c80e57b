#include "llib/gen/datetime.h"

#include <cstdio>
#include <ctime>

namespace {

constexpr long long kSecondsPerDay = 86400;

// Floor division and its remainder, for carries of negative fields.
long long FloorDiv(long long value, long long divisor) {
  long long quotient = value / divisor;
  return (value % divisor != 0 && (value < 0) != (divisor < 0)) ? quotient - 1 : quotient;
}

}  // namespace

void LDateTime::SetDateTime(int yearsSince1900, int month, int day, int hour, int minute, int second) {
  long long monthIndex = static_cast<long long>(month) - 1;
  long long year = 1900LL + yearsSince1900 + FloorDiv(monthIndex, 12);
  int monthOfYear = static_cast<int>(monthIndex - FloorDiv(monthIndex, 12) * 12) + 1;
  // LDate computes with int years: a year field beyond that range is out of any statement's
  // reach, so it is held at the edge rather than overflowing.
  if (year > 1000000) year = 1000000;
  if (year < -1000000) year = -1000000;
  long long days = LDate(static_cast<int>(year), monthOfYear, 1).DayNumber() + (static_cast<long long>(day) - 1);
  seconds_ = days * kSecondsPerDay + static_cast<long long>(hour) * 3600 + static_cast<long long>(minute) * 60 + second;
}

long long LDateTime::SecondOfDay() const { return seconds_ - FloorDiv(seconds_, kSecondsPerDay) * kSecondsPerDay; }

LDate LDateTime::GetDate() const { return LDate::FromDayNumber(static_cast<long>(FloorDiv(seconds_, kSecondsPerDay))); }
int LDateTime::GetHour() const { return static_cast<int>(SecondOfDay() / 3600); }
int LDateTime::GetMinute() const { return static_cast<int>(SecondOfDay() / 60 % 60); }
int LDateTime::GetSecond() const { return static_cast<int>(SecondOfDay() % 60); }

std::string LDateTime::GetDateTime() const { return GetDate().ToText(); }

std::string LDateTime::GetDateTimeText() const {
  char time[16];
  std::snprintf(time, sizeof time, " %.2d:%.2d:%.2d", GetHour(), GetMinute(), GetSecond());
  return GetDateTime() + time;
}

long LLocalClockAheadOfUtcNow() {
  time_t now = ::time(nullptr);
  tm local{};
  localtime_r(&now, &local);
  return local.tm_gmtoff;
}
