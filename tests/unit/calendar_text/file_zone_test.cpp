// Zones that only a file describes.

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "store/local/zones/zone.h"
#include "tests/unit/calendar_text/support.h"

namespace tidemark::local {
namespace {

using testing::instant;
using testing::linesOf;
using testing::reading;

std::string observance(std::string_view kind, std::string_view start, std::string_view from,
                       std::string_view to, std::initializer_list<std::string_view> more = {}) {
  const std::string name(kind);
  return linesOf({"BEGIN:" + name, "DTSTART:" + std::string(start),
                  "TZOFFSETFROM:" + std::string(from), "TZOFFSETTO:" + std::string(to)}) +
         linesOf(more) + linesOf({"END:" + name});
}

std::string zoneOf(const std::string& observances) {
  return linesOf({"BEGIN:VTIMEZONE", "TZID:Test"}) + observances + linesOf({"END:VTIMEZONE"});
}

const std::string berlin = zoneOf(observance("DAYLIGHT", "19810329T020000", "+0100", "+0200",
                                             {"RRULE:FREQ=YEARLY;BYMONTH=3;BYDAY=-1SU"}) +
                                  observance("STANDARD", "19961027T030000", "+0200", "+0100",
                                             {"RRULE:FREQ=YEARLY;BYMONTH=10;BYDAY=-1SU"}));

const std::string newYork = zoneOf(observance("DAYLIGHT", "20070311T020000", "-0500", "-0400",
                                              {"RRULE:FREQ=YEARLY;BYMONTH=3;BYDAY=2SU"}) +
                                   observance("STANDARD", "20071104T020000", "-0400", "-0500",
                                              {"RRULE:FREQ=YEARLY;BYMONTH=11;BYDAY=1SU"}));

const std::string lordHowe = zoneOf(observance("DAYLIGHT", "20081005T020000", "+1030", "+1100",
                                               {"RRULE:FREQ=YEARLY;BYMONTH=10;BYDAY=1SU"}) +
                                    observance("STANDARD", "20080406T020000", "+1100", "+1030",
                                               {"RRULE:FREQ=YEARLY;BYMONTH=4;BYDAY=1SU"}));

void expectSame(const Zone& zone, const Zone& expected, std::string_view from,
                std::string_view to) {
  std::mt19937_64 random(7);
  std::uniform_int_distribution<std::int64_t> anyTime(instant(from), instant(to));
  for (int round = 0; round < 4'000; ++round) {
    const std::int64_t second = anyTime(random);
    ASSERT_EQ(zone.toWall(second), expected.toWall(second)) << testing::textOf(second);
    ASSERT_EQ(zone.toUtc(second), expected.toUtc(second)) << testing::textOf(second);
  }
}

TEST(FileZone, AgreesWithTheSystemsZone) {
  expectSame(*fileZone(berlin), *systemZone("Europe/Berlin"), "19970101T000000Z",
             "23000101T000000Z");
  expectSame(*fileZone(newYork), *systemZone("America/New_York"), "20070401T000000Z",
             "23000101T000000Z");
  expectSame(*fileZone(lordHowe), *systemZone("Australia/Lord_Howe"), "20081101T000000Z",
             "23000101T000000Z");
}

TEST(FileZone, KeepsGoingToTheLastYear) {
  const Zone& zone = *fileZone(berlin);
  EXPECT_EQ(zone.toUtc(reading("99990701T120000")), instant("99990701T100000Z"));
  EXPECT_EQ(zone.toUtc(reading("99991201T120000")), instant("99991201T110000Z"));
  EXPECT_EQ(zone.toWall(instant("25000701T100000Z")), reading("25000701T120000"));
}

TEST(FileZone, SkipsAndDoublesAsTheSystemsDo) {
  for (const char* year : {"2025", "2300"}) {
    const Zone& zone = *fileZone(berlin);
    const Zone& expected = *systemZone("Europe/Berlin");
    for (const char* change : {"0330T010000", "0331T010000", "1026T000000", "1028T000000"}) {
      const WallSeconds near = reading(std::string(year) + change);
      for (std::int64_t offset = 0; offset < 4 * 3600; offset += 600) {
        ASSERT_EQ(zone.toUtc(near + offset), expected.toUtc(near + offset))
            << testing::textOf(near + offset);
      }
    }
  }
}

TEST(FileZone, HoldsTheFirstOffsetBeforeTheFirstOnset) {
  const Zone& zone = *fileZone(newYork);
  EXPECT_EQ(zone.toWall(instant("19800701T120000Z")), reading("19800701T070000"));
  EXPECT_EQ(zone.toWall(instant("18000701T120000Z")), reading("18000701T070000"));
}

TEST(FileZone, MayHaveOneOffsetOrDates) {
  const Zone* const fixed =
      fileZone(zoneOf(observance("STANDARD", "16010101T000000", "+0530", "+0530")));
  ASSERT_TRUE(fixed);
  EXPECT_EQ(fixed->toUtc(reading("20250101T053000")), instant("20250101T000000Z"));
  const Zone* const dates = fileZone(zoneOf(
      observance("STANDARD", "20200101T000000", "+0000", "+0100",
                 {"RDATE:20210101T000000,20230101T000000"}) +
      observance("DAYLIGHT", "20200701T000000", "+0100", "+0000", {"RDATE:20220101T000000"})));
  ASSERT_TRUE(dates);
  EXPECT_EQ(dates->toWall(instant("20200301T000000Z")), reading("20200301T010000"));
  EXPECT_EQ(dates->toWall(instant("20200801T000000Z")), reading("20200801T000000"));
  EXPECT_EQ(dates->toWall(instant("20210801T000000Z")), reading("20210801T010000"));
  EXPECT_EQ(dates->toWall(instant("20220801T000000Z")), reading("20220801T000000"));
  EXPECT_EQ(dates->toWall(instant("24000801T000000Z")), reading("24000801T010000"));
}

TEST(FileZone, EndsARuleAtItsUntil) {
  const Zone* const zone = fileZone(
      zoneOf(observance("DAYLIGHT", "20000326T020000", "+0100", "+0200",
                        {"RRULE:FREQ=YEARLY;BYMONTH=3;BYDAY=-1SU;UNTIL=20050327T010000Z"}) +
             observance("STANDARD", "20001029T030000", "+0200", "+0100",
                        {"RRULE:FREQ=YEARLY;BYMONTH=10;BYDAY=-1SU;UNTIL=20051030T010000Z"})));
  EXPECT_EQ(zone->toWall(instant("20050701T000000Z")), reading("20050701T020000"));
  EXPECT_EQ(zone->toWall(instant("20060701T000000Z")), reading("20060701T010000"));
  EXPECT_EQ(zone->toWall(instant("22000701T000000Z")), reading("22000701T010000"));
}

TEST(FileZone, IsNamedByItsOffset) {
  EXPECT_EQ(fileZone(berlin)->nameAt(instant("20250701T000000Z")), "GMT+0200");
  EXPECT_EQ(fileZone(newYork)->nameAt(instant("20250101T000000Z")), "GMT-0500");
  EXPECT_EQ(fileZone(lordHowe)->nameAt(instant("20250701T000000Z")), "GMT+1030");
  EXPECT_EQ(
      fileZone(zoneOf(observance("STANDARD", "19700101T000000", "+0000", "+0000")))->nameAt(0),
      "GMT");
}

TEST(FileZone, IsTheSameForTheSameText) {
  EXPECT_EQ(fileZone(berlin), fileZone(std::string(berlin)));
  EXPECT_NE(fileZone(berlin), fileZone(newYork));
}

TEST(FileZone, IsNoneWhenNothingCanBeUsed) {
  EXPECT_EQ(fileZone(""), nullptr);
  EXPECT_EQ(fileZone(zoneOf("")), nullptr);
  EXPECT_EQ(fileZone(zoneOf(linesOf({"BEGIN:STANDARD", "TZOFFSETTO:+0100", "END:STANDARD"}))),
            nullptr);
  EXPECT_EQ(fileZone(zoneOf(observance("STANDARD", "19700101T000000", "+0100", "+9900"))), nullptr);
}

TEST(FileZone, PassesOverABadObservanceAlone) {
  const Zone* const zone =
      fileZone(zoneOf(observance("STANDARD", "sometime", "+0100", "+0200") +
                      observance("STANDARD", "19700101T000000", "+0300", "+0300",
                                 {"RRULE:FREQ=SECONDLY", "RRULE:FREQ=SOMETIMES", "RDATE:never"})));
  ASSERT_TRUE(zone);
  EXPECT_EQ(zone->toUtc(reading("20250101T030000")), instant("20250101T000000Z"));
}

}  // namespace
}  // namespace tidemark::local
