#include "events/event_query.h"

#include <string>
#include <vector>

#include "tests/support/command_test.h"

namespace tidemark {
namespace {

using test::at;
using test::CommandTest;
using test::ForwardingStore;
using test::makeCalendar;
using test::makeEvent;
using test::normalized;

using Identifiers = std::vector<std::string>;

// Keeps what was asked of the store.
class RecordingStore : public ForwardingStore {
 public:
  using ForwardingStore::ForwardingStore;
  std::vector<EventRef> eventsMatchingPredicate(const EventPredicate& predicate) override {
    predicates.push_back(predicate);
    return ForwardingStore::eventsMatchingPredicate(predicate);
  }
  EventRef eventWithIdentifier(std::string_view identifier) override {
    ++lookups;
    return ForwardingStore::eventWithIdentifier(identifier);
  }

  std::vector<EventPredicate> predicates;
  int lookups = 0;
};

class EventQueryTest : public CommandTest {
 protected:
  EventQueryTest() {
    contents.eventCalendars = {work, home};
    contents.remindersLists = {makeCalendar("list", "List")};
  }

  void add(const char* identifier, const CalendarRef& calendar, const char* start) {
    contents.events.push_back(makeEvent(identifier, identifier, calendar, at(start)));
  }

  // The identifiers in the answer about March 2025, with more members for the request.
  Identifiers listed(const std::string& members = "") {
    const std::string answer =
        ask(R"({"cmd":"events","from":"2025-03-01T00:00:00Z","to":"2025-04-01T00:00:00Z")" +
            members + "}");
    const Json json = *parseJson(answer);
    const Json* events = json.object()->find("events");
    if (events == nullptr) return {answer};
    Identifiers identifiers;
    for (const Json& record : *events->array())
      identifiers.push_back(*record.object()->find("id")->string());
    return identifiers;
  }

  const CalendarRef work = makeCalendar("work", "Work");
  const CalendarRef home = makeCalendar("home", "Home");
};

TEST_F(EventQueryTest, AnswersRecords) {
  add("e", work, "2025-03-05T10:00:00Z");
  EXPECT_EQ(
      ask(R"({"id":7,"cmd":"events","from":"2025-03-01T00:00:00Z","to":"2025-04-01T00:00:00Z"})"),
      normalized(
          R"({"id":7,"events":[{"id":"e","title":"e","isAllDay":false,"calendarId":"work","calendar":"Work",
                       "isRecurring":false,"writable":true,"availability":0,"start":"2025-03-05T10:00:00Z",
                       "end":"2025-03-05T11:00:00Z","occurrence":"2025-03-05T10:00:00Z"}]})"));
}

TEST_F(EventQueryTest, NeedsBothDates) {
  for (const char* members :
       {"", R"(,"from":"2025-03-01")", R"(,"to":"2025-03-01")", R"(,"from":"2025-03-01","to":"x")",
        R"(,"from":1,"to":"2025-03-01")", R"(,"from":"2025-03-01","to":null)"}) {
    EXPECT_EQ(error(std::string(R"({"cmd":"events")") + members + "}"),
              "events needs `from` and `to`")
        << members;
  }
}

TEST_F(EventQueryTest, OrdersByStartAndKeepsTheStoresOrderOfEquals) {
  add("late", work, "2025-03-09T10:00:00Z");
  add("b", work, "2025-03-05T10:00:00Z");
  add("a", home, "2025-03-05T10:00:00Z");
  add("early", home, "2025-03-02T10:00:00Z");
  EXPECT_EQ(listed(), (Identifiers{"early", "b", "a", "late"}));
}

TEST_F(EventQueryTest, KeepsAnOrderThatIsRightAlready) {
  for (const char* identifier : {"c", "b", "a"}) add(identifier, work, "2025-03-05T10:00:00Z");
  add("d", work, "2025-03-06T10:00:00Z");
  EXPECT_EQ(listed(), (Identifiers{"c", "b", "a", "d"}));
}

TEST_F(EventQueryTest, PutsEventsWithoutAStartFirst) {
  add("dated", work, "2025-03-05T10:00:00Z");
  MemoryEvent undated;
  undated.eventIdentifier = "undated";
  undated.calendar = work;
  contents.events.push_back(undated);
  const auto order = listed();
  EXPECT_EQ(order.back(), "dated");
  memory();
  const EventRef dated = event("dated", std::nullopt);
  const EventRef without = event("undated", std::nullopt);
  EXPECT_TRUE(eventComesBefore(*without, *dated));
  EXPECT_FALSE(eventComesBefore(*dated, *without));
  EXPECT_FALSE(eventComesBefore(*without, *without));
}

TEST_F(EventQueryTest, RestrictsToTheChosenCalendars) {
  add("w", work, "2025-03-05T10:00:00Z");
  add("h", home, "2025-03-06T10:00:00Z");
  EXPECT_EQ(listed(R"(,"calendars":["work"])"), (Identifiers{"w"}));
  EXPECT_EQ(listed(R"(,"calendars":["home","nothing","home"])"), (Identifiers{"h"}));
  EXPECT_EQ(listed(R"(,"calendars":["home","work"])"), (Identifiers{"w", "h"}));
}

TEST_F(EventQueryTest, HandsTheStoreTheChosenCalendarsInItsOrder) {
  auto& recording = wrap<RecordingStore>();
  listed(R"(,"calendars":["home","nothing","work","home"])");
  ASSERT_EQ(recording.predicates.size(), 1U);
  EXPECT_EQ(recording.predicates[0].calendars, (std::vector<CalendarRef>{work, home}));
}

TEST_F(EventQueryTest, AnswersAChoiceOfNothingWithoutAskingTheStore) {
  add("w", work, "2025-03-05T10:00:00Z");
  auto& recording = wrap<RecordingStore>();
  for (const char* choice : {"[]", R"(["nothing"])", R"(["list"])", R"(["Work"])", R"([""])"}) {
    EXPECT_EQ(listed(std::string(R"(,"calendars":)") + choice), Identifiers{}) << choice;
  }
  EXPECT_TRUE(recording.predicates.empty());
}

TEST_F(EventQueryTest, TakesAnyOtherChoiceForNone) {
  add("w", work, "2025-03-05T10:00:00Z");
  add("h", home, "2025-03-06T10:00:00Z");
  for (const char* choice : {R"("work")", R"(["work",1])", "null", "7", "{}", "[null]"}) {
    EXPECT_EQ(listed(std::string(R"(,"calendars":)") + choice), (Identifiers{"w", "h"})) << choice;
  }
}

TEST_F(EventQueryTest, HandsTheRangeOnAsItIs) {
  auto& recording = wrap<RecordingStore>();
  ask(R"({"cmd":"events","from":"2025-04-01T00:00:00Z","to":"2025-03-01T00:00:00Z"})");
  ASSERT_EQ(recording.predicates.size(), 1U);
  EXPECT_EQ(recording.predicates[0].startDate, at("2025-04-01T00:00:00Z"));
  EXPECT_EQ(recording.predicates[0].endDate, at("2025-03-01T00:00:00Z"));
  EXPECT_FALSE(recording.predicates[0].calendars);
}

TEST_F(EventQueryTest, FindsWithoutAnOccurrenceWhatTheStoreHas) {
  add("series", work, "2025-03-05T10:00:00Z");
  add("series", work, "2025-03-06T10:00:00Z");
  auto& recording = wrap<RecordingStore>();
  EXPECT_EQ(event("series", std::nullopt)->startDate(), at("2025-03-05T10:00:00Z"));
  EXPECT_EQ(event("nothing", std::nullopt), nullptr);
  EXPECT_EQ(recording.lookups, 2);
  EXPECT_TRUE(recording.predicates.empty());
}

TEST_F(EventQueryTest, FindsAnOccurrenceLessThanASecondAway) {
  add("series", work, "2025-03-05T10:00:00Z");
  add("series", work, "2025-03-06T10:00:00Z");
  memory();
  const Instant second = at("2025-03-06T10:00:00Z");
  using std::chrono::milliseconds;
  EXPECT_EQ(event("series", second)->startDate(), second);
  EXPECT_NE(event("series", second + milliseconds(500)), nullptr);
  EXPECT_NE(event("series", second - milliseconds(999)), nullptr);
  EXPECT_EQ(event("series", second + milliseconds(1000)), nullptr);
  EXPECT_EQ(event("series", second - milliseconds(1000)), nullptr);
}

TEST_F(EventQueryTest, SearchesADayAroundTheOccurrenceInEveryCalendar) {
  auto& recording = wrap<RecordingStore>();
  event("series", at("2025-03-06T10:00:00Z"));
  ASSERT_EQ(recording.predicates.size(), 1U);
  EXPECT_EQ(recording.predicates[0].startDate, at("2025-03-05T10:00:00Z"));
  EXPECT_EQ(recording.predicates[0].endDate, at("2025-03-07T10:00:00Z"));
  EXPECT_FALSE(recording.predicates[0].calendars);
  EXPECT_EQ(recording.lookups, 0);
}

TEST_F(EventQueryTest, FindsAMovedOccurrenceByTheDateItHad) {
  MemoryEvent moved = makeEvent("series", "moved", work, at("2025-03-06T18:00:00Z"));
  moved.occurrenceDate = at("2025-03-06T10:00:00Z");
  contents.events = {moved};
  memory();
  EXPECT_NE(event("series", at("2025-03-06T10:00:00Z")), nullptr);
  EXPECT_EQ(event("series", at("2025-03-06T18:00:00Z")), nullptr);
}

TEST_F(EventQueryTest, FindsTheFirstInTheStoresOrder) {
  const Instant start = at("2025-03-06T10:00:00Z");
  MemoryEvent nameless = makeEvent("", "nameless", work, start);
  nameless.eventIdentifier.reset();
  MemoryEvent dateless = makeEvent("caf\u00E9", "dateless", work, start);
  dateless.occurrenceDate.reset();
  contents.events = {nameless, dateless, makeEvent("other", "other", work, start),
                     makeEvent("caf\u00E9", "first", work, start),
                     makeEvent("caf\u00E9", "second", work, start)};
  memory();
  EXPECT_EQ(event("cafe\u0301", start)->title(), "first");
  EXPECT_EQ(event("", start), nullptr);
}

}  // namespace
}  // namespace tidemark
