// One VEVENT or VTODO as the index keeps it in memory: what the queries and the records need, in
// few bytes.
//
// Items are built by the reader, are immutable afterwards and may then be read by any thread.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "store/local/zones/zone.h"

namespace tidemark::local {

// A DATE or DATE-TIME value (RFC 5545, 3.3.4 and 3.3.5) with the zone it is read in. The zone of a
// DATE and of a floating time is the local zone; it is never null in a value that was read.
struct Moment {
  WallSeconds wall = 0;
  const Zone* zone = nullptr;
  bool isDate = false;
  // Neither Z nor a TZID that anything knows: local time wherever it is read.
  bool isFloating = false;

  UtcSeconds toUtc() const { return zone->toUtc(wall); }
};

// RFC 5545, 3.3.6: days are days of the calendar, seconds are exact.
struct Duration {
  std::int64_t days = 0;
  std::int64_t seconds = 0;
};

struct RecurrenceRule;  // recurrence.h

// An RDATE: a start, and the end or length of its own that a PERIOD gives.
struct RecurrenceDate {
  Moment start;
  std::optional<Moment> end;
  std::optional<Duration> duration;
};

// What makes an item repeat. Present exactly when the component has a usable RRULE or RDATE.
struct Series {
  Series();
  ~Series();
  std::vector<std::unique_ptr<RecurrenceRule>> rules;
  std::vector<RecurrenceDate> dates;  // sorted by instant
  std::vector<Moment> exceptions;     // EXDATE; sorted by instant, dates after date-times
};

struct Attendee {
  std::optional<std::string_view> name;  // CN
  std::string_view address;
};

enum class ItemKind : std::uint8_t { event, todo };

// RFC 5545, 3.8.1.11, as far as to-dos need it.
enum class TodoStatus : std::uint8_t { none, needsAction, inProcess, completed, cancelled };

struct Todo {
  std::optional<Moment> due;            // DUE, else DTSTART + DURATION
  std::optional<UtcSeconds> completed;  // COMPLETED
  TodoStatus status = TodoStatus::none;
  std::int16_t percentComplete = 0;
  std::int16_t priority = 0;
};

struct Item {
  ItemKind kind = ItemKind::event;
  bool thisAndFuture = false;  // RECURRENCE-ID;RANGE=THISANDFUTURE
  std::int8_t availability = 0;
  bool hasAttendees = false;
  std::int32_t sequence = 0;

  // Owns the bytes of every view below: unfolded, unescaped, valid UTF-8.
  std::unique_ptr<char[]> text;
  // The UID, or the file's name where the component has none.
  std::string_view uid;
  // A view whose data() is null stands for a property that is absent.
  std::string_view title, notes, location, url;
  std::vector<Attendee> attendees;

  std::optional<UtcSeconds> lastModified;
  std::optional<Moment> start;
  std::optional<Moment> end;         // DTEND
  std::optional<Duration> duration;  // DURATION; counts where there is no usable DTEND
  std::optional<Moment> recurrenceId;
  std::unique_ptr<const Series> series;
  std::unique_ptr<const Todo> todo;  // exactly for to-dos
};

// What a series repeats from and what an override's RECURRENCE-ID stands for: DTSTART, else a
// to-do's due date. Null when the item has neither.
const Moment* anchorOf(const Item& item);

// Start and end of an event, or of one of its occurrences, as instants. All-day events end at
// 23:59:59 local time on their last day; no DTEND is DTSTART + DURATION, else the day of a DATE,
// else no length; a DTEND before DTSTART counts as absent.
struct Span {
  UtcSeconds start = 0;
  UtcSeconds end = 0;
};

// The span of the event itself; it has a start.
Span spanOf(const Item& event);
// The span of the occurrence of `master` that starts at `start` (in the master's zone and kind): a
// DTEND keeps the exact length of the master, a DURATION its nominal one (RFC 5545, 3.8.5.3), a
// PERIOD among the RDATEs says its own.
Span spanOfOccurrence(const Item& master, const Moment& start, const RecurrenceDate* period);

}  // namespace tidemark::local
