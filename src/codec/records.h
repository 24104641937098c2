// The records of replies: one JSON object each, written straight into the line. What has no value
// has no key.
//
// They read and nothing else. A broken promise of the store (no calendar, no source) ends the
// process. Any thread that may use the item.
#pragma once

#include <array>
#include <string_view>

#include "host/json_writer.h"
#include "store/store.h"

namespace tidemark {

// Writes the records of one answer. What items say of their calendar is written for the first of
// them and copied from there for the others: an answer of thousands has a few calendars.
// One thread; all items of the answer live as long.
class RecordEncoder {
 public:
  explicit RecordEncoder(JsonWriter& writer) : writer_(writer) {}

  // Event calendars and reminders lists alike.
  void encode(const Calendar& calendar);
  void encode(const Event& event);
  void encode(const Reminder& reminder);

 private:
  // Where the line has the members about a calendar.
  struct CalendarMembers {
    const Calendar* calendar = nullptr;
    std::size_t begin = 0;
    std::size_t end = 0;
  };

  template <std::size_t idSize, std::size_t titleSize>
  void addCalendar(const Calendar& calendar, const char (&idKey)[idSize],
                   const char (&titleKey)[titleSize]);

  JsonWriter& writer_;
  // By the hash of the calendar; of two with one place the later.
  std::array<CalendarMembers, 31> written_;
};

// The name of a source's type (EKSourceType); "unknown" for a number that has none.
std::string_view sourceName(int sourceType);

}  // namespace tidemark
