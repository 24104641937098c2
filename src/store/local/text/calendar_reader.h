// Reads the text of an .ics file into items. Whatever cannot be understood is passed over, alone.
//
// Time is linear in the text, memory bounded by it.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "store/local/text/content_line.h"
#include "store/local/text/item.h"
#include "store/local/text/item_reader.h"

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

// Reads one text after the other and keeps its room between them. One thread at a time.
class CalendarReader {
 public:
  // `fileName` names a component without a UID. Several of one kind are told apart by their time
  // and title, too: a place in the file would be another one's as soon as one of them goes.
  CalendarText read(std::string_view text, std::string_view fileName);

 private:
  void read(std::string_view text, std::string_view fileName, ItemReader::Naming naming);
  void begin(std::string_view component, std::size_t position);
  void end(std::string_view component);

  ContentLineScanner scanner_;
  ItemReader item_;
  CalendarText result_;
  // The component that is being read, where it begins, and how many are open inside it.
  std::optional<ItemKind> open_;
  std::size_t begin_ = 0;
  std::size_t depth_ = 0;
};

// The same for one text. Any thread.
CalendarText readCalendar(std::string_view text, std::string_view fileName);

}  // namespace tidemark::local
