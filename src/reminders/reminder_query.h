// Reminders of a range.
#pragma once

#include "host/reply_channel.h"
#include "host/request.h"

namespace tidemark {

// "reminders": what is due in the range and not completed, and what was completed in it; with
// "overdue", also all that was due earlier and is not completed. Called on the request reader. A
// store that has not completed the fetches by then is not waited for, not even at the end of the
// input: the answer is written by the global queue.
void listReminders(RequestId id, const Request& request);

}  // namespace tidemark
