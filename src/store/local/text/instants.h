// Instants of the store interface and the whole seconds that iCalendar knows.
#pragma once

#include <algorithm>
#include <cmath>

#include "store/local/text/civil.h"
#include "store/types.h"

namespace tidemark::local {

// A day beyond what a date can say, in any zone: where ranges end that reach further.
inline constexpr UtcSeconds firstInstant = firstWall - secondsPerDay;
inline constexpr UtcSeconds lastInstant = lastWall + secondsPerDay;

inline Instant instantOf(UtcSeconds seconds) {
  return Instant(std::chrono::duration<double>(static_cast<double>(seconds)));
}

// Rounded, within what can be said; not a number counts as the end.
inline UtcSeconds boundedSeconds(double rounded) {
  if (rounded <= static_cast<double>(firstInstant)) return firstInstant;
  if (rounded < static_cast<double>(lastInstant)) return static_cast<UtcSeconds>(rounded);
  return lastInstant;
}

inline UtcSeconds wholeSeconds(Instant instant) {
  return boundedSeconds(std::floor(instant.time_since_epoch().count()));
}

// For whole seconds t: t >= instant exactly when t >= this, and t < instant exactly when t < this.
inline UtcSeconds secondsFrom(Instant instant) {
  return boundedSeconds(std::ceil(instant.time_since_epoch().count()));
}

}  // namespace tidemark::local
