// Days as requests write them: YYYY-MM-DD, all of the text.
//
// Any thread.
#pragma once

#include <chrono>
#include <optional>
#include <string_view>

#include "store/types.h"

namespace tidemark {

// Read as a date of the Gregorian calendar (RFC 3339, full-date).
std::optional<std::chrono::year_month_day> parseGregorianDay(std::string_view text);

// The first instant of the day in the local zone, by the numbers of the calendar that the user
// prefers. That is the Gregorian everywhere but on macOS, where a user may have chosen another.
std::optional<Instant> parseUsersDay(std::string_view text);

}  // namespace tidemark
