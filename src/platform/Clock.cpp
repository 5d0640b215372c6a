#include "Clock.h"

#include <algorithm>

namespace quarda::platform {
namespace {

constexpr int64_t kDayMs = 86'400'000;
constexpr int64_t kUnitsPerDay = 43'200;  // of two seconds
constexpr int kFirstDosYear = 1980;
constexpr int kLastDosYear = 2107;

/// Days from 0000-03-01; years begin in March, so that the leap day is the last one.
constexpr int64_t DayNumber(int64_t year, int month, int day) {
  year -= month <= 2 ? 1 : 0;
  const int64_t monthFromMarch = (month + 9) % 12;
  const int64_t century = (year >= 0 ? year : year - 99) / 100;
  const int64_t leapDays =
      (year >= 0 ? year : year - 3) / 4 - century + (century >= 0 ? century : century - 3) / 4;
  return year * 365 + leapDays + (monthFromMarch * 153 + 2) / 5 + day - 1;
}

constexpr int64_t kDayZero = DayNumber(1899, 12, 30);

/// The date of a day counted from 0000-03-01, for days from there on.
constexpr TLocalTime DateOf(int64_t dayNumber) {
  constexpr int64_t kCycle = 146'097;  // days of 400 years
  const int64_t inCycle = dayNumber % kCycle;
  const int64_t yearInCycle =
      (inCycle - inCycle / 1460 + inCycle / 36'524 - inCycle / 146'096) / 365;
  const int64_t dayInYear = inCycle - (yearInCycle * 365 + yearInCycle / 4 - yearInCycle / 100);
  const int64_t monthFromMarch = (dayInYear * 5 + 2) / 153;
  TLocalTime date;
  date.day = static_cast<int>(dayInYear - (monthFromMarch * 153 + 2) / 5 + 1);
  date.month = static_cast<int>(monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9);
  date.year = static_cast<int>(dayNumber / kCycle * 400 + yearInCycle + (date.month <= 2 ? 1 : 0));
  return date;
}

static_assert(DateOf(kDayZero).year == 1899 && DateOf(kDayZero).day == 30);

void SetTimeOfDay(TLocalTime& time, int64_t milliseconds) {
  time.millisecond = static_cast<int>(milliseconds % 1000);
  time.second = static_cast<int>(milliseconds / 1000 % 60);
  time.minute = static_cast<int>(milliseconds / 60'000 % 60);
  time.hour = static_cast<int>(milliseconds / 3'600'000);
}

int64_t MillisecondsOfDay(const TLocalTime& time) {
  return ((time.hour * int64_t{60} + time.minute) * 60 + time.second) * 1000 + time.millisecond;
}

uint32_t Pack(const TLocalTime& time) {
  return static_cast<uint32_t>(time.year - kFirstDosYear) << 25 |
         static_cast<uint32_t>(time.month) << 21 | static_cast<uint32_t>(time.day) << 16 |
         static_cast<uint32_t>(time.hour) << 11 | static_cast<uint32_t>(time.minute) << 5 |
         static_cast<uint32_t>(time.second) / 2;
}

}  // namespace

double ToDateTime(const TLocalTime& time) {
  const int64_t day = DayNumber(time.year, time.month, time.day) - kDayZero;
  return static_cast<double>(day) +
         static_cast<double>(MillisecondsOfDay(time)) / static_cast<double>(kDayMs);
}

TLocalTime FromDateTime(double days) {
  constexpr double kFirst = -693'593;  // 0001-01-01
  constexpr double kLast = 2'958'465;  // 9999-12-31
  if (!(days == days)) days = 0;       // not a number
  // Counted from a day before every other one, so that cutting off rounds to the nearest.
  const double total = (std::clamp(days, kFirst, kLast) - kFirst) * static_cast<double>(kDayMs);
  const int64_t milliseconds =
      static_cast<int64_t>(total + 0.5) + (static_cast<int64_t>(kFirst) + kDayZero) * kDayMs;
  TLocalTime time = DateOf(milliseconds / kDayMs);
  SetTimeOfDay(time, milliseconds % kDayMs);
  return time;
}

uint32_t ToDosStamp(const TLocalTime& time) {
  if (time.year < kFirstDosYear) return Pack({kFirstDosYear, 1, 1});
  if (time.year > kLastDosYear) return Pack({kLastDosYear, 12, 31, 23, 59, 58});
  return Pack(time);
}

TLocalTime FromDosStamp(uint32_t stamp) {
  TLocalTime time;
  time.year = kFirstDosYear + static_cast<int>(stamp >> 25);
  time.month = static_cast<int>(stamp >> 21 & 15);
  time.day = static_cast<int>(stamp >> 16 & 31);
  time.hour = static_cast<int>(stamp >> 11 & 31);
  time.minute = static_cast<int>(stamp >> 5 & 63);
  time.second = static_cast<int>(stamp & 31) * 2;
  return time;
}

uint32_t AddToDosStamp(uint32_t stamp, int64_t units) {
  const int64_t first = DayNumber(kFirstDosYear, 1, 1) * kUnitsPerDay;
  const int64_t last = DayNumber(kLastDosYear + 1, 1, 1) * kUnitsPerDay - 1;
  const TLocalTime time = FromDosStamp(stamp);
  const int64_t now = DayNumber(time.year, std::clamp(time.month, 1, 12), time.day) * kUnitsPerDay +
                      MillisecondsOfDay(time) / 2000;
  const int64_t span = last - first + kUnitsPerDay;
  const int64_t moved = std::clamp(now + std::clamp(units, -span, span), first, last);
  TLocalTime result = DateOf(moved / kUnitsPerDay);
  SetTimeOfDay(result, moved % kUnitsPerDay * 2000);
  return ToDosStamp(result);
}

}  // namespace quarda::platform
