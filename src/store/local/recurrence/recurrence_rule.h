// One RRULE in the form that the expansion works on (RFC 5545, 3.3.10).
//
// Immutable after parsing but for what the expansion remembers, which guards itself; any thread.
#pragma once

#include <atomic>
#include <bit>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "store/local/recurrence/library_days.h"
#include "store/local/text/civil.h"
#include "store/local/zones/zone.h"

namespace tidemark::local {

enum class Frequency : std::uint8_t { secondly, minutely, hourly, daily, weekly, monthly, yearly };

// A BYDAY with its number: 2MO is the second Monday, -1FR the last Friday.
struct OrdinalDay {
  std::int8_t ordinal = 0;
  std::uint8_t weekday = 0;  // 0 is Sunday

  friend auto operator<=>(const OrdinalDay&, const OrdinalDay&) = default;
};

// The times of day that BYHOUR, BYMINUTE and BYSECOND make together, in ascending order. Bit n is
// the hour, minute or second n; each has at least one.
struct ClockSet {
  std::uint64_t hours = 1;
  std::uint64_t minutes = 1;
  std::uint64_t seconds = 1;

  int size() const {
    return std::popcount(hours) * std::popcount(minutes) * std::popcount(seconds);
  }
  // Seconds from the start of the day; 0 <= index < size().
  int at(int index) const;
};

// A sorted list that most rules do not have: one word where it is empty.
template <typename Part>
class RuleList {
 public:
  RuleList() = default;
  RuleList(std::vector<Part> parts) {
    if (!parts.empty()) parts_ = std::make_unique<const std::vector<Part>>(std::move(parts));
  }

  bool empty() const { return parts_ == nullptr; }
  const Part* begin() const { return empty() ? nullptr : parts_->data(); }
  const Part* end() const { return empty() ? nullptr : parts_->data() + parts_->size(); }

 private:
  std::unique_ptr<const std::vector<Part>> parts_;
};

// Bit n of a mask is the day of the month, or the month, n. A mask that is empty is a part that the
// rule does not have.
struct RecurrenceRule {
  Frequency frequency = Frequency::daily;
  std::uint8_t weekStart = 1;  // WKST; 0 is Sunday
  std::uint8_t weekdays = 0;   // BYDAY without numbers; bit 0 is Sunday
  // Whether a day can have the rule's month and day of the month at all.
  bool canMatch = true;
  std::uint16_t months = 0;  // BYMONTH
  std::uint32_t monthDays = 0;
  std::uint32_t monthDaysFromEnd = 0;  // BYMONTHDAY below 0: bit 1 is the last day
  std::uint32_t hours = 0;
  std::uint64_t minutes = 0;
  std::uint64_t seconds = 0;
  RuleList<OrdinalDay> ordinalDays;    // BYDAY with numbers
  RuleList<std::int16_t> yearDays;     // BYYEARDAY
  RuleList<std::int16_t> weekNumbers;  // BYWEEKNO
  RuleList<std::int16_t> positions;    // BYSETPOS

  std::int64_t interval = 1;
  // COUNT, DTSTART included.
  std::optional<std::int64_t> count;
  // UNTIL, inclusive: an instant when it was UTC, else a reading of the series' clock.
  OptionalSeconds untilInstant;
  OptionalSeconds untilWall;

  // The DTSTART that the rule belongs to.
  WallSeconds start = 0;
  const Zone* zone = nullptr;

  // Present for rules whose days are the library's to find.
  std::unique_ptr<LibraryDays> libraryDays;

  // The last reading that COUNT allows, once somebody asked; see lastReadingOf.
  static constexpr WallSeconds notCounted = INT64_MIN;
  mutable std::atomic<WallSeconds> lastCounted{notCounted};

  bool isSubDaily() const { return frequency < Frequency::daily; }
  bool hasDayParts() const {
    return weekdays || months || monthDays || monthDaysFromEnd || !ordinalDays.empty() ||
           !yearDays.empty() || !weekNumbers.empty();
  }
  bool hasClockParts() const { return hours || minutes || seconds; }
};

// The times of day of a rule that is not sub-daily: DTSTART's where the rule does not say.
ClockSet clockSetOf(const RecurrenceRule& rule);

// Whether a day passes BYMONTH, BYMONTHDAY, BYYEARDAY and the unnumbered BYDAY, as they limit a
// rule that counts days or less.
bool passesDayParts(const RecurrenceRule& rule, DayNumber day);
// The same without BYDAY.
bool passesDateParts(const RecurrenceRule& rule, DayNumber day);

// The days of a month (bit 1 is the 1st) that BYMONTHDAY says; all of them where the rule has none.
std::uint32_t monthDaysOf(const RecurrenceRule& rule, unsigned lengthOfMonth);

}  // namespace tidemark::local
