// Reads the text of an .ics file into items. Whatever cannot be understood is passed over, alone.
//
// Any thread. Time is linear in the text, memory bounded by it.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "store/local/text/item.h"

namespace tidemark::local {

struct CalendarText {
  // Every VEVENT and VTODO with what it needs to be shown (an event: a DTSTART), in the order of
  // the file, masters and overrides alike.
  std::vector<std::unique_ptr<Item>> items;
  // Where the component of each of them begins in the text.
  std::vector<std::size_t> begins;
  // The text ends as a calendar does (END:VCALENDAR), so that it is no file that somebody is still
  // writing.
  bool isWhole = false;
};

// `fileName` names components without a UID.
CalendarText readCalendar(std::string_view text, std::string_view fileName);

}  // namespace tidemark::local
