#include "store/local_dates.h"

#include <gtest/gtest.h>

#include <string>

#include "codec/dates.h"
#include "tests/support/command_test.h"

namespace tidemark {
namespace {

using test::at;
using test::day;
using test::useTimeZone;

DateComponents timed(int year, int month, int dayOfMonth, int hour, int minute) {
  DateComponents components = day(year, month, dayOfMonth);
  components.hour = hour;
  components.minute = minute;
  return components;
}

std::string instant(const DateComponents& components) {
  const auto found = instantOf(components);
  return found ? std::string(iso.format(*found).view()) : "none";
}

TEST(LocalDates, TakesWhatHasNoZoneForLocal) {
  useTimeZone("Etc/GMT-2");
  EXPECT_EQ(instant(day(2025, 3, 1)), "2025-02-28T22:00:00Z");
  EXPECT_EQ(instant(timed(2025, 3, 1, 0, 0)), "2025-02-28T22:00:00Z");
  EXPECT_EQ(instant(timed(2025, 3, 1, 9, 30)), "2025-03-01T07:30:00Z");
}

TEST(LocalDates, TakesAZoneThatIsNamed) {
  useTimeZone("America/Los_Angeles");
  for (const auto& [zone, expected] : std::initializer_list<std::pair<const char*, const char*>>{
           {"UTC", "2025-07-01T09:30:00Z"},
           {"Europe/Berlin", "2025-07-01T07:30:00Z"},
           {"GMT+0200", "2025-07-01T07:30:00Z"},
           {"GMT-0930", "2025-07-01T19:00:00Z"},
           {"Nowhere/Nothing", "none"},
           {"GMT+02x0", "none"},
           {"GMT+02", "none"},
           {"GMT*0200", "none"},
           {"GMT+0260", "none"},
           {"", "none"}}) {
    DateComponents components = timed(2025, 7, 1, 9, 30);
    components.timeZone = zone;
    EXPECT_EQ(instant(components), expected) << zone;
  }
}

TEST(LocalDates, CountsSecondsAndFillsUpTheTimeFromTheHourOn) {
  useTimeZone("UTC");
  DateComponents components = day(2025, 3, 1);
  components.hour = 9;
  EXPECT_EQ(instant(components), "2025-03-01T09:00:00Z");
  components.second = 7;
  EXPECT_EQ(instant(components), "2025-03-01T09:00:07Z");
}

TEST(LocalDates, NeedsTheWholeDay) {
  DateComponents components;
  components.hour = 9;
  EXPECT_EQ(instant(components), "none");
  components.year = 2025;
  components.month = 3;
  EXPECT_EQ(instant(components), "none");
}

TEST(LocalDates, ReadsASkippedTimeWithTheOffsetBefore) {
  useTimeZone("Europe/Berlin");
  EXPECT_EQ(instant(timed(2025, 3, 30, 2, 30)), "2025-03-30T01:30:00Z");
  EXPECT_EQ(instant(timed(2025, 10, 26, 2, 30)), "2025-10-26T00:30:00Z");  // the first of two
  useTimeZone("America/Sao_Paulo");
  EXPECT_EQ(instant(day(2018, 11, 4)), "2018-11-04T03:00:00Z");
  EXPECT_EQ(instant(timed(2018, 11, 4, 0, 30)), "2018-11-04T03:30:00Z");
}

TEST(LocalDates, ShowsWhatTheLocalClockShows) {
  useTimeZone("Etc/GMT-2");
  EXPECT_EQ(localComponents(at("2025-02-28T23:30:00Z"), Precision::day), day(2025, 3, 1));
  EXPECT_EQ(localComponents(at("2025-03-01T08:15:59Z"), Precision::minute),
            timed(2025, 3, 1, 10, 15));
  useTimeZone("America/Los_Angeles");
  EXPECT_EQ(localComponents(at("2025-03-01T01:00:00Z"), Precision::minute),
            timed(2025, 2, 28, 17, 0));
  const Instant before = at("1969-12-31T23:59:59Z") + std::chrono::milliseconds(500);
  EXPECT_EQ(localComponents(before, Precision::minute), timed(1969, 12, 31, 15, 59));
}

}  // namespace
}  // namespace tidemark
