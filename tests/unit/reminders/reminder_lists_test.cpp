#include "reminders/reminder_lists.h"

#include "tests/support/command_test.h"

namespace tidemark {
namespace {

using test::CommandTest;
using test::makeCalendar;
using test::normalized;

class ReminderListsTest : public CommandTest {};

TEST_F(ReminderListsTest, AnswersAnEmptyStoreWithAnEmptyArray) {
  contents.eventCalendars = {makeCalendar("work", "Work")};
  EXPECT_EQ(ask(R"({"id":3,"cmd":"reminder-lists","lists":7})"), R"({"id":3,"lists":[]})");
}

TEST_F(ReminderListsTest, OrdersBySourceAndThenByTitle) {
  contents.remindersLists = {
      makeCalendar("1", "Food", {.source = "b", .color = {}}),
      makeCalendar("2", "Food", {.source = "a", .color = Color{ColorSpace::gray, {0.5}}}),
      makeCalendar("3", "Acts", {.source = "b", .isWritable = false, .color = {}})};
  EXPECT_EQ(ask(R"({"cmd":"reminder-lists"})"), normalized(R"({"lists":[
                {"id":"2","title":"Food","source":"a","sourceType":"local","writable":true,"color":"#808080"},
                {"id":"3","title":"Acts","source":"b","sourceType":"local","writable":false},
                {"id":"1","title":"Food","source":"b","sourceType":"local","writable":true}]})"));
}

TEST_F(ReminderListsTest, FindsListsAlone) {
  contents.eventCalendars = {makeCalendar("work", "Work")};
  contents.remindersLists = {makeCalendar("list", "First"), makeCalendar("list", "Second")};
  memory();
  EXPECT_EQ(reminderListWithId("list")->title, "First");
  for (const char* identifier : {"work", "List", "list ", ""})
    EXPECT_EQ(reminderListWithId(identifier), nullptr);
}

}  // namespace
}  // namespace tidemark
