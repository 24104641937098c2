// New files with one item.

#include "calendar_checks.h"
#include "sample.h"
#include "tests/support/libical_complaints.h"

namespace tidemark::local {
namespace {

EventChange event(const std::string& start, const std::string& end) {
  EventChange change;
  change.start = at(start);
  change.end = at(end);
  return change;
}

TEST(NewItem, AnEventSaysItsTimesInTheLocalZone) {
  EventChange change = event("2025-07-01T10:00:00", "2025-07-01T11:00:00");
  change.title = "a, b";
  change.location = "c";
  change.notes = "d\ne";
  change.url = "https://example.org";
  change.availability = 2;
  const std::string text = newEventText("uid", change, now);
  const std::string zone = componentOf(text, "VTIMEZONE");
  EXPECT_EQ(lineOf(zone, "TZID"), "TZID:Europe/Berlin");
  EXPECT_EQ(text,
            crlf({"BEGIN:VCALENDAR", "VERSION:2.0", "PRODID:-//Tidemark//tidemark-cal//EN"}) +
                zone +
                crlf({"BEGIN:VEVENT", "UID:uid", "DTSTAMP:" + stamp, "CREATED:" + stamp,
                      "LAST-MODIFIED:" + stamp, "DTSTART;TZID=Europe/Berlin:20250701T100000",
                      "DTEND;TZID=Europe/Berlin:20250701T110000", "SUMMARY:a\\, b", "LOCATION:c",
                      "DESCRIPTION:d\\ne", "URL:https://example.org", "TRANSP:OPAQUE",
                      "X-MICROSOFT-CDO-BUSYSTATUS:TENTATIVE", "END:VEVENT", "END:VCALENDAR"}));
  EXPECT_EQ(complaintsOfLibical(text), 0);
}

TEST(NewItem, AnAllDayEventNeedsNoZone) {
  EventChange change = event("2025-07-01T10:00:00", "2025-07-03T00:00:00");
  change.isAllDay = true;
  const std::string text = newEventText("uid", change, now);
  EXPECT_EQ(lineOf(text, "DTSTART"), "DTSTART;VALUE=DATE:20250701");
  EXPECT_EQ(lineOf(text, "DTEND"), "DTEND;VALUE=DATE:20250703");
  EXPECT_TRUE(linesOf(text, "TZID").empty());
  EXPECT_EQ(complaintsOfLibical(text), 0);
}

TEST(NewItem, IsReadAsItWasAskedFor) {
  EventChange change = event("2025-10-26T00:30:00Z", "2025-10-26T01:30:00Z");
  change.title = "x";
  change.availability = 1;
  const CalendarText calendar = readCalendar(newEventText("u;1", change, now), fileName);
  ASSERT_EQ(calendar.items.size(), 1U);
  const Fields fields = fieldsOf(*calendar.items[0]);
  EXPECT_EQ(fields.at("uid"), "u;1");
  EXPECT_EQ(fields.at("start"), std::to_string(*change.start));
  EXPECT_EQ(fields.at("end"), std::to_string(*change.end));
  EXPECT_EQ(fields.at("availability"), "1");
  EXPECT_EQ(fields.at("notes"), "none");
}

TEST(NewItem, ATodoSaysWhatItWasGiven) {
  TodoChange change;
  change.title = "a";
  change.due = DateComponents{2025, 7, 4, 9, 30, {}, {}};
  EXPECT_EQ(newTodoText("uid", change, now),
            crlf({"BEGIN:VCALENDAR", "VERSION:2.0", "PRODID:-//Tidemark//tidemark-cal//EN",
                  "BEGIN:VTODO", "UID:uid", "DTSTAMP:" + stamp, "CREATED:" + stamp,
                  "LAST-MODIFIED:" + stamp, "SUMMARY:a", "DUE:20250704T093000",
                  "STATUS:NEEDS-ACTION", "END:VTODO", "END:VCALENDAR"}));
}

TEST(NewItem, ATodoMayBeCompletedAlready) {
  TodoChange change;
  change.completed = true;
  change.notes = std::optional<std::string>("n");
  change.due = DateComponents{2025, 7, 4, {}, {}, {}, {}};
  const std::string text = newTodoText("uid", change, now);
  EXPECT_EQ(lineOf(text, "STATUS"), "STATUS:COMPLETED");
  EXPECT_EQ(lineOf(text, "COMPLETED"), "COMPLETED:" + stamp);
  EXPECT_EQ(lineOf(text, "PERCENT-COMPLETE"), "PERCENT-COMPLETE:100");
  EXPECT_EQ(lineOf(text, "DUE"), "DUE;VALUE=DATE:20250704");
  EXPECT_EQ(lineOf(text, "DESCRIPTION"), "DESCRIPTION:n");
  EXPECT_EQ(complaintsOfLibical(text), 0);
}

}  // namespace
}  // namespace tidemark::local
