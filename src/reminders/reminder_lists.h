// The reminders lists: the calendars that hold reminders.
#pragma once

#include <string_view>

#include "host/reply_channel.h"
#include "store/store.h"

namespace tidemark {

// "reminder-lists"
void listReminderLists(RequestId id);

// The reminders list with that identifier; null when there is none.
CalendarRef reminderListWithId(std::string_view identifier);

}  // namespace tidemark
