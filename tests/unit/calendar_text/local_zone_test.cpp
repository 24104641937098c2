// What depends on the process's zone; run once for each zone below.

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <string>

#include "tests/unit/calendar_text/support.h"

namespace tidemark::local {
namespace {

using testing::eventOf;
using testing::onlyItemOf;
using testing::startsOf;
using testing::utcTextOf;

struct Expected {
  std::string midsummer;     // the span of 2017-07-01
  std::string changeDay;     // the span of 2017-10-15, on which Sao Paulo skipped midnight
  std::string longDay;       // the span of 2018-02-17, the last hour of which Sao Paulo had twice
  std::string floatingNoon;  // 2017-07-01T12:00
  std::string dailyUntil;    // the last start of an all-day series with UNTIL=20170703T000000Z
};

const Expected& expected() {
  static const std::map<std::string, Expected> byZone = {
      {"Europe/Berlin",
       {"20170630T220000Z/20170701T215959Z", "20171014T220000Z/20171015T215959Z",
        "20180216T230000Z/20180217T225959Z", "20170701T100000Z", "20170702T220000Z"}},
      {"America/Los_Angeles",
       {"20170701T070000Z/20170702T065959Z", "20171015T070000Z/20171016T065959Z",
        "20180217T080000Z/20180218T075959Z", "20170701T190000Z", "20170702T070000Z"}},
      {"America/Sao_Paulo",
       {"20170701T030000Z/20170702T025959Z", "20171015T030000Z/20171016T015959Z",
        "20180217T020000Z/20180218T025959Z", "20170701T150000Z", "20170702T030000Z"}},
      {"UTC",
       {"20170701T000000Z/20170701T235959Z", "20171015T000000Z/20171015T235959Z",
        "20180217T000000Z/20180217T235959Z", "20170701T120000Z", "20170703T000000Z"}},
  };
  return byZone.at(std::getenv("TZ"));
}

std::string spanText(std::initializer_list<std::string_view> lines) {
  const Span span = spanOf(*onlyItemOf(eventOf(lines)));
  return utcTextOf(span.start) + "/" + utcTextOf(span.end);
}

TEST(LocalZone, IsWhatTheEnvironmentSays) {
  EXPECT_EQ(localZone().nameAt(0), std::getenv("TZ"));
  EXPECT_EQ(&localZone(), systemZone(std::getenv("TZ")));
}

TEST(LocalZone, HoldsAllDayEvents) {
  EXPECT_EQ(spanText({"DTSTART;VALUE=DATE:20170701"}), expected().midsummer);
  EXPECT_EQ(spanText({"DTSTART;VALUE=DATE:20171015"}), expected().changeDay);
  EXPECT_EQ(spanText({"DTSTART;VALUE=DATE:20180217"}), expected().longDay);
}

TEST(LocalZone, HoldsFloatingTimes) {
  EXPECT_EQ(utcTextOf(spanOf(*onlyItemOf(eventOf({"DTSTART:20170701T120000"}))).start),
            expected().floatingNoon);
}

TEST(LocalZone, HoldsEveryDayOfAnAllDaySeries) {
  const auto item = onlyItemOf(eventOf(
      {"DTSTART;VALUE=DATE:20171013", "RRULE:FREQ=DAILY;COUNT=5", "EXDATE;VALUE=DATE:20171014"}));
  const auto starts = startsOf(*item, "20171001T000000Z", "20171101T000000Z");
  ASSERT_EQ(starts.size(), 4u);
  EXPECT_EQ(starts[1], expected().changeDay.substr(0, 16));
}

TEST(LocalZone, ComparesAnUntilOfAllDaySeriesAsAnInstant) {
  const auto item = onlyItemOf(
      eventOf({"DTSTART;VALUE=DATE:20170630", "RRULE:FREQ=DAILY;UNTIL=20170703T000000Z"}));
  const auto starts = startsOf(*item, "20170601T000000Z", "20170801T000000Z");
  ASSERT_FALSE(starts.empty());
  EXPECT_EQ(starts.back(), expected().dailyUntil);
}

}  // namespace
}  // namespace tidemark::local
