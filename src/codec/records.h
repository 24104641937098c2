// The records of replies: one JSON object each, written straight into the line. What has no value
// has no key.
//
// They read and nothing else. A broken promise of the store (no calendar, no source) ends the
// process. Any thread that may use the item.
#pragma once

#include <string_view>

#include "host/json_writer.h"
#include "store/store.h"

namespace tidemark {

// Event calendars and reminders lists alike.
void encode(const Calendar& calendar, JsonWriter& writer);
void encode(const Event& event, JsonWriter& writer);
void encode(const Reminder& reminder, JsonWriter& writer);

// The name of a source's type (EKSourceType); "unknown" for a number that has none.
std::string_view sourceName(int sourceType);

}  // namespace tidemark
