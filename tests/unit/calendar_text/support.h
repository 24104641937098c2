// What the tests of calendar text share. The local zone is Europe/Berlin unless TZ says otherwise.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "store/local/recurrence/recurrence.h"
#include "store/local/text/calendar_reader.h"
#include "store/local/text/item.h"

namespace tidemark::local::testing {

// The lines with CRLF after each.
std::string linesOf(std::initializer_list<std::string_view> lines);
// A whole calendar with one event, or to-do, of these lines.
std::string eventOf(std::initializer_list<std::string_view> lines);
std::string todoOf(std::initializer_list<std::string_view> lines);

std::vector<Attendee> attendeesOf(const Item& item);

// The only item of the text; null when there is none or more than one.
std::unique_ptr<Item> onlyItemOf(const std::string& text);

// "20250131T100000Z" as an instant, "20250131T100000" as a reading. Fails the test for anything
// else.
UtcSeconds instant(std::string_view text);
WallSeconds reading(std::string_view text);
std::string textOf(WallSeconds reading);
// The instant with a Z, as the functions above read it.
std::string utcTextOf(UtcSeconds utc);

// The starts of the occurrences in from <= start < to, as instants.
std::vector<std::string> startsOf(const Item& item, std::string_view from, std::string_view to);

}  // namespace tidemark::local::testing
