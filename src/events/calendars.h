// The event calendars.
#pragma once

#include <string_view>

#include "host/reply_channel.h"
#include "store/store.h"

namespace tidemark {

// "calendars"
void listCalendars(RequestId id);

// The event calendar with that identifier; null when there is none. Whether it can be written to is
// the caller's to ask.
CalendarRef calendarWithId(std::string_view identifier);

}  // namespace tidemark
