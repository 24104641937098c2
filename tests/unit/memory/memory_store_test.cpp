// The in-memory store where store.h leaves the rule to the store: what the contract does not ask.
#include "store/memory/memory_store.h"

#include <gmock/gmock.h>

#include <chrono>
#include <future>
#include <memory>

namespace tidemark {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const Instant noon =
    std::chrono::sys_days{std::chrono::year{2025} / 3 / 3} + std::chrono::hours(12);
const Instant anHourLater = noon + std::chrono::hours(1);

CalendarRef makeCalendar(const std::string& identifier) {
  auto calendar = std::make_shared<Calendar>();
  calendar->calendarIdentifier = identifier;
  calendar->source = Source{"Memory", 0};
  calendar->allowsContentModifications = true;
  return calendar;
}

MemoryEvent makeEvent(const std::string& identifier, const CalendarRef& calendar) {
  MemoryEvent event;
  event.eventIdentifier = identifier;
  event.title = identifier;
  event.calendar = calendar;
  event.startDate = noon;
  event.endDate = anHourLater;
  event.occurrenceDate = noon;
  return event;
}

std::vector<std::string> titlesIn(Store& store, Instant from, Instant to) {
  std::vector<std::string> titles;
  for (const EventRef& event : store.eventsMatchingPredicate({from, to, std::nullopt})) {
    titles.emplace_back(event->title().value_or(""));
  }
  return titles;
}

class MemoryStoreTest : public testing::Test {
 protected:
  MemoryStoreTest() { contents.start = noon; }

  MemoryStore& store() {
    if (!store_) store_ = makeMemoryStore(contents);
    return *store_;
  }

  const CalendarRef work = makeCalendar("work");
  MemoryContents contents;

 private:
  std::unique_ptr<MemoryStore> store_;
};

TEST_F(MemoryStoreTest, EventsComeInTheOrderGiven) {
  for (const char* name : {"c", "a", "b"}) contents.events.push_back(makeEvent(name, work));
  EXPECT_THAT(titlesIn(store(), noon, anHourLater), ElementsAre("c", "a", "b"));
}

TEST_F(MemoryStoreTest, EventWithoutAStartCountsFromTheDistantPast) {
  MemoryEvent event = makeEvent("e", work);
  event.startDate.reset();
  contents.events.push_back(event);
  const Instant longAgo = std::chrono::sys_days{std::chrono::year{1000} / 1 / 1};
  EXPECT_THAT(titlesIn(store(), longAgo, noon), ElementsAre("e"));
  EXPECT_THAT(titlesIn(store(), noon, anHourLater), ElementsAre("e"));
  EXPECT_THAT(titlesIn(store(), anHourLater, anHourLater + std::chrono::hours(1)), IsEmpty());
}

TEST_F(MemoryStoreTest, EventWithoutAnEndHasNoLength) {
  MemoryEvent event = makeEvent("e", work);
  event.endDate.reset();
  contents.events.push_back(event);
  EXPECT_THAT(titlesIn(store(), noon, anHourLater), ElementsAre("e"));
  EXPECT_THAT(titlesIn(store(), noon - std::chrono::hours(1), noon), IsEmpty());
}

TEST_F(MemoryStoreTest, EventWithoutDatesIsInEveryRangeThatIsNotEmpty) {
  MemoryEvent event = makeEvent("e", work);
  event.startDate.reset();
  event.endDate.reset();
  contents.events.push_back(event);
  EXPECT_THAT(titlesIn(store(), noon, anHourLater), ElementsAre("e"));
  EXPECT_THAT(titlesIn(store(), noon, noon), IsEmpty());
  EXPECT_THAT(titlesIn(store(), anHourLater, noon), IsEmpty());
}

TEST_F(MemoryStoreTest, EventWithoutACalendarIsInNoChosenCalendar) {
  contents.eventCalendars.push_back(work);
  contents.events.push_back(makeEvent("e", nullptr));
  EXPECT_THAT(titlesIn(store(), noon, anHourLater), ElementsAre("e"));
  EXPECT_THAT(store().eventsMatchingPredicate({noon, anHourLater, std::vector<CalendarRef>{work}}),
              IsEmpty());
}

TEST_F(MemoryStoreTest, FirstOfOneIdentifierIsFound) {
  for (const char* title : {"one", "two"}) {
    contents.events.push_back(makeEvent("same", work));
    contents.events.back().title = title;
    contents.reminders.push_back({});
    contents.reminders.back().calendarItemIdentifier = "same";
    contents.reminders.back().title = title;
  }
  EXPECT_EQ(store().eventWithIdentifier("same")->title(), "one");
  EXPECT_EQ(store().calendarItemWithIdentifier("same")->title(), "one");
}

TEST_F(MemoryStoreTest, IdentifiersAreComparedByTheirNormalForm) {
  contents.events.push_back(makeEvent("caf\u00e9", work));
  EXPECT_NE(store().eventWithIdentifier("cafe\u0301"), nullptr);
  EXPECT_EQ(store().eventWithIdentifier("cafe"), nullptr);
  EXPECT_EQ(store().eventWithIdentifier("caf\u00c9"), nullptr);
  EXPECT_EQ(store().eventWithIdentifier("caf\xe9"), nullptr);
}

TEST_F(MemoryStoreTest, NewItemsAreNumberedByKind) {
  std::vector<std::string> names;
  for (int i = 0; i < 2; ++i) {
    const EventRef event = store().newEvent();
    event->setCalendar(work);
    ASSERT_TRUE(store().saveEvent(*event));
    names.emplace_back(*event->eventIdentifier());
    const ReminderRef reminder = store().newReminder();
    reminder->setCalendar(work);
    ASSERT_TRUE(store().saveReminder(*reminder));
    names.emplace_back(reminder->calendarItemIdentifier());
  }
  EXPECT_THAT(names, ElementsAre("new-1", "new-reminder-1", "new-2", "new-reminder-2"));
}

TEST_F(MemoryStoreTest, EachSaveTakesASecond) {
  const EventRef event = store().newEvent();
  event->setCalendar(work);
  ASSERT_TRUE(store().saveEvent(*event));
  EXPECT_EQ(event->lastModifiedDate(), noon + std::chrono::seconds(1));
  event->setStartDate(anHourLater);
  event->setEndDate(noon);
  ASSERT_FALSE(store().saveEvent(*event));  // takes none
  event->setEndDate(anHourLater);
  ASSERT_TRUE(store().saveEvent(*event));
  EXPECT_EQ(event->lastModifiedDate(), noon + std::chrono::seconds(2));
}

TEST_F(MemoryStoreTest, SaveReachesTheEntryThatWasFetched) {
  contents.events.push_back(makeEvent("same", work));
  contents.events.push_back(makeEvent("same", work));
  const auto found = store().eventsMatchingPredicate({noon, anHourLater, std::nullopt});
  ASSERT_EQ(found.size(), 2u);
  found[1]->setTitle("second");
  ASSERT_TRUE(store().saveEvent(*found[1]));
  EXPECT_THAT(titlesIn(store(), noon, anHourLater), ElementsAre("same", "second"));
  ASSERT_TRUE(store().removeEvent(*found[0]));
  EXPECT_THAT(titlesIn(store(), noon, anHourLater), ElementsAre("second"));
}

TEST_F(MemoryStoreTest, SavedOccurrenceDateIsKept) {
  contents.events.push_back(makeEvent("e", work));
  const EventRef event = store().eventWithIdentifier("e");
  event->setStartDate(noon + std::chrono::minutes(30));
  ASSERT_TRUE(store().saveEvent(*event));
  EXPECT_EQ(event->occurrenceDate(), noon);
}

TEST_F(MemoryStoreTest, ItemsWithoutACalendarAreNotSaved) {
  const EventRef event = store().newEvent();
  EXPECT_EQ(store().saveEvent(*event).error, "The event has no calendar.");
  const ReminderRef reminder = store().newReminder();
  EXPECT_EQ(store().saveReminder(*reminder).error, "The reminder has no list.");
}

TEST_F(MemoryStoreTest, ItemsThatWereNeverSavedAreNotRemoved) {
  EXPECT_EQ(store().removeEvent(*store().newEvent()).error, "The event does not exist.");
  EXPECT_EQ(store().removeReminder(*store().newReminder()).error, "The reminder does not exist.");
}

AccessResult requestAccess(Store& store) {
  std::promise<AccessResult> promise;
  store.requestFullAccessToEvents([&](AccessResult result) { promise.set_value(result); });
  return promise.get_future().get();
}

TEST_F(MemoryStoreTest, AccessIsGrantedWhereNothingWasDecided) {
  contents.eventsStatus = notDetermined;
  contents.remindersStatus = denied;
  EXPECT_EQ(store().authorizationStatusForEntityType(EntityType::event), notDetermined);
  EXPECT_TRUE(requestAccess(store()).granted);
  EXPECT_EQ(store().authorizationStatusForEntityType(EntityType::event), fullAccess);
  EXPECT_EQ(store().authorizationStatusForEntityType(EntityType::reminder), denied);
}

TEST_F(MemoryStoreTest, AccessStaysDenied) {
  for (const AuthorizationStatus status : {restricted, denied, writeOnly}) {
    contents.eventsStatus = status;
    const auto store = makeMemoryStore(contents);
    EXPECT_FALSE(requestAccess(*store).granted);
    EXPECT_EQ(store->authorizationStatusForEntityType(EntityType::event), status);
  }
}

}  // namespace
}  // namespace tidemark
