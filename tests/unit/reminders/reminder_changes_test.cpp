#include "reminders/reminder_changes.h"

#include <csignal>
#include <string>

#include "store/current_store.h"
#include "tests/support/command_test.h"

namespace tidemark {
namespace {

using test::at;
using test::CommandTest;
using test::ForwardingStore;
using test::makeCalendar;
using test::makeEvent;
using test::makeReminder;
using test::normalized;

class ReminderChangesTest : public CommandTest {
 protected:
  ReminderChangesTest() {
    contents.eventCalendars = {work};
    contents.events = {makeEvent("event", "Event", work, at("2025-03-01T12:00:00Z"))};
    contents.remindersLists = {food, home, shared};
    contents.defaultCalendarForNewReminders = home;
    contents.reminders = {makeReminder("bread", "Bread", food, 2025, 3, 5),
                          makeReminder("fixed", "Fixed", shared, 2025, 3, 5)};
  }

  std::size_t count() {
    memory();
    std::size_t reminders = 0;
    memory().change([&](MemoryContents& now) { reminders = now.reminders.size(); });
    return reminders;
  }
  ReminderRef stored(const char* identifier) {
    return store->calendarItemWithIdentifier(identifier);
  }

  const CalendarRef work = makeCalendar("work", "Work");
  const CalendarRef food = makeCalendar("food", "Food");
  const CalendarRef home = makeCalendar("home", "Home");
  const CalendarRef shared = makeCalendar("shared", "Shared", {.isWritable = false, .color = {}});
};

TEST_F(ReminderChangesTest, CreatesWithoutAnyField) {
  EXPECT_EQ(
      ask(R"({"id":1,"cmd":"reminder-create"})"),
      normalized(
          R"({"id":1,"reminder":{"id":"new-reminder-1","title":"","listId":"home","list":"Home",
                       "isCompleted":false,"priority":0,"hasDueTime":false,"writable":true}})"));
  EXPECT_EQ(count(), 3U);
}

TEST_F(ReminderChangesTest, CreatesInTheListThatIsNamed) {
  EXPECT_EQ(
      ask(R"({"cmd":"reminder-create","listId":"food","title":"Salt","dueDate":"2025-03-05T10:00:00Z"})"),
      normalized(R"({"reminder":{"id":"new-reminder-1","title":"Salt","listId":"food","list":"Food",
                       "isCompleted":false,"priority":0,"hasDueTime":true,"writable":true,
                       "dueDate":"2025-03-05T10:00:00Z"}})"));
}

TEST_F(ReminderChangesTest, DoesNotCreateInAListThatCannotBeUsed) {
  EXPECT_EQ(error(R"({"cmd":"reminder-create","listId":"nothing"})"), "unknown list: nothing");
  EXPECT_EQ(error(R"({"cmd":"reminder-create","listId":"work"})"), "unknown list: work");
  EXPECT_EQ(error(R"({"cmd":"reminder-create","listId":"shared"})"), "list is read-only: Shared");
  EXPECT_EQ(count(), 2U);
}

TEST_F(ReminderChangesTest, NeedsSomeListToCreate) {
  contents.defaultCalendarForNewReminders = nullptr;
  for (const char* members : {"", R"(,"listId":"nothing")", R"(,"listId":7)"}) {
    EXPECT_EQ(error(std::string(R"({"cmd":"reminder-create")") + members + "}"),
              "no reminders list to write to")
        << members;
  }
  EXPECT_EQ(count(), 2U);
}

TEST_F(ReminderChangesTest, UpdatesAndMoves) {
  EXPECT_EQ(
      ask(R"({"id":1,"cmd":"reminder-update","reminderId":"bread","title":"Rye","listId":"home","completed":true})"),
      normalized(R"({"id":1,"reminder":{"id":"bread","title":"Rye","listId":"home","list":"Home",
                       "isCompleted":true,"priority":0,"hasDueTime":false,"writable":true,
                       "dueDate":"2025-03-05T00:00:00Z"}})"));
  EXPECT_EQ(stored("bread")->title(), "Rye");
}

TEST_F(ReminderChangesTest, CompletesUnlessToldOtherwise) {
  for (const auto& [members, completed] : {std::pair("", true),
                                           {R"(,"completed":false)", false},
                                           {R"(,"completed":"false")", true},
                                           {R"(,"completed":false)", false},
                                           {R"(,"completed":0)", true},
                                           {R"(,"completed":true,"title":"x")", true}}) {
    ask(std::string(R"({"cmd":"reminder-complete","reminderId":"bread")") + members + "}");
    EXPECT_EQ(stored("bread")->isCompleted(), completed) << members;
  }
  EXPECT_EQ(stored("bread")->title(), "Bread");
}

TEST_F(ReminderChangesTest, Deletes) {
  EXPECT_EQ(ask(R"({"id":1,"cmd":"reminder-delete","reminderId":"bread"})"),
            R"({"id":1,"ok":true})");
  EXPECT_EQ(stored("bread"), nullptr);
}

TEST_F(ReminderChangesTest, FindsTheReminderTheSameWayForEachCommand) {
  for (const std::string command : {"reminder-update", "reminder-complete", "reminder-delete"}) {
    const std::string request = R"({"cmd":")" + command + "\"";
    EXPECT_EQ(error(request + "}"), "needs `reminderId`");
    EXPECT_EQ(error(request + R"(,"reminderId":7})"), "needs `reminderId`");
    EXPECT_EQ(error(request + R"(,"reminderId":"nothing","listId":"nothing"})"),
              "reminder not found: nothing");
    EXPECT_EQ(error(request + R"(,"reminderId":"event"})"), "reminder not found: event");
    EXPECT_EQ(error(request + R"(,"reminderId":"fixed","listId":"food"})"),
              "list is read-only: Shared");
  }
  EXPECT_EQ(count(), 2U);
  EXPECT_FALSE(stored("fixed")->isCompleted());
}

TEST_F(ReminderChangesTest, SavesNothingWhenAFieldFails) {
  EXPECT_EQ(
      error(R"({"cmd":"reminder-update","reminderId":"bread","title":"x","listId":"nothing"})"),
      "unknown list: nothing");
  EXPECT_EQ(
      error(R"({"cmd":"reminder-update","reminderId":"bread","title":"x","listId":"shared"})"),
      "list is read-only: Shared");
  EXPECT_EQ(stored("bread")->title(), "Bread");
}

class FailingStore : public ForwardingStore {
 public:
  using ForwardingStore::ForwardingStore;
  StoreResult saveReminder(Reminder&) override { return StoreResult::failure("The disk is full."); }
  StoreResult removeReminder(Reminder&) override { return StoreResult::failure("Still in use."); }
};

TEST_F(ReminderChangesTest, AnswersTheStoresErrorsInItsWords) {
  wrap<FailingStore>();
  EXPECT_EQ(error(R"({"cmd":"reminder-create"})"), "The disk is full.");
  EXPECT_EQ(error(R"({"cmd":"reminder-update","reminderId":"bread"})"), "The disk is full.");
  EXPECT_EQ(error(R"({"cmd":"reminder-complete","reminderId":"bread"})"), "The disk is full.");
  EXPECT_EQ(error(R"({"cmd":"reminder-delete","reminderId":"bread"})"), "Still in use.");
}

TEST_F(ReminderChangesTest, StopsTheProcessForAReminderWithoutAList) {
  contents.reminders = {makeReminder("lost", "Lost", nullptr, 2025, 3, 1)};
  memory();
  const Json request = *parseJson(R"({"reminderId":"lost"})");
  EXPECT_EXIT(deleteReminder(nullptr, *request.object()), testing::KilledBySignal(SIGABRT), "^$");
}

}  // namespace
}  // namespace tidemark
