// The commands that change events: one event or one occurrence each, in the store before it is
// answered.
//
// Each answers exactly once. Called on the request reader.
#pragma once

#include "host/reply_channel.h"
#include "host/request.h"

namespace tidemark {

// "create"
void createEvent(RequestId id, const Request& request);
// "update"
void updateEvent(RequestId id, const Request& request);
// "delete"
void deleteEvent(RequestId id, const Request& request);

}  // namespace tidemark
