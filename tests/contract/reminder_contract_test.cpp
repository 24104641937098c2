// Fetches and look-ups of reminders.
#include <gmock/gmock.h>

#include <atomic>
#include <utility>

#include "tests/contract/store_contract.h"

namespace tidemark {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

DateComponents day(int year, int month, int dayOfMonth) {
  DateComponents components;
  components.year = year;
  components.month = month;
  components.day = dayOfMonth;
  return components;
}

DateComponents time(int year, int month, int dayOfMonth, int hour, int minute) {
  DateComponents components = day(year, month, dayOfMonth);
  components.hour = hour;
  components.minute = minute;
  return components;
}

TEST_P(StoreContract, IncompleteAreHeldByTheirDueDate) {
  const std::string tasks = fixture().addCalendar({"Tasks", EntityType::reminder});
  fixture().addReminder({tasks, "Call", time(2025, 3, 3, 10, 30)});
  fixture().addReminder({tasks, "Someday"});
  const Instant due = instant(2025, 3, 3, 10, 30);
  EXPECT_THAT(titles(incomplete(due, instant(2025, 3, 3, 11))), ElementsAre("Call"));
  EXPECT_THAT(titles(incomplete(instant(2025, 3, 3), due)), IsEmpty());
  EXPECT_THAT(titles(incomplete(instant(2025, 3, 3, 10, 30, 1), instant(2025, 3, 4))), IsEmpty());
  EXPECT_THAT(titles(incomplete(due, due)), IsEmpty());
  EXPECT_THAT(titles(incomplete(instant(2025, 3, 4), instant(2025, 3, 3))), IsEmpty());
  EXPECT_THAT(titles(completed(instant(2025, 1, 1), instant(2026, 1, 1))), IsEmpty());
}

TEST_P(StoreContract, IncompleteWithoutALowerEnd) {
  const std::string tasks = fixture().addCalendar({"Tasks", EntityType::reminder});
  fixture().addReminder({tasks, "Old", day(1999, 1, 1)});
  fixture().addReminder({tasks, "Late", day(2025, 3, 2)});
  fixture().addReminder({tasks, "Next", day(2025, 3, 4)});
  fixture().addReminder({tasks, "Someday"});
  EXPECT_THAT(titles(fetch({ReminderPredicate::Kind::incompleteByDueDate, std::nullopt,
                            instant(2025, 3, 4), std::nullopt})),
              ElementsAre("Late", "Old"));
}

TEST_P(StoreContract, CompletedAreHeldByTheirCompletionDate) {
  const std::string tasks = fixture().addCalendar({"Tasks", EntityType::reminder});
  const Instant done = instant(2025, 3, 3, 12);
  fixture().addReminder({tasks, "Done", day(2024, 1, 1), done});
  fixture().addReminder({tasks, "Done without a date for it", std::nullopt, done});
  EXPECT_THAT(titles(completed(done, instant(2025, 3, 3, 13))),
              ElementsAre("Done", "Done without a date for it"));
  EXPECT_THAT(titles(completed(instant(2025, 3, 3), done)), IsEmpty());
  EXPECT_THAT(titles(incomplete(instant(2020, 1, 1), instant(2030, 1, 1))), IsEmpty());
}

// Expects 25 April 2025 to be due at that instant and not earlier.
void expectDayDueAt(StoreContract& test, Instant midnight) {
  const std::string tasks = test.fixture().addCalendar({"Tasks", EntityType::reminder});
  test.fixture().addReminder({tasks, "Day", day(2025, 4, 25)});
  const auto second = std::chrono::seconds(1);
  EXPECT_THAT(titles(test.incomplete(midnight, midnight + second)), ElementsAre("Day"));
  EXPECT_THAT(titles(test.incomplete(midnight - std::chrono::hours(24), midnight)), IsEmpty());
}

TEST_P(StoreContract, DayIsDueAtMidnightUtc) {
  expectDayDueAt(*this, instant(2025, 4, 25));
}

TEST_P(StoreContract, DayIsDueAtMidnightEastOfUtc) {
  setLocalZone("Asia/Tokyo");
  expectDayDueAt(*this, instant(2025, 4, 24, 15));
}

TEST_P(StoreContract, DayIsDueAtMidnightWestOfUtc) {
  setLocalZone("America/Los_Angeles");
  expectDayDueAt(*this, instant(2025, 4, 25, 7));
}

TEST_P(StoreContract, DayWithoutMidnightIsDueAtItsStart) {
  setLocalZone("Africa/Cairo");  // the clocks skip from midnight to one
  expectDayDueAt(*this, instant(2025, 4, 24, 22));
}

TEST_P(StoreContract, DueDateKeepsItsComponents) {
  const std::string tasks = fixture().addCalendar({"Tasks", EntityType::reminder});
  DateComponents zoned = time(2025, 3, 3, 10, 15);
  zoned.second = 0;
  zoned.timeZone = "UTC";
  const std::string onDay = fixture().addReminder({tasks, "Day", day(2025, 3, 3)});
  const std::string inZone = fixture().addReminder({tasks, "UTC", zoned});
  const std::string none = fixture().addReminder({tasks, "None"});
  const ReminderRef dayItem = store().calendarItemWithIdentifier(onDay);
  const ReminderRef zoneItem = store().calendarItemWithIdentifier(inZone);
  const ReminderRef noneItem = store().calendarItemWithIdentifier(none);
  ASSERT_TRUE(dayItem && zoneItem && noneItem);
  EXPECT_EQ(dayItem->dueDateComponents(), day(2025, 3, 3));
  ASSERT_TRUE(zoneItem->dueDateComponents().has_value());
  EXPECT_EQ(zoneItem->dueDateComponents()->hour, 10);
  EXPECT_EQ(zoneItem->dueDateComponents()->minute, 15);
  EXPECT_EQ(zoneItem->dueDateComponents()->timeZone, "UTC");
  EXPECT_FALSE(noneItem->dueDateComponents().has_value());
}

TEST_P(StoreContract, SelectionOfLists) {
  const std::string tasks = fixture().addCalendar({"Tasks", EntityType::reminder});
  const std::string errands = fixture().addCalendar({"Errands", EntityType::reminder});
  fixture().addReminder({tasks, "Report", day(2025, 3, 3)});
  fixture().addReminder({errands, "Milk", day(2025, 3, 3)});
  const auto chosen = [&](CalendarSelection lists) {
    return titles(fetch({ReminderPredicate::Kind::incompleteByDueDate, instant(2025, 3, 1),
                         instant(2025, 4, 1), std::move(lists)}));
  };
  using Lists = std::vector<CalendarRef>;
  EXPECT_THAT(chosen(std::nullopt), ElementsAre("Milk", "Report"));
  EXPECT_THAT(chosen(Lists{}), IsEmpty());
  EXPECT_THAT(chosen(Lists{calendar(errands)}), ElementsAre("Milk"));
  EXPECT_THAT(chosen(Lists{calendar(errands), calendar(tasks)}), ElementsAre("Milk", "Report"));
}

TEST_P(StoreContract, FetchesUnderWayTogetherEachCompleteOnce) {
  const std::string tasks = fixture().addCalendar({"Tasks", EntityType::reminder});
  fixture().addReminder({tasks, "Open", day(2025, 3, 3)});
  fixture().addReminder({tasks, "Done", day(2025, 3, 3), instant(2025, 3, 3, 12)});
  struct Delivery {
    Arrivals arrivals;
    std::atomic<int> open{0};
    std::atomic<int> done{0};
  };
  const auto delivery = std::make_shared<Delivery>();
  const auto count = [delivery](std::atomic<int>& counter) {
    return [delivery, &counter](std::optional<std::vector<ReminderRef>> reminders) {
      if (reminders) counter += static_cast<int>(reminders->size());
      delivery->arrivals.arrive();
    };
  };
  constexpr int pairs = 20;
  for (int i = 0; i < pairs; ++i) {
    store().fetchRemindersMatchingPredicate(
        {ReminderPredicate::Kind::incompleteByDueDate, instant(2025, 1, 1), instant(2026, 1, 1),
         std::nullopt},
        count(delivery->open));
    store().fetchRemindersMatchingPredicate(
        {ReminderPredicate::Kind::completedByCompletionDate, instant(2025, 1, 1),
         instant(2026, 1, 1), std::nullopt},
        count(delivery->done));
  }
  ASSERT_TRUE(delivery->arrivals.waitFor(2 * pairs));
  EXPECT_EQ(delivery->arrivals.count(), 2 * pairs);
  EXPECT_EQ(delivery->open, pairs);
  EXPECT_EQ(delivery->done, pairs);
}

TEST_P(StoreContract, ReminderSaysWhatItIs) {
  const std::string tasks = fixture().addCalendar({"Tasks", EntityType::reminder});
  SeedReminder seed{tasks, "Call ☎", time(2025, 3, 3, 10, 30)};
  seed.priority = 5;
  seed.notes = "At home";
  const std::string identifier = fixture().addReminder(seed);
  const ReminderRef reminder = store().calendarItemWithIdentifier(identifier);
  ASSERT_NE(reminder, nullptr);
  EXPECT_EQ(reminder->calendarItemIdentifier(), identifier);
  EXPECT_EQ(reminder->title(), "Call ☎");
  ASSERT_NE(reminder->calendar(), nullptr);
  EXPECT_EQ(reminder->calendar()->calendarIdentifier, tasks);
  EXPECT_FALSE(reminder->isCompleted());
  EXPECT_EQ(reminder->priority(), 5);
  EXPECT_EQ(reminder->notes(), "At home");
  const ReminderRef bare =
      store().calendarItemWithIdentifier(fixture().addReminder({tasks, "Bare"}));
  ASSERT_NE(bare, nullptr);
  EXPECT_FALSE(bare->notes().has_value());
  EXPECT_EQ(bare->priority(), 0);
}

TEST_P(StoreContract, ReminderByIdentifier) {
  const std::string work = fixture().addCalendar({"Work"});
  const std::string tasks = fixture().addCalendar({"Tasks", EntityType::reminder});
  const std::string event =
      fixture().addEvent({work, "Event", instant(2025, 3, 3, 10), instant(2025, 3, 3, 11)});
  const std::string todo = fixture().addReminder({tasks, "Todo"});
  const std::string done =
      fixture().addReminder({tasks, "Done", std::nullopt, instant(2025, 3, 3, 12)});
  ASSERT_NE(store().calendarItemWithIdentifier(todo), nullptr);
  ASSERT_NE(store().calendarItemWithIdentifier(done), nullptr);
  EXPECT_TRUE(store().calendarItemWithIdentifier(done)->isCompleted());
  EXPECT_EQ(store().calendarItemWithIdentifier(event), nullptr);
  EXPECT_EQ(store().calendarItemWithIdentifier(tasks), nullptr);
  EXPECT_EQ(store().calendarItemWithIdentifier(""), nullptr);
  EXPECT_EQ(store().calendarItemWithIdentifier(todo + " "), nullptr);
}

TEST_P(StoreContract, NewReminderIsEmpty) {
  const ReminderRef reminder = store().newReminder();
  ASSERT_NE(reminder, nullptr);
  EXPECT_FALSE(reminder->title().has_value());
  EXPECT_EQ(reminder->calendar(), nullptr);
  EXPECT_FALSE(reminder->dueDateComponents().has_value());
  EXPECT_FALSE(reminder->notes().has_value());
  EXPECT_FALSE(reminder->isCompleted());
  EXPECT_EQ(reminder->priority(), 0);
}

TEST_P(StoreContract, SettersChangeTheReminderAlone) {
  const std::string tasks = fixture().addCalendar({"Tasks", EntityType::reminder});
  const std::string errands = fixture().addCalendar({"Errands", EntityType::reminder});
  const std::string identifier = fixture().addReminder({tasks, "Todo"});
  const ReminderRef reminder = store().calendarItemWithIdentifier(identifier);
  ASSERT_NE(reminder, nullptr);
  reminder->setTitle("");
  reminder->setNotes("n");
  reminder->setDueDateComponents(day(2025, 3, 3));
  reminder->setCompleted(true);
  reminder->setCalendar(calendar(errands));
  EXPECT_EQ(reminder->title(), "");
  EXPECT_EQ(reminder->notes(), "n");
  EXPECT_EQ(reminder->dueDateComponents(), day(2025, 3, 3));
  EXPECT_TRUE(reminder->isCompleted());
  EXPECT_EQ(reminder->calendar()->calendarIdentifier, errands);
  reminder->setNotes(std::nullopt);
  EXPECT_FALSE(reminder->notes().has_value());

  const ReminderRef stored = store().calendarItemWithIdentifier(identifier);
  ASSERT_NE(stored, nullptr);
  EXPECT_EQ(stored->title(), "Todo");
  EXPECT_FALSE(stored->dueDateComponents().has_value());
  EXPECT_FALSE(stored->isCompleted());
  EXPECT_EQ(stored->calendar()->calendarIdentifier, tasks);
}

}  // namespace
}  // namespace tidemark
