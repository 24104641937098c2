#include "store/local/recurrence/recurrence_rule.h"

#include <algorithm>

namespace tidemark::local {
namespace {

// The position of the bit that `index` set bits come before.
int bitAt(std::uint64_t mask, int index) {
  for (; index > 0; --index) mask &= mask - 1;
  return std::countr_zero(mask);
}

constexpr std::uint64_t bit(std::int64_t index) {
  return std::uint64_t{1} << index;
}

}  // namespace

int ClockSet::at(int index) const {
  const int secondCount = std::popcount(seconds);
  const int minuteCount = std::popcount(minutes);
  return bitAt(hours, index / secondCount / minuteCount) * 3600 +
         bitAt(minutes, index / secondCount % minuteCount) * 60 +
         bitAt(seconds, index % secondCount);
}

ClockSet clockSetOf(const RecurrenceRule& rule) {
  const std::int64_t start = rule.start - dayOf(rule.start) * secondsPerDay;
  return {rule.hours ? rule.hours : bit(start / 3600),
          rule.minutes ? rule.minutes : bit(start / 60 % 60),
          rule.seconds ? rule.seconds : bit(start % 60)};
}

std::uint32_t monthDaysOf(const RecurrenceRule& rule, unsigned lengthOfMonth) {
  const std::uint32_t all = ((2U << lengthOfMonth) - 1) & ~1U;
  if (!rule.monthDays && !rule.monthDaysFromEnd) return all;
  std::uint32_t days = rule.monthDays & all;
  for (std::uint32_t rest = rule.monthDaysFromEnd; rest; rest &= rest - 1) {
    const auto fromEnd = static_cast<unsigned>(std::countr_zero(rest));
    if (fromEnd <= lengthOfMonth) days |= 1U << (lengthOfMonth + 1 - fromEnd);
  }
  return days;
}

bool passesDayParts(const RecurrenceRule& rule, DayNumber day) {
  if (rule.weekdays && !(rule.weekdays >> weekdayOf(day) & 1)) return false;
  return passesDateParts(rule, day);
}

bool passesDateParts(const RecurrenceRule& rule, DayNumber day) {
  if (!rule.months && !rule.monthDays && !rule.monthDaysFromEnd && rule.yearDays.empty()) {
    return true;
  }
  const CivilDate date = dateOf(day);
  if (rule.months && !(rule.months >> date.month & 1)) return false;
  if (!(monthDaysOf(rule, lengthOfMonth(date.year, date.month)) >> date.day & 1)) return false;
  if (rule.yearDays.empty()) return true;
  const auto fromStart = static_cast<std::int16_t>(day - dayOf(date.year, 1, 1) + 1);
  const auto fromEnd = static_cast<std::int16_t>(day - dayOf(date.year + 1, 1, 1));
  return std::binary_search(rule.yearDays.begin(), rule.yearDays.end(), fromStart) ||
         std::binary_search(rule.yearDays.begin(), rule.yearDays.end(), fromEnd);
}

}  // namespace tidemark::local
