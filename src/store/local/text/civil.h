// Days and dates of the Gregorian calendar as plain numbers. A day is counted from 1970-01-01.
#pragma once

#include <chrono>
#include <cstdint>

#include "store/local/zones/zone.h"

namespace tidemark::local {

using DayNumber = std::int64_t;

// What a DATE can say: four digits of a year.
inline constexpr int firstYear = 1;
inline constexpr int lastYear = 9999;

constexpr std::int64_t floorDivide(std::int64_t dividend, std::int64_t divisor) {
  const std::int64_t quotient = dividend / divisor;
  return quotient - (dividend % divisor != 0 && (dividend < 0) != (divisor < 0));
}

constexpr DayNumber dayOf(WallSeconds wall) {
  return floorDivide(wall, secondsPerDay);
}

constexpr DayNumber dayOf(int year, unsigned month, unsigned day) {
  using namespace std::chrono;
  return sys_days(std::chrono::year(year) / std::chrono::month(month) / std::chrono::day(day))
      .time_since_epoch()
      .count();
}

struct CivilDate {
  int year = 1970;
  unsigned month = 1;
  unsigned day = 1;
};

// `day` lies in the years that std::chrono::year holds.
constexpr CivilDate dateOf(DayNumber day) {
  const std::chrono::year_month_day date{std::chrono::sys_days(std::chrono::days(day))};
  return {static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
          static_cast<unsigned>(date.day())};
}

// 0 is Sunday.
constexpr unsigned weekdayOf(DayNumber day) {
  const std::int64_t weekday = (day + 4) % 7;
  return static_cast<unsigned>(weekday < 0 ? weekday + 7 : weekday);
}

constexpr unsigned lengthOfMonth(int year, unsigned month) {
  constexpr unsigned lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && std::chrono::year(year).is_leap() ? 29 : lengths[month - 1];
}

inline constexpr DayNumber firstDay = dayOf(firstYear, 1, 1);
inline constexpr DayNumber lastDay = dayOf(lastYear, 12, 31);
inline constexpr WallSeconds firstWall = firstDay * secondsPerDay;
inline constexpr WallSeconds lastWall = (lastDay + 1) * secondsPerDay - 1;

}  // namespace tidemark::local
