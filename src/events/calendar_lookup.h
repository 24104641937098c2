// Finding, choosing and ordering calendars of one entity type: what event calendars and reminders
// lists have in common.
//
// Calendars are fetched afresh at each call. Called on the request reader.
#pragma once

#include <string_view>
#include <vector>

#include "host/request.h"
#include "store/store.h"

namespace tidemark {

// The order of listings: by the title of the source, then by the calendar's own
// (canonicallyBefore); those that are equal in both stay in the store's order. A calendar without a
// source cannot be ordered and ends the process.
bool calendarComesBefore(const Calendar& a, const Calendar& b);
std::vector<CalendarRef> calendarsInOrder(EntityType type);

// The first calendar in the store's order with that identifier; null when there is none.
CalendarRef calendarWithId(EntityType type, std::string_view identifier);

// The calendars that an array of identifiers in the request's field chooses, in the store's order;
// unknown identifiers choose nothing. Absent, which means no restriction, when the field is
// anything but an array of strings.
CalendarSelection selectedCalendars(EntityType type, const Request& request, std::string_view key);

}  // namespace tidemark
