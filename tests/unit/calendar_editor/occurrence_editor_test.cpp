// Changes of one occurrence of a series.

#include "sample.h"

namespace tidemark::local {
namespace {

EventChange titled(const std::string& title) {
  EventChange change;
  change.title = title;
  return change;
}

const std::string daily = "RRULE:FREQ=DAILY;COUNT=5";
const std::string start = "DTSTART;TZID=Europe/Berlin:20250328T100000";
const std::string end = "DTEND;TZID=Europe/Berlin:20250328T110000";

TEST(OccurrenceEditor, GetsAnOverrideRightAfterTheSeries) {
  const std::vector<std::string> kept = {"X-A;B=c:d", "BEGIN:VALARM", "TRIGGER:-PT5M",
                                         "END:VALARM"};
  std::string text =
      eventWith({start, end, daily, "EXDATE;TZID=Europe/Berlin:20250329T100000",
                 "SUMMARY;LANGUAGE=de:Tee", "SEQUENCE:2", kept[0], kept[1], kept[2], kept[3]});
  const std::string next = crlf({"BEGIN:VEVENT", "UID:two", "END:VEVENT"});
  text.insert(text.find("END:VCALENDAR"), next);
  const std::string override = crlf(
      {"BEGIN:VEVENT", "UID:one", "DTSTAMP:" + stamp, "DTSTART;TZID=Europe/Berlin:20250330T100000",
       "DTEND;TZID=Europe/Berlin:20250330T110000", "SUMMARY;LANGUAGE=de:Kaffee", "SEQUENCE:3",
       kept[0], "RECURRENCE-ID;TZID=Europe/Berlin:20250330T100000", "LAST-MODIFIED:" + stamp,
       kept[1], kept[2], kept[3], "END:VEVENT"});
  std::string expected = text;
  expected.insert(expected.find(next), override);
  EXPECT_EQ(changed(text, titled("Kaffee"), at("2025-03-30T10:00:00")), expected);
}

TEST(OccurrenceEditor, MovesAlone) {
  EventChange change;
  change.start = at("2025-03-31T12:00:00");
  change.end = at("2025-03-31T12:30:00");
  const std::string text =
      changed(eventWith({start, end, daily}), change, at("2025-03-30T10:00:00"));
  const std::string override = componentOf(text, "VEVENT", 1);
  EXPECT_EQ(lineOf(override, "DTSTART"), "DTSTART;TZID=Europe/Berlin:20250331T120000");
  EXPECT_EQ(lineOf(override, "DTEND"), "DTEND;TZID=Europe/Berlin:20250331T123000");
  EXPECT_EQ(lineOf(override, "RECURRENCE-ID"), "RECURRENCE-ID;TZID=Europe/Berlin:20250330T100000");
  EXPECT_TRUE(linesOf(override, "RRULE").empty());
}

TEST(OccurrenceEditor, KeepsTheSeriesDuration) {
  const std::string override = componentOf(
      changed(eventWith({start, "DURATION:PT1H", daily}), titled("a"), at("2025-03-30T10:00:00")),
      "VEVENT", 1);
  EXPECT_EQ(lineOf(override, "DURATION"), "DURATION:PT1H");
  EXPECT_TRUE(linesOf(override, "DTEND").empty());
}

TEST(OccurrenceEditor, ChangesAnOverrideThatIsThere) {
  std::string text = eventWith({start, end, daily});
  const std::vector<std::string> moved = {
      "BEGIN:VEVENT",  "UID:one",   "RECURRENCE-ID:20250330T080000Z", "DTSTART:20250401T080000Z",
      "SUMMARY:moved", "END:VEVENT"};
  text.insert(text.find("BEGIN:VEVENT"), crlf(moved));  // before its series
  const std::string after = changed(text, titled("new"), at("2025-03-30T10:00:00"));
  EXPECT_EQ(linesOf(after, "BEGIN").size(), linesOf(text, "BEGIN").size());
  EXPECT_EQ(lineOf(componentOf(after, "VEVENT", 0), "SUMMARY"), "SUMMARY:new");
  EXPECT_EQ(lineOf(after, "RECURRENCE-ID"), "RECURRENCE-ID:20250330T080000Z");
  EXPECT_EQ(componentOf(after, "VEVENT", 1), componentOf(text, "VEVENT", 1));
}

TEST(OccurrenceEditor, AnOverrideWithoutASeriesStandsForItself) {
  const std::string text =
      eventWith({"RECURRENCE-ID:20250330T080000Z", "DTSTART:20250330T080000Z"});
  EXPECT_EQ(lineOf(changed(text, titled("a"), at("2025-03-30T08:00:00Z")), "SUMMARY"), "SUMMARY:a");
  EXPECT_EQ(lineOf(changed(text, titled("a")), "SUMMARY"), "SUMMARY:a");
}

TEST(OccurrenceEditor, WithoutAnOccurrenceTheFirstThatIsLeftIsMeant) {
  const std::string text = eventWith({start, end, daily, "EXDATE:20250328T090000Z"});
  EXPECT_EQ(lineOf(changed(text, titled("a")), "RECURRENCE-ID"),
            "RECURRENCE-ID;TZID=Europe/Berlin:20250329T100000");
}

TEST(OccurrenceEditor, TheFirstAndTheLastAreLikeTheOthers) {
  const std::string text = eventWith({start, end, daily});
  EXPECT_EQ(lineOf(changed(text, titled("a"), at("2025-03-28T10:00:00")), "RECURRENCE-ID"),
            "RECURRENCE-ID;TZID=Europe/Berlin:20250328T100000");
  EXPECT_EQ(lineOf(changed(text, titled("a"), at("2025-04-01T10:00:00")), "RECURRENCE-ID"),
            "RECURRENCE-ID;TZID=Europe/Berlin:20250401T100000");
  EXPECT_EQ(
      changeEvent(text, fileName, {"one", at("2025-04-02T10:00:00")}, titled("a"), now).outcome,
      Edit::Outcome::missing);
}

TEST(OccurrenceEditor, OfDatesIsADate) {
  const std::string override =
      componentOf(changed(eventWith({"DTSTART;VALUE=DATE:20250328", "DTEND;VALUE=DATE:20250330",
                                     "RRULE:FREQ=WEEKLY"}),
                          titled("a"), at("2025-04-04T00:00:00")),
                  "VEVENT", 1);
  EXPECT_EQ(lineOf(override, "RECURRENCE-ID"), "RECURRENCE-ID;VALUE=DATE:20250404");
  EXPECT_EQ(lineOf(override, "DTSTART"), "DTSTART;VALUE=DATE:20250404");
  EXPECT_EQ(lineOf(override, "DTEND"), "DTEND;VALUE=DATE:20250406");
}

TEST(OccurrenceEditor, ThatBecomesAllDayKeepsTheSeriesKindOfId) {
  EventChange change;
  change.isAllDay = true;
  const std::string override = componentOf(
      changed(eventWith({start, end, daily}), change, at("2025-03-30T10:00:00")), "VEVENT", 1);
  EXPECT_EQ(lineOf(override, "RECURRENCE-ID"), "RECURRENCE-ID;TZID=Europe/Berlin:20250330T100000");
  EXPECT_EQ(lineOf(override, "DTSTART"), "DTSTART;VALUE=DATE:20250330");
  EXPECT_EQ(lineOf(override, "DTEND"), "DTEND;VALUE=DATE:20250331");
}

TEST(OccurrenceEditor, OfUtcAndFloatingSeries) {
  EXPECT_EQ(lineOf(changed(eventWith({"DTSTART:20250328T100000Z", daily}), titled("a"),
                           at("2025-03-30T10:00:00Z")),
                   "RECURRENCE-ID"),
            "RECURRENCE-ID:20250330T100000Z");
  EXPECT_EQ(lineOf(changed(eventWith({"DTSTART:20250328T100000", daily}), titled("a"),
                           at("2025-03-30T10:00:00")),
                   "RECURRENCE-ID"),
            "RECURRENCE-ID:20250330T100000");
}

TEST(OccurrenceEditor, InAZoneThatOnlyTheFileKnows) {
  const std::string zone =
      crlf({"BEGIN:VTIMEZONE", "TZID:Ours", "BEGIN:STANDARD", "DTSTART:19700101T000000",
            "TZOFFSETFROM:+0530", "TZOFFSETTO:+0530", "END:STANDARD", "END:VTIMEZONE"});
  std::string text = eventWith({"DTSTART;TZID=Ours:20250328T103000", daily});
  text.insert(text.find("BEGIN:VEVENT"), zone);
  const std::string override =
      componentOf(changed(text, titled("a"), at("2025-03-29T05:00:00Z")), "VEVENT", 1);
  EXPECT_EQ(lineOf(override, "RECURRENCE-ID"), "RECURRENCE-ID;TZID=Ours:20250329T103000");
  EXPECT_EQ(lineOf(override, "DTSTART"), "DTSTART;TZID=Ours:20250329T103000");
}

TEST(OccurrenceEditor, ThatAnRdateGave) {
  const std::string override =
      componentOf(changed(eventWith({start, end, "RDATE:20250515T140000Z"}), titled("a"),
                          at("2025-05-15T14:00:00Z")),
                  "VEVENT", 1);
  EXPECT_EQ(lineOf(override, "RECURRENCE-ID"), "RECURRENCE-ID;TZID=Europe/Berlin:20250515T160000");
  EXPECT_EQ(lineOf(override, "DTEND"), "DTEND;TZID=Europe/Berlin:20250515T170000");
  EXPECT_TRUE(linesOf(override, "RDATE").empty());
}

TEST(OccurrenceEditor, ThatAPeriodGaveKeepsItsLength) {
  const std::string override = componentOf(
      changed(eventWith({start, "DURATION:PT1H", "RDATE;VALUE=PERIOD:20250515T140000Z/PT3H"}),
              titled("a"), at("2025-05-15T14:00:00Z")),
      "VEVENT", 1);
  EXPECT_EQ(lineOf(override, "DTEND"), "DTEND;TZID=Europe/Berlin:20250515T190000");
  EXPECT_TRUE(linesOf(override, "DURATION").empty());
}

TEST(OccurrenceEditor, InASkippedHourKeepsTheReadingOfItsId) {
  const std::string override =
      componentOf(changed(eventWith({"DTSTART;TZID=Europe/Berlin:20250328T023000", daily}),
                          titled("a"), at("2025-03-30T01:30:00Z")),
                  "VEVENT", 1);
  EXPECT_EQ(lineOf(override, "RECURRENCE-ID"), "RECURRENCE-ID;TZID=Europe/Berlin:20250330T023000");
}

TEST(OccurrenceEditor, ThatIsSetToWhatItSaysGetsNoOverride) {
  const std::string text = eventWith({start, end, daily, "SUMMARY:a"});
  EventChange same = titled("a");
  same.start = at("2025-03-30T10:00:00");
  same.end = at("2025-03-30T11:00:00");
  EXPECT_EQ(changed(text, same, at("2025-03-30T10:00:00")), text);
}

// Daily at ten, from the 30th on at noon for two hours.
std::string seriesThatChanges() {
  std::string text = eventWith({start, end, daily, "SUMMARY:ten"});
  return text.insert(
      text.find("END:VCALENDAR"),
      crlf({"BEGIN:VEVENT", "UID:one", "RECURRENCE-ID;RANGE=THISANDFUTURE:20250330T080000Z",
            "DTSTART:20250330T100000Z", "DTEND:20250330T120000Z", "SUMMARY:noon", "X-A:b",
            "END:VEVENT"}));
}

TEST(OccurrenceEditor, ThatFollowsAnEarlierOverrideStartsFromIt) {
  const std::string before = seriesThatChanges();
  const std::string after = changed(before, titled("new"), at("2025-03-31T10:00:00"));
  EXPECT_EQ(componentOf(after, "VEVENT", 0), componentOf(before, "VEVENT", 0));
  EXPECT_EQ(componentOf(after, "VEVENT", 1), componentOf(before, "VEVENT", 1));
  const std::string override = componentOf(after, "VEVENT", 2);
  EXPECT_EQ(lineOf(override, "RECURRENCE-ID"), "RECURRENCE-ID;TZID=Europe/Berlin:20250331T100000");
  EXPECT_EQ(lineOf(override, "DTSTART"), "DTSTART:20250331T100000Z");
  EXPECT_EQ(lineOf(override, "DTEND"), "DTEND:20250331T120000Z");
  EXPECT_EQ(lineOf(override, "X-A"), "X-A:b");
}

TEST(OccurrenceEditor, ThatOthersFollowChangesAlone) {
  const std::string after = changed(seriesThatChanges(), titled("new"), at("2025-03-30T10:00:00"));
  const std::string later = componentOf(after, "VEVENT", 1);
  EXPECT_EQ(lineOf(later, "SUMMARY"), "SUMMARY:noon");
  EXPECT_EQ(lineOf(later, "RECURRENCE-ID"),
            "RECURRENCE-ID;TZID=Europe/Berlin;RANGE=THISANDFUTURE:20250331T100000");
  EXPECT_EQ(lineOf(later, "DTSTART"), "DTSTART:20250331T100000Z");
  const std::string own = componentOf(after, "VEVENT", 2);
  EXPECT_EQ(lineOf(own, "SUMMARY"), "SUMMARY:new");
  EXPECT_EQ(lineOf(own, "RECURRENCE-ID"), "RECURRENCE-ID;TZID=Europe/Berlin:20250330T100000");
  EXPECT_EQ(lineOf(own, "DTSTART"), "DTSTART:20250330T100000Z");
}

TEST(OccurrenceEditor, ThatIsNoneOfTheSeriesButOthersFollowChangesAlone) {
  std::string text = seriesThatChanges();
  text.insert(text.find(daily), crlf({"EXDATE;TZID=Europe/Berlin:20250330T100000"}));
  const std::string after = changed(text, titled("new"), at("2025-03-30T10:00:00"));
  const std::string later = componentOf(after, "VEVENT", 1);
  EXPECT_EQ(lineOf(later, "SUMMARY"), "SUMMARY:noon");
  EXPECT_EQ(lineOf(later, "RECURRENCE-ID"),
            "RECURRENCE-ID;TZID=Europe/Berlin;RANGE=THISANDFUTURE:20250331T100000");
  const std::string own = componentOf(after, "VEVENT", 2);
  EXPECT_EQ(lineOf(own, "SUMMARY"), "SUMMARY:new");
  EXPECT_EQ(lineOf(own, "RECURRENCE-ID"), "RECURRENCE-ID;TZID=Europe/Berlin:20250330T100000");
}

TEST(OccurrenceEditor, ThatOthersFollowGoesAlone) {
  const std::string after = withoutOccurrence(seriesThatChanges(), at("2025-03-30T10:00:00"));
  EXPECT_EQ(lineOf(after, "EXDATE"), "EXDATE;TZID=Europe/Berlin:20250330T100000");
  EXPECT_EQ(lineOf(componentOf(after, "VEVENT", 1), "RECURRENCE-ID"),
            "RECURRENCE-ID;TZID=Europe/Berlin;RANGE=THISANDFUTURE:20250331T100000");
}

TEST(OccurrenceEditor, AtTheEndOfATextWithoutALineEnd) {
  const std::string text =
      "BEGIN:VEVENT\r\nUID:one\r\nDTSTART:20250328T100000Z\r\nRRULE:FREQ=DAILY\r\nEND:VEVENT";
  const std::string after = changed(text, titled("a"), at("2025-03-29T10:00:00Z"));
  EXPECT_TRUE(after.starts_with(text + "\r\nBEGIN:VEVENT\r\n"));
  EXPECT_TRUE(after.ends_with("\r\nEND:VEVENT"));
}

}  // namespace
}  // namespace tidemark::local
