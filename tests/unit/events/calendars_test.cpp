#include "events/calendars.h"

#include <csignal>
#include <string>
#include <vector>

#include "events/calendar_lookup.h"
#include "tests/support/command_test.h"

namespace tidemark {
namespace {

using test::CommandTest;
using test::makeCalendar;
using test::normalized;

class CalendarsTest : public CommandTest {
 protected:
  // The identifiers of the answer, in its order.
  std::vector<std::string> listed() {
    const Json answer = *parseJson(ask(R"({"cmd":"calendars"})"));
    std::vector<std::string> identifiers;
    for (const Json& record : *answer.object()->find("calendars")->array()) {
      identifiers.push_back(*record.object()->find("id")->string());
    }
    return identifiers;
  }
};

using Identifiers = std::vector<std::string>;

TEST_F(CalendarsTest, AnswersAnEmptyStoreWithAnEmptyArray) {
  contents.remindersLists = {makeCalendar("list", "List")};
  EXPECT_EQ(ask(R"({"id":"a","cmd":"calendars"})"), R"({"calendars":[],"id":"a"})");
}

TEST_F(CalendarsTest, AnswersRecordsAndPassesOverOtherKeys) {
  contents.eventCalendars = {makeCalendar("work", "Work", {.source = "Office", .color = {}})};
  EXPECT_EQ(ask(R"({"cmd":"calendars","calendars":["none"],"from":7})"),
            normalized(
                R"({"calendars":[{"id":"work","title":"Work","source":"Office","sourceType":"local",
                                         "writable":true}]})"));
}

TEST_F(CalendarsTest, OrdersBySourceAndThenByTitle) {
  contents.eventCalendars = {makeCalendar("1", "Work", {.source = "Personal", .color = {}}),
                             makeCalendar("2", "b", {.source = "home", .color = {}}),
                             makeCalendar("3", "A", {.source = "home", .color = {}}),
                             makeCalendar("4", "Work", {.source = "Office", .color = {}}),
                             makeCalendar("5", "Cal 10", {.source = "Work", .color = {}}),
                             makeCalendar("6", "Cal 2", {.source = "Work", .color = {}})};
  EXPECT_EQ(listed(), (Identifiers{"4", "1", "5", "6", "3", "2"}));
}

TEST_F(CalendarsTest, KeepsTheStoresOrderOfEquals) {
  contents.eventCalendars = {makeCalendar("b", "Caf\u00E9"), makeCalendar("a", "Cafe\u0301"),
                             makeCalendar("c", "Caf\u00E9"), makeCalendar("d", "Alpha")};
  EXPECT_EQ(listed(), (Identifiers{"d", "b", "a", "c"}));
}

TEST_F(CalendarsTest, TakesSourcesThatAreCanonicallyEqualForOne) {
  contents.eventCalendars = {makeCalendar("1", "Z", {.source = "Caf\u00E9", .color = {}}),
                             makeCalendar("2", "A", {.source = "Cafe\u0301", .color = {}})};
  EXPECT_EQ(listed(), (Identifiers{"2", "1"}));
}

TEST_F(CalendarsTest, StopsTheProcessForACalendarWithoutASource) {
  auto broken = std::make_shared<Calendar>();
  contents.eventCalendars = {makeCalendar("a", "A"), broken};
  memory();
  EXPECT_EXIT(listCalendars(nullptr), testing::KilledBySignal(SIGABRT), "^$");
}

TEST_F(CalendarsTest, FindsByTheWholeIdentifier) {
  contents.eventCalendars = {makeCalendar("work", "First"), makeCalendar("work", "Second"),
                             makeCalendar("é", "Third")};
  contents.remindersLists = {makeCalendar("list", "List")};
  memory();
  EXPECT_EQ(calendarWithId("work")->title, "First");
  EXPECT_EQ(calendarWithId("e\u0301")->title, "Third");
  for (const char* identifier : {"", "wor", "Work", "work ", "list"})
    EXPECT_EQ(calendarWithId(identifier), nullptr);
  EXPECT_EQ(calendarWithId(EntityType::reminder, "list")->title, "List");
  EXPECT_EQ(calendarWithId(EntityType::reminder, "work"), nullptr);
}

}  // namespace
}  // namespace tidemark
