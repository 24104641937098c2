// Saves and removals.
#include <gmock/gmock.h>

#include "tests/contract/store_contract.h"

namespace tidemark {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

// Skips the rest of the test for a store that only reads.
#define REQUIRE_WRITING() \
  if (!fixture().canWrite()) GTEST_SKIP() << "a store that cannot save"

const Instant ten = instant(2025, 3, 3, 10);
const Instant eleven = instant(2025, 3, 3, 11);

DateComponents dayOnly(int year, int month, int day) {
  DateComponents components;
  components.year = year;
  components.month = month;
  components.day = day;
  return components;
}

EventRef tea(Store& store, const CalendarRef& calendar) {
  const EventRef event = store.newEvent();
  event->setTitle("Tea");
  event->setStartDate(ten);
  event->setEndDate(eleven);
  event->setCalendar(calendar);
  return event;
}

// Daily at ten, from 3 to 7 March 2025.
SeedEvent fiveDays(StoreFixture& fixture) {
  return {fixture.addCalendar({"Work"}), "Daily", ten, eleven, 5};
}

std::string textOf(std::optional<std::string_view> text) {
  return std::string(text.value_or(""));
}

// --- events

TEST_P(StoreContract, SavedEventIsThere) {
  REQUIRE_WRITING();
  const std::string work = fixture().addCalendar({"Work"});
  const EventRef event = tea(store(), calendar(work));
  event->setNotes("Two\nlines, with; signs\\ and “quotes”");
  event->setLocation("Kitchen / hall");
  event->setUrl("https://example.org/a?b=c#d");
  event->setAvailability(1);
  const StoreResult result = store().saveEvent(*event);
  ASSERT_TRUE(result) << *result.error;

  // The event says what was saved, and a fetched one says the same.
  const std::string identifier = textOf(event->eventIdentifier());
  ASSERT_FALSE(identifier.empty());
  ASSERT_NE(store().eventWithIdentifier(identifier), nullptr);
  ASSERT_EQ(events(ten, eleven).size(), 1u);
  for (const EventRef& saved :
       {event, store().eventWithIdentifier(identifier), events(ten, eleven).front()}) {
    EXPECT_EQ(saved->eventIdentifier(), identifier);
    EXPECT_EQ(saved->title(), "Tea");
    EXPECT_EQ(saved->startDate(), ten);
    EXPECT_EQ(saved->endDate(), eleven);
    EXPECT_EQ(saved->occurrenceDate(), ten);
    EXPECT_TRUE(saved->lastModifiedDate().has_value());
    EXPECT_EQ(saved->notes(), "Two\nlines, with; signs\\ and “quotes”");
    EXPECT_EQ(saved->location(), "Kitchen / hall");
    EXPECT_EQ(saved->url(), "https://example.org/a?b=c#d");
    EXPECT_EQ(saved->availability(), 1);
    EXPECT_EQ(saved->calendar()->calendarIdentifier, work);
    EXPECT_FALSE(saved->hasRecurrenceRules());
  }
}

TEST_P(StoreContract, EachNewEventHasAnIdentifierOfItsOwn) {
  REQUIRE_WRITING();
  const std::string work = fixture().addCalendar({"Work"});
  const EventRef one = tea(store(), calendar(work));
  const EventRef two = tea(store(), calendar(work));
  ASSERT_TRUE(store().saveEvent(*one));
  ASSERT_TRUE(store().saveEvent(*two));
  EXPECT_NE(textOf(one->eventIdentifier()), textOf(two->eventIdentifier()));
  EXPECT_EQ(events().size(), 2u);
}

TEST_P(StoreContract, ChangedEventIsChangedInPlace) {
  REQUIRE_WRITING();
  const std::string work = fixture().addCalendar({"Work"});
  SeedEvent seed{work, "Tea", ten, eleven};
  seed.location = "Kitchen";
  seed.attendees = {"Ada"};
  const std::string identifier = fixture().addEvent(seed);
  const EventRef event = store().eventWithIdentifier(identifier);
  ASSERT_NE(event, nullptr);
  event->setTitle("Coffee");
  event->setEndDate(instant(2025, 3, 3, 12));
  ASSERT_TRUE(store().saveEvent(*event));
  EXPECT_EQ(event->title(), "Coffee");

  ASSERT_EQ(events().size(), 1u);
  const EventRef stored = events().front();
  EXPECT_EQ(stored->eventIdentifier(), identifier);
  EXPECT_EQ(stored->title(), "Coffee");
  EXPECT_EQ(stored->startDate(), ten);
  EXPECT_EQ(stored->endDate(), instant(2025, 3, 3, 12));
  // What was not set stays.
  EXPECT_EQ(stored->location(), "Kitchen");
  ASSERT_TRUE(stored->attendees().has_value());
  EXPECT_EQ(stored->attendees()->front().name, "Ada");
}

TEST_P(StoreContract, EventIsSavedAgainAndAgain) {
  REQUIRE_WRITING();
  const std::string work = fixture().addCalendar({"Work"});
  const EventRef event = tea(store(), calendar(work));
  ASSERT_TRUE(store().saveEvent(*event));
  event->setTitle("Second");
  ASSERT_TRUE(store().saveEvent(*event));
  event->setUrl("https://example.org/");
  ASSERT_TRUE(store().saveEvent(*event));
  event->setUrl(std::nullopt);
  ASSERT_TRUE(store().saveEvent(*event));
  ASSERT_THAT(titles(events()), ElementsAre("Second"));
  EXPECT_FALSE(events().front()->url().has_value());
}

TEST_P(StoreContract, EventMovesToAnotherCalendar) {
  REQUIRE_WRITING();
  const std::string work = fixture().addCalendar({"Work"});
  const std::string home = fixture().addCalendar({"Home"});
  const std::string identifier = fixture().addEvent({work, "Tea", ten, eleven});
  const EventRef event = store().eventWithIdentifier(identifier);
  ASSERT_NE(event, nullptr);
  event->setCalendar(calendar(home));
  ASSERT_TRUE(store().saveEvent(*event));
  EXPECT_EQ(event->calendar()->calendarIdentifier, home);
  EXPECT_NE(store().eventWithIdentifier(textOf(event->eventIdentifier())), nullptr);
  using Calendars = std::vector<CalendarRef>;
  EXPECT_THAT(events(ten, eleven, Calendars{calendar(work)}), IsEmpty());
  EXPECT_THAT(titles(events(ten, eleven, Calendars{calendar(home)})), ElementsAre("Tea"));
}

TEST_P(StoreContract, EndBeforeStartIsRefused) {
  REQUIRE_WRITING();
  const std::string work = fixture().addCalendar({"Work"});
  const EventRef backwards = tea(store(), calendar(work));
  backwards->setEndDate(instant(2025, 3, 3, 9));
  const StoreResult result = store().saveEvent(*backwards);
  ASSERT_FALSE(result);
  EXPECT_EQ(*result.error, "The start date must be before the end date.");
  EXPECT_THAT(events(), IsEmpty());

  const std::string identifier = fixture().addEvent({work, "Tea", ten, eleven});
  const EventRef event = store().eventWithIdentifier(identifier);
  ASSERT_NE(event, nullptr);
  event->setTitle("Lost");
  event->setStartDate(instant(2025, 3, 3, 12));
  EXPECT_FALSE(store().saveEvent(*event));
  const EventRef stored = store().eventWithIdentifier(identifier);
  ASSERT_NE(stored, nullptr);
  EXPECT_EQ(stored->title(), "Tea");
  EXPECT_EQ(stored->startDate(), ten);
}

TEST_P(StoreContract, EventWithoutLengthIsSaved) {
  REQUIRE_WRITING();
  const std::string work = fixture().addCalendar({"Work"});
  const EventRef event = tea(store(), calendar(work));
  event->setEndDate(ten);
  ASSERT_TRUE(store().saveEvent(*event));
  ASSERT_EQ(events(ten, eleven).size(), 1u);
  EXPECT_EQ(events(ten, eleven).front()->endDate(), ten);
}

TEST_P(StoreContract, ReadOnlyCalendarRefusesEvents) {
  REQUIRE_WRITING();
  const std::string work = fixture().addCalendar({"Work"});
  const std::string closed = fixture().addCalendar({"Closed", EntityType::event, false});
  const std::string identifier = fixture().addEvent({closed, "Kept", ten, eleven});

  const EventRef fresh = tea(store(), calendar(closed));
  const StoreResult result = store().saveEvent(*fresh);
  ASSERT_FALSE(result);
  EXPECT_FALSE(result.error->empty());

  const EventRef event = store().eventWithIdentifier(identifier);
  ASSERT_NE(event, nullptr);
  EXPECT_FALSE(store().removeEvent(*event));
  event->setTitle("Lost");
  EXPECT_FALSE(store().saveEvent(*event));
  event->setCalendar(calendar(work));
  EXPECT_FALSE(store().saveEvent(*event));
  ASSERT_THAT(titles(events()), ElementsAre("Kept"));
  EXPECT_EQ(events().front()->calendar()->calendarIdentifier, closed);
}

TEST_P(StoreContract, RemovedEventIsGone) {
  REQUIRE_WRITING();
  const std::string work = fixture().addCalendar({"Work"});
  const std::string identifier = fixture().addEvent({work, "Tea", ten, eleven});
  const std::string other = fixture().addEvent({work, "Other", ten, eleven});
  const EventRef event = store().eventWithIdentifier(identifier);
  ASSERT_NE(event, nullptr);
  ASSERT_TRUE(store().removeEvent(*event));
  EXPECT_EQ(store().eventWithIdentifier(identifier), nullptr);
  EXPECT_THAT(titles(events()), ElementsAre("Other"));
}

TEST_P(StoreContract, EventThatIsNoMoreIsNotSaved) {
  REQUIRE_WRITING();
  const std::string work = fixture().addCalendar({"Work"});
  const std::string identifier = fixture().addEvent({work, "Tea", ten, eleven});
  const EventRef event = store().eventWithIdentifier(identifier);
  const EventRef same = store().eventWithIdentifier(identifier);
  ASSERT_TRUE(event && same);
  fixture().removeEvent(identifier);
  event->setTitle("Back again");
  const StoreResult saved = store().saveEvent(*event);
  ASSERT_FALSE(saved);
  EXPECT_FALSE(saved.error->empty());
  EXPECT_FALSE(store().removeEvent(*same));
  EXPECT_THAT(events(), IsEmpty());
}

TEST_P(StoreContract, OccurrenceChangesAlone) {
  REQUIRE_WRITING();
  const std::string identifier = fixture().addEvent(fiveDays(fixture()));
  const EventRef third = eventOn(5);
  ASSERT_NE(third, nullptr);
  third->setTitle("Special");
  third->setStartDate(instant(2025, 3, 5, 15));
  third->setEndDate(instant(2025, 3, 5, 16));
  ASSERT_TRUE(store().saveEvent(*third));
  // It keeps the name of the place where it was meant to be.
  EXPECT_EQ(third->occurrenceDate(), instant(2025, 3, 5, 10));
  EXPECT_EQ(third->startDate(), instant(2025, 3, 5, 15));

  EXPECT_THAT(titles(events()),
              UnorderedElementsAre("Daily", "Daily", "Daily", "Daily", "Special"));
  const EventRef stored = eventOn(5);
  ASSERT_NE(stored, nullptr);
  EXPECT_EQ(stored->title(), "Special");
  EXPECT_EQ(stored->eventIdentifier(), identifier);
  EXPECT_EQ(stored->startDate(), instant(2025, 3, 5, 15));
  EXPECT_EQ(stored->occurrenceDate(), instant(2025, 3, 5, 10));
  EXPECT_TRUE(stored->hasRecurrenceRules());
  EXPECT_EQ(store().eventWithIdentifier(identifier)->startDate(), ten);
}

TEST_P(StoreContract, OccurrenceCountsWhereItIsAndNotWhereItWas) {
  REQUIRE_WRITING();
  fixture().addEvent(fiveDays(fixture()));
  const EventRef third = eventOn(5);
  ASSERT_NE(third, nullptr);
  third->setStartDate(instant(2025, 6, 1, 10));
  third->setEndDate(instant(2025, 6, 1, 11));
  ASSERT_TRUE(store().saveEvent(*third));
  EXPECT_THAT(events(instant(2025, 3, 5), instant(2025, 3, 6)), IsEmpty());
  EXPECT_EQ(events(instant(2025, 6, 1), instant(2025, 6, 2)).size(), 1u);
}

TEST_P(StoreContract, OccurrenceChangesTwice) {
  REQUIRE_WRITING();
  fixture().addEvent(fiveDays(fixture()));
  for (const char* title : {"Once", "Twice"}) {
    const EventRef third = eventOn(5);
    ASSERT_NE(third, nullptr);
    third->setTitle(title);
    ASSERT_TRUE(store().saveEvent(*third));
  }
  EXPECT_THAT(titles(events()), UnorderedElementsAre("Daily", "Daily", "Daily", "Daily", "Twice"));
}

TEST_P(StoreContract, OccurrenceGoesAlone) {
  REQUIRE_WRITING();
  const std::string identifier = fixture().addEvent(fiveDays(fixture()));
  const EventRef first = store().eventWithIdentifier(identifier);
  ASSERT_NE(first, nullptr);
  ASSERT_TRUE(store().removeEvent(*first));
  EXPECT_EQ(events().size(), 4u);
  EXPECT_EQ(eventOn(3), nullptr);
  // The first that is still there now answers to the identifier.
  ASSERT_NE(store().eventWithIdentifier(identifier), nullptr);
  EXPECT_EQ(store().eventWithIdentifier(identifier)->startDate(), instant(2025, 3, 4, 10));

  const EventRef fourth = eventOn(6);
  ASSERT_NE(fourth, nullptr);
  ASSERT_TRUE(store().removeEvent(*fourth));
  EXPECT_EQ(events().size(), 3u);
  EXPECT_EQ(eventOn(6), nullptr);
}

TEST_P(StoreContract, OccurrencesGoOneByOne) {
  REQUIRE_WRITING();
  const std::string identifier = fixture().addEvent(fiveDays(fixture()));
  for (unsigned day = 3; day < 8; ++day) {
    const EventRef next = eventOn(day);
    ASSERT_NE(next, nullptr) << day;
    ASSERT_TRUE(store().removeEvent(*next));
  }
  EXPECT_THAT(events(), IsEmpty());
  EXPECT_EQ(store().eventWithIdentifier(identifier), nullptr);
}

// --- reminders

TEST_P(StoreContract, SavedReminderIsThere) {
  REQUIRE_WRITING();
  const std::string tasks = fixture().addCalendar({"Tasks", EntityType::reminder});
  const ReminderRef reminder = store().newReminder();
  reminder->setTitle("Call, now; or\\later");
  reminder->setNotes("At home\n");
  reminder->setCalendar(calendar(tasks));
  DateComponents due = dayOnly(2025, 3, 3);
  due.hour = 10;
  due.minute = 15;
  reminder->setDueDateComponents(due);
  const StoreResult result = store().saveReminder(*reminder);
  ASSERT_TRUE(result) << *result.error;

  const std::string identifier(reminder->calendarItemIdentifier());
  ASSERT_FALSE(identifier.empty());
  const auto fetched = incomplete(instant(2025, 3, 3, 10, 15), instant(2025, 3, 3, 10, 16));
  ASSERT_EQ(fetched.size(), 1u);
  ASSERT_NE(store().calendarItemWithIdentifier(identifier), nullptr);
  for (const ReminderRef& saved :
       {reminder, fetched.front(), store().calendarItemWithIdentifier(identifier)}) {
    EXPECT_EQ(saved->calendarItemIdentifier(), identifier);
    EXPECT_EQ(saved->title(), "Call, now; or\\later");
    EXPECT_EQ(saved->notes(), "At home\n");
    EXPECT_EQ(saved->calendar()->calendarIdentifier, tasks);
    ASSERT_TRUE(saved->dueDateComponents().has_value());
    EXPECT_EQ(saved->dueDateComponents()->hour, 10);
    EXPECT_EQ(saved->dueDateComponents()->minute, 15);
    EXPECT_FALSE(saved->dueDateComponents()->timeZone.has_value());
    EXPECT_FALSE(saved->isCompleted());
  }
}

TEST_P(StoreContract, ReminderWithATitleAloneIsSaved) {
  REQUIRE_WRITING();
  const std::string tasks = fixture().addCalendar({"Tasks", EntityType::reminder});
  const ReminderRef reminder = store().newReminder();
  reminder->setTitle("Someday");
  reminder->setCalendar(calendar(tasks));
  ASSERT_TRUE(store().saveReminder(*reminder));
  const ReminderRef stored =
      store().calendarItemWithIdentifier(std::string(reminder->calendarItemIdentifier()));
  ASSERT_NE(stored, nullptr);
  EXPECT_FALSE(stored->dueDateComponents().has_value());
  EXPECT_FALSE(stored->notes().has_value());
}

TEST_P(StoreContract, DueDateWithoutATimeStaysOne) {
  REQUIRE_WRITING();
  setLocalZone("Asia/Tokyo");
  const std::string tasks = fixture().addCalendar({"Tasks", EntityType::reminder});
  const std::string identifier = fixture().addReminder({tasks, "Todo"});
  const ReminderRef reminder = store().calendarItemWithIdentifier(identifier);
  ASSERT_NE(reminder, nullptr);
  reminder->setDueDateComponents(dayOnly(2025, 3, 3));
  ASSERT_TRUE(store().saveReminder(*reminder));
  const auto found = incomplete(instant(2025, 3, 2, 15), instant(2025, 3, 2, 15, 0, 1));
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found.front()->dueDateComponents(), dayOnly(2025, 3, 3));
}

TEST_P(StoreContract, CompletedReminderIsCompletedNow) {
  REQUIRE_WRITING();
  const std::string tasks = fixture().addCalendar({"Tasks", EntityType::reminder});
  const std::string identifier = fixture().addReminder({tasks, "Todo", dayOnly(2025, 3, 3)});
  const ReminderRef reminder = store().calendarItemWithIdentifier(identifier);
  ASSERT_NE(reminder, nullptr);
  const Instant from = instant(2025, 1, 1);
  const Instant to = instant(9999, 1, 1);

  reminder->setCompleted(true);
  ASSERT_TRUE(store().saveReminder(*reminder));
  EXPECT_TRUE(reminder->isCompleted());
  EXPECT_THAT(incomplete(from, to), IsEmpty());
  EXPECT_THAT(titles(completed(from, to)), ElementsAre("Todo"));

  reminder->setCompleted(false);
  ASSERT_TRUE(store().saveReminder(*reminder));
  EXPECT_THAT(titles(incomplete(from, to)), ElementsAre("Todo"));
  EXPECT_THAT(completed(from, to), IsEmpty());
}

TEST_P(StoreContract, CompletionDateStaysWhenOtherThingsChange) {
  REQUIRE_WRITING();
  const std::string tasks = fixture().addCalendar({"Tasks", EntityType::reminder});
  const Instant done = instant(2025, 3, 3, 12);
  const std::string identifier = fixture().addReminder({tasks, "Done", dayOnly(2025, 3, 3), done});
  const ReminderRef reminder = store().calendarItemWithIdentifier(identifier);
  ASSERT_NE(reminder, nullptr);
  reminder->setTitle("Done indeed");
  reminder->setCompleted(true);
  ASSERT_TRUE(store().saveReminder(*reminder));
  EXPECT_THAT(titles(completed(done, done + std::chrono::seconds(1))), ElementsAre("Done indeed"));
}

TEST_P(StoreContract, ReminderMovesToAnotherList) {
  REQUIRE_WRITING();
  const std::string tasks = fixture().addCalendar({"Tasks", EntityType::reminder});
  const std::string errands = fixture().addCalendar({"Errands", EntityType::reminder});
  SeedReminder seed{tasks, "Todo", dayOnly(2025, 3, 3)};
  seed.notes = "n";
  seed.priority = 5;
  const ReminderRef reminder = store().calendarItemWithIdentifier(fixture().addReminder(seed));
  ASSERT_NE(reminder, nullptr);
  reminder->setCalendar(calendar(errands));
  reminder->setNotes(std::nullopt);
  ASSERT_TRUE(store().saveReminder(*reminder));
  const auto found = incomplete(instant(2025, 3, 1), instant(2025, 4, 1));
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found.front()->calendar()->calendarIdentifier, errands);
  EXPECT_FALSE(found.front()->notes().has_value());
  EXPECT_EQ(found.front()->priority(), 5);
}

TEST_P(StoreContract, ReadOnlyListRefusesReminders) {
  REQUIRE_WRITING();
  const std::string closed = fixture().addCalendar({"Closed", EntityType::reminder, false});
  const std::string identifier = fixture().addReminder({closed, "Kept"});
  const ReminderRef fresh = store().newReminder();
  fresh->setTitle("New");
  fresh->setCalendar(calendar(closed));
  const StoreResult result = store().saveReminder(*fresh);
  ASSERT_FALSE(result);
  EXPECT_FALSE(result.error->empty());
  const ReminderRef reminder = store().calendarItemWithIdentifier(identifier);
  ASSERT_NE(reminder, nullptr);
  EXPECT_FALSE(store().removeReminder(*reminder));
  reminder->setTitle("Lost");
  EXPECT_FALSE(store().saveReminder(*reminder));
  ASSERT_NE(store().calendarItemWithIdentifier(identifier), nullptr);
  EXPECT_EQ(store().calendarItemWithIdentifier(identifier)->title(), "Kept");
}

TEST_P(StoreContract, RemovedReminderIsGone) {
  REQUIRE_WRITING();
  const std::string tasks = fixture().addCalendar({"Tasks", EntityType::reminder});
  const std::string identifier = fixture().addReminder({tasks, "Todo", dayOnly(2025, 3, 3)});
  const std::string other = fixture().addReminder({tasks, "Other", dayOnly(2025, 3, 3)});
  const ReminderRef reminder = store().calendarItemWithIdentifier(identifier);
  ASSERT_NE(reminder, nullptr);
  ASSERT_TRUE(store().removeReminder(*reminder));
  EXPECT_EQ(store().calendarItemWithIdentifier(identifier), nullptr);
  EXPECT_THAT(titles(incomplete(instant(2025, 3, 1), instant(2025, 4, 1))), ElementsAre("Other"));
  EXPECT_FALSE(store().removeReminder(*reminder));
}

}  // namespace
}  // namespace tidemark
