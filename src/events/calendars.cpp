#include "events/calendars.h"

#include "access/authorization.h"
#include "codec/record_reply.h"
#include "events/calendar_lookup.h"

namespace tidemark {

void listCalendars(RequestId id) {
  if (!requireAccess(id)) return;
  replyWithRecords(id, "calendars", calendarsInOrder(EntityType::event));
}

CalendarRef calendarWithId(std::string_view identifier) {
  return calendarWithId(EntityType::event, identifier);
}

}  // namespace tidemark
