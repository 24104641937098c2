// Rules that ask for more than anybody has time for. The limits on time are wide, since machines
// differ; without the bounds they test each case takes seconds to years.

#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <string>

#include "store/local/text/civil.h"
#include "tests/unit/calendar_text/support.h"

namespace tidemark::local {
namespace {

using testing::eventOf;
using testing::instant;
using testing::onlyItemOf;

// Tells a walk without end from a slow, instrumented build.
constexpr std::chrono::seconds limit(30);

std::size_t countOf(const std::string& text, UtcSeconds from, UtcSeconds to) {
  const auto begin = std::chrono::steady_clock::now();
  const auto item = onlyItemOf(text);
  EXPECT_TRUE(item) << text.substr(0, 200);
  if (!item) return 0;
  std::size_t count = 0;
  UtcSeconds last = std::numeric_limits<UtcSeconds>::min();
  forEachOccurrence(*item, from, to, [&](const Occurrence& occurrence) {
    EXPECT_LT(last, occurrence.start.toUtc());
    last = occurrence.start.toUtc();
    ++count;
    return true;
  });
  EXPECT_LT(std::chrono::steady_clock::now() - begin, limit) << text.substr(0, 200);
  return count;
}

std::size_t countOf(std::string_view start, std::string_view rule, std::string_view from,
                    std::string_view to) {
  return countOf(eventOf({"DTSTART:" + std::string(start), "RRULE:" + std::string(rule)}),
                 instant(from), instant(to));
}

std::size_t countOfAllTime(std::string_view start, std::string_view rule) {
  return countOf(eventOf({"DTSTART:" + std::string(start), "RRULE:" + std::string(rule)}),
                 std::numeric_limits<UtcSeconds>::min(), std::numeric_limits<UtcSeconds>::max());
}

TEST(RecurrenceBounds, AnswerHoldsOnlySoManyOfARule) {
  // The start is not the rule's.
  EXPECT_EQ(countOfAllTime("19000101T000000Z", "FREQ=SECONDLY"), maximumOccurrencesPerRule + 1);
  EXPECT_EQ(countOf("19000101T000000Z", "FREQ=SECONDLY", "20250101T000000Z", "20260101T000000Z"),
            maximumOccurrencesPerRule);
  EXPECT_EQ(
      countOf("19000101T000000Z", "FREQ=DAILY;BYHOUR=0,6,12,18;BYMINUTE=0,15,30,45;BYSECOND=0,30",
              "19000101T000001Z", "20500101T000000Z"),
      maximumOccurrencesPerRule);
}

TEST(RecurrenceBounds, FarWindowIsReachedAtOnce) {
  EXPECT_EQ(countOf("19000101T000000Z", "FREQ=SECONDLY", "20250101T000000Z", "20250101T000100Z"),
            60u);
  EXPECT_EQ(countOf("00010101T000000Z", "FREQ=SECONDLY;INTERVAL=7", "99990101T000000Z",
                    "99990101T000100Z"),
            8u);
  EXPECT_EQ(countOf("19000101T000000Z", "FREQ=MINUTELY;BYDAY=MO;BYHOUR=9;BYMINUTE=30",
                    "20250101T000000Z", "20250201T000000Z"),
            4u);
  EXPECT_EQ(countOf("00010101T000000Z", "FREQ=DAILY", "99991231T000000Z", "99991231T235959Z"), 1u);
}

TEST(RecurrenceBounds, HugeCountIsArithmetic) {
  EXPECT_EQ(countOf("20250101T000000Z", "FREQ=SECONDLY;COUNT=2147483647", "20930119T031400Z",
                    "20930119T031500Z"),
            7u)
      << "2147483646 seconds after the start is 2093-01-19T03:14:06Z";
  EXPECT_EQ(countOf("19000101T000000Z", "FREQ=DAILY;COUNT=9223372036854775807", "20250101T000000Z",
                    "20250108T000000Z"),
            7u);
  for (const char* rule :
       {"FREQ=DAILY;COUNT=2147483647;BYDAY=MO", "FREQ=WEEKLY;COUNT=2147483647;BYDAY=MO,TU,WE",
        "FREQ=WEEKLY;COUNT=2147483647;BYMONTH=1", "FREQ=MONTHLY;COUNT=2147483647",
        "FREQ=MONTHLY;COUNT=2147483647;BYDAY=MO;BYSETPOS=-1", "FREQ=YEARLY;COUNT=2147483647",
        "FREQ=YEARLY;COUNT=2147483647;BYDAY=20MO", "FREQ=YEARLY;COUNT=2147483647;BYWEEKNO=20",
        "FREQ=HOURLY;COUNT=2147483647;BYDAY=MO", "FREQ=SECONDLY;COUNT=2147483647;BYSECOND=0"}) {
    EXPECT_LE(countOf("19000101T000000Z", rule, "20250101T000000Z", "20260101T000000Z"), 10'000u)
        << rule;
  }
}

TEST(RecurrenceBounds, HugeIntervalIsHarmless) {
  for (const char* frequency :
       {"SECONDLY", "MINUTELY", "HOURLY", "DAILY", "WEEKLY", "MONTHLY", "YEARLY"}) {
    for (const char* interval :
         {"2147483647", "9223372036854775807", "99999999999999999999999999"}) {
      const std::string rule =
          "FREQ=" + std::string(frequency) + ";INTERVAL=" + std::string(interval);
      EXPECT_GE(countOfAllTime("20250101T000000Z", rule), 1u) << rule;
      EXPECT_LE(countOfAllTime("20250101T000000Z", rule), 200u) << rule;
      EXPECT_GE(countOfAllTime("20250101T000000Z", rule + ";COUNT=2147483647"), 1u) << rule;
      EXPECT_EQ(countOfAllTime("20250101T000000Z", rule + ";COUNT=1"), 1u) << rule;
    }
  }
}

TEST(RecurrenceBounds, RuleThatNeverMatchesGivesUp) {
  for (const char* rule :
       {"FREQ=YEARLY;BYMONTH=2;BYMONTHDAY=30", "FREQ=DAILY;BYMONTH=2;BYMONTHDAY=30",
        "FREQ=MONTHLY;BYMONTH=4;BYMONTHDAY=31", "FREQ=MONTHLY;INTERVAL=12;BYMONTHDAY=31;BYMONTH=2",
        "FREQ=MONTHLY;BYDAY=6MO", "FREQ=MONTHLY;BYDAY=MO;BYSETPOS=7",
        "FREQ=MONTHLY;BYMONTHDAY=13;BYDAY=1FR", "FREQ=YEARLY;BYWEEKNO=53;BYMONTH=7",
        "FREQ=YEARLY;BYYEARDAY=366;BYMONTH=1", "FREQ=YEARLY;BYDAY=MO;BYMONTH=1;BYSETPOS=366",
        "FREQ=HOURLY;BYMONTH=2;BYMONTHDAY=30", "FREQ=SECONDLY;INTERVAL=2;BYSECOND=1",
        "FREQ=MINUTELY;INTERVAL=60;BYMINUTE=1", "FREQ=HOURLY;INTERVAL=24;BYHOUR=1",
        "FREQ=HOURLY;BYYEARDAY=366;BYMONTH=1", "FREQ=SECONDLY;INTERVAL=86400;BYHOUR=1",
        "FREQ=SECONDLY;BYSETPOS=2", "FREQ=DAILY;INTERVAL=7;BYDAY=SU"}) {
    EXPECT_EQ(countOfAllTime("20250101T000000Z", rule), 1u) << rule;
    EXPECT_EQ(countOf("00010101T000000Z", rule, "20250101T000000Z", "20260101T000000Z"), 0u)
        << rule;
  }
}

TEST(RecurrenceBounds, EndsOfTheCalendarAreReached) {
  EXPECT_EQ(countOfAllTime("99991230T000000Z", "FREQ=DAILY"), 2u);
  EXPECT_EQ(countOfAllTime("99991231T235958Z", "FREQ=SECONDLY"), 2u);
  EXPECT_EQ(countOfAllTime("99980101T000000Z", "FREQ=YEARLY"), 2u);
  EXPECT_EQ(countOfAllTime("99991101T000000Z", "FREQ=MONTHLY"), 2u);
  EXPECT_EQ(countOfAllTime("00010101T000000Z", "FREQ=YEARLY;INTERVAL=100"), 100u);
  EXPECT_EQ(
      countOf(eventOf({"DTSTART;TZID=Asia/Tokyo:00010101T000000", "RRULE:FREQ=YEARLY;COUNT=2"}),
              std::numeric_limits<UtcSeconds>::min(), instant("00100101T000000Z")),
      2u);
  EXPECT_EQ(
      countOf(eventOf({"DTSTART;TZID=America/New_York:99991231T235900", "RRULE:FREQ=MINUTELY"}),
              instant("99990101T000000Z"), std::numeric_limits<UtcSeconds>::max()),
      1u);
}

TEST(RecurrenceBounds, ManyExceptionsCostLittleEach) {
  constexpr DayNumber first = dayOf(1900, 1, 1);
  std::string lines = "DTSTART:19000101T000000Z\r\nRRULE:FREQ=DAILY\r\n";
  for (DayNumber day = first; day < first + 99'000; ++day) {
    const std::string text = testing::textOf(day * secondsPerDay);
    lines += day % 2 ? "EXDATE:" + text + "Z\r\n" : "EXDATE:" + text.substr(0, 8) + "\r\n";
  }
  EXPECT_EQ(countOf("BEGIN:VEVENT\r\n" + lines + "END:VEVENT\r\n", first * secondsPerDay,
                    (first + 100'000) * secondsPerDay),
            1'000u);
}

TEST(RecurrenceBounds, ManyDatesCostLittleEach) {
  std::string lines = "DTSTART:19000101T000000Z\r\nRDATE:20250101T000000Z";
  for (int index = 0; index < 100'000; ++index) {
    lines += "," + testing::textOf(instant("20990101T000000Z") - index * 3600) + "Z";
  }
  EXPECT_EQ(countOf("BEGIN:VEVENT\r\n" + lines + "\r\nEND:VEVENT\r\n", instant("19000101T000000Z"),
                    instant("21750101T000000Z")),
            100'002u);
}

TEST(RecurrenceBounds, ManyRulesAreCut) {
  std::string lines = "DTSTART:20250101T000000Z\r\n";
  for (int index = 1; index <= 5'000; ++index) {
    lines += "RRULE:FREQ=SECONDLY;INTERVAL=" + std::to_string(index) + "\r\n";
  }
  EXPECT_EQ(countOf("BEGIN:VEVENT\r\n" + lines + "END:VEVENT\r\n", instant("20250101T000000Z"),
                    instant("20250101T001000Z")),
            600u);
}

}  // namespace
}  // namespace tidemark::local
