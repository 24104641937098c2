#include "store/local/text/item.h"

#include <algorithm>
#include <utility>

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
Span spanFrom(const Moment& start, const OptionalMoment& end, const Duration* duration) {
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

std::unique_ptr<Item> Item::make(ItemProperties properties, const ItemTexts& texts) {
  std::size_t size = texts.uid.size() + texts.title.size() + texts.notes.size() +
                     texts.location.size() + texts.url.size();
  for (const Attendee& attendee : texts.attendees) {
    size += attendee.address.size() + 2;
    if (attendee.name) size += attendee.name->size() + 1;
  }
  return std::unique_ptr<Item>(new (size) Item(std::move(properties), texts));
}

Item::Item(ItemProperties properties, const ItemTexts& texts)
    : ItemProperties(std::move(properties)),
      attendeeCount_(static_cast<std::uint32_t>(texts.attendees.size())) {
  char* const begin = reinterpret_cast<char*>(this + 1);
  char* next = begin;
  const auto append = [&next](std::string_view text) {
    next = std::copy(text.begin(), text.end(), next);
  };
  const std::string_view all[] = {texts.uid, texts.title, texts.notes, texts.location, texts.url};
  for (std::size_t index = 0; index < ends_.size(); ++index) {
    append(all[index]);
    ends_[index] = static_cast<std::uint32_t>(next - begin);
    if (all[index].data()) present_ |= static_cast<std::uint8_t>(1u << index);
  }
  for (const Attendee& attendee : texts.attendees) {
    append(attendee.address);
    *next++ = '\0';
    *next++ = attendee.name ? named : unnamed;
    if (!attendee.name) continue;
    append(*attendee.name);
    *next++ = '\0';
  }
}

OptionalMoment anchorOf(const ItemProperties& item) {
  return item.start || !item.todo ? item.start : item.todo->due;
}

Span spanOf(const ItemProperties& event) {
  return spanFrom(*event.start, event.end, event.duration.get());
}

Span spanOfOccurrence(const Item& master, const Moment& start, const RecurrenceDate* period) {
  if (period && (period->end || period->duration)) {
    return spanFrom(start, period->end, period->duration ? &*period->duration : nullptr);
  }
  if (!master.end) return spanFrom(start, {}, master.duration.get());
  if (start.isDate) {
    const std::int64_t days = daysUntil(*master.start, *master.end);
    if (days >= 0) return spanOfDays(start, days);
    return spanFrom(start, {}, master.duration.get());
  }
  const UtcSeconds masterStart = master.start->toUtc();
  const UtcSeconds masterEnd = master.end->toUtc();
  if (masterEnd < masterStart) return spanFrom(start, {}, master.duration.get());
  const UtcSeconds begin = start.toUtc();
  return {begin, begin + (masterEnd - masterStart)};
}

}  // namespace tidemark::local
