#include "events/event_fields.h"

#include <string>

#include "host/failure.h"
#include "store/current_store.h"
#include "tests/support/command_test.h"

namespace tidemark {
namespace {

using test::at;
using test::CommandTest;
using test::makeCalendar;

class EventFieldsTest : public CommandTest {
 protected:
  EventFieldsTest() {
    contents.eventCalendars = {
        makeCalendar("work", "Work"),
        makeCalendar("birthdays", "Birthdays", {.isWritable = false, .color = {}})};
    contents.remindersLists = {makeCalendar("list", "List")};
    memory();
    fresh = store->newEvent();
    full = store->newEvent();
    full->setTitle("Lunch");
    full->setStartDate(at("2025-03-01T12:00:00Z"));
    full->setEndDate(at("2025-03-01T13:00:00Z"));
    full->setNotes("Bring bread");
    full->setLocation("Park");
    full->setUrl("https://example.org");
    full->setAvailability(1);
  }

  void applyTo(Event& event, const char* request) { apply(*parseJson(request)->object(), event); }

  // The message of the failure that it throws.
  std::string failureOf(Event& event, const char* request) {
    try {
      applyTo(event, request);
    } catch (const Failure& failure) {
      return failure.message;
    }
    return "no failure";
  }

  EventRef fresh;
  EventRef full;
};

TEST_F(EventFieldsTest, SetsEveryField) {
  applyTo(
      *fresh,
      R"({"title":"Dinner","start":"2025-03-01T18:00:00Z","end":"2025-03-01T20:00:00+01:00","isAllDay":true,
                      "notes":"n","location":"l","url":"mailto:a@b","availability":3,"calendarId":"work"})");
  EXPECT_EQ(fresh->title(), "Dinner");
  EXPECT_EQ(fresh->startDate(), at("2025-03-01T18:00:00Z"));
  EXPECT_EQ(fresh->endDate(), at("2025-03-01T19:00:00Z"));
  EXPECT_TRUE(fresh->isAllDay());
  EXPECT_EQ(fresh->notes(), "n");
  EXPECT_EQ(fresh->location(), "l");
  EXPECT_EQ(fresh->url(), "mailto:a@b");
  EXPECT_EQ(fresh->availability(), 3);
  EXPECT_EQ(fresh->calendar()->title, "Work");
}

TEST_F(EventFieldsTest, PassesOverWhatIsAbsentOrOfAnotherType) {
  full->setAllDay(true);
  for (
      const char* request :
      {"{}",
       R"({"title":null,"start":null,"end":null,"isAllDay":null,"notes":null,"location":null,"url":null,
                  "availability":null,"calendarId":null})",
       R"({"title":1,"start":1740821400,"end":true,"isAllDay":"yes","notes":[],"location":{},"url":5,
            "availability":"busy","calendarId":42})",
       R"({"start":"tomorrow","end":"","isAllDay":2,"availability":1.5})"}) {
    applyTo(*full, request);
    EXPECT_EQ(full->title(), "Lunch") << request;
    EXPECT_EQ(full->startDate(), at("2025-03-01T12:00:00Z")) << request;
    EXPECT_EQ(full->endDate(), at("2025-03-01T13:00:00Z")) << request;
    EXPECT_TRUE(full->isAllDay()) << request;
    EXPECT_EQ(full->notes(), "Bring bread") << request;
    EXPECT_EQ(full->location(), "Park") << request;
    EXPECT_EQ(full->url(), "https://example.org") << request;
    EXPECT_EQ(full->availability(), 1) << request;
    EXPECT_EQ(full->calendar(), nullptr) << request;
  }
}

TEST_F(EventFieldsTest, SetsEmptyTexts) {
  applyTo(*full, R"({"title":"","notes":"","location":""})");
  EXPECT_EQ(full->title(), "");
  EXPECT_EQ(full->notes(), "");
  EXPECT_EQ(full->location(), "");
}

TEST_F(EventFieldsTest, RemovesTheUrlForWhatIsNone) {
  applyTo(*full, R"({"url":""})");
  EXPECT_EQ(full->url(), std::nullopt);
  full->setUrl("https://example.org");
  applyTo(*full, R"({"url":"two words"})");
  EXPECT_EQ(full->url(), std::nullopt);
}

TEST_F(EventFieldsTest, TakesNumbersForBooleansAndIntegersAsThePlatformDoes) {
  applyTo(*full, R"({"isAllDay":1,"availability":2.0})");
  EXPECT_TRUE(full->isAllDay());
  EXPECT_EQ(full->availability(), 2);
  applyTo(*full, R"({"isAllDay":0,"availability":true})");
  EXPECT_FALSE(full->isAllDay());
  EXPECT_EQ(full->availability(), 1);
  applyTo(*full, R"({"availability":7})");
  EXPECT_EQ(full->availability(), 7);
  applyTo(*full, R"({"availability":-1})");
  EXPECT_EQ(full->availability(), -1);
}

TEST_F(EventFieldsTest, GivesAnEndToAStartWithoutOne) {
  applyTo(*fresh, R"({"start":"2025-03-01T12:00:00Z","isAllDay":true})");
  EXPECT_EQ(fresh->endDate(), at("2025-03-01T12:30:00Z"));
}

TEST_F(EventFieldsTest, LeavesAnEndAsItIs) {
  applyTo(*full, R"({"start":"2025-03-02T12:00:00Z"})");
  EXPECT_EQ(full->endDate(),
            at("2025-03-01T13:00:00Z"));  // before the start: for the store to refuse
}

TEST_F(EventFieldsTest, GivesNoEndWithoutAStart) {
  applyTo(*fresh, R"({"title":"x"})");
  EXPECT_EQ(fresh->endDate(), std::nullopt);
}

TEST_F(EventFieldsTest, FailsForACalendarThatIsUnknownAfterTheOtherFields) {
  EXPECT_EQ(
      failureOf(*fresh, R"({"calendarId":"nothing","title":"set","start":"2025-03-01T12:00:00Z"})"),
      "unknown calendar: nothing");
  EXPECT_EQ(fresh->title(), "set");
  EXPECT_EQ(fresh->endDate(), std::nullopt);
  EXPECT_EQ(failureOf(*fresh, R"({"calendarId":"list"})"), "unknown calendar: list");
  EXPECT_EQ(failureOf(*fresh, R"({"calendarId":""})"), "unknown calendar: ");
  EXPECT_EQ(failureOf(*fresh, R"({"calendarId":"a\u0000b"})"),
            std::string("unknown calendar: a\0b", 21));
}

TEST_F(EventFieldsTest, FailsForACalendarThatIsReadOnly) {
  EXPECT_EQ(failureOf(*full, R"({"title":"set","calendarId":"birthdays"})"),
            "calendar is read-only: Birthdays");
  EXPECT_EQ(full->title(), "set");
  EXPECT_EQ(full->calendar(), nullptr);
}

}  // namespace
}  // namespace tidemark
