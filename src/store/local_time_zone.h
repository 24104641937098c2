// The process's local zone: what TZ says, else the system's. Any thread, as long as nobody sets TZ.
#pragma once

#include <absl/time/time.h>

#include <optional>
#include <string_view>

namespace tidemark {

// TZ holds the name of a zone in the database, or a fixed offset in the form of POSIX. What is
// neither, a POSIX rule with a summer time of its own among it, is UTC.
absl::TimeZone localTimeZone();

// The zone that a value of TZ gives by its offset alone (POSIX.1, section 8.3): "UTC-2" and
// "<+02>-2" are two hours ahead of UTC. Absent for everything else.
std::optional<absl::TimeZone> fixedTimeZone(std::string_view variable);

}  // namespace tidemark
