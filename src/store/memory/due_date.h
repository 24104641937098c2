// The instant that a due date means, for the range rules of reminders.
#pragma once

#include <optional>

#include "store/types.h"

namespace tidemark {

// In the components' own time zone, else in the local one as it is at the call. Without a time it
// is the start of the day: midnight, or the change of the clocks that skips it. Absent without a
// year, a month or a day, and for a time zone that nobody knows.
//
// A local time that a change of the clocks skips is read with the offset before the change; one
// that it doubles is the first of the two (RFC 5545, section 3.3.5).
std::optional<Instant> dueInstant(const DateComponents& due);

}  // namespace tidemark
