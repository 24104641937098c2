#include "store/local_time_zone.h"

#include <gtest/gtest.h>

#include "tests/support/time_zone.h"

namespace tidemark {
namespace {

using test::useTimeZone;

// What local time is ahead of UTC, in seconds.
int offset(const absl::TimeZone& zone) {
  return zone.At(absl::UnixEpoch()).offset;
}

TEST(LocalTimeZone, IsAnOffsetAsPosixWritesIt) {
  for (const auto& [variable, expected] :
       std::initializer_list<std::pair<const char*, int>>{{"UTC-2", 7200},
                                                          {"UTC-02", 7200},
                                                          {"UTC+3", -10'800},
                                                          {"EST5", -18'000},
                                                          {"NPT-5:45", 20'700},
                                                          {"XYZ1:02:03", -3723},
                                                          {"<+0530>-5:30", 19'800},
                                                          {"<-03>3", -10'800},
                                                          {"GMT0", 0},
                                                          {"FAR-24", 86'400}}) {
    const auto zone = fixedTimeZone(variable);
    ASSERT_TRUE(zone) << variable;
    EXPECT_EQ(offset(*zone), expected) << variable;
    useTimeZone(variable);
    EXPECT_EQ(offset(localTimeZone()), expected) << variable;
  }
}

TEST(LocalTimeZone, IsNoOffsetOtherwise) {
  for (const char* variable : {"",         "UTC",
                               "AB-2",     "2",
                               "-2",       "UTC-",
                               "UTC--2",   "UTC-2 ",
                               "UTC-25",   "UTC-2:",
                               "UTC-2:60", "UTC-1:2:3:4",
                               "UTC-2x",   "UTC-1,M3.5.0,M10.5.0",
                               "EST5EDT",  "Etc/GMT-2",
                               "<+02",     "<+02>",
                               "<>-",      "CET-1CEST,M3.5.0,M10.5.0/3"}) {
    EXPECT_FALSE(fixedTimeZone(variable)) << variable;
  }
}

TEST(LocalTimeZone, IsAZoneOfTheDatabase) {
  useTimeZone("Asia/Tokyo");
  EXPECT_EQ(localTimeZone().name(), "Asia/Tokyo");
  useTimeZone("Etc/GMT-2");
  EXPECT_EQ(offset(localTimeZone()), 7200);
  useTimeZone("EST5EDT");
  EXPECT_EQ(offset(localTimeZone()), -18'000);
}

}  // namespace
}  // namespace tidemark
