// The fields of a request that become properties of an event.
#pragma once

#include <chrono>

#include "host/request.h"
#include "store/store.h"

namespace tidemark {

// The length of an event that was given a start and no end.
inline constexpr std::chrono::seconds defaultEventDuration{1800};

// Sets what the request has, in this order: title, start, end, isAllDay, notes, location, url,
// availability, calendarId; and an end where there is a start and none. Fields of the wrong type
// are as good as absent. Does not save.
//
// Throws Failure for a calendar that is unknown or read-only; what comes before it is set by then.
void apply(const Request& request, Event& event);

}  // namespace tidemark
