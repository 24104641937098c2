// When an event and its occurrences start and end. The local zone is Europe/Berlin.

#include <gtest/gtest.h>

#include <string>

#include "tests/unit/calendar_text/support.h"

namespace tidemark::local {
namespace {

using testing::eventOf;
using testing::instant;
using testing::onlyItemOf;
using testing::utcTextOf;

std::string textOf(const Span& span) {
  return utcTextOf(span.start) + "/" + utcTextOf(span.end);
}

std::string spanOfEvent(std::initializer_list<std::string_view> lines) {
  return textOf(spanOf(*onlyItemOf(eventOf(lines))));
}

// The spans of the first two occurrences.
std::string spansOfSeries(std::initializer_list<std::string_view> lines) {
  const auto item = onlyItemOf(eventOf(lines));
  std::string text;
  int count = 0;
  forEachOccurrence(*item, instant("20000101T000000Z"), instant("20400101T000000Z"),
                    [&](const Occurrence& occurrence) {
                      if (count > 0) text += " ";
                      text += textOf(spanOfOccurrence(*item, occurrence.start, occurrence.period));
                      return ++count < 2;
                    });
  return text;
}

TEST(Span, EndsAtItsEndOrAfterItsDuration) {
  EXPECT_EQ(spanOfEvent({"DTSTART:20250101T100000Z", "DTEND:20250101T113000Z"}),
            "20250101T100000Z/20250101T113000Z");
  EXPECT_EQ(spanOfEvent({"DTSTART:20250101T100000Z", "DURATION:PT90M"}),
            "20250101T100000Z/20250101T113000Z");
  EXPECT_EQ(spanOfEvent({"DTSTART:20250101T100000Z"}), "20250101T100000Z/20250101T100000Z");
}

TEST(Span, PassesOverAnEndBeforeTheStart) {
  EXPECT_EQ(spanOfEvent({"DTSTART:20250101T100000Z", "DTEND:20250101T090000Z"}),
            "20250101T100000Z/20250101T100000Z");
  EXPECT_EQ(spanOfEvent({"DTSTART;VALUE=DATE:20250101", "DTEND;VALUE=DATE:20241231"}),
            "20241231T230000Z/20250101T225959Z");
  EXPECT_EQ(spanOfEvent({"DTSTART:20250101T100000Z", "DURATION:-PT1H"}),
            "20250101T100000Z/20250101T100000Z");
}

TEST(Span, OfDaysEndsAtTheLastSecond) {
  EXPECT_EQ(spanOfEvent({"DTSTART;VALUE=DATE:20250701"}), "20250630T220000Z/20250701T215959Z");
  EXPECT_EQ(spanOfEvent({"DTSTART;VALUE=DATE:20250701", "DTEND;VALUE=DATE:20250704"}),
            "20250630T220000Z/20250703T215959Z");
  EXPECT_EQ(spanOfEvent({"DTSTART;VALUE=DATE:20250701", "DTEND;VALUE=DATE:20250701"}),
            "20250630T220000Z/20250701T215959Z");
  EXPECT_EQ(spanOfEvent({"DTSTART;VALUE=DATE:20250701", "DURATION:P2D"}),
            "20250630T220000Z/20250702T215959Z");
  EXPECT_EQ(spanOfEvent({"DTSTART;VALUE=DATE:20250701", "DURATION:PT36H"}),
            "20250630T220000Z/20250702T215959Z");
  // An end that is a time of day reaches into that day.
  EXPECT_EQ(spanOfEvent({"DTSTART;VALUE=DATE:20250701", "DTEND:20250702T100000"}),
            "20250630T220000Z/20250702T215959Z");
}

TEST(Span, OfDaysCoversAChangeOfTheClocks) {
  EXPECT_EQ(spanOfEvent({"DTSTART;VALUE=DATE:20250330", "DTEND;VALUE=DATE:20250331"}),
            "20250329T230000Z/20250330T215959Z");
}

TEST(Span, CountsADayOnTheCalendarAndAnHourOnTheClock) {
  EXPECT_EQ(spanOfEvent({"DTSTART;TZID=Europe/Berlin:20250329T120000", "DURATION:P1D"}),
            "20250329T110000Z/20250330T100000Z");
  EXPECT_EQ(spanOfEvent({"DTSTART;TZID=Europe/Berlin:20250329T120000", "DURATION:PT24H"}),
            "20250329T110000Z/20250330T110000Z");
  EXPECT_EQ(spanOfEvent({"DTSTART;TZID=Europe/Berlin:20250329T120000", "DURATION:P1DT1H"}),
            "20250329T110000Z/20250330T110000Z");
}

TEST(Span, OfAnOccurrenceKeepsTheExactLength) {
  // The first night is an hour shorter on the clock's face; the second keeps the first one's 7
  // hours.
  EXPECT_EQ(spansOfSeries({"DTSTART;TZID=Europe/Berlin:20250329T230000",
                           "DTEND;TZID=Europe/Berlin:20250330T070000", "RRULE:FREQ=DAILY"}),
            "20250329T220000Z/20250330T050000Z 20250330T210000Z/20250331T040000Z");
}

TEST(Span, OfAnOccurrenceKeepsTheNominalDuration) {
  EXPECT_EQ(spansOfSeries(
                {"DTSTART;TZID=Europe/Berlin:20250328T120000", "DURATION:P1D", "RRULE:FREQ=DAILY"}),
            "20250328T110000Z/20250329T110000Z 20250329T110000Z/20250330T100000Z");
}

TEST(Span, OfAllDayOccurrencesKeepsTheDays) {
  EXPECT_EQ(spansOfSeries(
                {"DTSTART;VALUE=DATE:20250329", "DTEND;VALUE=DATE:20250331", "RRULE:FREQ=DAILY"}),
            "20250328T230000Z/20250330T215959Z 20250329T230000Z/20250331T215959Z");
}

TEST(Span, OfAPeriodIsItsOwn) {
  EXPECT_EQ(spansOfSeries({"DTSTART:20250101T100000Z", "DTEND:20250101T110000Z",
                           "RDATE;VALUE=PERIOD:20250102T100000Z/PT3H"}),
            "20250101T100000Z/20250101T110000Z 20250102T100000Z/20250102T130000Z");
  EXPECT_EQ(spansOfSeries({"DTSTART:20250101T100000Z", "DTEND:20250101T110000Z",
                           "RDATE;VALUE=PERIOD:20250102T100000Z/20250102T101500Z"}),
            "20250101T100000Z/20250101T110000Z 20250102T100000Z/20250102T101500Z");
  EXPECT_EQ(spansOfSeries(
                {"DTSTART:20250101T100000Z", "DTEND:20250101T110000Z", "RDATE:20250102T100000Z"}),
            "20250101T100000Z/20250101T110000Z 20250102T100000Z/20250102T110000Z");
}

TEST(Span, OfAnOccurrencePassesOverAnEndBeforeTheStart) {
  EXPECT_EQ(
      spansOfSeries({"DTSTART:20250101T100000Z", "DTEND:20250101T090000Z", "RRULE:FREQ=DAILY"}),
      "20250101T100000Z/20250101T100000Z 20250102T100000Z/20250102T100000Z");
}

}  // namespace
}  // namespace tidemark::local
