// When an event is, and how that is written into its component.
//
// One thread at a time.
#pragma once

#include <string>

#include "store/local/editor/component_editor.h"
#include "store/local/editor/time_form.h"
#include "store/local/text/item.h"
#include "store/local/zones/zone.h"

namespace tidemark::local {

// As the queries show an event: an all-day event starts at local midnight and ends at 23:59:59 on
// its last day.
struct EventTimes {
  UtcSeconds start = 0;
  UtcSeconds end = 0;
  bool isAllDay = false;

  friend bool operator==(const EventTimes&, const EventTimes&) = default;
};

// The times that an event from `start` to `end` gets. All day: from the local date of the start
// through the local date of the end, or through the day before where the end is a local midnight
// after the start.
EventTimes eventTimes(UtcSeconds start, UtcSeconds end, bool isAllDay);

// The end as a DTEND of that form says it.
TimeText endText(const TimeForm& form, const EventTimes& times);

// Writes only what does not say these times yet. `item` is what the reader made of the editor's
// component; it has a start. Returns the TZID of the local zone where a line got it anew, else
// nothing.
std::string writeTimes(ComponentEditor& editor, const Item& item, const EventTimes& times);

}  // namespace tidemark::local
