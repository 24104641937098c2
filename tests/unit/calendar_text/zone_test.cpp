// The system's zones and how TZIDs name them.

#include "store/local/zones/zone.h"

#include <absl/time/civil_time.h>
#include <absl/time/time.h>
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "store/local/zones/windows_zones.h"
#include "store/local/zones/zone_name.h"
#include "tests/unit/calendar_text/support.h"

namespace tidemark::local {
namespace {

using testing::instant;
using testing::reading;

std::string nameOf(const Zone* zone) {
  return zone ? zone->nameAt(0) : "none";
}

TEST(SystemZone, IsFoundByName) {
  EXPECT_EQ(nameOf(systemZone("Europe/Berlin")), "Europe/Berlin");
  EXPECT_EQ(nameOf(systemZone("America/Argentina/Buenos_Aires")), "America/Argentina/Buenos_Aires");
  EXPECT_EQ(nameOf(systemZone("Etc/GMT+5")), "Etc/GMT+5");
  EXPECT_EQ(nameOf(systemZone("GMT")), "GMT");
  EXPECT_EQ(systemZone("UTC"), &utcZone());
  EXPECT_EQ(nameOf(systemZone("\"Europe/Berlin\"")), "Europe/Berlin");
}

TEST(SystemZone, IsTheSameHoweverItIsNamed) {
  const Zone* const zone = systemZone("Europe/Berlin");
  EXPECT_EQ(systemZone("/example.org/Olson_1/Europe/Berlin"), zone);
  EXPECT_EQ(systemZone("W. Europe Standard Time"), zone);
  EXPECT_EQ(systemZone("Europe/Berlin"), zone);
}

TEST(SystemZone, IsFoundBehindAVendorsPrefix) {
  EXPECT_EQ(nameOf(systemZone("/vendor.example/20240101_2/America/Argentina/Cordoba")),
            "America/Argentina/Cordoba");
  EXPECT_EQ(nameOf(systemZone("/Europe/Paris")), "Europe/Paris");
  EXPECT_EQ(systemZone("/vendor.example/Zones/UTC"), &utcZone());
  EXPECT_EQ(systemZone("right/Europe/Berlin"), systemZone("Europe/Berlin"));
  EXPECT_EQ(systemZone("Europe/../Europe/Berlin"), systemZone("Europe/Berlin"));
  // The vendor's own word, not the database's old name.
  EXPECT_EQ(systemZone("/vendor.example/EST"), nullptr);
}

TEST(SystemZone, IsFoundInAnyCase) {
  const auto noonIn = [](const Zone* zone) {
    return zone ? testing::textOf(zone->toUtc(reading("20250701T120000"))) : "none";
  };
  EXPECT_EQ(noonIn(systemZone("europe/berlin")), "20250701T100000");
  EXPECT_EQ(noonIn(systemZone("AMERICA/ARGENTINA/BUENOS_AIRES")), "20250701T150000");
  EXPECT_EQ(noonIn(systemZone("/vendor.example/Zones/america/port-au-prince")), "20250701T160000");
  EXPECT_EQ(noonIn(systemZone("gmt")), "20250701T120000");
  for (const char* tzid : {"europe", "LocalTime", "RIGHT", "Right/Nowhere", "nowhere/land"}) {
    EXPECT_EQ(noonIn(systemZone(tzid)), "none") << tzid;
  }
}

TEST(SystemZone, IsNothingElseThatTheDatabaseMightOpen) {
  for (const char* tzid : {"",
                           "/",
                           "//",
                           ".",
                           "..",
                           "../../../etc/passwd",
                           "/etc/passwd",
                           "/etc/localtime",
                           "localtime",
                           "posixrules",
                           "Fixed/UTC+01:00:00",
                           "Factory",
                           "Europe",
                           "Europe/",
                           "Europe//Berlin",
                           "Europe/./Berlin",
                           "tzdata.zi",
                           "zone.tab",
                           "leapseconds",
                           "Europe/Berlin\n",
                           "file:/etc/localtime",
                           "/usr/share/zoneinfo/localtime",
                           "Nowhere/Land"}) {
    EXPECT_EQ(systemZone(tzid), nullptr) << tzid;
  }
  EXPECT_EQ(systemZone(std::string_view("Europe/Berlin\0", 14)), nullptr);
  EXPECT_EQ(systemZone(std::string(100'000, 'A')), nullptr);
}

TEST(SystemZone, KnowsWindowsNames) {
  EXPECT_EQ(nameOf(systemZone("Tokyo Standard Time")), "Asia/Tokyo");
  EXPECT_EQ(nameOf(systemZone("eastern standard time")), "America/New_York");
  EXPECT_EQ(nameOf(systemZone("UTC-02")), "Etc/GMT+2");
  EXPECT_EQ(zoneNameOfWindowsName("Never Standard Time"), std::nullopt);
}

TEST(SystemZone, SkipsWithTheOffsetBeforeAndDoublesToTheFirst) {
  const Zone& zone = *systemZone("Europe/Berlin");
  EXPECT_EQ(zone.toUtc(reading("20250330T015959")), instant("20250330T005959Z"));
  EXPECT_EQ(zone.toUtc(reading("20250330T023000")), instant("20250330T013000Z"));
  EXPECT_EQ(zone.toUtc(reading("20250330T030000")), instant("20250330T010000Z"));
  EXPECT_EQ(zone.toUtc(reading("20251026T023000")), instant("20251026T003000Z"));
  EXPECT_EQ(zone.toUtc(reading("20251026T030000")), instant("20251026T020000Z"));
  EXPECT_EQ(zone.toWall(instant("20251026T003000Z")), reading("20251026T023000"));
  EXPECT_EQ(zone.toWall(instant("20251026T013000Z")), reading("20251026T023000"));
}

TEST(SystemZone, SkipsAWholeDay) {
  const Zone& zone = *systemZone("Pacific/Apia");
  EXPECT_EQ(zone.toUtc(reading("20111230T120000")), instant("20111230T220000Z"));
  EXPECT_EQ(zone.toUtc(reading("20111231T120000")), instant("20111230T220000Z"));
}

// The table of changes must say what the library says, inside its years, at their ends and outside.
TEST(SystemZone, AgreesWithTheLibrary) {
  std::mt19937_64 random(20250101);
  std::uniform_int_distribution<std::int64_t> anyTime(instant("18000101T000000Z"),
                                                      instant("24000101T000000Z"));
  for (const char* name :
       {"Europe/Berlin", "America/New_York", "Australia/Lord_Howe", "Africa/Casablanca",
        "Asia/Gaza", "America/Sao_Paulo", "Pacific/Apia", "Antarctica/Troll", "Asia/Kathmandu",
        "Africa/Monrovia", "Europe/Dublin", "Pacific/Kwajalein", "Etc/GMT-14", "America/Caracas"}) {
    absl::TimeZone expected;
    ASSERT_TRUE(absl::LoadTimeZone(name, &expected)) << name;
    const Zone* const zone = systemZone(name);
    ASSERT_TRUE(zone) << name;
    const auto check = [&](std::int64_t second) {
      const absl::CivilSecond civil = absl::CivilSecond(1970, 1, 1) + second;
      ASSERT_EQ(zone->toUtc(second), absl::ToUnixSeconds(expected.At(civil).pre))
          << name << " " << testing::textOf(second);
      ASSERT_EQ(zone->toWall(second), second + expected.At(absl::FromUnixSeconds(second)).offset)
          << name << " " << testing::textOf(second);
    };
    for (int round = 0; round < 5'000; ++round) check(anyTime(random));
    // Every quarter of an hour around each change of some years.
    absl::TimeZone::CivilTransition change;
    absl::Time from = absl::FromUnixSeconds(instant("19490101T000000Z"));
    while (expected.NextTransition(from, &change)) {
      const std::int64_t wall = change.from - absl::CivilSecond(1970, 1, 1);
      if (wall > instant("21030101T000000Z")) break;
      for (std::int64_t near = -4 * 3600; near <= 4 * 3600; near += 900) check(wall + near);
      from = expected.At(change.from).trans;
    }
  }
}

TEST(ZoneName, HasLettersAndFewOtherBytes) {
  EXPECT_TRUE(isZoneName("America/Port-au-Prince"));
  EXPECT_TRUE(isZoneName("EST5EDT"));
  EXPECT_FALSE(isZoneName("Europe/Berlin "));
  EXPECT_FALSE(isZoneName("5/Berlin"));
  EXPECT_FALSE(isZoneName("/Europe"));
}

}  // namespace
}  // namespace tidemark::local
