// The fields of a request that become properties of a reminder.
#pragma once

#include "host/request.h"
#include "store/store.h"

namespace tidemark {

// Sets what the request has, in this order: title, notes, listId, dueDate (with hasDueTime),
// completed. Fields of the wrong type are as good as absent, but for notes, which anything that is
// no text removes. Does not save.
//
// Throws Failure for a list that is unknown or read-only; title and notes are set by then.
void applyReminder(const Request& request, Reminder& reminder);

}  // namespace tidemark
