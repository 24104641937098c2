// Queries and look-ups of events.
#include <gmock/gmock.h>

#include "tests/contract/store_contract.h"

namespace tidemark {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

TEST_P(StoreContract, RangeHoldsWhatOverlapsIt) {
  const std::string work = fixture().addCalendar({"Work"});
  const Instant start = instant(2025, 3, 3, 10);
  const Instant end = instant(2025, 3, 3, 11);
  fixture().addEvent({work, "Tea", start, end});

  struct Case {
    Instant from, to;
    bool held;
  };
  const Case cases[] = {
      {instant(2025, 3, 3, 9), start, false},  // ends where the event starts
      {instant(2025, 3, 3, 9), instant(2025, 3, 3, 10, 0, 0.001), true},
      {end, instant(2025, 3, 3, 12), false},  // starts where the event ends
      {instant(2025, 3, 3, 10, 59, 59.999), instant(2025, 3, 3, 12), true},
      {instant(2025, 3, 3, 10, 15), instant(2025, 3, 3, 10, 30), true},  // within it
      {start, end, true},
      {instant(2000, 1, 1), instant(2050, 1, 1), true},
      {instant(2025, 3, 3, 10, 30), instant(2025, 3, 3, 10, 30), false},  // empty
      {instant(2025, 3, 3, 12), instant(2025, 3, 3, 9), false},           // inverted
      {end, start, false},
  };
  for (const Case& range : cases) {
    EXPECT_EQ(events(range.from, range.to).size(), range.held ? 1u : 0u)
        << range.from.time_since_epoch().count() << " to " << range.to.time_since_epoch().count();
  }
}

TEST_P(StoreContract, RangeHoldsAnEventWithoutLengthByItsStart) {
  const std::string work = fixture().addCalendar({"Work"});
  const Instant moment = instant(2025, 3, 3, 10);
  fixture().addEvent({work, "Now", moment, moment});
  EXPECT_THAT(events(moment, instant(2025, 3, 3, 11)), testing::SizeIs(1));
  EXPECT_THAT(events(instant(2025, 3, 3, 9), moment), IsEmpty());
  EXPECT_THAT(events(moment, moment), IsEmpty());
  EXPECT_THAT(events(instant(2025, 3, 3, 9), instant(2025, 3, 3, 11)), testing::SizeIs(1));
}

TEST_P(StoreContract, SelectionOfCalendars) {
  const std::string work = fixture().addCalendar({"Work"});
  const std::string home = fixture().addCalendar({"Home"});
  const std::string empty = fixture().addCalendar({"Empty"});
  fixture().addEvent({work, "Meeting", instant(2025, 3, 3, 10), instant(2025, 3, 3, 11)});
  fixture().addEvent({home, "Lunch", instant(2025, 3, 3, 12), instant(2025, 3, 3, 13)});
  const Instant from = instant(2025, 3, 3);
  const Instant to = instant(2025, 3, 4);
  using Calendars = std::vector<CalendarRef>;
  EXPECT_THAT(titles(events(from, to, std::nullopt)), UnorderedElementsAre("Meeting", "Lunch"));
  EXPECT_THAT(titles(events(from, to, Calendars{})), IsEmpty());
  EXPECT_THAT(titles(events(from, to, Calendars{calendar(home)})), ElementsAre("Lunch"));
  EXPECT_THAT(titles(events(from, to, Calendars{calendar(empty)})), IsEmpty());
  EXPECT_THAT(titles(events(from, to, Calendars{calendar(home), calendar(work)})),
              UnorderedElementsAre("Meeting", "Lunch"));
}

TEST_P(StoreContract, OrderOfEventsIsKept) {
  const std::string work = fixture().addCalendar({"Work"});
  const std::string home = fixture().addCalendar({"Home"});
  for (int i = 0; i < 20; ++i) {
    // Equal starts, where nothing but the store's own rule orders them.
    fixture().addEvent({i % 3 == 0 ? home : work, "Event " + std::to_string(i),
                        instant(2025, 3, 3, 10), instant(2025, 3, 3, 11)});
  }
  const auto first = titles(events());
  EXPECT_EQ(first.size(), 20u);
  EXPECT_EQ(titles(events()), first);
  EXPECT_EQ(titles(events(instant(2025, 3, 3), instant(2025, 3, 4))), first);
  store().reset();
  EXPECT_EQ(titles(events()), first);
}

TEST_P(StoreContract, EventSaysWhatItIs) {
  const std::string work = fixture().addCalendar({"Work"});
  SeedEvent seed{work, "Tea ☕", instant(2025, 3, 3, 10), instant(2025, 3, 3, 11)};
  seed.notes = "Two\nlines, with; signs\\";
  seed.location = "Kitchen";
  seed.url = "https://example.org/tea?a=b#c";
  seed.attendees = {"Ada", "Bob"};
  const std::string identifier = fixture().addEvent(seed);

  ASSERT_EQ(events().size(), 1u);
  const EventRef event = events().front();
  EXPECT_EQ(event->eventIdentifier(), identifier);
  EXPECT_EQ(event->title(), "Tea ☕");
  ASSERT_NE(event->calendar(), nullptr);
  EXPECT_EQ(event->calendar()->calendarIdentifier, work);
  EXPECT_FALSE(event->isAllDay());
  EXPECT_FALSE(event->hasRecurrenceRules());
  EXPECT_EQ(event->startDate(), seed.start);
  EXPECT_EQ(event->endDate(), seed.end);
  EXPECT_EQ(event->occurrenceDate(), seed.start);
  EXPECT_EQ(event->notes(), seed.notes);
  EXPECT_EQ(event->location(), seed.location);
  EXPECT_EQ(event->url(), seed.url);
  ASSERT_TRUE(event->attendees().has_value());
  ASSERT_EQ(event->attendees()->size(), 2u);
  EXPECT_EQ((*event->attendees())[0].name, "Ada");
  EXPECT_EQ((*event->attendees())[1].name, "Bob");
}

TEST_P(StoreContract, AbsentIsNotEmpty) {
  const std::string work = fixture().addCalendar({"Work"});
  fixture().addEvent({work, "Bare", instant(2025, 3, 3, 10), instant(2025, 3, 3, 11)});
  ASSERT_EQ(events().size(), 1u);
  const EventRef event = events().front();
  EXPECT_FALSE(event->notes().has_value());
  EXPECT_FALSE(event->location().has_value());
  EXPECT_FALSE(event->url().has_value());
  EXPECT_FALSE(event->attendees().has_value());
}

TEST_P(StoreContract, OccurrencesAreEventsOfTheirOwn) {
  const std::string work = fixture().addCalendar({"Work"});
  const std::string series =
      fixture().addEvent({work, "Daily", instant(2025, 3, 3, 10), instant(2025, 3, 3, 10, 30), 5});
  const auto found = events(instant(2025, 3, 4), instant(2025, 3, 6));
  ASSERT_EQ(found.size(), 2u);
  std::vector<Instant> starts;
  for (const EventRef& event : found) {
    EXPECT_EQ(event->eventIdentifier(), series);
    EXPECT_TRUE(event->hasRecurrenceRules());
    EXPECT_EQ(event->occurrenceDate(), event->startDate());
    EXPECT_EQ(*event->endDate() - *event->startDate(), std::chrono::minutes(30));
    starts.push_back(*event->startDate());
  }
  EXPECT_THAT(starts, UnorderedElementsAre(instant(2025, 3, 4, 10), instant(2025, 3, 5, 10)));
  EXPECT_EQ(events().size(), 5u);
}

TEST_P(StoreContract, EventByIdentifier) {
  const std::string work = fixture().addCalendar({"Work"});
  const std::string tasks = fixture().addCalendar({"Tasks", EntityType::reminder});
  const std::string one =
      fixture().addEvent({work, "One", instant(2025, 3, 3, 10), instant(2025, 3, 3, 11)});
  const std::string old =
      fixture().addEvent({work, "Old", instant(1999, 3, 3, 10), instant(1999, 3, 3, 11)});
  const std::string todo = fixture().addReminder({tasks, "Todo"});

  ASSERT_NE(store().eventWithIdentifier(one), nullptr);
  EXPECT_EQ(store().eventWithIdentifier(one)->title(), "One");
  EXPECT_EQ(store().eventWithIdentifier(one)->eventIdentifier(), one);
  ASSERT_NE(store().eventWithIdentifier(old), nullptr);
  EXPECT_EQ(store().eventWithIdentifier(old)->title(), "Old");

  EXPECT_EQ(store().eventWithIdentifier(""), nullptr);
  EXPECT_EQ(store().eventWithIdentifier(one + " "), nullptr);
  EXPECT_EQ(store().eventWithIdentifier(one.substr(0, one.size() - 1)), nullptr);
  EXPECT_EQ(store().eventWithIdentifier(work), nullptr);
  EXPECT_EQ(store().eventWithIdentifier(todo), nullptr);
}

TEST_P(StoreContract, IdentifierOfASeriesIsItsFirstOccurrence) {
  const std::string work = fixture().addCalendar({"Work"});
  const std::string series =
      fixture().addEvent({work, "Daily", instant(2025, 3, 3, 10), instant(2025, 3, 3, 11), 5});
  const EventRef first = store().eventWithIdentifier(series);
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first->startDate(), instant(2025, 3, 3, 10));
  EXPECT_TRUE(first->hasRecurrenceRules());
}

TEST_P(StoreContract, NewEventIsEmpty) {
  const EventRef event = store().newEvent();
  ASSERT_NE(event, nullptr);
  EXPECT_FALSE(event->title().has_value());
  EXPECT_EQ(event->calendar(), nullptr);
  EXPECT_FALSE(event->startDate().has_value());
  EXPECT_FALSE(event->endDate().has_value());
  EXPECT_FALSE(event->notes().has_value());
  EXPECT_FALSE(event->location().has_value());
  EXPECT_FALSE(event->url().has_value());
  EXPECT_FALSE(event->isAllDay());
  EXPECT_FALSE(event->hasRecurrenceRules());
  EXPECT_THAT(events(), IsEmpty());
}

TEST_P(StoreContract, SettersChangeTheEventAlone) {
  const std::string work = fixture().addCalendar({"Work"});
  const std::string home = fixture().addCalendar({"Home"});
  const std::string identifier =
      fixture().addEvent({work, "Tea", instant(2025, 3, 3, 10), instant(2025, 3, 3, 11)});
  const EventRef event = store().eventWithIdentifier(identifier);
  ASSERT_NE(event, nullptr);

  event->setTitle("Coffee");
  event->setStartDate(instant(2025, 3, 4, 10));
  event->setEndDate(instant(2025, 3, 4, 12));
  event->setAllDay(true);
  event->setNotes("");
  event->setLocation("Here");
  event->setUrl("https://example.org/");
  event->setAvailability(1);
  event->setCalendar(calendar(home));
  EXPECT_EQ(event->title(), "Coffee");
  EXPECT_EQ(event->startDate(), instant(2025, 3, 4, 10));
  EXPECT_EQ(event->endDate(), instant(2025, 3, 4, 12));
  EXPECT_TRUE(event->isAllDay());
  EXPECT_EQ(event->notes(), "");
  EXPECT_EQ(event->location(), "Here");
  EXPECT_EQ(event->url(), "https://example.org/");
  EXPECT_EQ(event->availability(), 1);
  EXPECT_EQ(event->calendar()->calendarIdentifier, home);
  event->setUrl(std::nullopt);
  EXPECT_FALSE(event->url().has_value());
  event->setCalendar(nullptr);
  EXPECT_EQ(event->calendar(), nullptr);

  const EventRef stored = store().eventWithIdentifier(identifier);
  ASSERT_NE(stored, nullptr);
  EXPECT_EQ(stored->title(), "Tea");
  EXPECT_EQ(stored->startDate(), instant(2025, 3, 3, 10));
  EXPECT_FALSE(stored->notes().has_value());
  EXPECT_EQ(stored->calendar()->calendarIdentifier, work);
}

TEST_P(StoreContract, EventKeepsWhatItSaidWhenItWasFetched) {
  const std::string work = fixture().addCalendar({"Work"});
  SeedEvent seed{work, "Tea", instant(2025, 3, 3, 10), instant(2025, 3, 3, 11)};
  seed.attendees = {"Ada"};
  const std::string identifier = fixture().addEvent(seed);
  const EventRef held = store().eventWithIdentifier(identifier);
  ASSERT_NE(held, nullptr);
  fixture().removeEvent(identifier);
  for (int i = 0; i < 50; ++i) {
    fixture().addEvent({work, "More", instant(2025, 3, 3, 10), instant(2025, 3, 3, 11)});
  }
  EXPECT_EQ(store().eventWithIdentifier(identifier), nullptr);
  EXPECT_EQ(events().size(), 50u);
  EXPECT_EQ(held->title(), "Tea");
  EXPECT_EQ(held->startDate(), seed.start);
  EXPECT_EQ(held->calendar()->title, "Work");
  ASSERT_TRUE(held->attendees().has_value());
  EXPECT_EQ(held->attendees()->front().name, "Ada");
}

TEST_P(StoreContract, OutsideChangesShowInTheNextCall) {
  const std::string work = fixture().addCalendar({"Work"});
  EXPECT_THAT(events(), IsEmpty());
  std::vector<std::string> identifiers;
  for (std::size_t i = 1; i <= 10; ++i) {
    identifiers.push_back(
        fixture().addEvent({work, "Event", instant(2025, 3, 3, 10), instant(2025, 3, 3, 11)}));
    EXPECT_EQ(events().size(), i);
    EXPECT_NE(store().eventWithIdentifier(identifiers.back()), nullptr);
  }
  for (const std::string& identifier : identifiers) {
    fixture().removeEvent(identifier);
    EXPECT_EQ(store().eventWithIdentifier(identifier), nullptr);
  }
  EXPECT_THAT(events(), IsEmpty());
}

}  // namespace
}  // namespace tidemark
