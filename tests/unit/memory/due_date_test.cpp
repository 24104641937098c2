#include "store/memory/due_date.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>

namespace tidemark {
namespace {

Instant at(int year, unsigned month, unsigned day, int hour = 0, int minute = 0, int second = 0) {
  using namespace std::chrono;
  const sys_days midnight = std::chrono::year(year) / std::chrono::month(month) / day;
  return Instant(midnight) + hours(hour) + minutes(minute) + seconds(second);
}

DateComponents due(int year, int month, int day, std::optional<int> hour = {},
                   std::optional<int> minute = {}, std::optional<std::string> timeZone = {}) {
  DateComponents components;
  components.year = year;
  components.month = month;
  components.day = day;
  components.hour = hour;
  components.minute = minute;
  components.timeZone = std::move(timeZone);
  return components;
}

TEST(DueDate, LocalTime) {
  ::setenv("TZ", "Europe/Helsinki", 1);
  EXPECT_EQ(dueInstant(due(2025, 3, 3)), at(2025, 3, 2, 22));
  EXPECT_EQ(dueInstant(due(2025, 3, 3, 10, 15)), at(2025, 3, 3, 8, 15));
  ::setenv("TZ", "America/Los_Angeles", 1);
  EXPECT_EQ(dueInstant(due(2025, 3, 3)), at(2025, 3, 3, 8));
}

TEST(DueDate, TimesThatAreSkippedOrDoubled) {
  ::setenv("TZ", "Europe/Berlin", 1);
  EXPECT_EQ(dueInstant(due(2025, 3, 30, 2, 30)), at(2025, 3, 30, 1, 30));    // skipped
  EXPECT_EQ(dueInstant(due(2025, 10, 26, 2, 30)), at(2025, 10, 26, 0, 30));  // doubled
  ::setenv("TZ", "America/Santiago", 1);
  EXPECT_EQ(dueInstant(due(2025, 9, 7)), at(2025, 9, 7, 4));  // without a midnight
}

TEST(DueDate, OwnTimeZone) {
  ::setenv("TZ", "Asia/Tokyo", 1);
  EXPECT_EQ(dueInstant(due(2025, 3, 3, 10, 0, "UTC")), at(2025, 3, 3, 10));
  EXPECT_EQ(dueInstant(due(2025, 3, 3, 10, 0, "America/New_York")), at(2025, 3, 3, 15));
  EXPECT_EQ(dueInstant(due(2025, 3, 3, 10, 0, "GMT+0530")), at(2025, 3, 3, 4, 30));
  EXPECT_EQ(dueInstant(due(2025, 3, 3, 10, 0, "GMT-0330")), at(2025, 3, 3, 13, 30));
}

TEST(DueDate, WhatCannotBeResolved) {
  ::setenv("TZ", "UTC", 1);
  EXPECT_FALSE(dueInstant({}));
  for (auto missing : {&DateComponents::year, &DateComponents::month, &DateComponents::day}) {
    DateComponents components = due(2025, 3, 3, 10);
    components.*missing = std::nullopt;
    EXPECT_FALSE(dueInstant(components));
  }
  for (const char* zone : {"Nowhere/Nothing", "GMT+05", "GMT+0560", "GMT*0530", "GMT+o530"}) {
    EXPECT_FALSE(dueInstant(due(2025, 3, 3, 10, 0, zone))) << zone;
  }
}

}  // namespace
}  // namespace tidemark
