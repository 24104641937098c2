#include "store/local/text/date_value.h"

#include <gtest/gtest.h>

#include <limits>

namespace tidemark::local {
namespace {

TEST(DateValue, TellsDatesFromTimes) {
  const auto date = parseDateValue("19700102");
  ASSERT_TRUE(date);
  EXPECT_TRUE(date->isDate);
  EXPECT_EQ(date->wall, 86400);
  const auto time = parseDateValue("19700101T010203");
  ASSERT_TRUE(time);
  EXPECT_FALSE(time->isDate);
  EXPECT_FALSE(time->isUtc);
  EXPECT_EQ(time->wall, 3723);
  const auto utc = parseDateValue(" 19691231T235959Z ");
  ASSERT_TRUE(utc);
  EXPECT_TRUE(utc->isUtc);
  EXPECT_EQ(utc->wall, -1);
}

TEST(DateValue, ReachesFromTheFirstYearToTheLast) {
  EXPECT_EQ(parseDateValue("00010101")->wall, -62135596800);
  EXPECT_EQ(parseDateValue("99991231T235959Z")->wall, 253402300799);
}

TEST(DateValue, ReadsALeapSecondAsTheOneBefore) {
  EXPECT_EQ(parseDateValue("20161231T235960Z")->wall, parseDateValue("20161231T235959Z")->wall);
}

TEST(DateValue, RefusesWhatIsNoDay) {
  for (const char* text : {"",
                           "2025",
                           "20250229",
                           "20250001",
                           "20251301",
                           "20250100",
                           "20250132",
                           "00000101",
                           "20250101T",
                           "20250101T1000",
                           "20250101T240000",
                           "20250101T106000",
                           "20250101T100061",
                           "20250101 100000",
                           "20250101T100000X",
                           "20250101T1000000",
                           "2025-01-01",
                           "+2025010",
                           "20250101T100000+0100",
                           "2025010a",
                           "20250101,20250102"}) {
    EXPECT_FALSE(parseDateValue(text)) << text;
  }
}

TEST(DurationValue, AddsItsUnits) {
  const auto duration = parseDuration("P1DT2H3M4S");
  ASSERT_TRUE(duration);
  EXPECT_EQ(duration->days, 1);
  EXPECT_EQ(duration->seconds, 7384);
  EXPECT_EQ(parseDuration("P2W")->days, 14);
  EXPECT_EQ(parseDuration("+PT90M")->seconds, 5400);
  EXPECT_EQ(parseDuration("-P1D")->days, -1);
  EXPECT_EQ(parseDuration("PT0S")->seconds, 0);
}

TEST(DurationValue, RefusesWhatIsNone) {
  for (const char* text : {"", "P", "PT", "1D", "P1", "P1H", "PT1D", "PxD", "P-1D", "P1D2",
                           "P99999999999999999999D", "P9999999D"}) {
    EXPECT_FALSE(parseDuration(text)) << text;
  }
}

TEST(UtcOffsetValue, IsSignedSeconds) {
  EXPECT_EQ(parseUtcOffset("+0530"), 19800);
  EXPECT_EQ(parseUtcOffset("-033640"), -13000);
  EXPECT_EQ(parseUtcOffset("0100"), 3600);
  for (const char* text : {"", "+1", "+2400", "+0160", "+01000", "01:00", "+-100"}) {
    EXPECT_FALSE(parseUtcOffset(text)) << text;
  }
}

TEST(IntegerValue, IsCutToSixtyFourBits) {
  EXPECT_EQ(parseInteger(" +42 "), 42);
  EXPECT_EQ(parseInteger("-7"), -7);
  EXPECT_EQ(parseInteger("340282366920938463463374607431768211455"),
            std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(parseInteger("-340282366920938463463374607431768211455"),
            std::numeric_limits<std::int64_t>::min());
  for (const char* text : {"", "-", "+", "+-1", "1.5", "a", "1 2"}) {
    EXPECT_FALSE(parseInteger(text)) << text;
  }
}

}  // namespace
}  // namespace tidemark::local
