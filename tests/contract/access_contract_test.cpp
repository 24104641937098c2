// Permission, calendars, and what a new store is.
#include <gmock/gmock.h>

#include <mutex>
#include <set>
#include <thread>

#include "tests/contract/store_contract.h"

namespace tidemark {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

std::vector<std::string> identifiers(const std::vector<CalendarRef>& calendars) {
  std::vector<std::string> result;
  for (const CalendarRef& calendar : calendars) result.push_back(calendar->calendarIdentifier);
  return result;
}

TEST_P(StoreContract, FixtureHasFullAccess) {
  EXPECT_EQ(store().authorizationStatusForEntityType(EntityType::event), fullAccess);
  EXPECT_EQ(store().authorizationStatusForEntityType(EntityType::reminder), fullAccess);
}

TEST_P(StoreContract, AccessRequestCompletesOnceOnAnotherThread) {
  struct Completions {
    Arrivals arrivals;
    std::mutex lock;
    std::set<std::thread::id> threads;
    int granted = 0;
    int errors = 0;
  };
  const auto completions = std::make_shared<Completions>();
  const AccessCompletion completion = [completions](AccessResult result) {
    {
      std::lock_guard guard(completions->lock);
      completions->threads.insert(std::this_thread::get_id());
      if (result.error) ++completions->errors;
      if (result.granted) ++completions->granted;
    }
    completions->arrivals.arrive();
  };
  constexpr int requests = 10;
  for (int i = 0; i < requests; i += 2) {
    store().requestFullAccessToEvents(completion);
    store().requestFullAccessToReminders(completion);
  }
  ASSERT_TRUE(completions->arrivals.waitFor(requests));

  // A request that comes later completes later: whatever completed twice would have by now.
  store().requestFullAccessToEvents(completion);
  ASSERT_TRUE(completions->arrivals.waitFor(requests + 1));
  std::lock_guard guard(completions->lock);
  EXPECT_EQ(completions->arrivals.count(), requests + 1);
  EXPECT_EQ(completions->threads.count(std::this_thread::get_id()), 0u);
  EXPECT_EQ(completions->granted, requests + 1);
  EXPECT_EQ(completions->errors, 0);
}

TEST_P(StoreContract, StatusAndResetAreCalledFromACompletion) {
  const auto arrivals = std::make_shared<Arrivals>();
  AuthorizationStatus status = notDetermined;
  store().requestFullAccessToReminders([&, arrivals](AccessResult) {
    store().reset();
    status = store().authorizationStatusForEntityType(EntityType::reminder);
    arrivals->arrive();
  });
  ASSERT_TRUE(arrivals->waitFor(1));
  EXPECT_EQ(status, fullAccess);
}

TEST_P(StoreContract, ResetLosesNothing) {
  const std::string work = fixture().addCalendar({"Work"});
  fixture().addEvent({work, "Tea", instant(2025, 3, 3, 10), instant(2025, 3, 3, 11)});
  ASSERT_THAT(titles(events()), ElementsAre("Tea"));
  store().reset();
  EXPECT_THAT(titles(events()), ElementsAre("Tea"));
  EXPECT_THAT(identifiers(store().calendarsForEntityType(EntityType::event)), ElementsAre(work));
}

TEST_P(StoreContract, EmptyStoreHasNothing) {
  EXPECT_THAT(store().calendarsForEntityType(EntityType::event), IsEmpty());
  EXPECT_THAT(store().calendarsForEntityType(EntityType::reminder), IsEmpty());
  EXPECT_EQ(store().defaultCalendarForNewEvents(), nullptr);
  EXPECT_EQ(store().defaultCalendarForNewReminders(), nullptr);
  EXPECT_THAT(events(), IsEmpty());
  EXPECT_THAT(incomplete(instant(2025, 1, 1), instant(2026, 1, 1)), IsEmpty());
  EXPECT_THAT(completed(instant(2025, 1, 1), instant(2026, 1, 1)), IsEmpty());
  EXPECT_EQ(store().eventWithIdentifier("nothing"), nullptr);
  EXPECT_EQ(store().calendarItemWithIdentifier("nothing"), nullptr);
}

TEST_P(StoreContract, CalendarsOfOneTypeAlone) {
  const std::string work = fixture().addCalendar({"Work"});
  const std::string home = fixture().addCalendar({"Home"});
  const std::string tasks = fixture().addCalendar({"Tasks", EntityType::reminder});
  EXPECT_THAT(identifiers(store().calendarsForEntityType(EntityType::event)),
              UnorderedElementsAre(work, home));
  EXPECT_THAT(identifiers(store().calendarsForEntityType(EntityType::reminder)),
              ElementsAre(tasks));
}

TEST_P(StoreContract, CalendarSaysWhatItIs) {
  const std::string open = fixture().addCalendar({"Öpen", EntityType::event, true});
  const std::string closed = fixture().addCalendar({"Closed", EntityType::reminder, false});
  ASSERT_NE(calendar(open), nullptr);
  ASSERT_NE(calendar(closed), nullptr);
  EXPECT_EQ(calendar(open)->title, "Öpen");
  EXPECT_TRUE(calendar(open)->allowsContentModifications);
  EXPECT_FALSE(calendar(closed)->allowsContentModifications);
  EXPECT_TRUE(calendar(open)->source.has_value());
  EXPECT_TRUE(calendar(closed)->source.has_value());
}

TEST_P(StoreContract, OrderOfCalendarsIsKept) {
  for (const char* title : {"b", "A", "c", "B", "a", "ä"}) fixture().addCalendar({title});
  const auto first = identifiers(store().calendarsForEntityType(EntityType::event));
  EXPECT_EQ(first.size(), 6u);
  events();
  EXPECT_EQ(identifiers(store().calendarsForEntityType(EntityType::event)), first);
  store().reset();
  EXPECT_EQ(identifiers(store().calendarsForEntityType(EntityType::event)), first);
}

TEST_P(StoreContract, NewCalendarShowsAtOnce) {
  EXPECT_THAT(store().calendarsForEntityType(EntityType::event), IsEmpty());
  const std::string late = fixture().addCalendar({"Late"});
  EXPECT_THAT(identifiers(store().calendarsForEntityType(EntityType::event)), ElementsAre(late));
}

TEST_P(StoreContract, CalendarOutlivesTheCall) {
  const std::string work = fixture().addCalendar({"Work"});
  const CalendarRef held = calendar(work);
  fixture().addCalendar({"Other"});
  store().calendarsForEntityType(EntityType::event);
  EXPECT_EQ(held->title, "Work");
}

}  // namespace
}  // namespace tidemark
