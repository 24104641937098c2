// The commands that change reminders, in the store before it is answered.
//
// Each answers exactly once. Called on the request reader.
#pragma once

#include "host/reply_channel.h"
#include "host/request.h"

namespace tidemark {

// "reminder-create"
void createReminder(RequestId id, const Request& request);
// "reminder-update"
void updateReminder(RequestId id, const Request& request);
// "reminder-complete"
void setReminderCompleted(RequestId id, const Request& request);
// "reminder-delete"
void deleteReminder(RequestId id, const Request& request);

}  // namespace tidemark
