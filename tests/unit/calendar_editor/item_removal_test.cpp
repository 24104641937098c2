// Removing events and occurrences, and taking items out of a file for a move.

#include "sample.h"

namespace tidemark::local {
namespace {

const std::string start = "DTSTART;TZID=Europe/Berlin:20250328T100000";
const std::string daily = "RRULE:FREQ=DAILY;COUNT=3";
const std::vector<std::string> other = {"BEGIN:VEVENT", "UID:two", "DTSTART:20250101T000000Z",
                                        "END:VEVENT"};

std::string withOther(std::string text) {
  return text.insert(text.find("END:VCALENDAR"), crlf(other));
}

std::string withOverride(std::string text, const std::string& recurrenceId) {
  return text.insert(text.find("END:VCALENDAR"),
                     crlf({"BEGIN:VEVENT", "UID:one", "RECURRENCE-ID" + recurrenceId,
                           "DTSTART:20250601T100000Z", "END:VEVENT"}));
}

Edit removed(const std::string& text, std::optional<UtcSeconds> occurrence = std::nullopt) {
  return removeEvent(text, fileName, {"one", occurrence}, now);
}

TEST(ItemRemoval, TakesEveryComponentOfTheUidAndNothingElse) {
  std::string text = withOther(eventWith({start, daily}));
  const std::string rest = "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Example//Sample//EN\r\n" +
                           crlf(other) + "END:VCALENDAR\r\n";
  const Edit edit = removed(withOverride(text, ":20250329T090000Z"));
  EXPECT_EQ(edit.outcome, Edit::Outcome::changed);
  EXPECT_EQ(edit.text, rest);
}

TEST(ItemRemoval, LeavesNothingWhenOnlyTheFrameIsLeft) {
  std::string text = eventWith({start});
  text.insert(text.find("BEGIN:VEVENT"),
              crlf({"X-WR-CALNAME:a", "BEGIN:VTIMEZONE", "TZID:b", "END:VTIMEZONE"}));
  EXPECT_EQ(removed("\r\n" + text + "\r\n").outcome, Edit::Outcome::empty);
}

TEST(ItemRemoval, KeepsAFileThatHoldsWhatNobodyUnderstands) {
  std::string text = eventWith({start});
  const std::string journal = crlf({"BEGIN:VJOURNAL", "UID:three", "END:VJOURNAL"});
  EXPECT_EQ(removed(text.insert(text.find("END:VCALENDAR"), journal)).outcome,
            Edit::Outcome::changed);
  EXPECT_EQ(removed("a note\r\n" + eventWith({start})).outcome, Edit::Outcome::changed);
  EXPECT_EQ(removed(eventWith({start}) + "a note\r\n").outcome, Edit::Outcome::changed);
}

TEST(ItemRemoval, LeavesATodoOfTheSameUid) {
  std::string text = eventWith({start});
  text.insert(text.find("END:VCALENDAR"), crlf({"BEGIN:VTODO", "UID:one", "END:VTODO"}));
  const Edit edit = removed(text);
  EXPECT_EQ(edit.outcome, Edit::Outcome::changed);
  EXPECT_EQ(linesOf(edit.text, "BEGIN"),
            (std::vector<std::string>{"BEGIN:VCALENDAR", "BEGIN:VTODO"}));
}

TEST(ItemRemoval, SaysWhatIsMissing) {
  EXPECT_EQ(removeEvent(eventWith({start}), fileName, {"two", {}}, now).outcome,
            Edit::Outcome::missing);
  EXPECT_EQ(removed(eventWith({start, daily}), at("2025-04-28T10:00:00")).outcome,
            Edit::Outcome::missing);
}

TEST(ItemRemoval, ExcludesOneOccurrenceAsTheSeriesSaysTimes) {
  struct Form {
    std::string start, exception;
  };
  const std::vector<Form> forms = {
      {":20250328T090000Z", "EXDATE:20250329T090000Z"},
      {":20250328T100000", "EXDATE:20250329T100000"},
      {";TZID=Europe/Berlin:20250328T100000", "EXDATE;TZID=Europe/Berlin:20250329T100000"},
      {";TZID=W. Europe Standard Time:20250328T100000",
       "EXDATE;TZID=W. Europe Standard Time:20250329T100000"},
      {";TZID=\"a:/Europe/Berlin\":20250328T100000",
       "EXDATE;TZID=\"a:/Europe/Berlin\":20250329T100000"},
  };
  for (const Form& form : forms) {
    const std::string text = eventWith({"DTSTART" + form.start, daily});
    EXPECT_EQ(lineOf(withoutOccurrence(text, at("2025-03-29T09:00:00Z")), "EXDATE"),
              form.exception);
  }
  EXPECT_EQ(lineOf(withoutOccurrence(eventWith({"DTSTART;VALUE=DATE:20250328", daily}),
                                     at("2025-03-29T00:00:00")),
                   "EXDATE"),
            "EXDATE;VALUE=DATE:20250329");
}

TEST(ItemRemoval, ExcludesTheFirstTheLastAndWhatAnRdateGave) {
  const std::string text = eventWith({start, daily, "RDATE:20250515T140000Z"});
  const std::vector<std::string> occurrences = {"20250328T100000", "20250330T100000",
                                                "20250515T160000"};
  for (const std::string& occurrence : occurrences) {
    const std::string time = occurrence.substr(0, 4) + "-" + occurrence.substr(4, 2) + "-" +
                             occurrence.substr(6, 5) + ":" + occurrence.substr(11, 2) + ":00";
    const std::string after = withoutOccurrence(text, at(time));
    EXPECT_EQ(lineOf(after, "EXDATE"), "EXDATE;TZID=Europe/Berlin:" + occurrence);
    EXPECT_EQ(lineOf(after, "RDATE"), "RDATE:20250515T140000Z");
  }
}

TEST(ItemRemoval, ExcludesInAZoneThatOnlyTheFileKnows) {
  std::string text = eventWith({"DTSTART;TZID=Ours:20250328T103000", daily});
  text.insert(text.find("BEGIN:VEVENT"),
              crlf({"BEGIN:VTIMEZONE", "TZID:Ours", "BEGIN:STANDARD", "DTSTART:19700101T000000",
                    "TZOFFSETFROM:+0530", "TZOFFSETTO:+0530", "END:STANDARD", "END:VTIMEZONE"}));
  EXPECT_EQ(lineOf(withoutOccurrence(text, at("2025-03-29T05:00:00Z")), "EXDATE"),
            "EXDATE;TZID=Ours:20250329T103000");
}

TEST(ItemRemoval, ChangesTheSeriesByOneLineAndTheStamps) {
  const std::string before = "EXDATE:20250328T090000Z";
  const auto series = [&](const std::string& stamped, const std::vector<std::string>& added) {
    std::string text = crlf(
        {"BEGIN:VCALENDAR", "BEGIN:VEVENT", "UID:one", start, daily, before, "DTSTAMP:" + stamped});
    return text + crlf(added) + crlf({"BEGIN:VALARM", "END:VALARM", "END:VEVENT", "END:VCALENDAR"});
  };
  EXPECT_EQ(withoutOccurrence(series("20250101T000000Z", {}), at("2025-03-29T10:00:00")),
            series(stamp, {"EXDATE;TZID=Europe/Berlin:20250329T100000", "LAST-MODIFIED:" + stamp,
                           "SEQUENCE:1"}));
}

TEST(ItemRemoval, TakesTheOverrideOfTheOccurrenceToo) {
  const std::string text =
      withOverride(eventWith({start, daily}), ";TZID=Europe/Berlin:20250329T100000");
  const std::string after = withoutOccurrence(text, at("2025-03-29T10:00:00"));
  EXPECT_TRUE(linesOf(after, "RECURRENCE-ID").empty());
  EXPECT_EQ(lineOf(after, "EXDATE"), "EXDATE;TZID=Europe/Berlin:20250329T100000");
}

TEST(ItemRemoval, JustTakesAnOverrideThatMeetsNoOccurrence) {
  const std::string series = eventWith({start, daily});
  EXPECT_EQ(
      withoutOccurrence(withOverride(series, ":20300101T000000Z"), at("2030-01-01T00:00:00Z")),
      series);
}

TEST(ItemRemoval, TakesAnOverrideWithoutASeries) {
  const std::string text =
      eventWith({"RECURRENCE-ID:20250328T090000Z", "DTSTART:20250328T090000Z"});
  EXPECT_EQ(removed(text, at("2025-03-28T09:00:00Z")).outcome, Edit::Outcome::empty);
  EXPECT_EQ(
      lineOf(removed(withOverride(text, ":20250329T090000Z"), at("2025-03-28T09:00:00Z")).text,
             "RECURRENCE-ID"),
      "RECURRENCE-ID:20250329T090000Z");
}

TEST(ItemRemoval, TheLastOccurrenceTakesTheSeriesAlong) {
  const std::string text = eventWith(
      {start, daily, "EXDATE:20250328T090000Z", "EXDATE;TZID=Europe/Berlin:20250330T100000"});
  EXPECT_EQ(removed(text, at("2025-03-29T10:00:00")).outcome, Edit::Outcome::empty);
  const Edit edit = removed(withOther(text), at("2025-03-29T10:00:00"));
  EXPECT_EQ(edit.outcome, Edit::Outcome::changed);
  EXPECT_EQ(lineOf(edit.text, "UID"), "UID:two");
}

TEST(ItemRemoval, AnOverrideElsewhereIsAnOccurrenceThatIsLeft) {
  const std::string text =
      withOverride(eventWith({start, "RRULE:FREQ=DAILY;COUNT=1"}), ":20300101T000000Z");
  const Edit edit = removed(text, at("2025-03-28T10:00:00"));
  EXPECT_EQ(edit.outcome, Edit::Outcome::changed);
  EXPECT_EQ(linesOf(edit.text, "UID").size(), 2U);
}

TEST(ItemRemoval, ASeriesWithoutAnEndNeverEnds) {
  std::string text = eventWith({start, "RRULE:FREQ=DAILY"});
  for (int day = 28; day <= 31; ++day) {
    text = withoutOccurrence(text, at("2025-03-" + std::to_string(day) + "T10:00:00"));
  }
  EXPECT_EQ(linesOf(text, "EXDATE").size(), 4U);
}

TEST(ItemRemoval, AnEventThatDoesNotRepeatIsItsOnlyOccurrence) {
  EXPECT_EQ(removed(eventWith({start}), at("2025-03-28T10:00:00")).outcome, Edit::Outcome::empty);
}

// --- moves

TEST(ItemMove, AFileOfOneItemMovesAsItIs) {
  const std::string text =
      "\xEF\xBB\xBF" + withOverride(eventWith({start, daily}), ":20250329T090000Z");
  EXPECT_EQ(extractItem(text, fileName, "one"), text);
}

TEST(ItemMove, TakesTheComponentsAndTheZonesTheyNameAsTheyAre) {
  const auto zone = [](const std::string& name) {
    return crlf({"BEGIN:VTIMEZONE", "TZID:" + name, "X-KEPT;A=b:c", "END:VTIMEZONE"});
  };
  const std::string event =
      crlf({"BEGIN:VEVENT", "UID:one", "DTSTART;TZID=\"A, B\":20250101T000000", "x:1",
            "BEGIN:VALARM", "TRIGGER;TZID=C:20250101T000000", "END:VALARM", "END:VEVENT"});
  const std::string frame =
      crlf({"BEGIN:VCALENDAR", "VERSION:2.0", "PRODID:-//Example//Sample//EN"});
  const std::string end = crlf({"END:VCALENDAR"});
  const std::string text = frame + crlf({"METHOD:PUBLISH", "X-WR-CALNAME:all"}) + zone("D") +
                           zone("A, B") + crlf(other) + event + zone("C") + end;
  EXPECT_EQ(extractItem(text, fileName, "one"), frame + zone("A, B") + zone("C") + event + end);
  const Edit rest = withoutItem(text, fileName, "one");
  std::string expected = text;
  EXPECT_EQ(rest.text, expected.erase(expected.find(event), event.size()));
}

TEST(ItemMove, KeepsTheLineEndsOfItsFile) {
  const std::string text =
      "BEGIN:VCALENDAR\nBEGIN:VEVENT\nUID:one\nEND:VEVENT\nBEGIN:VEVENT\nUID:two\nEND:VEVENT\nEND:"
      "VCALENDAR\n";
  EXPECT_EQ(extractItem(text, fileName, "one"),
            "BEGIN:VCALENDAR\nVERSION:2.0\nPRODID:-//Tidemark//tidemark-cal//EN\n"
            "BEGIN:VEVENT\nUID:one\nEND:VEVENT\nEND:VCALENDAR\n");
}

TEST(ItemMove, EndsALineThatTheFileDoesNotEnd) {
  const std::string text = "BEGIN:VEVENT\nUID:two\nEND:VEVENT\nBEGIN:VEVENT\nUID:one\nEND:VEVENT";
  const std::string taken = extractItem(text, fileName, "one");
  EXPECT_TRUE(taken.ends_with("UID:one\nEND:VEVENT\nEND:VCALENDAR\n")) << taken;
}

TEST(ItemMove, SaysWhatIsMissing) {
  EXPECT_EQ(extractItem(eventWith({start}), fileName, "two"), "");
  EXPECT_EQ(withoutItem(eventWith({start}), fileName, "two").outcome, Edit::Outcome::missing);
  EXPECT_EQ(withoutItem(eventWith({start}), fileName, "one").outcome, Edit::Outcome::empty);
}

}  // namespace
}  // namespace tidemark::local
