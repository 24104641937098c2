#include "events/event_changes.h"

#include <csignal>
#include <string>

#include "events/event_query.h"
#include "tests/support/command_test.h"

namespace tidemark {
namespace {

using test::at;
using test::CommandTest;
using test::ForwardingStore;
using test::makeCalendar;
using test::makeEvent;
using test::normalized;

class EventChangesTest : public CommandTest {
 protected:
  EventChangesTest() {
    contents.eventCalendars = {work, home, birthdays};
    contents.remindersLists = {makeCalendar("list", "List")};
    contents.defaultCalendarForNewEvents = home;
    contents.start = at("2025-01-01T00:00:00Z");
    contents.events = {makeEvent("lunch", "Lunch", work, at("2025-03-01T12:00:00Z")),
                       makeEvent("series", "Standup", work, at("2025-03-03T09:00:00Z")),
                       makeEvent("series", "Standup", work, at("2025-03-04T09:00:00Z")),
                       makeEvent("birth", "Ada", birthdays, at("2025-03-05T00:00:00Z"))};
  }

  std::size_t count() {
    memory();
    std::size_t events = 0;
    memory().change([&](MemoryContents& now) { events = now.events.size(); });
    return events;
  }

  const CalendarRef work = makeCalendar("work", "Work");
  const CalendarRef home = makeCalendar("home", "Home");
  const CalendarRef birthdays =
      makeCalendar("birthdays", "Birthdays", {.isWritable = false, .color = {}});
};

TEST_F(EventChangesTest, CreatesInTheDefaultCalendarForHalfAnHour) {
  EXPECT_EQ(
      ask(R"({"id":1,"cmd":"create","start":"2025-03-01T12:00:00Z"})"),
      normalized(
          R"({"id":1,"event":{"id":"new-1","title":"","isAllDay":false,"calendarId":"home","calendar":"Home",
                       "isRecurring":false,"writable":true,"availability":0,"start":"2025-03-01T12:00:00Z",
                       "end":"2025-03-01T12:30:00Z","occurrence":"2025-03-01T12:00:00Z",
                       "lastModified":"2025-01-01T00:00:01Z"}})"));
  EXPECT_EQ(count(), 5U);
}

TEST_F(EventChangesTest, CreatesInTheCalendarThatIsNamed) {
  ask(R"({"cmd":"create","start":"2025-03-01","calendarId":"work","title":"T"})");
  const EventRef created = event("new-1", std::nullopt);
  ASSERT_NE(created, nullptr);
  EXPECT_EQ(created->calendar()->title, "Work");
  EXPECT_EQ(created->title(), "T");
}

TEST_F(EventChangesTest, CreatesInTheDefaultCalendarWhenTheNameIsNoText) {
  ask(R"({"cmd":"create","start":"2025-03-01","calendarId":42})");
  EXPECT_EQ(event("new-1", std::nullopt)->calendar()->title, "Home");
}

TEST_F(EventChangesTest, NeedsAStartToCreate) {
  for (const char* members :
       {"", R"(,"end":"2025-03-01T12:00:00Z")", R"(,"start":"soon","calendarId":"nothing")",
        R"(,"start":1740821400)"}) {
    EXPECT_EQ(error(std::string(R"({"cmd":"create")") + members + "}"), "create needs `start`")
        << members;
  }
  EXPECT_EQ(count(), 4U);
}

TEST_F(EventChangesTest, DoesNotCreateInACalendarThatCannotBeUsed) {
  EXPECT_EQ(error(R"({"cmd":"create","start":"2025-03-01","calendarId":"nothing"})"),
            "unknown calendar: nothing");
  EXPECT_EQ(error(R"({"cmd":"create","start":"2025-03-01","calendarId":"list"})"),
            "unknown calendar: list");
  EXPECT_EQ(error(R"({"cmd":"create","start":"2025-03-01","calendarId":"birthdays"})"),
            "calendar is read-only: Birthdays");
  EXPECT_EQ(count(), 4U);
}

TEST_F(EventChangesTest, NeedsSomeCalendarToCreate) {
  contents.defaultCalendarForNewEvents = nullptr;
  for (const char* members : {"", R"(,"calendarId":"nothing")", R"(,"calendarId":7)"}) {
    EXPECT_EQ(error(std::string(R"({"cmd":"create","start":"2025-03-01")") + members + "}"),
              "no calendar to write to")
        << members;
  }
  EXPECT_EQ(error(R"({"cmd":"create"})"), "create needs `start`");
  ask(R"({"cmd":"create","start":"2025-03-01","calendarId":"work"})");
  EXPECT_EQ(count(), 5U);
}

TEST_F(EventChangesTest, UpdatesAndAnswersWhatIsStoredNow) {
  EXPECT_EQ(
      ask(R"({"cmd":"update","eventId":"lunch","title":"Brunch","start":"2025-03-01T11:00:00Z"})"),
      normalized(
          R"({"event":{"id":"lunch","title":"Brunch","isAllDay":false,"calendarId":"work","calendar":"Work",
                       "isRecurring":false,"writable":true,"availability":0,"start":"2025-03-01T11:00:00Z",
                       "end":"2025-03-01T13:00:00Z","occurrence":"2025-03-01T12:00:00Z",
                       "lastModified":"2025-01-01T00:00:01Z"}})"));
  EXPECT_EQ(event("lunch", std::nullopt)->title(), "Brunch");
}

TEST_F(EventChangesTest, UpdatesOneOccurrenceAlone) {
  ask(R"({"cmd":"update","eventId":"series","occurrence":"2025-03-04T09:00:00Z","title":"Moved"})");
  EXPECT_EQ(event("series", at("2025-03-03T09:00:00Z"))->title(), "Standup");
  EXPECT_EQ(event("series", at("2025-03-04T09:00:00Z"))->title(), "Moved");
}

TEST_F(EventChangesTest, TakesAnOccurrenceThatIsNoDateForNone) {
  ask(R"({"cmd":"update","eventId":"series","occurrence":"second","title":"First"})");
  EXPECT_EQ(event("series", at("2025-03-03T09:00:00Z"))->title(), "First");
  EXPECT_EQ(event("series", at("2025-03-04T09:00:00Z"))->title(), "Standup");
}

TEST_F(EventChangesTest, MovesToAnotherCalendar) {
  ask(R"({"cmd":"update","eventId":"lunch","calendarId":"home"})");
  EXPECT_EQ(event("lunch", std::nullopt)->calendar()->title, "Home");
}

TEST_F(EventChangesTest, RefusesUpdatesInTheirOrder) {
  EXPECT_EQ(error(R"({"cmd":"update"})"), "update needs `eventId`");
  EXPECT_EQ(error(R"({"cmd":"update","eventId":7,"title":"x"})"), "update needs `eventId`");
  EXPECT_EQ(error(R"({"cmd":"update","eventId":"nothing","calendarId":"nothing"})"),
            "event not found: nothing");
  EXPECT_EQ(error(R"({"cmd":"update","eventId":""})"), "event not found: ");
  EXPECT_EQ(error(R"({"cmd":"update","eventId":"lunch","occurrence":"2025-03-02T12:00:00Z"})"),
            "event not found: lunch");
  EXPECT_EQ(error(R"({"cmd":"update","eventId":"birth","calendarId":"work"})"),
            "calendar is read-only: Birthdays");
  EXPECT_EQ(error(R"({"cmd":"update","eventId":"birth","calendarId":"nothing"})"),
            "calendar is read-only: Birthdays");
  EXPECT_EQ(error(R"({"cmd":"update","eventId":"lunch","title":"x","calendarId":"nothing"})"),
            "unknown calendar: nothing");
  EXPECT_EQ(error(R"({"cmd":"update","eventId":"lunch","title":"x","calendarId":"birthdays"})"),
            "calendar is read-only: Birthdays");
  EXPECT_EQ(event("lunch", std::nullopt)->title(), "Lunch");
  EXPECT_EQ(error(R"({"cmd":"update","eventId":"lunch","end":"2025-03-01T01:00:00Z"})"),
            "The start date must be before the end date.");
}

TEST_F(EventChangesTest, DeletesOneOccurrenceAlone) {
  EXPECT_EQ(
      ask(R"({"id":"d","cmd":"delete","eventId":"series","occurrence":"2025-03-04T09:00:00Z"})"),
      R"({"id":"d","ok":true})");
  EXPECT_EQ(event("series", at("2025-03-04T09:00:00Z")), nullptr);
  EXPECT_NE(event("series", at("2025-03-03T09:00:00Z")), nullptr);
}

TEST_F(EventChangesTest, DeletesByTheIdentifierAlone) {
  EXPECT_EQ(ask(R"({"cmd":"delete","eventId":"lunch"})"), R"({"ok":true})");
  EXPECT_EQ(event("lunch", std::nullopt), nullptr);
}

TEST_F(EventChangesTest, RefusesDeletionsInTheirOrder) {
  EXPECT_EQ(error(R"({"cmd":"delete","occurrence":"2025-03-04T09:00:00Z"})"),
            "delete needs `eventId`");
  EXPECT_EQ(error(R"({"cmd":"delete","eventId":["lunch"]})"), "delete needs `eventId`");
  EXPECT_EQ(error(R"({"cmd":"delete","eventId":"nothing"})"), "event not found: nothing");
  // It is the store that refuses.
  EXPECT_EQ(error(R"({"cmd":"delete","eventId":"birth"})"), "The calendar is read-only.");
  EXPECT_EQ(count(), 4U);
}

class FailingStore : public ForwardingStore {
 public:
  using ForwardingStore::ForwardingStore;
  StoreResult saveEvent(Event&) override {
    return StoreResult::failure("The disk is full: /dev/sda1");
  }
  StoreResult removeEvent(Event&) override { return StoreResult::failure(""); }
};

TEST_F(EventChangesTest, AnswersTheStoresErrorsInItsWords) {
  wrap<FailingStore>();
  EXPECT_EQ(error(R"({"cmd":"create","start":"2025-03-01"})"), "The disk is full: /dev/sda1");
  EXPECT_EQ(error(R"({"cmd":"update","eventId":"lunch"})"), "The disk is full: /dev/sda1");
  EXPECT_EQ(ask(R"({"cmd":"delete","eventId":"lunch"})"), R"({"error":""})");
}

TEST_F(EventChangesTest, StopsTheProcessForAnEventWithoutACalendar) {
  contents.events = {makeEvent("lost", "Lost", nullptr, at("2025-03-01T12:00:00Z"))};
  memory();
  const Json request = *parseJson(R"({"eventId":"lost"})");
  EXPECT_EXIT(updateEvent(nullptr, *request.object()), testing::KilledBySignal(SIGABRT), "^$");
}

}  // namespace
}  // namespace tidemark
