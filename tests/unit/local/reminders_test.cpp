#include "tests/unit/local/scratch_store.h"

namespace tidemark::local {
namespace {

constexpr auto dueMarch3 = "DUE:20250303T100000Z\r\n";

class Reminders : public ScratchStore {
 public:
  Titles openInMarch() { return openTitles(instant(2025, 3, 1), instant(2025, 4, 1)); }
  Titles doneInMarch() { return doneTitles(instant(2025, 3, 1), instant(2025, 4, 1)); }
  std::optional<DateComponents> dueOf(std::string_view identifier) {
    const ReminderRef reminder = store().calendarItemWithIdentifier(identifier);
    return reminder == nullptr ? std::nullopt : reminder->dueDateComponents();
  }
  // A to-do that repeats weekly from 3 March, with overrides.
  std::string seriesText(std::string_view components) {
    return calendarText(
        "BEGIN:VTODO\r\nUID:s\r\nDTSTART:20250303T090000Z\r\nDUE:20250303T100000Z\r\n"
        "RRULE:FREQ=WEEKLY\r\nSUMMARY:Series\r\nEND:VTODO\r\n" +
        std::string(components));
  }
};

TEST_F(Reminders, AreOpenByDueDateAndDoneByCompletion) {
  write(root() / "l/a.ics", todoText("a", "Open", dueMarch3));
  write(root() / "l/b.ics",
        todoText("b", "Done", "DUE:20250101T100000Z\r\nCOMPLETED:20250304T100000Z\r\n"));
  write(root() / "l/c.ics",
        todoText("c", "Status", "STATUS:COMPLETED\r\nLAST-MODIFIED:20250305T100000Z\r\n"));
  write(root() / "l/d.ics",
        todoText("d", "Percent", "PERCENT-COMPLETE:100\r\nLAST-MODIFIED:20250306T100000Z\r\n"));
  write(root() / "l/e.ics", todoText("e", "Undated"));
  write(root() / "l/f.ics", todoText("f", "Done once", "STATUS:COMPLETED\r\n"));
  write(root() / "l/g.ics",
        todoText("g", "Cancelled", "STATUS:CANCELLED\r\nDUE:20250303T100000Z\r\n"));
  EXPECT_EQ(openInMarch(), Titles{"Open"});
  EXPECT_EQ(doneInMarch(), (Titles{"Done", "Status", "Percent"}));
  EXPECT_EQ(openTitles(instant(2025, 3, 3, 10), instant(2025, 3, 3, 11)), Titles{"Open"});
  EXPECT_EQ(openTitles(instant(2025, 3, 3, 9), instant(2025, 3, 3, 10)), Titles{});
  EXPECT_TRUE(store().calendarItemWithIdentifier("l:f")->isCompleted());
  EXPECT_EQ(store().calendarItemWithIdentifier("l:g")->title(), "Cancelled");
  EXPECT_EQ(store().calendarItemWithIdentifier("l:h"), nullptr);
}

TEST_F(Reminders, WithoutALowerBoundAreAllBefore) {
  write(root() / "l/a.ics", todoText("a", "Old", "DUE:19990101T100000Z\r\n"));
  write(root() / "l/b.ics", todoText("b", "New", dueMarch3));
  Titles found;
  store().fetchRemindersMatchingPredicate(
      {ReminderPredicate::Kind::incompleteByDueDate, std::nullopt, instant(2025, 3, 4), {}},
      [&](auto reminders) {
        for (const ReminderRef& reminder : *reminders) found.emplace_back(*reminder->title());
      });
  EXPECT_EQ(found, (Titles{"Old", "New"}));
}

TEST_F(Reminders, DueDatesKeepTheirKind) {
  write(root() / "l/date.ics", todoText("date", "x", "DUE;VALUE=DATE:20250303\r\n"));
  write(root() / "l/floating.ics", todoText("floating", "x", "DUE:20250303T101500\r\n"));
  write(root() / "l/utc.ics", todoText("utc", "x", dueMarch3));
  write(root() / "l/zone.ics", todoText("zone", "x", "DUE;TZID=Europe/Berlin:20250303T101500\r\n"));
  write(root() / "l/length.ics",
        todoText("length", "x", "DTSTART:20250303T100000Z\r\nDURATION:PT30M\r\n"));
  DateComponents expected;
  expected.year = 2025;
  expected.month = 3;
  expected.day = 3;
  EXPECT_EQ(dueOf("l:date"), expected);
  expected.hour = 10;
  expected.minute = 15;
  expected.second = 0;
  EXPECT_EQ(dueOf("l:floating"), expected);
  expected.timeZone = "Europe/Berlin";
  EXPECT_EQ(dueOf("l:zone"), expected);
  expected.timeZone = "UTC";
  expected.minute = 0;
  EXPECT_EQ(dueOf("l:utc"), expected);
  expected.minute = 30;
  EXPECT_EQ(dueOf("l:length"), expected);
}

TEST_F(Reminders, SeriesStandsAtItsFirstOpenOccurrence) {
  const std::string done =
      "BEGIN:VTODO\r\nUID:s\r\nRECURRENCE-ID:20250303T090000Z\r\nSUMMARY:First\r\n"
      "DUE:20250303T100000Z\r\nSTATUS:COMPLETED\r\nCOMPLETED:20250303T110000Z\r\nEND:VTODO\r\n";
  write(root() / "l/s.ics", seriesText(""));
  EXPECT_EQ(dueOf("l:s")->day, 3);
  EXPECT_EQ(openInMarch(), Titles{"Series"});
  put(root() / "l/s.ics", seriesText(done));
  EXPECT_EQ(dueOf("l:s")->day, 10);
  EXPECT_EQ(openInMarch(), Titles{"Series"});
  EXPECT_EQ(openTitles(instant(2025, 3, 1), instant(2025, 3, 9)), Titles{});
  EXPECT_EQ(doneInMarch(), Titles{"First"});
  put(root() / "l/s.ics",
      seriesText(done + "BEGIN:VTODO\r\nUID:s\r\nRECURRENCE-ID:20250310T090000Z\r\n"
                        "SUMMARY:Second\r\nDUE:20250312T100000Z\r\nEND:VTODO\r\n"));
  EXPECT_EQ(dueOf("l:s")->day, 12);
  EXPECT_EQ(openInMarch(), Titles{"Second"});
}

TEST_F(Reminders, SeriesRepeatsByItsDueDateWhereItHasNoStart) {
  const std::string series = "DUE;VALUE=DATE:20250303\r\nRRULE:FREQ=WEEKLY\r\n";
  write(root() / "l/s.ics", todoText("s", "Series", series));
  EXPECT_EQ(dueOf("l:s")->day, 3);
  put(root() / "l/s.ics", todoText("s", "Series", series + "EXDATE;VALUE=DATE:20250303\r\n"));
  EXPECT_EQ(dueOf("l:s")->day, 10);
  EXPECT_EQ(openTitles(instant(2025, 3, 1), instant(2025, 3, 9)), Titles{});
  put(root() / "l/s.ics",
      calendarText("BEGIN:VTODO\r\nUID:s\r\nSUMMARY:Series\r\n" + series +
                   "END:VTODO\r\nBEGIN:VTODO\r\nUID:s\r\nSUMMARY:First\r\n"
                   "RECURRENCE-ID;VALUE=DATE:20250303\r\nDUE;VALUE=DATE:20250303\r\n"
                   "COMPLETED:20250304T100000Z\r\nEND:VTODO\r\n"));
  EXPECT_EQ(dueOf("l:s")->day, 10);
  EXPECT_EQ(openInMarch(), Titles{"Series"});
  EXPECT_EQ(doneInMarch(), Titles{"First"});
}

TEST_F(Reminders, CompletingShowsTheNextDueDate) {
  const std::vector<std::pair<std::string, std::string>> repetitions = {
      {"DTSTART;VALUE=DATE:20250302\r\n", "RRULE:FREQ=WEEKLY\r\n"},
      {"", "RRULE:FREQ=WEEKLY\r\n"},
      {"DTSTART;VALUE=DATE:20250302\r\n", "RDATE;VALUE=DATE:20250309\r\n"},
      {"", "RDATE;VALUE=DATE:20250310\r\n"},
  };
  for (const auto& [start, repetition] : repetitions) {
    SCOPED_TRACE(start + repetition);
    write(root() / "l/a.ics",
          todoText("a", "A", start + "DUE;VALUE=DATE:20250303\r\n" + repetition));
    const ReminderRef reminder = store().calendarItemWithIdentifier("l:a");
    reminder->setCompleted(true);
    ASSERT_TRUE(store().saveReminder(*reminder));
    EXPECT_TRUE(store().calendarItemWithIdentifier("l:a")->isCompleted());
    EXPECT_EQ(dueOf("l:a")->day, 3);
    EXPECT_EQ(openTitles(instant(2025, 3, 10), instant(2025, 3, 11)), Titles{"A"});
    EXPECT_EQ(openTitles(instant(2025, 3, 1), instant(2025, 3, 10)), Titles{});
    for (const auto& file : std::filesystem::directory_iterator(root() / "l")) {
      std::filesystem::remove(file);
    }
  }
}

TEST_F(Reminders, DueDateInAnotherZoneKeepsItsDistance) {
  // Germany puts its clocks forward on 30 March.
  write(root() / "l/s.ics",
        todoText("s", "S",
                 "DTSTART:20250329T090000Z\r\nDUE;TZID=Europe/Berlin:20250329T120000\r\n"
                 "RRULE:FREQ=DAILY\r\nEXDATE:20250329T090000Z\r\n"));
  EXPECT_EQ(dueOf("l:s")->day, 30);
  EXPECT_EQ(dueOf("l:s")->hour, 13);
}

TEST_F(Reminders, ChangesShowInBothQueries) {
  write(root() / "l/a.ics", todoText("a", "A", dueMarch3));
  EXPECT_EQ(openInMarch(), Titles{"A"});
  put(root() / "l/a.ics",
      todoText("a", "A", std::string(dueMarch3) + "COMPLETED:20250304T100000Z\r\n"));
  EXPECT_EQ(openInMarch(), Titles{});
  EXPECT_EQ(doneInMarch(), Titles{"A"});
  std::filesystem::remove(root() / "l/a.ics");
  EXPECT_EQ(doneInMarch(), Titles{});
}

TEST_F(Reminders, KeepWhatIsSetBesideTheFile) {
  write(root() / "l/a.ics", todoText("a", "A", "PRIORITY:5\r\nDESCRIPTION:N\r\n"));
  const ReminderRef reminder = store().calendarItemWithIdentifier("l:a");
  EXPECT_EQ(reminder->priority(), 5);
  EXPECT_EQ(reminder->calendarItemIdentifier(), "l:a");
  DateComponents due;
  due.year = 2025;
  due.month = 5;
  reminder->setDueDateComponents(due);
  reminder->setCompleted(true);
  reminder->setNotes(std::nullopt);
  EXPECT_EQ(reminder->dueDateComponents(), due);
  EXPECT_TRUE(reminder->isCompleted());
  EXPECT_EQ(reminder->notes(), std::nullopt);
  EXPECT_EQ(store().calendarItemWithIdentifier("l:a")->notes(), "N");
}

}  // namespace
}  // namespace tidemark::local
