// Notifications: whoever changed the store, the observer hears of it.
//
// Each test asks the store something first: a store may read what it holds when it is first asked,
// and a change can only be told to a host that has been told what was there before.
#include "tests/contract/store_contract.h"

namespace tidemark {
namespace {

TEST_P(StoreContract, OutsideChangesAreNotified) {
  const std::string work = fixture().addCalendar({"Work"});
  const Arrivals& notifications = listen();
  events();
  int heard = notifications.count();
  std::vector<std::string> identifiers;
  for (int i = 0; i < 3; ++i) {
    identifiers.push_back(
        fixture().addEvent({work, "Event", instant(2025, 3, 3, 10), instant(2025, 3, 3, 11)}));
    ASSERT_TRUE(notifications.waitFor(heard + 1));
    heard = notifications.count();
  }
  fixture().removeEvent(identifiers.front());
  EXPECT_TRUE(notifications.waitFor(heard + 1));
}

TEST_P(StoreContract, NewCalendarIsNotified) {
  const Arrivals& notifications = listen();
  events();
  fixture().addCalendar({"Work"});
  EXPECT_TRUE(notifications.waitFor(1));
}

TEST_P(StoreContract, ChangeOfAReminderIsNotified) {
  const std::string tasks = fixture().addCalendar({"Tasks", EntityType::reminder});
  const Arrivals& notifications = listen();
  events();
  fixture().addReminder({tasks, "Todo"});
  EXPECT_TRUE(notifications.waitFor(1));
}

TEST_P(StoreContract, OwnChangesAreNotified) {
  if (!fixture().canWrite()) GTEST_SKIP() << "a store that cannot save";
  const std::string work = fixture().addCalendar({"Work"});
  const std::string tasks = fixture().addCalendar({"Tasks", EntityType::reminder});
  const Arrivals& notifications = listen();

  const EventRef event = store().newEvent();
  event->setCalendar(calendar(work));
  event->setTitle("Tea");
  event->setStartDate(instant(2025, 3, 3, 10));
  event->setEndDate(instant(2025, 3, 3, 11));
  ASSERT_TRUE(store().saveEvent(*event));
  ASSERT_TRUE(notifications.waitFor(1));

  const ReminderRef reminder = store().newReminder();
  reminder->setCalendar(calendar(tasks));
  reminder->setTitle("Todo");
  int heard = notifications.count();
  ASSERT_TRUE(store().saveReminder(*reminder));
  ASSERT_TRUE(notifications.waitFor(heard + 1));

  heard = notifications.count();
  ASSERT_TRUE(store().removeEvent(*event));
  ASSERT_TRUE(notifications.waitFor(heard + 1));

  heard = notifications.count();
  ASSERT_TRUE(store().removeReminder(*reminder));
  ASSERT_TRUE(notifications.waitFor(heard + 1));
}

TEST_P(StoreContract, StoreServesWhileTheLoopRuns) {
  const std::string work = fixture().addCalendar({"Work"});
  const Arrivals& notifications = listen();
  for (std::size_t i = 1; i <= 50; ++i) {
    fixture().addEvent({work, "Event", instant(2025, 3, 3, 10), instant(2025, 3, 3, 11)});
    ASSERT_EQ(events().size(), i);
  }
  EXPECT_TRUE(notifications.waitFor(1));
}

}  // namespace
}  // namespace tidemark
