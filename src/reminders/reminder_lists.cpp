#include "reminders/reminder_lists.h"

#include "access/authorization.h"
#include "codec/record_reply.h"
#include "events/calendar_lookup.h"

namespace tidemark {

void listReminderLists(RequestId id) {
  if (!requireReminderAccess(id)) return;
  replyWithRecords(id, "lists", calendarsInOrder(EntityType::reminder));
}

CalendarRef reminderListWithId(std::string_view identifier) {
  return calendarWithId(EntityType::reminder, identifier);
}

}  // namespace tidemark
