// Reminders of a range.
#pragma once

#include "host/reply_channel.h"
#include "host/request.h"

namespace tidemark {

// "reminders": what is due in the range and not completed, and what was completed in it; with
// "overdue", also all that was due earlier and is not completed. Called on the request reader; when
// there is something to fetch it returns at once, and the answer is written by the global queue.
// The end of the input does not wait for that.
void listReminders(RequestId id, const Request& request);

}  // namespace tidemark
