#include "store/local/text/item.h"

#include <algorithm>

#include "store/local/recurrence/recurrence_rule.h"
#include "store/local/text/civil.h"

namespace tidemark::local {
namespace {

// A length on the calendar: whole days on the clock, then exact seconds.
UtcSeconds addDuration(const Moment& start, const Duration& duration) {
  return start.zone->toUtc(start.wall + duration.days * secondsPerDay) + duration.seconds;
}

// The days that an all-day event covers, at least the one that it starts on. Where a change of
// offset doubles the last hour of a day, the day lasts until the second of the two is over.
Span spanOfDays(const Moment& start, std::int64_t days) {
  const WallSeconds end = start.wall + std::max<std::int64_t>(days, 1) * secondsPerDay;
  return {start.toUtc(), start.zone->toUtc(end) - 1};
}

std::int64_t daysOf(const Duration& duration) {
  return duration.days - floorDivide(-duration.seconds, secondsPerDay);
}

// From a date up to an end, which may be a time of day: a day that has begun counts.
std::int64_t daysUntil(const Moment& start, const Moment& end) {
  const WallSeconds wall = end.isDate ? end.wall : start.zone->toWall(end.toUtc());
  return -floorDivide(start.wall - wall, secondsPerDay);
}

Span withoutNegativeLength(Span span) {
  return {span.start, std::max(span.start, span.end)};
}

// The span of what starts at `start` and has an end or a length of its own, or neither.
Span spanFrom(const Moment& start, const std::optional<Moment>& end,
              const std::optional<Duration>& duration) {
  if (start.isDate) {
    if (end && daysUntil(start, *end) >= 0) return spanOfDays(start, daysUntil(start, *end));
    return spanOfDays(start, duration ? daysOf(*duration) : 1);
  }
  const UtcSeconds begin = start.toUtc();
  if (end && end->toUtc() >= begin) return {begin, end->toUtc()};
  return withoutNegativeLength({begin, duration ? addDuration(start, *duration) : begin});
}

}  // namespace

Series::Series() = default;
Series::~Series() = default;

const Moment* anchorOf(const Item& item) {
  if (item.start) return &*item.start;
  return item.todo && item.todo->due ? &*item.todo->due : nullptr;
}

Span spanOf(const Item& event) {
  return spanFrom(*event.start, event.end, event.duration);
}

Span spanOfOccurrence(const Item& master, const Moment& start, const RecurrenceDate* period) {
  if (period && (period->end || period->duration)) {
    return spanFrom(start, period->end, period->duration);
  }
  if (!master.end) return spanFrom(start, std::nullopt, master.duration);
  if (start.isDate) {
    const std::int64_t days = daysUntil(*master.start, *master.end);
    if (days >= 0) return spanOfDays(start, days);
    return spanFrom(start, std::nullopt, master.duration);
  }
  const UtcSeconds masterStart = master.start->toUtc();
  const UtcSeconds masterEnd = master.end->toUtc();
  if (masterEnd < masterStart) return spanFrom(start, std::nullopt, master.duration);
  const UtcSeconds begin = start.toUtc();
  return {begin, begin + (masterEnd - masterStart)};
}

}  // namespace tidemark::local
