#include "tests/unit/calendar_text/support.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

#include "store/local/text/civil.h"
#include "store/local/text/date_value.h"

namespace tidemark::local::testing {
namespace {

// Before anything asks for the local zone.
const int zoneIsSet = setenv("TZ", "Europe/Berlin", 0);

std::string calendarOf(std::string_view component, std::initializer_list<std::string_view> lines) {
  const std::string name(component);
  return linesOf({"BEGIN:VCALENDAR", "VERSION:2.0", "BEGIN:" + name}) + linesOf(lines) +
         linesOf({"END:" + name, "END:VCALENDAR"});
}

}  // namespace

std::string linesOf(std::initializer_list<std::string_view> lines) {
  std::string text;
  for (const std::string_view line : lines) text.append(line).append("\r\n");
  return text;
}

std::string eventOf(std::initializer_list<std::string_view> lines) {
  return calendarOf("VEVENT", lines);
}

std::string todoOf(std::initializer_list<std::string_view> lines) {
  return calendarOf("VTODO", lines);
}

std::vector<Attendee> attendeesOf(const Item& item) {
  std::vector<Attendee> attendees;
  item.forEachAttendee([&](const Attendee& attendee) { attendees.push_back(attendee); });
  return attendees;
}

std::unique_ptr<Item> onlyItemOf(const std::string& text) {
  CalendarText calendar = readCalendar(text, "file.ics");
  return calendar.items.size() == 1 ? std::move(calendar.items.front()) : nullptr;
}

UtcSeconds instant(std::string_view text) {
  const auto value = parseDateValue(text);
  EXPECT_TRUE(value && value->isUtc) << text;
  return value ? value->wall : 0;
}

WallSeconds reading(std::string_view text) {
  const auto value = parseDateValue(text);
  EXPECT_TRUE(value && !value->isUtc) << text;
  return value ? value->wall : 0;
}

std::string textOf(WallSeconds reading) {
  const DayNumber day = dayOf(reading);
  const CivilDate date = dateOf(day);
  const auto second = static_cast<int>(reading - day * secondsPerDay);
  char text[32];
  std::snprintf(text, sizeof text, "%04d%02u%02uT%02d%02d%02d", date.year, date.month, date.day,
                second / 3600, second / 60 % 60, second % 60);
  return text;
}

std::string utcTextOf(UtcSeconds utc) {
  return textOf(utc) + "Z";
}

std::vector<std::string> startsOf(const Item& item, std::string_view from, std::string_view to) {
  std::vector<std::string> starts;
  forEachOccurrence(item, instant(from), instant(to), [&](const Occurrence& occurrence) {
    starts.push_back(utcTextOf(occurrence.start.toUtc()));
    return true;
  });
  return starts;
}

}  // namespace tidemark::local::testing
