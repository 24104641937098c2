// The calendar store of a machine without one of its own: directories of iCalendar files (RFC 5545)
// in the user's data directory, shared with every other program that keeps calendars there.
//
// Where it is and whose it is: $XDG_DATA_HOME/calendars, else ~/.calendars, else ~/calendars,
// looked for afresh at every call. TZ and HOME are read when they are needed first. Fetches of
// reminders complete before the call returns. The first query, or run(), reads everything; making
// the store reads nothing.
#pragma once

#include <memory>

#include "store/store.h"

namespace tidemark {

std::unique_ptr<Store> makeLocalStore();

}  // namespace tidemark
