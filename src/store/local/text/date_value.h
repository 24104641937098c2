// The values of dates, lengths of time and numbers, as RFC 5545, 3.3, writes them. Any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "store/local/text/item.h"
#include "store/local/zones/zone.h"

namespace tidemark::local {

struct DateValue {
  WallSeconds wall = 0;  // a DATE: its midnight
  bool isDate = false;
  bool isUtc = false;
};

// DATE or DATE-TIME, told apart by their shape. Absent when it is neither or no day of the
// calendar.
std::optional<DateValue> parseDateValue(std::string_view value);

// DURATION: weeks are days. Absent when it is none, or longer than all of the calendar's years.
std::optional<Duration> parseDuration(std::string_view value);

// UTC-OFFSET in seconds; less than a day either way. A missing sign is a plus.
std::optional<std::int32_t> parseUtcOffset(std::string_view value);

// INTEGER; numbers beyond 64 bits are cut to the nearest.
std::optional<std::int64_t> parseInteger(std::string_view value);

}  // namespace tidemark::local
