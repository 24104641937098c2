// The user's permissions for events and for reminders: the commands that tell and ask for them, and
// the check that opens every other command. Full access alone lets a command work.
//
// Statuses are read afresh each time, since the user may change them at any moment.
#pragma once

#include <string_view>

#include "host/reply_channel.h"
#include "store/types.h"

namespace tidemark {

// The status's name on the wire; "unknown" for a number that has none.
std::string_view statusName(AuthorizationStatus status);

// The status of events, and of reminders. Any thread.
AuthorizationStatus currentStatus();
AuthorizationStatus reminderStatus();

// True with full access. Otherwise the request has been answered, and its handler returns without a
// word.
[[nodiscard]] bool requireAccess(RequestId id);
[[nodiscard]] bool requireReminderAccess(RequestId id);

// "status" and "reminders-status".
void replyStatus(RequestId id);
void replyReminderStatus(RequestId id);

// "auth" and "reminders-auth". They return at once; the answer is written when the store completes,
// on its thread, and `pending` counts the request until then.
void requestAccess(RequestId id);
void requestRemindersAccess(RequestId id);

}  // namespace tidemark
