// Which items count, and what events say.
#include <cmath>
#include <cstdlib>

#include "tests/unit/local/scratch_store.h"

namespace tidemark::local {
namespace {

class Items : public ScratchStore {
 public:
  // A daily series of three from 3 March, with further components.
  std::string seriesText(std::string_view components) {
    return calendarText(
        "BEGIN:VEVENT\r\nUID:s\r\nDTSTART:20250303T100000Z\r\nDTEND:20250303T110000Z\r\n"
        "RRULE:FREQ=DAILY;COUNT=3\r\nSUMMARY:Series\r\nEND:VEVENT\r\n" +
        std::string(components));
  }

  static std::string component(std::string_view lines) {
    return "BEGIN:VEVENT\r\nUID:s\r\n" + std::string(lines) + "END:VEVENT\r\n";
  }
};

TEST_F(Items, ComeInTheStoresOrder) {
  write(root() / "b/1.ics", eventText("1", "b1"));
  write(root() / "a/2.ics", eventText("2", "a2"));
  write(root() / "a/1.ics", eventText("1", "a1"));
  write(root() / "a-b/1.ics", eventText("1", "a-b1"));
  write(root() / "a/early.ics", eventText("z", "early", "", "20250301T100000Z"));
  EXPECT_EQ(titles(), (Titles{"early", "a-b1", "a1", "a2", "b1"}));
}

TEST_F(Items, OfOneUidTheFirstFileCounts) {
  write(root() / "work/b.ics", eventText("same", "From b"));
  write(root() / "work/c.ics", eventText("same", "From c"));
  write(root() / "work/a.ics", eventText("same", "From a"));
  EXPECT_EQ(titles(), Titles{"From a"});
  std::filesystem::remove(root() / "work/a.ics");
  EXPECT_EQ(titles(), Titles{"From b"});
  put(root() / "work/b.ics", eventText("other", "Another"));
  EXPECT_EQ(titles(), (Titles{"Another", "From c"}));
  put(root() / "work/0.ics", eventText("same", "From 0"));
  EXPECT_EQ(titles(), (Titles{"Another", "From 0"}));
  EXPECT_EQ(store().eventWithIdentifier("work:same")->title(), "From 0");
}

TEST_F(Items, WithoutAUidAreNamedByTheirFile) {
  write(
      root() / "work/party.ics",
      calendarText("BEGIN:VEVENT\r\nDTSTART:20250303T100000Z\r\nSUMMARY:Party\r\nEND:VEVENT\r\n"));
  ASSERT_EQ(events().size(), 1u);
  const std::string identifier(*events().front()->eventIdentifier());
  EXPECT_TRUE(identifier == "work:party.ics" || identifier == "work:party") << identifier;
  EXPECT_EQ(store().eventWithIdentifier(identifier)->title(), "Party");
}

TEST_F(Items, OfTwoMastersTheNewerCounts) {
  write(root() / "work/a.ics",
        calendarText(component("DTSTART:20250303T100000Z\r\nSUMMARY:Old\r\nSEQUENCE:1\r\n") +
                     component("DTSTART:20250303T100000Z\r\nSUMMARY:New\r\nSEQUENCE:2\r\n")));
  EXPECT_EQ(titles(), Titles{"New"});
  put(root() / "work/a.ics", calendarText(component("DTSTART:20250303T100000Z\r\nSUMMARY:New\r\n"
                                                    "LAST-MODIFIED:20250102T000000Z\r\n") +
                                          component("DTSTART:20250303T100000Z\r\nSUMMARY:Old\r\n"
                                                    "LAST-MODIFIED:20250101T000000Z\r\n")));
  EXPECT_EQ(titles(), Titles{"New"});
}

TEST_F(Items, OverridesStandWhereTheyAre) {
  write(root() / "work/s.ics",
        seriesText(component("RECURRENCE-ID:20250304T100000Z\r\nDTSTART:20250310T120000Z\r\n"
                             "SUMMARY:Moved\r\n")));
  EXPECT_EQ(titles(), (Titles{"Series", "Series", "Moved"}));
  EXPECT_EQ(titles(instant(2025, 3, 4), instant(2025, 3, 5)), Titles{});
  const auto moved = events(instant(2025, 3, 10), instant(2025, 3, 11));
  ASSERT_EQ(moved.size(), 1u);
  EXPECT_EQ(moved[0]->eventIdentifier(), "work:s");
  EXPECT_EQ(moved[0]->occurrenceDate(), instant(2025, 3, 4, 10));
  EXPECT_TRUE(moved[0]->hasRecurrenceRules());
  EXPECT_TRUE(events()[0]->hasRecurrenceRules());
  EXPECT_EQ(events()[1]->occurrenceDate(), instant(2025, 3, 5, 10));
}

TEST_F(Items, OverridesAreMatchedByInstant) {
  write(root() / "work/s.ics",
        seriesText(component("RECURRENCE-ID;TZID=Europe/Berlin:20250304T110000\r\n"
                             "DTSTART:20250304T120000Z\r\nSUMMARY:Moved\r\n")));
  EXPECT_EQ(titles(), (Titles{"Series", "Moved", "Series"}));
}

TEST_F(Items, OverrideOfNoOccurrenceIsOneOfItsOwn) {
  write(root() / "work/s.ics",
        seriesText(component("RECURRENCE-ID:20250304T170000Z\r\nDTSTART:20250304T170000Z\r\n"
                             "SUMMARY:Extra\r\n")));
  EXPECT_EQ(titles(), (Titles{"Series", "Series", "Extra", "Series"}));
}

TEST_F(Items, OverrideWithoutItsSeriesStandsForItself) {
  write(root() / "work/s.ics",
        calendarText(component("RECURRENCE-ID:20250304T100000Z\r\nDTSTART:20250310T120000Z\r\n"
                               "SUMMARY:Alone\r\n")));
  ASSERT_EQ(titles(), Titles{"Alone"});
  EXPECT_FALSE(events()[0]->hasRecurrenceRules());
  EXPECT_EQ(events()[0]->occurrenceDate(), instant(2025, 3, 4, 10));
  EXPECT_EQ(store().eventWithIdentifier("work:s")->title(), "Alone");
}

TEST_F(Items, OverrideMayCountForAllThatFollow) {
  write(root() / "work/s.ics",
        seriesText(component("RECURRENCE-ID;RANGE=THISANDFUTURE:20250304T100000Z\r\n"
                             "DTSTART:20250304T120000Z\r\nDTEND:20250304T123000Z\r\n"
                             "SUMMARY:Later\r\n")));
  EXPECT_EQ(titles(), (Titles{"Series", "Later", "Later"}));
  const EventRef last = events()[2];
  EXPECT_EQ(last->startDate(), instant(2025, 3, 5, 12));
  EXPECT_EQ(last->endDate(), instant(2025, 3, 5, 12, 30));
  EXPECT_EQ(last->occurrenceDate(), instant(2025, 3, 5, 10));
  put(root() / "work/s.ics", seriesText(""));
  EXPECT_EQ(titles(), (Titles{"Series", "Series", "Series"}));
}

TEST_F(Items, IdentifierOfASeriesGivesTheFirstThatIsLeft) {
  write(root() / "work/s.ics",
        calendarText(component("DTSTART:20250303T100000Z\r\nRRULE:FREQ=DAILY\r\nSUMMARY:Series\r\n"
                               "EXDATE:20250303T100000Z,20250304T100000Z\r\n") +
                     component("RECURRENCE-ID:20250305T100000Z\r\nDTSTART:20250305T150000Z\r\n"
                               "SUMMARY:Moved\r\n")));
  const EventRef first = store().eventWithIdentifier("work:s");
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first->title(), "Moved");
  EXPECT_EQ(first->occurrenceDate(), instant(2025, 3, 5, 10));
  EXPECT_EQ(store().eventWithIdentifier("work:t"), nullptr);
  EXPECT_EQ(store().eventWithIdentifier("work"), nullptr);
  EXPECT_EQ(store().eventWithIdentifier(""), nullptr);
}

TEST_F(Items, OfTwoFirstsTheOneMeantEarlierIsGiven) {
  write(root() / "work/s.ics",
        seriesText(component("RECURRENCE-ID:20250305T100000Z\r\nDTSTART:20250303T100000Z\r\n"
                             "SUMMARY:Moved\r\n")));
  const EventRef first = store().eventWithIdentifier("work:s");
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first->title(), "Series");
  EXPECT_EQ(first->occurrenceDate(), instant(2025, 3, 3, 10));
}

TEST_F(Items, RangesAreHalfOpen) {
  write(root() / "work/a.ics", eventText("a", "Hour"));
  write(root() / "work/b.ics",
        calendarText("BEGIN:VEVENT\r\nUID:b\r\nDTSTART:20250303T100000Z\r\nSUMMARY:Moment\r\n"
                     "END:VEVENT\r\n"));
  EXPECT_EQ(titles(instant(2025, 3, 3, 9), instant(2025, 3, 3, 10)), Titles{});
  EXPECT_EQ(titles(instant(2025, 3, 3, 11), instant(2025, 3, 3, 12)), Titles{});
  EXPECT_EQ(titles(instant(2025, 3, 3, 10), instant(2025, 3, 3, 10, 1)),
            (Titles{"Hour", "Moment"}));
  EXPECT_EQ(titles(instant(2025, 3, 3, 10, 59), instant(2025, 3, 3, 12)), Titles{"Hour"});
  EXPECT_EQ(titles(instant(2025, 3, 4), instant(2025, 3, 3)), Titles{});
  using namespace std::chrono_literals;
  const Instant end = instant(2025, 3, 3, 11);
  EXPECT_EQ(titles(end - 0.5s, end + 1h), Titles{"Hour"});
  EXPECT_EQ(titles(instant(2025, 3, 3, 10) + 0.5s, end), Titles{"Hour"});
  EXPECT_EQ(titles(instant(2025, 3, 3, 9), instant(2025, 3, 3, 10) + 0.5s),
            (Titles{"Hour", "Moment"}));
}

TEST_F(Items, RangesMayBeAsWideAsTheyLike) {
  write(root() / "work/a.ics", eventText("a", "Ancient", "", "00010102T100000Z"));
  write(root() / "work/b.ics", eventText("b", "Distant", "", "99991230T100000Z"));
  write(root() / "work/c.ics", eventText("c", "Now"));
  using Seconds = std::chrono::duration<double>;
  EXPECT_EQ(titles(Instant(Seconds(-1e300)), Instant(Seconds(1e300))),
            (Titles{"Ancient", "Now", "Distant"}));
  EXPECT_EQ(titles(Instant(Seconds(1e15)), Instant(Seconds(1e300))), Titles{});
  EXPECT_EQ(titles(Instant(Seconds(0)), Instant(Seconds(std::nan("")))), Titles{});
}

TEST_F(Items, SayWhatTheFileSays) {
  ::setenv("TZ", "UTC", 1);
  write(root() / "work/a.ics",
        eventText("a", "T\\, t",
                  "DESCRIPTION:N\\nn\r\nLOCATION:\r\nURL:https://example.org/\r\n"
                  "LAST-MODIFIED:20250101T000000Z\r\nTRANSP:TRANSPARENT\r\n"
                  "ATTENDEE;CN=Ada:mailto:ada@example.org\r\n"
                  "ATTENDEE:mailto:bob@example.org\r\n"));
  const EventRef event = store().eventWithIdentifier("work:a");
  ASSERT_NE(event, nullptr);
  EXPECT_EQ(event->title(), "T, t");
  EXPECT_EQ(event->notes(), "N\nn");
  EXPECT_EQ(event->location(), "");
  EXPECT_EQ(event->url(), "https://example.org/");
  EXPECT_EQ(event->lastModifiedDate(), instant(2025, 1, 1));
  EXPECT_EQ(event->availability(), 1);
  EXPECT_FALSE(event->isAllDay());
  ASSERT_EQ(event->attendees()->size(), 2u);
  EXPECT_EQ((*event->attendees())[0].name, "Ada");
  EXPECT_EQ((*event->attendees())[0].url, "mailto:ada@example.org");
  EXPECT_EQ((*event->attendees())[1].name, std::nullopt);
  EXPECT_EQ(event->calendar()->calendarIdentifier, "work");
}

TEST_F(Items, KeepWhatIsSetBesideTheFile) {
  write(root() / "work/a.ics", eventText("a", "Before"));
  write(root() / "home/b.ics", eventText("b", "Other"));
  const EventRef event = store().eventWithIdentifier("work:a");
  event->setTitle("After");
  event->setStartDate(instant(2025, 4, 1));
  event->setUrl("https://example.org/");
  event->setAllDay(true);
  event->setAvailability(1);
  event->setCalendar(calendar("home"));
  EXPECT_EQ(event->title(), "After");
  EXPECT_EQ(event->startDate(), instant(2025, 4, 1));
  EXPECT_EQ(event->endDate(), instant(2025, 3, 3, 11));
  EXPECT_EQ(event->url(), "https://example.org/");
  EXPECT_TRUE(event->isAllDay());
  EXPECT_EQ(event->availability(), 1);
  EXPECT_EQ(event->calendar()->calendarIdentifier, "home");
  event->setUrl(std::nullopt);
  EXPECT_EQ(event->url(), std::nullopt);
  event->setCalendar(nullptr);
  EXPECT_EQ(event->calendar(), nullptr);
  EXPECT_EQ(store().eventWithIdentifier("work:a")->title(), "Before");
}

TEST_F(Items, LiveAsLongAsSomebodyHoldsThem) {
  write(root() / "work/a.ics", eventText("a", "A title that is too long to stand in a string"));
  const EventRef held = store().eventWithIdentifier("work:a");
  for (int change = 0; change < 3; ++change) {
    put(root() / "work/a.ics", eventText("a", "Changed " + std::to_string(change)));
    EXPECT_EQ(titles(), Titles{"Changed " + std::to_string(change)});
  }
  std::filesystem::remove_all(root() / "work");
  EXPECT_EQ(titles(), Titles{});
  EXPECT_EQ(held->title(), "A title that is too long to stand in a string");
  EXPECT_EQ(held->eventIdentifier(), "work:a");
  EXPECT_EQ(held->calendar()->title, "work");
}

TEST_F(Items, LongEventsAreFoundInTheirMiddle) {
  write(
      root() / "work/a.ics",
      calendarText("BEGIN:VEVENT\r\nUID:a\r\nDTSTART:20240101T000000Z\r\nDTEND:20300101T000000Z\r\n"
                   "SUMMARY:Years\r\nEND:VEVENT\r\n"));
  write(
      root() / "work/b.ics",
      calendarText("BEGIN:VEVENT\r\nUID:b\r\nDTSTART:20250225T000000Z\r\nDTEND:20250315T000000Z\r\n"
                   "SUMMARY:Weeks\r\nEND:VEVENT\r\n"));
  write(
      root() / "work/c.ics",
      calendarText("BEGIN:VEVENT\r\nUID:c\r\nDTSTART:20200101T000000Z\r\nDTEND:20200501T000000Z\r\n"
                   "RRULE:FREQ=YEARLY\r\nSUMMARY:Months\r\nEND:VEVENT\r\n"));
  EXPECT_EQ(titles(instant(2025, 3, 14), instant(2025, 3, 15)),
            (Titles{"Years", "Months", "Weeks"}));
  put(root() / "work/a.ics", eventText("a", "Short"));
  std::filesystem::remove(root() / "work/c.ics");
  EXPECT_EQ(titles(instant(2025, 3, 14), instant(2025, 3, 15)), Titles{"Weeks"});
}

}  // namespace
}  // namespace tidemark::local
