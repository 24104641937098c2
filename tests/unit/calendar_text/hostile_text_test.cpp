// Calendar text that means harm, or none at all. Nothing may crash, hang, or cost more than its
// bytes are worth.

#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <string>

#include "tests/unit/calendar_text/support.h"

namespace tidemark::local {
namespace {

using testing::eventOf;

// Tells work that never ends, or grows with the square, from a slow, instrumented build.
constexpr std::chrono::seconds limit(30);

CalendarText readInTime(const std::string& text) {
  const auto begin = std::chrono::steady_clock::now();
  CalendarText calendar = readCalendar(text, "file.ics");
  EXPECT_LT(std::chrono::steady_clock::now() - begin, limit);
  return calendar;
}

TEST(HostileText, MayNestDeeply) {
  std::string text = "BEGIN:VCALENDAR\nBEGIN:VEVENT\nUID:a\nDTSTART:20250101T000000Z\n";
  for (int depth = 0; depth < 20'000; ++depth) text += "BEGIN:X\n";
  for (int depth = 0; depth < 20'000; ++depth) text += "END:X\n";
  text += "SUMMARY:out again\nEND:VEVENT\nEND:VCALENDAR\n";
  const CalendarText calendar = readInTime(text);
  ASSERT_EQ(calendar.items.size(), 1u);
  EXPECT_EQ(calendar.items[0]->title(), "out again");
}

TEST(HostileText, MayOpenEventsWithoutEnd) {
  std::string text;
  for (int index = 0; index < 20'000; ++index) text += "BEGIN:VEVENT\nDTSTART:20250101\n";
  EXPECT_TRUE(readInTime(text).items.empty());
  EXPECT_EQ(readInTime(text + "END:VEVENT\n").items.size(), 1u);
}

TEST(HostileText, MayEndWhatNeverBegan) {
  std::string text;
  for (int index = 0; index < 20'000; ++index)
    text += "END:VEVENT\nEND:X\nEND:VTODO\nEND:VCALENDAR\n";
  EXPECT_TRUE(readInTime(text).items.empty());
}

TEST(HostileText, MayFoldEveryByte) {
  std::string folded = "BEGIN:VEVENT\nDTSTART:20250101\n";
  for (const char byte : "SUMMARY:" + std::string(1'000'000, 'x'))
    folded += std::string(1, byte) + "\r\n ";
  folded += "\r\nEND:VEVENT\n";
  const CalendarText calendar = readInTime(folded);
  ASSERT_EQ(calendar.items.size(), 1u);
  EXPECT_EQ(calendar.items[0]->title().size(), 1'000'000u);
}

TEST(HostileText, MayHaveHugeLines) {
  EXPECT_TRUE(readInTime(std::string(20'000'000, 'x')).items.empty());
  EXPECT_TRUE(readInTime(std::string(20'000'000, ';')).items.empty());
  EXPECT_TRUE(readInTime("BEGIN:VEVENT\nATTENDEE" + std::string(5'000'000, '"')).items.empty());
  std::string parameters = "BEGIN:VEVENT\nDTSTART";
  for (int index = 0; index < 500'000; ++index) parameters += ";A=b";
  EXPECT_EQ(readInTime(parameters + ":20250101\nEND:VEVENT\n").items.size(), 1u);
}

TEST(HostileText, MayHaveAMillionOverrides) {
  std::string text = "BEGIN:VCALENDAR\n";
  for (int index = 0; index < 100'000; ++index) {
    text +=
        "BEGIN:VEVENT\nUID:a\nRECURRENCE-ID:20250101T000000Z\nDTSTART:20250101T000000Z\nEND:"
        "VEVENT\n";
  }
  EXPECT_EQ(readInTime(text).items.size(), 100'000u);
}

TEST(HostileText, MayNameManyZones) {
  std::string text = "BEGIN:VCALENDAR\n";
  for (int index = 0; index < 20'000; ++index) {
    text += "BEGIN:VEVENT\nDTSTART;TZID=Zone" + std::to_string(index) +
            ":20250101T000000\nEND:VEVENT\n";
  }
  EXPECT_EQ(readInTime(text).items.size(), 20'000u);
}

TEST(HostileText, MayDescribeAnAbsurdZone) {
  std::string zone = "BEGIN:VTIMEZONE\nTZID:Absurd\n";
  for (int index = 0; index < 3'000; ++index) {
    zone +=
        "BEGIN:STANDARD\nDTSTART:00010101T000000\nTZOFFSETFROM:+2359\nTZOFFSETTO:-2359\n"
        "RRULE:FREQ=SECONDLY\nRRULE:FREQ=YEARLY;BYDAY=20MO\nRRULE:FREQ=MONTHLY;BYMONTHDAY=30\n"
        "RDATE:20250101T000000,99991231T235959\nEND:STANDARD\n";
  }
  zone += "END:VTIMEZONE\n";
  const CalendarText calendar =
      readInTime(zone +
                 "BEGIN:VEVENT\nDTSTART;TZID=Absurd:20250101T000000\nRRULE:FREQ=DAILY\nEND:VEVENT\n"
                 "BEGIN:VEVENT\nDTSTART;TZID=Absurd:99990101T000000\nEND:VEVENT\n");
  ASSERT_EQ(calendar.items.size(), 2u);
  const auto begin = std::chrono::steady_clock::now();
  spanOf(*calendar.items[0]);
  spanOf(*calendar.items[1]);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, limit);
}

// Every view has to be valid for as long as its item, whatever the text: run with a sanitizer to
// see that.
std::size_t touch(const CalendarText& calendar) {
  std::size_t sum = 0;
  for (const auto& item : calendar.items) {
    for (const std::string_view view :
         {item->uid(), item->title(), item->notes(), item->location(), item->url()}) {
      for (const char byte : view) sum += static_cast<unsigned char>(byte);
    }
    item->forEachAttendee([&](const Attendee& attendee) { sum += attendee.address.size(); });
    if (!item->start) continue;
    int left = 50;
    forEachOccurrence(*item, 0, 4'000'000'000, [&](const Occurrence& occurrence) {
      if (item->kind == ItemKind::event) {
        sum += static_cast<std::size_t>(
            spanOfOccurrence(*item, occurrence.start, occurrence.period).end);
      }
      return --left > 0;
    });
  }
  return sum;
}

TEST(HostileText, MayBeDamagedAnywhere) {
  const std::string original = eventOf(
      {"UID:damaged", "SUMMARY:Caf\xC3\xA9\\, quite", " folded",
       "DTSTART;TZID=Europe/Berlin:20250101T100000", "DTEND;TZID=\"Europe/Berlin\":20250101T110000",
       "RRULE:FREQ=MONTHLY;BYDAY=1MO,-1FR;BYSETPOS=1;COUNT=9",
       "RRULE:FREQ=MINUTELY;INTERVAL=90;BYHOUR=9,10", "EXDATE;VALUE=DATE:20250203,20250303",
       "RDATE;VALUE=PERIOD:20250101T120000Z/PT1H", "ATTENDEE;CN=\"A^nB\":mailto:a@example.org",
       "BEGIN:VALARM", "TRIGGER:-PT5M", "END:VALARM", "LAST-MODIFIED:20250101T000000Z"});
  std::mt19937 random(1);
  std::size_t items = 0;
  for (int round = 0; round < 3'000; ++round) {
    std::string text = original;
    for (unsigned change = random() % 4; change > 0; --change) {
      const std::size_t at = random() % text.size();
      switch (random() % 3) {
        case 0:
          text[at] = static_cast<char>(random());
          break;
        case 1:
          text.erase(at, 1 + random() % 8);
          break;
        default:
          text.insert(at, text.substr(random() % text.size(), random() % 30));
      }
      if (text.empty()) text = "x";
    }
    const CalendarText calendar = readCalendar(text, "file.ics");
    items += calendar.items.size();
    touch(calendar);
  }
  EXPECT_GT(items, 1'500u);
}

}  // namespace
}  // namespace tidemark::local
