// Between instants and what a clock and a calendar on the wall show, in the process's local zone
// (TZ, else the system's) or in one that is named. Gregorian.
//
// Any thread that called loadLocalZone() before.
#pragma once

#include <chrono>
#include <optional>

#include "store/types.h"

namespace tidemark {

// Reads the local zone from the environment and the zone database, once; who comes meanwhile waits.
// So a zone library that sets itself up at its first use does that before anybody can race it.
void loadLocalZone();

// The first instant of the day in the local zone: midnight, or, where a change of the clocks skips
// midnight, that change.
Instant startOfDay(std::chrono::year_month_day day);

// The instant that the components name, in their own time zone when they have one. A time that was
// not given is the start of the day; one that a change of the clocks skips counts with the offset
// before the change, and one that it doubles is the first of the two. Absent without a year, a
// month or a day, or with a time zone that nobody knows.
std::optional<Instant> instantOf(const DateComponents& components);

enum class Precision { day, minute };

// What the local zone shows at that instant: year, month and day, and for minutes the hour and the
// minute too. Nothing else, so that it floats.
DateComponents localComponents(Instant instant, Precision precision);

}  // namespace tidemark
