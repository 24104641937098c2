// To-dos out of calendar text.

#include <gtest/gtest.h>

#include "tests/unit/calendar_text/support.h"

namespace tidemark::local {
namespace {

using testing::instant;
using testing::onlyItemOf;
using testing::reading;
using testing::todoOf;

TEST(TodoReader, NeedsNoProperties) {
  const auto item = onlyItemOf(todoOf({}));
  ASSERT_TRUE(item);
  ASSERT_TRUE(item->todo);
  EXPECT_EQ(item->kind, ItemKind::todo);
  EXPECT_FALSE(item->todo->due);
  EXPECT_FALSE(item->todo->completed);
  EXPECT_EQ(item->todo->status, TodoStatus::none);
  EXPECT_EQ(item->todo->priority, 0);
  EXPECT_EQ(item->todo->percentComplete, 0);
}

TEST(TodoReader, ReadsItsOwnProperties) {
  const auto item =
      onlyItemOf(todoOf({"DUE;TZID=Asia/Tokyo:20250101T100000", "COMPLETED:20250102T000000Z",
                         "STATUS:completed", "PERCENT-COMPLETE:50", "PRIORITY:9"}));
  EXPECT_EQ(item->todo->due->toUtc(), instant("20250101T010000Z"));
  EXPECT_EQ(item->todo->completed, instant("20250102T000000Z"));
  EXPECT_EQ(item->todo->status, TodoStatus::completed);
  EXPECT_EQ(item->todo->percentComplete, 50);
  EXPECT_EQ(item->todo->priority, 9);
}

TEST(TodoReader, KnowsEveryStatus) {
  const auto status = [](const char* line) { return onlyItemOf(todoOf({line}))->todo->status; };
  EXPECT_EQ(status("STATUS:NEEDS-ACTION"), TodoStatus::needsAction);
  EXPECT_EQ(status("STATUS:IN-PROCESS"), TodoStatus::inProcess);
  EXPECT_EQ(status("STATUS:CANCELLED"), TodoStatus::cancelled);
  EXPECT_EQ(status("STATUS:SOMEHOW"), TodoStatus::none);
}

TEST(TodoReader, PassesOverNumbersOutOfRange) {
  const auto item = onlyItemOf(todoOf({"PRIORITY:10", "PERCENT-COMPLETE:-1"}));
  EXPECT_EQ(item->todo->priority, 0);
  EXPECT_EQ(item->todo->percentComplete, 0);
}

TEST(TodoReader, IsDueAfterItsDuration) {
  const auto item = onlyItemOf(todoOf({"DTSTART;VALUE=DATE:20250101", "DURATION:P2D"}));
  EXPECT_TRUE(item->todo->due->isDate);
  EXPECT_EQ(item->todo->due->wall, reading("20250103"));
  // A day of the calendar, however many hours that day has; an hour is exact.
  const auto day =
      onlyItemOf(todoOf({"DTSTART;TZID=America/New_York:20250308T100000", "DURATION:P1D"}));
  EXPECT_EQ(day->todo->due->toUtc(), instant("20250309T140000Z"));
  const auto hours =
      onlyItemOf(todoOf({"DTSTART;TZID=America/New_York:20250308T100000", "DURATION:PT24H"}));
  EXPECT_EQ(hours->todo->due->toUtc(), instant("20250309T150000Z"));
  EXPECT_EQ(hours->todo->due->wall, reading("20250309T110000"));
  EXPECT_FALSE(onlyItemOf(todoOf({"DURATION:P1D"}))->todo->due);
}

TEST(TodoReader, PrefersDueToDuration) {
  const auto item =
      onlyItemOf(todoOf({"DTSTART:20250101T000000Z", "DURATION:P2D", "DUE:20250105T000000Z"}));
  EXPECT_EQ(item->todo->due->toUtc(), instant("20250105T000000Z"));
}

TEST(TodoReader, RepeatsByItsDueDateWhereItHasNoStart) {
  const auto item = onlyItemOf(todoOf({"DUE:20250101T000000Z", "RRULE:FREQ=DAILY"}));
  EXPECT_TRUE(item->series);
  EXPECT_FALSE(onlyItemOf(todoOf({"RRULE:FREQ=DAILY"}))->series);
}

}  // namespace
}  // namespace tidemark::local
