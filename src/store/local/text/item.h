// One VEVENT or VTODO as the index keeps it in memory: what the queries and the records need, in
// few bytes. A store has a hundred thousand of them.
//
// Items are built by the reader, are immutable afterwards and may then be read by any thread.
#pragma once

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>
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

// A std::optional<Moment> in one word, to be kept: reading, flags and the number of the zone, which
// is interned. Gives copies.
class OptionalMoment {
 public:
  OptionalMoment() = default;
  OptionalMoment(const Moment& moment)
      : word_(((moment.wall * 2 + moment.isDate) * 2 + moment.isFloating) * zoneLimit +
              moment.zone->number()) {
    assert(moment.zone->number() != 0);
  }
  OptionalMoment(const std::optional<Moment>& moment) {
    if (moment) *this = *moment;
  }

  bool has_value() const { return word_ != 0; }
  explicit operator bool() const { return has_value(); }
  Moment operator*() const {
    return {word_ >> (zoneBits + 2),
            &Zone::ofNumber(static_cast<std::uint32_t>(word_ & (zoneLimit - 1))),
            (word_ >> zoneBits & 2) != 0, (word_ >> zoneBits & 1) != 0};
  }
  struct Arrow {
    Moment moment;
    const Moment* operator->() const { return &moment; }
  };
  Arrow operator->() const { return {**this}; }
  operator std::optional<Moment>() const {
    return has_value() ? std::optional(**this) : std::nullopt;
  }

 private:
  static constexpr int zoneBits = 16;
  static constexpr std::int64_t zoneLimit = std::int64_t{1} << zoneBits;
  static_assert(Zone::maximumNumber < zoneLimit);

  // No zone has the number 0, so that only an absent moment is 0.
  std::int64_t word_ = 0;
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
  OptionalMoment end;
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
  OptionalMoment due;         // DUE, else DTSTART + DURATION
  OptionalSeconds completed;  // COMPLETED
  TodoStatus status = TodoStatus::none;
  std::int16_t percentComplete = 0;
  std::int16_t priority = 0;
};

// All of an item but its texts.
struct ItemProperties {
  OptionalSeconds lastModified;
  OptionalMoment start;
  OptionalMoment end;  // DTEND
  OptionalMoment recurrenceId;
  // DURATION; counts where there is no usable DTEND.
  std::unique_ptr<const Duration> duration;
  std::unique_ptr<const Series> series;
  std::unique_ptr<const Todo> todo;  // exactly for to-dos

  std::int32_t sequence = 0;
  ItemKind kind = ItemKind::event;
  bool thisAndFuture = false;  // RECURRENCE-ID;RANGE=THISANDFUTURE
  std::int8_t availability = 0;
};

// Readable text: unfolded, unescaped, valid UTF-8 without NUL. A view whose data() is null stands
// for a property that is absent.
struct ItemTexts {
  // The UID, or the file's name where the component has none.
  std::string_view uid;
  std::string_view title, notes, location, url;
  std::vector<Attendee> attendees;
};

class Item : public ItemProperties {
 public:
  // With a copy of the texts.
  static std::unique_ptr<Item> make(ItemProperties properties, const ItemTexts& texts);
  Item(const Item&) = delete;
  Item& operator=(const Item&) = delete;
  static void operator delete(void* item) { ::operator delete(item); }

  std::string_view uid() const { return text(0); }
  std::string_view title() const { return text(1); }
  std::string_view notes() const { return text(2); }
  std::string_view location() const { return text(3); }
  std::string_view url() const { return text(4); }
  std::size_t attendeeCount() const { return attendeeCount_; }
  // Calls `visit` with each Attendee, in the order of the file.
  template <typename Visit>
  void forEachAttendee(const Visit& visit) const;

 private:
  // The texts stand right behind the item, in one allocation with it: a pointer and a block of
  // their own would add a tenth to most items.
  static void* operator new(std::size_t size, std::size_t textSize) {
    return ::operator new(size + textSize);
  }
  static void operator delete(void* item, std::size_t) { ::operator delete(item); }
  Item(ItemProperties properties, const ItemTexts& texts);

  const char* texts() const { return reinterpret_cast<const char*>(this + 1); }
  std::string_view text(std::size_t index) const {
    if ((present_ >> index & 1) == 0) return {};
    const std::uint32_t begin = index == 0 ? 0 : ends_[index - 1];
    return {texts() + begin, ends_[index] - begin};
  }

  // Behind the address of an attendee and its NUL: whether a name and another NUL follow.
  static constexpr char named = '+';
  static constexpr char unnamed = '-';

  std::uint8_t present_ = 0;  // a bit for each text
  std::uint32_t attendeeCount_ = 0;
  // Where each text ends; the attendees stand behind the last.
  std::array<std::uint32_t, 5> ends_{};
};

template <typename Visit>
void Item::forEachAttendee(const Visit& visit) const {
  const char* next = texts() + ends_.back();
  const auto take = [&next] {
    const std::string_view taken(next);
    next += taken.size() + 1;
    return taken;
  };
  for (std::uint32_t count = attendeeCount_; count > 0; --count) {
    Attendee attendee;
    attendee.address = take();
    if (*next++ == named) attendee.name = take();
    visit(attendee);
  }
}

// What a series repeats from and what an override's RECURRENCE-ID stands for: DTSTART, else a
// to-do's due date. Absent when the item has neither.
OptionalMoment anchorOf(const ItemProperties& item);

// Start and end of an event, or of one of its occurrences, as instants. All-day events end at
// 23:59:59 local time on their last day; no DTEND is DTSTART + DURATION, else the day of a DATE,
// else no length; a DTEND before DTSTART counts as absent.
struct Span {
  UtcSeconds start = 0;
  UtcSeconds end = 0;
};

// The span of the event itself; it has a start.
Span spanOf(const ItemProperties& event);
// The span of the occurrence of `master` that starts at `start` (in the master's zone and kind): a
// DTEND keeps the exact length of the master, a DURATION its nominal one (RFC 5545, 3.8.5.3), a
// PERIOD among the RDATEs says its own.
Span spanOfOccurrence(const Item& master, const Moment& start, const RecurrenceDate* period);

}  // namespace tidemark::local
