// Every message of the program, provoked once. They are wire format: hosts compare them.
#include <string>

#include "tests/support/bridge_process.h"
#include "tests/support/command_test.h"

namespace tidemark {
namespace {

using test::at;
using test::BridgeProcess;
using test::CommandTest;
using test::makeCalendar;
using test::makeEvent;
using test::makeReminder;

class MessagesTest : public CommandTest {
 protected:
  MessagesTest() {
    const CalendarRef locked = makeCalendar("locked", "Locked", {.isWritable = false, .color = {}});
    const CalendarRef lockedList =
        makeCalendar("locked-list", "Locked List", {.isWritable = false, .color = {}});
    contents.eventCalendars = {makeCalendar("work", "Work"), locked};
    contents.remindersLists = {makeCalendar("food", "Food"), lockedList};
    contents.events = {makeEvent("event", "Event", locked, at("2025-03-01T12:00:00Z"))};
    contents.reminders = {makeReminder("reminder", "Reminder", lockedList, 2025, 3, 1)};
  }
};

TEST_F(MessagesTest, OfTheRequestLoop) {
  BridgeProcess bridge([] { return makeMemoryStore({}); });
  EXPECT_EQ(bridge.next(), R"({"event":"ready","status":"fullAccess"})");
  bridge.write("[]\n");
  EXPECT_EQ(bridge.next(), R"({"error":"bad JSON"})");
}

TEST_F(MessagesTest, OfTheDispatcher) {
  EXPECT_EQ(error(R"({"cmd":"x"})"), "unknown command: x");
  EXPECT_EQ(error("{}"), "unknown command: none");
}

TEST_F(MessagesTest, OfTheAccessChecks) {
  contents.eventsStatus = notDetermined;
  contents.remindersStatus = restricted;
  EXPECT_EQ(error(R"({"cmd":"events"})"), "no calendar access: notDetermined");
  EXPECT_EQ(error(R"({"cmd":"reminders"})"), "no reminders access: restricted");
}

TEST_F(MessagesTest, OfTheEventCommands) {
  EXPECT_EQ(error(R"({"cmd":"events"})"), "events needs `from` and `to`");
  EXPECT_EQ(error(R"({"cmd":"create"})"), "create needs `start`");
  EXPECT_EQ(error(R"({"cmd":"create","start":"2025-03-01"})"), "no calendar to write to");
  EXPECT_EQ(error(R"({"cmd":"update"})"), "update needs `eventId`");
  EXPECT_EQ(error(R"({"cmd":"delete"})"), "delete needs `eventId`");
  EXPECT_EQ(error(R"({"cmd":"update","eventId":"x"})"), "event not found: x");
  EXPECT_EQ(error(R"({"cmd":"delete","eventId":"x"})"), "event not found: x");
  EXPECT_EQ(error(R"({"cmd":"update","eventId":"event"})"), "calendar is read-only: Locked");
  memory().change(
      [](MemoryContents& now) { now.defaultCalendarForNewEvents = now.eventCalendars[0]; });
  EXPECT_EQ(error(R"({"cmd":"create","start":"2025-03-01","calendarId":"x"})"),
            "unknown calendar: x");
  EXPECT_EQ(error(R"({"cmd":"create","start":"2025-03-01","calendarId":"locked"})"),
            "calendar is read-only: Locked");
}

TEST_F(MessagesTest, OfTheReminderCommands) {
  EXPECT_EQ(error(R"({"cmd":"reminders"})"), "reminders needs `from` and `to`");
  EXPECT_EQ(error(R"({"cmd":"reminder-create"})"), "no reminders list to write to");
  EXPECT_EQ(error(R"({"cmd":"reminder-update"})"), "needs `reminderId`");
  EXPECT_EQ(error(R"({"cmd":"reminder-update","reminderId":"x"})"), "reminder not found: x");
  EXPECT_EQ(error(R"({"cmd":"reminder-update","reminderId":"reminder"})"),
            "list is read-only: Locked List");
  memory().change(
      [](MemoryContents& now) { now.defaultCalendarForNewReminders = now.remindersLists[0]; });
  EXPECT_EQ(error(R"({"cmd":"reminder-create","listId":"x"})"), "unknown list: x");
  EXPECT_EQ(error(R"({"cmd":"reminder-create","listId":"locked-list"})"),
            "list is read-only: Locked List");
}

}  // namespace
}  // namespace tidemark
