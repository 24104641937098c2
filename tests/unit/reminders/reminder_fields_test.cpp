#include "reminders/reminder_fields.h"

#include <string>

#include "host/failure.h"
#include "store/current_store.h"
#include "tests/support/command_test.h"

namespace tidemark {
namespace {

using test::CommandTest;
using test::day;
using test::makeCalendar;
using test::useTimeZone;

class ReminderFieldsTest : public CommandTest {
 protected:
  ReminderFieldsTest() {
    contents.eventCalendars = {makeCalendar("work", "Work")};
    contents.remindersLists = {
        makeCalendar("food", "Food"),
        makeCalendar("shared", "Shared", {.isWritable = false, .color = {}})};
    memory();
    reminder = store->newReminder();
    reminder->setTitle("Bread");
    reminder->setNotes("Dark");
    reminder->setDueDateComponents(day(2025, 3, 1));
    reminder->setCompleted(true);
  }

  void applyFields(const char* request) { applyReminder(*parseJson(request)->object(), *reminder); }

  std::string failureOf(const char* request) {
    try {
      applyFields(request);
    } catch (const Failure& failure) {
      return failure.message;
    }
    return "no failure";
  }

  ReminderRef reminder;
};

DateComponents timed(int year, int month, int dayOfMonth, int hour, int minute) {
  DateComponents components = day(year, month, dayOfMonth);
  components.hour = hour;
  components.minute = minute;
  return components;
}

TEST_F(ReminderFieldsTest, SetsEveryField) {
  applyFields(
      R"({"title":"Water","notes":"Cold","listId":"food","dueDate":"2025-03-02T10:15:59Z","completed":false})");
  EXPECT_EQ(reminder->title(), "Water");
  EXPECT_EQ(reminder->notes(), "Cold");
  EXPECT_EQ(reminder->calendar()->title, "Food");
  EXPECT_EQ(reminder->dueDateComponents(), timed(2025, 3, 2, 10, 15));
  EXPECT_FALSE(reminder->isCompleted());
}

TEST_F(ReminderFieldsTest, PassesOverWhatIsAbsentOrOfAnotherType) {
  for (const char* request :
       {"{}", R"({"title":null,"listId":null,"dueDate":null,"hasDueTime":null,"completed":null})",
        R"({"title":1,"listId":7,"dueDate":1740821400,"hasDueTime":false,"completed":"false"})",
        R"({"dueDate":"soon","hasDueTime":true,"completed":0})"}) {
    applyFields(request);
    EXPECT_EQ(reminder->title(), "Bread") << request;
    EXPECT_EQ(reminder->notes(), "Dark") << request;
    EXPECT_EQ(reminder->calendar(), nullptr) << request;
    EXPECT_EQ(reminder->dueDateComponents(), day(2025, 3, 1)) << request;
    EXPECT_TRUE(reminder->isCompleted()) << request;
  }
}

TEST_F(ReminderFieldsTest, RemovesNotesForAnythingThatIsNoText) {
  for (const char* request :
       {R"({"notes":""})", R"({"notes":null})", R"({"notes":7})", R"({"notes":{"a":"b"}})"}) {
    reminder->setNotes("Dark");
    applyFields(request);
    EXPECT_EQ(reminder->notes(), std::nullopt) << request;
  }
}

TEST_F(ReminderFieldsTest, SetsAnEmptyTitle) {
  applyFields(R"({"title":""})");
  EXPECT_EQ(reminder->title(), "");
}

TEST_F(ReminderFieldsTest, KeepsTheDueDateAsTheLocalClockShowsIt) {
  useTimeZone("Etc/GMT-2");
  applyFields(R"({"dueDate":"2025-03-01T23:30:00Z","hasDueTime":false})");
  EXPECT_EQ(reminder->dueDateComponents(), day(2025, 3, 2));
  for (const char* request : {R"({"dueDate":"2025-03-01T23:30:00Z"})",
                              R"({"dueDate":"2025-03-01T23:30:00Z","hasDueTime":true})",
                              R"({"dueDate":"2025-03-01T23:30:00Z","hasDueTime":0})"}) {
    applyFields(request);
    EXPECT_EQ(reminder->dueDateComponents(), timed(2025, 3, 2, 1, 30)) << request;
  }
  applyFields(R"({"dueDate":"2025-03-05"})");
  EXPECT_EQ(reminder->dueDateComponents(), timed(2025, 3, 5, 0, 0));
}

TEST_F(ReminderFieldsTest, FailsForAListThatCannotBeUsedAfterTitleAndNotes) {
  EXPECT_EQ(
      failureOf(
          R"({"title":"set","notes":"","listId":"shared","dueDate":"2025-05-05","completed":false})"),
      "list is read-only: Shared");
  EXPECT_EQ(reminder->title(), "set");
  EXPECT_EQ(reminder->notes(), std::nullopt);
  EXPECT_EQ(reminder->dueDateComponents(), day(2025, 3, 1));
  EXPECT_TRUE(reminder->isCompleted());
  EXPECT_EQ(failureOf(R"({"listId":"nothing"})"), "unknown list: nothing");
  EXPECT_EQ(failureOf(R"({"listId":"work"})"), "unknown list: work");
  EXPECT_EQ(reminder->calendar(), nullptr);
}

}  // namespace
}  // namespace tidemark
