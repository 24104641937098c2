#include "codec/dates.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "tests/support/time_zone.h"

namespace tidemark {
namespace {

std::optional<Instant> parsed(const std::string& text) {
  const Json json{Json::Value(text)};
  return parseDate(&json);
}

// What the text reads as, written again.
std::string roundTrip(const std::string& text) {
  const auto instant = parsed(text);
  return instant ? std::string(iso.format(*instant).view()) : "none";
}

std::string written(double seconds) {
  return std::string(iso.format(Instant(std::chrono::duration<double>(seconds))).view());
}

TEST(Dates, ReadsInternetDateTimes) {
  EXPECT_EQ(parsed("1970-01-01T00:00:00Z")->time_since_epoch().count(), 0);
  EXPECT_EQ(parsed("2025-03-01T09:30:00Z")->time_since_epoch().count(), 1740821400);
  EXPECT_EQ(roundTrip("2025-03-01T10:30:00+01:00"), "2025-03-01T09:30:00Z");
  EXPECT_EQ(roundTrip("2025-03-01T00:15:00-09:45"), "2025-03-01T10:00:00Z");
  EXPECT_EQ(roundTrip("2025-03-01T00:30:00+14:00"), "2025-02-28T10:30:00Z");
  EXPECT_EQ(roundTrip("2025-03-01T00:30:00-00:00"), "2025-03-01T00:30:00Z");
  EXPECT_EQ(roundTrip("0001-01-01T00:00:00Z"), "0001-01-01T00:00:00Z");
  EXPECT_EQ(roundTrip("9999-12-31T23:59:59Z"), "9999-12-31T23:59:59Z");
}

TEST(Dates, ReadsFractionsAndDropsThemInWriting) {
  EXPECT_EQ(parsed("1970-01-01T00:00:00.250Z")->time_since_epoch().count(), 0.25);
  EXPECT_EQ(parsed("1970-01-01T00:00:01.5Z")->time_since_epoch().count(), 1.5);
  EXPECT_DOUBLE_EQ(parsed("1970-01-01T00:00:00.123456789+00:00")->time_since_epoch().count(),
                   0.123456789);
  EXPECT_EQ(roundTrip("2025-03-01T09:30:00.250Z"), "2025-03-01T09:30:00Z");
  EXPECT_EQ(roundTrip("2025-03-01T10:30:15.750+01:00"), "2025-03-01T09:30:15Z");
  EXPECT_EQ(roundTrip("2025-03-01T09:30:00.999Z"), "2025-03-01T09:30:00Z");
  EXPECT_EQ(roundTrip("1969-12-31T23:59:59.500Z"), "1969-12-31T23:59:59Z");
}

TEST(Dates, EachReaderHasOneForm) {
  EXPECT_FALSE(iso.parse("2025-03-01T09:30:00.250Z"));
  EXPECT_FALSE(isoFractional.parse("2025-03-01T09:30:00Z"));
  EXPECT_FALSE(iso.parse("2025-03-01"));
  EXPECT_FALSE(isoFractional.parse("2025-03-01"));
}

TEST(Dates, RefusesOtherForms) {
  for (const char* text : {"",
                           "tomorrow",
                           "01/03/2025",
                           "2025-3-1",
                           "20250301",
                           "2025-03-01T",
                           "2025-03-01T09:30",
                           "2025-03-01T09:30:00",
                           "2025-03-01T09:30Z",
                           "2025-03-01 09:30:00Z",
                           "2025-03-01t09:30:00Z",
                           "2025-03-01T09:30:00z",
                           "2025-03-01T09:30:00+0100",
                           "2025-03-01T09:30:00+01",
                           "2025-03-01T09:30:00+1:00",
                           "2025-03-01T09:30:00 Z",
                           "2025-03-01T09:30:00Z ",
                           " 2025-03-01T09:30:00Z",
                           "2025-03-01T09:30:00ZZ",
                           "2025-03-01T09:30:00.Z",
                           "2025-03-01T09:30:00.5",
                           "2025-03-01T09:30:00,5Z",
                           "2025-03-01T09:30:00.-5Z",
                           "2025-03-01T09:30:00*01:00",
                           "2025-03-01 ",
                           " 2025-03-01",
                           "2025-03-011",
                           "2025-03-01Z",
                           "+2025-03-01",
                           "-025-03-01",
                           "2025/03/01",
                           "2025-03-0a",
                           "２025-03-01"}) {
    EXPECT_EQ(roundTrip(text), "none") << text;
  }
}

TEST(Dates, RefusesWhatNoCalendarOrClockShows) {
  for (const char* text :
       {"2025-02-29", "2025-00-10", "2025-13-01", "2025-01-00", "2025-01-32", "2025-04-31",
        "1900-02-29", "2025-02-29T00:00:00Z", "2025-03-01T24:00:00Z", "2025-03-01T09:60:00Z",
        "2025-03-01T23:59:60Z", "2025-03-01T09:30:00+24:00", "2025-03-01T09:30:00+01:60"}) {
    EXPECT_EQ(roundTrip(text), "none") << text;
  }
  EXPECT_EQ(roundTrip("2024-02-29T00:00:00Z"), "2024-02-29T00:00:00Z");
  EXPECT_EQ(roundTrip("2000-02-29T00:00:00Z"), "2000-02-29T00:00:00Z");
}

TEST(Dates, ReadsStringsAlone) {
  EXPECT_FALSE(parseDate(nullptr));
  for (const char* json :
       {"null", "true", "1740821400", "1740821400000", "{}", "[\"2025-03-01\"]"}) {
    const Json value = *parseJson(json);
    EXPECT_FALSE(parseDate(&value)) << json;
  }
}

TEST(Dates, ReadsADayAsItsLocalMidnight) {
  test::useTimeZone("Etc/GMT-2");  // two hours ahead of UTC
  EXPECT_EQ(roundTrip("2025-03-01"), "2025-02-28T22:00:00Z");
  test::useTimeZone("America/Los_Angeles");
  EXPECT_EQ(roundTrip("2025-03-01"), "2025-03-01T08:00:00Z");
  EXPECT_EQ(roundTrip("2025-07-01"), "2025-07-01T07:00:00Z");
  test::useTimeZone("UTC");
  EXPECT_EQ(roundTrip("2025-03-01"), "2025-03-01T00:00:00Z");
}

TEST(Dates, ReadsADayWithoutMidnightAsItsFirstInstant) {
  test::useTimeZone("America/Sao_Paulo");  // on that day the clocks went from 24:00 to 01:00
  EXPECT_EQ(roundTrip("2018-11-04"), "2018-11-04T03:00:00Z");
  EXPECT_EQ(roundTrip("2018-11-05"), "2018-11-05T02:00:00Z");
  test::useTimeZone("America/Havana");  // on that day midnight came twice
  EXPECT_EQ(roundTrip("2024-11-03"), "2024-11-03T04:00:00Z");
}

TEST(Dates, WritesInstantsBeforeTheEpoch) {
  EXPECT_EQ(written(-1), "1969-12-31T23:59:59Z");
  EXPECT_EQ(written(-0.25), "1969-12-31T23:59:59Z");
  EXPECT_EQ(written(-86400), "1969-12-31T00:00:00Z");
  EXPECT_EQ(written(-62135596800), "0001-01-01T00:00:00Z");
}

TEST(Dates, WritesWhatItsFormCannotSayAsTheNearest) {
  EXPECT_EQ(written(1e300), "9999-12-31T23:59:59Z");
  EXPECT_EQ(written(-1e300), "0000-01-01T00:00:00Z");
  EXPECT_EQ(written(std::numeric_limits<double>::infinity()), "9999-12-31T23:59:59Z");
  EXPECT_EQ(written(std::numeric_limits<double>::quiet_NaN()), "0000-01-01T00:00:00Z");
}

// Against the C library, over days of all kinds of years.
TEST(Dates, WritesEveryDayAsTheCLibraryDoes) {
  for (std::int64_t seconds = -60000000000; seconds < 250000000000; seconds += 86400 * 97 + 12345) {
    const std::time_t time = seconds;
    std::tm fields{};
    ::gmtime_r(&time, &fields);
    char expected[64];
    std::snprintf(expected, sizeof expected, "%04d-%02d-%02dT%02d:%02d:%02dZ",
                  fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday, fields.tm_hour,
                  fields.tm_min, fields.tm_sec);
    ASSERT_EQ(written(static_cast<double>(seconds)), expected);
  }
}

}  // namespace
}  // namespace tidemark
