// What rules, RDATE and EXDATE make together, and which rules are none. Rules by themselves are in
// tests/data/recurrence.

#include "store/local/recurrence/recurrence.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "store/local/recurrence/recurrence_rule.h"
#include "tests/unit/calendar_text/support.h"

namespace tidemark::local {
namespace {

using testing::eventOf;
using testing::instant;
using testing::onlyItemOf;
using testing::reading;
using testing::startsOf;
using Starts = std::vector<std::string>;

Starts startsOfEvent(std::initializer_list<std::string_view> lines,
                     std::string_view from = "20000101T000000Z",
                     std::string_view to = "20400101T000000Z") {
  return startsOf(*onlyItemOf(eventOf(lines)), from, to);
}

std::unique_ptr<RecurrenceRule> parse(std::string_view text) {
  return parseRecurrenceRule(text, Moment{reading("20250131T100000"), &utcZone(), false, false});
}

TEST(Recurrence, OfASingleEventIsItsStart) {
  EXPECT_EQ(startsOfEvent({"DTSTART:20250101T100000Z"}), Starts{"20250101T100000Z"});
  EXPECT_EQ(startsOfEvent({"DTSTART:20250101T100000Z"}, "20250101T100000Z", "20250101T100001Z"),
            Starts{"20250101T100000Z"});
  EXPECT_EQ(startsOfEvent({"DTSTART:20250101T100000Z"}, "20250101T000000Z", "20250101T100000Z"),
            Starts{});
}

TEST(Recurrence, HoldsTheStartOfTheRangeButNotItsEnd) {
  EXPECT_EQ(startsOfEvent({"DTSTART:20250101T100000Z", "RRULE:FREQ=DAILY"}, "20250103T100000Z",
                          "20250105T100000Z"),
            (Starts{"20250103T100000Z", "20250104T100000Z"}));
  EXPECT_EQ(startsOfEvent({"DTSTART:20250101T100000Z", "RRULE:FREQ=DAILY"}, "20250103T100001Z",
                          "20250105T100001Z"),
            (Starts{"20250104T100000Z", "20250105T100000Z"}));
  EXPECT_EQ(startsOfEvent({"DTSTART:20250101T100000Z", "RRULE:FREQ=DAILY"}, "20250105T000000Z",
                          "20250103T000000Z"),
            Starts{});
}

TEST(Recurrence, EndsWhenTheVisitorSaysSo) {
  const auto item = onlyItemOf(eventOf({"DTSTART:20250101T100000Z", "RRULE:FREQ=DAILY"}));
  int visits = 0;
  forEachOccurrence(*item, std::numeric_limits<UtcSeconds>::min(),
                    std::numeric_limits<UtcSeconds>::max(),
                    [&](const Occurrence&) { return ++visits < 3; });
  EXPECT_EQ(visits, 3);
}

TEST(Recurrence, MergesItsSourcesInOrder) {
  EXPECT_EQ(startsOfEvent({"DTSTART:20250101T100000Z", "RRULE:FREQ=MONTHLY;COUNT=3",
                           "RRULE:FREQ=YEARLY;COUNT=3", "RDATE:20241231T100000Z,20250201T090000Z"}),
            (Starts{"20241231T100000Z", "20250101T100000Z", "20250201T090000Z", "20250201T100000Z",
                    "20250301T100000Z", "20260101T100000Z", "20270101T100000Z"}));
}

TEST(Recurrence, CountsAnInstantOnce) {
  EXPECT_EQ(startsOfEvent({"DTSTART:20250101T100000Z", "RRULE:FREQ=DAILY;COUNT=2",
                           "RRULE:FREQ=DAILY;COUNT=2", "RDATE:20250101T100000Z,20250102T100000Z",
                           "RDATE;TZID=Europe/Berlin:20250102T110000"}),
            (Starts{"20250101T100000Z", "20250102T100000Z"}));
}

TEST(Recurrence, GivesAnRdateTheTimeOfTheSeries) {
  EXPECT_EQ(
      startsOfEvent({"DTSTART;TZID=Europe/Berlin:20250101T100000", "RDATE;VALUE=DATE:20250701"}),
      (Starts{"20250101T090000Z", "20250701T080000Z"}));
}

TEST(Recurrence, GivesAPeriodToItsOccurrence) {
  const auto item = onlyItemOf(eventOf({"DTSTART:20250101T100000Z", "RRULE:FREQ=DAILY;COUNT=2",
                                        "RDATE;VALUE=PERIOD:20250102T100000Z/PT3H"}));
  std::vector<bool> hasPeriod;
  forEachOccurrence(*item, instant("20250101T000000Z"), instant("20260101T000000Z"),
                    [&](const Occurrence& occurrence) {
                      hasPeriod.push_back(occurrence.period != nullptr);
                      return true;
                    });
  EXPECT_EQ(hasPeriod, (std::vector<bool>{false, true}));
}

TEST(Recurrence, LosesItsExceptions) {
  EXPECT_EQ(
      startsOfEvent({"DTSTART;TZID=Europe/Berlin:20250101T100000", "RRULE:FREQ=DAILY;COUNT=6",
                     "EXDATE;TZID=Europe/Berlin:20250102T100000", "EXDATE:20250103T090000Z",
                     "EXDATE;TZID=America/New_York:20250104T040000", "EXDATE:20250105T090001Z"}),
      (Starts{"20250101T090000Z", "20250105T090000Z", "20250106T090000Z"}));
  EXPECT_EQ(startsOfEvent({"DTSTART:20250101T100000Z", "RRULE:FREQ=DAILY;COUNT=2",
                           "EXDATE:20250101T100000Z"}),
            Starts{"20250102T100000Z"});
  EXPECT_EQ(startsOfEvent(
                {"DTSTART:20250101T100000Z", "RDATE:20250102T100000Z", "EXDATE:20250102T100000Z"}),
            Starts{"20250101T100000Z"});
}

TEST(Recurrence, LosesTheWholeDayOfAnExceptionThatIsADate) {
  // The day is the series': the first three start on New York's 1 January, the third on Europe's
  // second.
  EXPECT_EQ(startsOfEvent({"DTSTART;TZID=America/New_York:20250101T000000",
                           "RRULE:FREQ=HOURLY;INTERVAL=10;COUNT=5", "EXDATE;VALUE=DATE:20250101"}),
            (Starts{"20250102T110000Z", "20250102T210000Z"}));
}

TEST(Recurrence, TakesAFloatingExceptionOnTheClockOfTheSeriesToo) {
  EXPECT_EQ(startsOfEvent({"DTSTART;TZID=Asia/Tokyo:20250101T100000", "RRULE:FREQ=DAILY;COUNT=3",
                           "EXDATE:20250102T100000", "EXDATE:20250103T020000"}),
            Starts{"20250101T010000Z"});
}

TEST(Recurrence, StartsWithAStartThatItsRuleWouldNotGive) {
  EXPECT_EQ(startsOfEvent({"DTSTART:20250101T100000Z", "RRULE:FREQ=WEEKLY;BYDAY=MO;COUNT=3"}),
            (Starts{"20250101T100000Z", "20250106T100000Z", "20250113T100000Z"}));
  EXPECT_EQ(startsOfEvent({"DTSTART:20250101T100000Z", "RRULE:FREQ=DAILY;UNTIL=20241231T000000Z"}),
            Starts{"20250101T100000Z"});
  EXPECT_EQ(startsOfEvent(
                {"DTSTART:20250101T100000Z", "RRULE:FREQ=YEARLY;BYMONTH=2;BYMONTHDAY=30;COUNT=3"}),
            Starts{"20250101T100000Z"});
}

TEST(Recurrence, EndsWithItsUntil) {
  EXPECT_EQ(startsOfEvent({"DTSTART;TZID=America/New_York:20250101T200000",
                           "RRULE:FREQ=DAILY;UNTIL=20250102"}),
            (Starts{"20250102T010000Z", "20250103T010000Z"}))
      << "a date reaches to the end of that day in the series' zone";
  EXPECT_EQ(startsOfEvent({"DTSTART;TZID=America/New_York:20250101T200000",
                           "RRULE:FREQ=DAILY;UNTIL=20250103T010000Z"}),
            (Starts{"20250102T010000Z", "20250103T010000Z"}));
  EXPECT_EQ(startsOfEvent({"DTSTART;TZID=America/New_York:20250101T200000",
                           "RRULE:FREQ=DAILY;UNTIL=20250103T005959Z"}),
            Starts{"20250102T010000Z"});
  EXPECT_EQ(startsOfEvent({"DTSTART;TZID=America/New_York:20250101T200000",
                           "RRULE:FREQ=DAILY;UNTIL=20250102T200000"}),
            (Starts{"20250102T010000Z", "20250103T010000Z"}));
  EXPECT_EQ(startsOfEvent(
                {"DTSTART:20250101T100000Z", "RRULE:FREQ=DAILY;COUNT=5;UNTIL=20250102T100000Z"}),
            (Starts{"20250101T100000Z", "20250102T100000Z"}));
}

TEST(Recurrence, FollowsTheClockOverAChange) {
  EXPECT_EQ(
      startsOfEvent({"DTSTART;TZID=Europe/Berlin:20250329T023000", "RRULE:FREQ=DAILY;COUNT=3"}),
      (Starts{"20250329T013000Z", "20250330T013000Z", "20250331T003000Z"}));
  EXPECT_EQ(
      startsOfEvent({"DTSTART;TZID=Europe/Berlin:20251025T023000", "RRULE:FREQ=DAILY;COUNT=3"}),
      (Starts{"20251025T003000Z", "20251026T003000Z", "20251027T013000Z"}));
}

TEST(Recurrence, KeepsInstantsInOrderWhereReadingsAreSkipped) {
  // 02:30 is skipped and is 03:30; 03:00 comes before it, and 03:30 is the same instant.
  EXPECT_EQ(
      startsOfEvent({"DTSTART;TZID=Europe/Berlin:20250330T013000",
                     "RRULE:FREQ=MINUTELY;INTERVAL=30;COUNT=6"}),
      (Starts{"20250330T003000Z", "20250330T010000Z", "20250330T013000Z", "20250330T020000Z"}));
  EXPECT_EQ(startsOfEvent({"DTSTART;TZID=Europe/Berlin:20250330T013000",
                           "RRULE:FREQ=MINUTELY;INTERVAL=30;COUNT=6"},
                          "20250330T013000Z", "20250330T020000Z"),
            Starts{"20250330T013000Z"})
      << "a range that begins after the change still finds the skipped reading";
}

TEST(RecurrenceRuleText, IsReadLeniently) {
  for (const char* text :
       {"FREQ=DAILY", "freq=daily;interval=2", "INTERVAL=2;FREQ=WEEKLY;", "FREQ=DAILY;X-NEW=1",
        "FREQ=WEEKLY;BYDAY=MO, TU", "FREQ=WEEKLY;BYDAY=", "FREQ=DAILY;COUNT=3;UNTIL=20300101",
        "RSCALE=GREGORIAN;FREQ=DAILY;SKIP=OMIT", "FREQ=MONTHLY;BYDAY=+1MO", "FREQ=WEEKLY;BYDAY=2MO",
        "FREQ=DAILY;COUNT=99999999999999999999", "FREQ=YEARLY;BYYEARDAY=-366"}) {
    EXPECT_TRUE(parse(text)) << text;
  }
}

TEST(RecurrenceRuleText, IsRefusedWhereItMakesNoSense) {
  for (const char* text : {"",
                           "FREQ=",
                           "DAILY",
                           "INTERVAL=2",
                           "FREQ=FORTNIGHTLY",
                           "FREQ=DAILY;COUNT=0",
                           "FREQ=DAILY;COUNT=-1",
                           "FREQ=DAILY;COUNT=x",
                           "FREQ=DAILY;INTERVAL=0",
                           "FREQ=DAILY;INTERVAL=-1",
                           "FREQ=DAILY;UNTIL=never",
                           "FREQ=DAILY;UNTIL=20253201",
                           "FREQ=DAILY;FREQ=WEEKLY",
                           "FREQ=DAILY;BYHOUR=24",
                           "FREQ=DAILY;BYMINUTE=60",
                           "FREQ=DAILY;BYSECOND=61",
                           "FREQ=MONTHLY;BYMONTHDAY=0",
                           "FREQ=MONTHLY;BYMONTHDAY=32",
                           "FREQ=YEARLY;BYMONTH=13",
                           "FREQ=YEARLY;BYMONTH=5L",
                           "FREQ=YEARLY;BYWEEKNO=54",
                           "FREQ=YEARLY;BYYEARDAY=367",
                           "FREQ=MONTHLY;BYDAY=0MO",
                           "FREQ=MONTHLY;BYDAY=54MO",
                           "FREQ=MONTHLY;BYDAY=XX",
                           "FREQ=MONTHLY;BYSETPOS=0",
                           "FREQ=WEEKLY;BYMONTHDAY=1",
                           "FREQ=MONTHLY;BYWEEKNO=1",
                           "FREQ=MONTHLY;BYYEARDAY=1",
                           "FREQ=YEARLY;BYWEEKNO=1;BYDAY=1MO",
                           "RSCALE=CHINESE;FREQ=YEARLY",
                           "FREQ=MONTHLY;RSCALE=GREGORIAN;SKIP=FORWARD",
                           "FREQ=DAILY;WKST=XX"}) {
    EXPECT_FALSE(parse(text)) << text;
  }
}

TEST(RecurrenceRuleText, MayRepeatItself) {
  std::string text = "FREQ=WEEKLY;BYDAY=MO";
  for (int index = 0; index < 5'000; ++index) text += ",MO,TU";
  const auto rule = parse(text);
  ASSERT_TRUE(rule);
  EXPECT_EQ(rule->weekdays, 0b0000110);
}

TEST(Recurrence, ATimeAmongWholeDaysIsItsDay) {
  // In Berlin it is the fifth by then.
  EXPECT_EQ(startsOfEvent({"DTSTART;VALUE=DATE:20250101",
                           "RDATE:20250103T100000Z,20250104T233000Z,20250103T120000Z"}),
            startsOfEvent({"DTSTART;VALUE=DATE:20250101", "RDATE;VALUE=DATE:20250103,20250105"}));
}

}  // namespace
}  // namespace tidemark::local
