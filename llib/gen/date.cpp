#include "llib/gen/date.h"

#include <cstdio>

bool LIsLeapYear(int year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

int LDaysInMonth(int year, int month) {
  static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (month < 1 || month > 12) return 0;
  return month == 2 && LIsLeapYear(year) ? 29 : kDays[month - 1];
}

bool LDate::IsValid() const {
  return year >= 1 && year <= 9999 && month >= 1 && month <= 12 && day >= 1 &&
         day <= LDaysInMonth(year, month);
}

std::string LDate::ToText() const {
  char text[32];
  std::snprintf(text, sizeof text, "%.4d-%.2d-%.2d", year, month, day);
  return text;
}

bool LDate::Parse(std::string_view text, LDate& out) {
  if (text.size() != 10 || text[4] != '-' || text[7] != '-') return false;
  auto number = [&text](std::size_t from, std::size_t count, int& value) {
    value = 0;
    for (std::size_t i = from; i < from + count; ++i) {
      if (text[i] < '0' || text[i] > '9') return false;
      value = value * 10 + (text[i] - '0');
    }
    return true;
  };
  LDate date;
  if (!number(0, 4, date.year) || !number(5, 2, date.month) || !number(8, 2, date.day)) return false;
  if (!date.IsValid()) return false;
  out = date;
  return true;
}

// Days from civil, after H. Hinnant's public-domain algorithm.
long LDate::DayNumber() const {
  int y = year - (month <= 2 ? 1 : 0);
  long era = (y >= 0 ? y : y - 399) / 400;
  long yoe = y - era * 400;
  long doy = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
  long doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + doe - 719468;
}

LDate LDate::FromDayNumber(long z) {
  z += 719468;
  long era = (z >= 0 ? z : z - 146096) / 146097;
  long doe = z - era * 146097;
  long yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  long y = yoe + era * 400;
  long doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  long mp = (5 * doy + 2) / 153;
  int d = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  int m = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  return LDate(static_cast<int>(y + (m <= 2 ? 1 : 0)), m, d);
}

int LDate::DayOfWeek() const {
  long n = DayNumber();  // 1970-01-01 was a Thursday
  return static_cast<int>(((n % 7) + 7 + 4) % 7);
}

LDate LDate::FromTime(time_t time) {
  tm local{};
  localtime_r(&time, &local);
  return LDate(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday);
}

time_t LDate::ToLocalTime(int hour) const {
  tm local{};
  local.tm_year = year - 1900;
  local.tm_mon = month - 1;
  local.tm_mday = day;
  local.tm_hour = hour;
  local.tm_isdst = -1;
  return ::mktime(&local);
}

LDate LDate::Today() { return FromTime(::time(nullptr)); }

std::string LDateTimeText(time_t time) {
  tm local{};
  localtime_r(&time, &local);
  char text[64];
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
  return text;
}
