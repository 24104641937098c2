#include "codec/records.h"

#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <vector>

#include "store/memory/memory_items.h"
#include "tests/support/command_test.h"

namespace tidemark {
namespace {

using test::at;
using test::makeCalendar;
using test::makeEvent;
using test::makeReminder;
using test::normalized;
using test::useTimeZone;

template <typename Item>
std::string record(const Item& item) {
  TextBuffer buffer;
  JsonWriter writer(buffer);
  RecordEncoder(writer).encode(item);
  EXPECT_TRUE(writer.isValid());
  return normalized(buffer.view());
}

const CalendarRef work = makeCalendar(
    "work", "Work", {.source = "Office", .color = Color{ColorSpace::sRGB, {0.2, 0.4, 0.6}}});
const CalendarRef plain =
    makeCalendar("plain", "Plain", {.source = "Home", .isWritable = false, .color = {}});

TEST(SourceName, NamesEveryNumber) {
  const char* names[] = {"unknown",  "local",      "exchange",  "caldav",
                         "mobileme", "subscribed", "birthdays", "unknown"};
  for (int type = -1; type <= 6; ++type) EXPECT_EQ(sourceName(type), names[type + 1]) << type;
}

TEST(CalendarRecord, HasColorOnlyWhenThereIsOne) {
  EXPECT_EQ(record(*work),
            normalized(R"({"id":"work","title":"Work","source":"Office","sourceType":"local",
                                          "writable":true,"color":"#336699"})"));
  EXPECT_EQ(record(*plain),
            normalized(R"({"id":"plain","title":"Plain","source":"Home","sourceType":"local",
                                           "writable":false})"));
}

TEST(CalendarRecord, StopsTheProcessWithoutASource) {
  Calendar calendar;
  EXPECT_EXIT(record(calendar), testing::KilledBySignal(SIGABRT), "^$");
}

TEST(EventRecord, HasAllThatTheEventHas) {
  MemoryEvent event = makeEvent("e", "Lunch/Dinner", work, at("2025-03-01T12:00:00Z"));
  event.isAllDay = true;
  event.hasRecurrenceRules = true;
  event.availability = -1;
  event.occurrenceDate = at("2025-02-28T12:00:00Z");
  event.lastModifiedDate = at("2025-01-01T00:00:00Z");
  event.notes = "";
  event.url = "https://example.org/";
  event.location = "Café";
  event.attendees = {{{"Ada", "mailto:ada@example.org"},
                      {std::nullopt, "mailto:bob@example.org"},
                      {"", "mailto:c"}}};
  EXPECT_EQ(
      record(MemoryEventItem(event)),
      normalized(
          R"({"id":"e","title":"Lunch/Dinner","isAllDay":true,"calendarId":"work","calendar":"Work",
                           "isRecurring":true,"writable":true,"availability":-1,
                           "start":"2025-03-01T12:00:00Z","end":"2025-03-01T13:00:00Z",
                           "occurrence":"2025-02-28T12:00:00Z","lastModified":"2025-01-01T00:00:00Z",
                           "notes":"","url":"https://example.org/","location":"Café","color":"#336699",
                           "attendees":["Ada","mailto:bob@example.org",""]})"));
}

TEST(EventRecord, LeavesOutWhatTheEventHasNot) {
  MemoryEvent event;
  event.calendar = plain;
  EXPECT_EQ(
      record(MemoryEventItem(event)),
      normalized(R"({"id":"","title":"","isAllDay":false,"calendarId":"plain","calendar":"Plain",
                           "isRecurring":false,"writable":false,"availability":0})"));
}

TEST(EventRecord, TellsAnEmptyListOfAttendeesFromNone) {
  MemoryEvent event;
  event.calendar = plain;
  event.attendees.emplace();
  EXPECT_NE(record(MemoryEventItem(event)).find(R"("attendees":[])"), std::string::npos);
}

// With more calendars than are remembered, each of them again and again.
TEST(EventRecord, IsTheSameAmongOthers) {
  std::vector<CalendarRef> calendars;
  for (int number = 0; number < 100; ++number) {
    const std::string name = std::to_string(number);
    const std::optional<Color> color = Color{ColorSpace::gray, {number / 100.0}};
    calendars.push_back(makeCalendar(
        "id/" + name, name,
        {.isWritable = number % 2 == 0, .color = number % 3 == 0 ? std::nullopt : color}));
  }
  std::string expected;
  TextBuffer buffer;
  JsonWriter writer(buffer);
  RecordEncoder encoder(writer);
  writer.beginArray();
  for (int round = 0; round < 3; ++round) {
    for (const CalendarRef& calendar : calendars) {
      const MemoryEventItem event(makeEvent("e", "Title", calendar, at("2025-03-01T12:00:00Z")));
      for (int repetition = 0; repetition < 2; ++repetition) {
        encoder.encode(event);
        expected += ',' + record(event);
      }
    }
  }
  writer.endArray();
  EXPECT_EQ(normalized(buffer.view()), '[' + expected.substr(1) + ']');
}

TEST(EventRecord, StopsTheProcessWithoutACalendar) {
  EXPECT_EXIT(record(MemoryEventItem(MemoryEvent{})), testing::KilledBySignal(SIGABRT), "^$");
}

TEST(ReminderRecord, HasADueDayWithoutATime) {
  useTimeZone("Etc/GMT-2");
  EXPECT_EQ(
      record(MemoryReminderItem(makeReminder("r", "Water", work, 2025, 3, 1))),
      normalized(
          R"({"id":"r","title":"Water","listId":"work","list":"Work","isCompleted":false,"priority":0,
                           "hasDueTime":false,"writable":true,"dueDate":"2025-02-28T22:00:00Z","color":"#336699"})"));
}

TEST(ReminderRecord, TellsMidnightFromNoTime) {
  useTimeZone("Etc/GMT-2");
  MemoryReminder reminder = makeReminder("r", "Water", plain, 2025, 3, 1);
  reminder.dueDateComponents->hour = 0;
  reminder.isCompleted = true;
  reminder.priority = 5;
  reminder.notes = "";
  EXPECT_EQ(
      record(MemoryReminderItem(reminder)),
      normalized(
          R"({"id":"r","title":"Water","listId":"plain","list":"Plain","isCompleted":true,"priority":5,
                           "hasDueTime":true,"writable":false,"dueDate":"2025-02-28T22:00:00Z","notes":""})"));
}

TEST(ReminderRecord, LeavesOutWhatTheReminderHasNot) {
  MemoryReminder reminder;
  reminder.calendar = plain;
  const std::string bare =
      normalized(R"({"id":"","title":"","listId":"plain","list":"Plain","isCompleted":false,
                                          "priority":0,"hasDueTime":false,"writable":false})");
  EXPECT_EQ(record(MemoryReminderItem(reminder)), bare);
  // Minutes alone are no time, and without a day there is no date.
  reminder.dueDateComponents.emplace();
  reminder.dueDateComponents->minute = 30;
  EXPECT_EQ(record(MemoryReminderItem(reminder)), bare);
}

TEST(ReminderRecord, StopsTheProcessWithoutAList) {
  EXPECT_EXIT(record(MemoryReminderItem(MemoryReminder{})), testing::KilledBySignal(SIGABRT), "^$");
}

}  // namespace
}  // namespace tidemark
