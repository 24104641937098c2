#include "events/event_changes.h"

#include "access/authorization.h"
#include "codec/dates.h"
#include "codec/record_reply.h"
#include "events/calendars.h"
#include "events/event_fields.h"
#include "events/event_query.h"
#include "host/failure.h"
#include "store/current_store.h"
#include "store/invariant.h"

namespace tidemark {
namespace {

// The end that "create" and "update" share: fields, save, answer.
void applyAndSave(RequestId id, const Request& request, Event& event) {
  try {
    apply(request, event);
  } catch (const Failure& failure) {
    fail(id, failure.message);
    return;
  }
  replyToSave(id, store->saveEvent(event), "event", event);
}

// Where a new event goes first. An identifier that names no calendar is left for `apply` to refuse.
CalendarRef calendarForNewEvent(const Request& request) {
  if (const auto* identifier = stringField(request, "calendarId")) {
    if (CalendarRef calendar = calendarWithId(*identifier)) return calendar;
  }
  return store->defaultCalendarForNewEvents();
}

// The event or occurrence that the request names; null when the request has been answered.
EventRef requestedEvent(RequestId id, const Request& request, std::string_view missing) {
  const auto* eventId = stringField(request, "eventId");
  if (eventId == nullptr) {
    fail(id, missing);
    return nullptr;
  }
  EventRef found = event(*eventId, parseDate(request.find("occurrence")));
  if (!found) fail(id, "event not found: " + *eventId);
  return found;
}

}  // namespace

void createEvent(RequestId id, const Request& request) {
  if (!requireAccess(id)) return;
  if (!parseDate(request.find("start"))) {
    fail(id, "create needs `start`");
    return;
  }
  const EventRef event = store->newEvent();
  event->setCalendar(calendarForNewEvent(request));
  if (event->calendar() == nullptr) {
    fail(id, "no calendar to write to");
    return;
  }
  applyAndSave(id, request, *event);
}

void updateEvent(RequestId id, const Request& request) {
  if (!requireAccess(id)) return;
  const EventRef event = requestedEvent(id, request, "update needs `eventId`");
  if (!event) return;
  const Calendar* calendar = event->calendar();
  if (calendar == nullptr) stopOnBrokenInvariant();
  if (!calendar->allowsContentModifications) {
    fail(id, "calendar is read-only: " + calendar->title);
    return;
  }
  applyAndSave(id, request, *event);
}

void deleteEvent(RequestId id, const Request& request) {
  if (!requireAccess(id)) return;
  const EventRef event = requestedEvent(id, request, "delete needs `eventId`");
  if (!event) return;
  // No look at the calendar, unlike in an update: a store that refuses says so itself.
  replyToRemoval(id, store->removeEvent(*event));
}

}  // namespace tidemark
