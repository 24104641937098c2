// Changes of to-dos, and the completion of those that repeat.

#include "calendar_checks.h"
#include "sample.h"
#include "store/local/text/calendar_reader.h"

namespace tidemark::local {
namespace {

TodoChange completed(bool isCompleted) {
  TodoChange change;
  change.completed = isCompleted;
  return change;
}

TodoChange due(int day, std::optional<int> hour = std::nullopt,
               std::optional<int> minute = std::nullopt,
               std::optional<std::string> timeZone = std::nullopt) {
  TodoChange change;
  change.due = DateComponents{2025, 7, day, hour, minute, {}, std::move(timeZone)};
  return change;
}

TodoEdit complete(const std::string& text) {
  TodoEdit edit = changeTodo(text, fileName, {"one", {}}, completed(true), now);
  EXPECT_EQ(edit.outcome, Edit::Outcome::changed);
  return edit;
}

Successor successorOf(const std::string& text) {
  TodoEdit edit = complete(text);
  EXPECT_TRUE(edit.successor);
  return edit.successor.value_or(Successor{});
}

// --- fields

TEST(TodoEditor, ChangesTitleAndNotes) {
  TodoChange change;
  change.title = "a, b";
  change.notes = std::optional<std::string>("c");
  const std::string text = changed(todoWith({"SUMMARY;LANGUAGE=de:x", "DESCRIPTION:y"}), change);
  EXPECT_EQ(lineOf(text, "SUMMARY"), "SUMMARY;LANGUAGE=de:a\\, b");
  EXPECT_EQ(lineOf(text, "DESCRIPTION"), "DESCRIPTION:c");
  EXPECT_EQ(lineOf(text, "SEQUENCE"), "SEQUENCE:1");
  EXPECT_EQ(lineOf(text, "LAST-MODIFIED"), "LAST-MODIFIED:" + stamp);
}

TEST(TodoEditor, TakesNotesOut) {
  TodoChange change;
  change.notes = std::optional<std::string>();
  EXPECT_TRUE(linesOf(changed(todoWith({"DESCRIPTION:a", "DESCRIPTION:b"}), change), "DESCRIPTION")
                  .empty());
}

TEST(TodoEditor, NothingToChangeLeavesEveryByte) {
  const std::string text =
      todoWith({"DUE;VALUE=DATE:20250704", "STATUS:IN-PROCESS", "PERCENT-COMPLETE:50"});
  TodoChange change = due(4);
  change.completed = false;
  EXPECT_EQ(changed(text, change), text);
}

// --- due

TEST(TodoEditor, ADueDayIsADateAndADueTimeFloats) {
  EXPECT_EQ(lineOf(changed(todoWith({}), due(4)), "DUE"), "DUE;VALUE=DATE:20250704");
  EXPECT_EQ(lineOf(changed(todoWith({}), due(4, 0)), "DUE"), "DUE:20250704T000000");
  EXPECT_EQ(lineOf(changed(todoWith({}), due(4, 9, 5)), "DUE"), "DUE:20250704T090500");
}

TEST(TodoEditor, ADueTimeOfAZoneKeepsIt) {
  EXPECT_EQ(lineOf(changed(todoWith({}), due(4, 9, 5, "UTC")), "DUE"), "DUE:20250704T090500Z");
  EXPECT_EQ(lineOf(changed(todoWith({}), due(4, 9, 5, "GMT+0530")), "DUE"), "DUE:20250704T033500Z");
  const std::string text = changed(todoWith({}), due(4, 9, 5, "America/New_York"));
  EXPECT_EQ(lineOf(text, "DUE"), "DUE;TZID=America/New_York:20250704T090500");
  EXPECT_EQ(lineOf(text, "TZID"), "TZID:America/New_York");
}

TEST(TodoEditor, ANewDueChangesTheLineInItsPlace) {
  const std::string text =
      changed(todoWith({"DUE;X-A=b;TZID=Europe/Berlin:20250701T090000", "SUMMARY:a"}), due(4));
  EXPECT_NE(text.find("DUE;VALUE=DATE;X-A=b:20250704\r\nSUMMARY:a"), std::string::npos) << text;
}

TEST(TodoEditor, ADueTakesThePlaceOfADuration) {
  const std::string text =
      changed(todoWith({"DTSTART;VALUE=DATE:20250701", "DURATION:P2D", "X-A:1"}), due(4));
  EXPECT_NE(text.find("DTSTART;VALUE=DATE:20250701\r\nDUE;VALUE=DATE:20250704\r\nX-A:1"),
            std::string::npos)
      << text;
}

TEST(TodoEditor, AStartBeforeTheDueStays) {
  EXPECT_EQ(
      lineOf(changed(todoWith({"DTSTART;VALUE=DATE:20250701", "DUE;VALUE=DATE:20250702"}), due(4)),
             "DTSTART"),
      "DTSTART;VALUE=DATE:20250701");
}

TEST(TodoEditor, AStartThatWouldBeTooLateMovesAlong) {
  EXPECT_EQ(
      lineOf(changed(todoWith({"DTSTART;VALUE=DATE:20250710", "DUE;VALUE=DATE:20250712"}), due(4)),
             "DTSTART"),
      "DTSTART;VALUE=DATE:20250702");
  EXPECT_EQ(lineOf(changed(todoWith({"DTSTART:20250710T090000", "DUE:20250710T100000"}), due(4, 8)),
                   "DTSTART"),
            "DTSTART:20250704T070000");
  EXPECT_EQ(lineOf(changed(todoWith({"DTSTART;VALUE=DATE:20250710"}), due(4)), "DTSTART"),
            "DTSTART;VALUE=DATE:20250703");
}

TEST(TodoEditor, AStartOfAnotherKindBecomesOfTheDuesKind) {
  EXPECT_EQ(lineOf(changed(todoWith({"DTSTART;X-A=b;TZID=Europe/Berlin:20250701T090000",
                                     "DUE;TZID=Europe/Berlin:20250703T090000"}),
                           due(4)),
                   "DTSTART"),
            "DTSTART;VALUE=DATE;X-A=b:20250701");
  EXPECT_EQ(lineOf(changed(todoWith({"DTSTART;VALUE=DATE:20250701", "DUE;VALUE=DATE:20250703"}),
                           due(4, 9)),
                   "DTSTART"),
            "DTSTART:20250701T000000");
  EXPECT_EQ(
      lineOf(changed(todoWith({"DTSTART:20250701T080000Z", "DUE:20250703T080000Z"}), due(4, 9)),
             "DTSTART"),
      "DTSTART:20250701T100000");
  EXPECT_EQ(lineOf(changed(todoWith({"DTSTART:20250704T080000Z", "DUE:20250704T100000Z"}), due(4)),
                   "DTSTART"),
            "DTSTART;VALUE=DATE:20250703");
}

// --- completion

TEST(TodoEditor, CompletesAndReopens) {
  const std::string open = todoWith({"STATUS;X-A=b:IN-PROCESS", "PERCENT-COMPLETE:50", "X-C:d"});
  const std::string done = changed(open, completed(true));
  EXPECT_EQ(lineOf(done, "STATUS"), "STATUS;X-A=b:COMPLETED");
  EXPECT_EQ(lineOf(done, "COMPLETED"), "COMPLETED:" + stamp);
  EXPECT_EQ(lineOf(done, "PERCENT-COMPLETE"), "PERCENT-COMPLETE:100");
  const std::string reopened = changed(done, completed(false));
  EXPECT_EQ(lineOf(reopened, "STATUS"), "STATUS;X-A=b:NEEDS-ACTION");
  EXPECT_TRUE(linesOf(reopened, "COMPLETED").empty());
  EXPECT_TRUE(linesOf(reopened, "PERCENT-COMPLETE").empty());
  EXPECT_EQ(lineOf(reopened, "SEQUENCE"), "SEQUENCE:2");
}

TEST(TodoEditor, WhatIsCompletedStaysAsItWasCompleted) {
  for (const std::string line :
       {"STATUS:COMPLETED", "COMPLETED:20240101T000000Z", "PERCENT-COMPLETE:100"}) {
    const std::string text = todoWith({line});
    EXPECT_EQ(changed(text, completed(true)), text);
    EXPECT_EQ(lineOf(changed(text, completed(false)), "STATUS"), "STATUS:NEEDS-ACTION");
  }
}

TEST(TodoEditor, RemovesATodo) {
  EXPECT_EQ(removeTodo(todoWith({}), fileName, {"one", {}}, now).outcome, Edit::Outcome::empty);
  EXPECT_EQ(removeTodo(eventWith({"DTSTART:20250101T000000Z"}), fileName, {"one", {}}, now).outcome,
            Edit::Outcome::missing);
}

// --- to-dos that repeat

const std::string start = "DTSTART;TZID=Europe/Berlin:20250328T090000";
const std::string dueAfter = "DUE;TZID=Europe/Berlin:20250328T170000";

TEST(TodoSuccessor, CarriesTheRuleOnFromTheNextOccurrence) {
  const std::string text =
      todoWith({start, dueAfter, "RRULE:FREQ=WEEKLY;COUNT=3;BYDAY=FR", "SUMMARY;X-A=b:c",
                "RELATED-TO:parent", "STATUS:IN-PROCESS", "PERCENT-COMPLETE:10", "SEQUENCE:4",
                "BEGIN:VALARM", "TRIGGER;RELATED=END:-PT1H", "END:VALARM"});
  const TodoEdit edit = complete(text);
  EXPECT_EQ(lineOf(edit.text, "UID"), "UID:one");
  EXPECT_EQ(lineOf(edit.text, "STATUS"), "STATUS:COMPLETED");
  EXPECT_EQ(lineOf(edit.text, "DUE"), dueAfter);
  EXPECT_TRUE(linesOf(edit.text, "RRULE").empty());

  ASSERT_TRUE(edit.successor);
  EXPECT_EQ(edit.successor->text, crlf({"BEGIN:VCALENDAR",
                                        "VERSION:2.0",
                                        "PRODID:-//Example//Sample//EN",
                                        "BEGIN:VTODO",
                                        "UID:" + edit.successor->uid,
                                        "DTSTAMP:" + stamp,
                                        "DTSTART;TZID=Europe/Berlin:20250404T090000",
                                        "DUE;TZID=Europe/Berlin:20250404T170000",
                                        "RRULE:FREQ=WEEKLY;COUNT=2;BYDAY=FR",
                                        "SUMMARY;X-A=b:c",
                                        "RELATED-TO:parent",
                                        "STATUS:NEEDS-ACTION",
                                        "SEQUENCE:0",
                                        "CREATED:" + stamp,
                                        "LAST-MODIFIED:" + stamp,
                                        "BEGIN:VALARM",
                                        "TRIGGER;RELATED=END:-PT1H",
                                        "END:VALARM",
                                        "END:VTODO",
                                        "END:VCALENDAR"}));
}

TEST(TodoSuccessor, IsTheSameEachTime) {
  const std::string text = todoWith({start, dueAfter, "RRULE:FREQ=WEEKLY"});
  const Successor first = successorOf(text);
  EXPECT_EQ(successorOf(text).uid, first.uid);
  EXPECT_EQ(first.uid.size(), 36U);
  const TodoEdit later = changeTodo(text, fileName, {"one", {}}, completed(true), now + 1000);
  EXPECT_EQ(later.successor->uid, first.uid);
  // Of another date, and of another to-do, it is another.
  const TodoEdit next = changeTodo(first.text, fileName, {first.uid, {}}, completed(true), now);
  EXPECT_NE(next.successor->uid, first.uid);
  EXPECT_NE(successorOf(todoWith({"DTSTART:20250329T090000Z", "RRULE:FREQ=WEEKLY"})).uid,
            first.uid);
}

TEST(TodoSuccessor, ChainsThroughTheWholeSeries) {
  std::string text = todoWith({"DTSTART;VALUE=DATE:20250331", "DUE;VALUE=DATE:20250401",
                               "RRULE:FREQ=MONTHLY;COUNT=4", "EXDATE;VALUE=DATE:20250531"});
  std::vector<std::string> dues;
  std::string uid = "one";
  while (true) {
    dues.push_back(lineOf(text, "DUE"));
    const TodoEdit edit = changeTodo(text, fileName, {uid, {}}, completed(true), now);
    if (!edit.successor) break;
    text = edit.successor->text;
    uid = edit.successor->uid;
  }
  EXPECT_EQ(dues, (std::vector<std::string>{"DUE;VALUE=DATE:20250401", "DUE;VALUE=DATE:20250801",
                                            "DUE;VALUE=DATE:20250901"}));
}

TEST(TodoSuccessor, KeepsTheTimeOfDayAcrossAChangeOfOffset) {
  const Successor next =
      successorOf(todoWith({"DTSTART;TZID=Europe/Berlin:20250329T230000",
                            "DUE;TZID=Europe/Berlin:20250330T040000", "RRULE:FREQ=DAILY"}));
  EXPECT_EQ(lineOf(next.text, "DTSTART"), "DTSTART;TZID=Europe/Berlin:20250330T230000");
  EXPECT_EQ(lineOf(next.text, "DUE"), "DUE;TZID=Europe/Berlin:20250331T040000");
}

TEST(TodoSuccessor, RepeatsFromTheDueWhereThereIsNoStart) {
  const Successor next = successorOf(todoWith({"DUE:20250329T090000", "RRULE:FREQ=DAILY;COUNT=2"}));
  EXPECT_EQ(lineOf(next.text, "DUE"), "DUE:20250330T090000");
  EXPECT_EQ(lineOf(next.text, "RRULE"), "RRULE:FREQ=DAILY;COUNT=1");
}

TEST(TodoSuccessor, KeepsADuration) {
  const Successor next =
      successorOf(todoWith({"DTSTART;VALUE=DATE:20250329", "DURATION:P1D", "RRULE:FREQ=DAILY"}));
  EXPECT_EQ(lineOf(next.text, "DTSTART"), "DTSTART;VALUE=DATE:20250330");
  EXPECT_EQ(lineOf(next.text, "DURATION"), "DURATION:P1D");
  EXPECT_TRUE(linesOf(next.text, "DUE").empty());
}

TEST(TodoSuccessor, TheLastOneHasNone) {
  const TodoEdit edit = complete(todoWith({start, "RRULE:FREQ=DAILY;COUNT=1"}));
  EXPECT_FALSE(edit.successor);
  EXPECT_TRUE(linesOf(edit.text, "RRULE").empty());
}

TEST(TodoSuccessor, DropsDatesThatAreOver) {
  const Successor next = successorOf(
      todoWith({"DTSTART:20250101T090000Z", "RDATE;X-A=b:20250103T090000Z,20250102T090000Z",
                "RDATE:20250102T090000Z"}));
  EXPECT_EQ(lineOf(next.text, "DTSTART"), "DTSTART:20250102T090000Z");
  EXPECT_EQ(lineOf(next.text, "RDATE"), "RDATE;X-A=b:20250103T090000Z");
}

TEST(TodoSuccessor, AlarmsOfAnInstantMoveAlong) {
  const Successor next =
      successorOf(todoWith({start, "RRULE:FREQ=DAILY;INTERVAL=3", "BEGIN:VALARM",
                            "TRIGGER;VALUE=DATE-TIME:20250328T073000Z", "END:VALARM"}));
  // Half an hour before nine, which is an hour nearer to UTC by then.
  EXPECT_EQ(lineOf(next.text, "TRIGGER"), "TRIGGER;VALUE=DATE-TIME:20250331T063000Z");
}

TEST(TodoSuccessor, SkipsWhatWasCompletedAhead) {
  std::string text = todoWith({"DUE;VALUE=DATE:20250328", "RRULE:FREQ=DAILY;COUNT=3"});
  text.insert(text.find("END:VCALENDAR"),
              crlf({"BEGIN:VTODO", "UID:one", "RECURRENCE-ID;VALUE=DATE:20250329",
                    "DUE;VALUE=DATE:20250329", "STATUS:COMPLETED", "END:VTODO"}));
  const TodoEdit edit = complete(text);
  EXPECT_EQ(lineOf(edit.successor->text, "DUE"), "DUE;VALUE=DATE:20250330");
  EXPECT_EQ(lineOf(edit.successor->text, "RRULE"), "RRULE:FREQ=DAILY;COUNT=1");
  EXPECT_EQ(lineOf(edit.text, "RECURRENCE-ID"), "RECURRENCE-ID;VALUE=DATE:20250329");
}

TEST(TodoSuccessor, TakesOverridesOfTheFutureAlong) {
  std::string text = todoWith({"DUE;VALUE=DATE:20250328", "RRULE:FREQ=DAILY"});
  text.insert(text.find("END:VCALENDAR"),
              crlf({"BEGIN:VTODO", "UID:one", "RECURRENCE-ID;VALUE=DATE:20250401",
                    "DUE;VALUE=DATE:20250405", "X-A:b", "END:VTODO"}));
  const TodoEdit edit = complete(text);
  EXPECT_TRUE(linesOf(edit.text, "RECURRENCE-ID").empty());
  const std::string override = componentOf(edit.successor->text, "VTODO", 1);
  EXPECT_EQ(override,
            crlf({"BEGIN:VTODO", "UID:" + edit.successor->uid, "RECURRENCE-ID;VALUE=DATE:20250401",
                  "DUE;VALUE=DATE:20250405", "X-A:b", "END:VTODO"}));
}

TEST(TodoSuccessor, CarriesOnWhatChangedInTheSameRequest) {
  TodoChange change = completed(true);
  change.title = "new";
  change.due = DateComponents{2025, 3, 29, {}, {}, {}, {}};
  const TodoEdit edit =
      changeTodo(todoWith({"DUE;VALUE=DATE:20250328", "RRULE:FREQ=WEEKLY", "SUMMARY:old"}),
                 fileName, {"one", {}}, change, now);
  EXPECT_EQ(lineOf(edit.text, "SUMMARY"), "SUMMARY:new");
  EXPECT_EQ(lineOf(edit.text, "DUE"), "DUE;VALUE=DATE:20250329");
  EXPECT_EQ(lineOf(edit.text, "SEQUENCE"), "SEQUENCE:1");
  EXPECT_EQ(lineOf(edit.successor->text, "SUMMARY"), "SUMMARY:new");
  EXPECT_EQ(lineOf(edit.successor->text, "DUE"), "DUE;VALUE=DATE:20250405");
}

// Daily from the 28th; the 28th was completed, and the 29th put off until the 5th of April.
std::string todoUnderWay() {
  std::string text = todoWith(
      {"DTSTART;VALUE=DATE:20250328", "DUE;VALUE=DATE:20250329", "RRULE:FREQ=DAILY;COUNT=4"});
  return text.insert(text.find("END:VCALENDAR"),
                     crlf({"BEGIN:VTODO", "UID:one", "RECURRENCE-ID;VALUE=DATE:20250328",
                           "DUE;VALUE=DATE:20250329", "STATUS:COMPLETED", "END:VTODO"}) +
                         crlf({"BEGIN:VTODO", "UID:one", "RECURRENCE-ID;VALUE=DATE:20250329",
                               "DUE;VALUE=DATE:20250405", "SUMMARY:late", "END:VTODO"}));
}

TEST(TodoSuccessor, AnOpenOverrideIsTheOneThatIsCompleted) {
  const TodoEdit edit = complete(todoUnderWay());
  EXPECT_EQ(linesOf(edit.text, "RECURRENCE-ID").size(), 2U);
  EXPECT_EQ(lineOf(componentOf(edit.text, "VTODO", 1), "STATUS"), "STATUS:COMPLETED");
  EXPECT_EQ(lineOf(componentOf(edit.text, "VTODO", 1), "SUMMARY"), "SUMMARY:late");
  EXPECT_TRUE(linesOf(edit.text, "RRULE").empty());
  EXPECT_EQ(lineOf(edit.successor->text, "DTSTART"), "DTSTART;VALUE=DATE:20250330");
  EXPECT_EQ(lineOf(edit.successor->text, "RRULE"), "RRULE:FREQ=DAILY;COUNT=2");
}

TEST(TodoSuccessor, TheFirstOpenOccurrenceIsTheOneThatIsCompleted) {
  const std::string text = todoWith({"DTSTART;VALUE=DATE:20250328", "DUE;VALUE=DATE:20250329",
                                     "RRULE:FREQ=DAILY;COUNT=4", "EXDATE;VALUE=DATE:20250328"});
  for (const std::optional<UtcSeconds> occurrence :
       {std::optional<UtcSeconds>(), std::optional(at("2025-03-29T00:00:00"))}) {
    const TodoEdit edit = changeTodo(text, fileName, {"one", occurrence}, completed(true), now);
    EXPECT_EQ(lineOf(edit.text, "DTSTART"), "DTSTART;VALUE=DATE:20250329");
    EXPECT_EQ(lineOf(edit.text, "DUE"), "DUE;VALUE=DATE:20250330");
    EXPECT_EQ(lineOf(edit.successor->text, "DUE"), "DUE;VALUE=DATE:20250331");
    EXPECT_EQ(lineOf(edit.successor->text, "RRULE"), "RRULE:FREQ=DAILY;COUNT=2");
  }
}

TEST(TodoSuccessor, ANewDueIsThatOfTheFirstOpenOccurrence) {
  const std::string text =
      changed(todoWith({"DTSTART;VALUE=DATE:20250628", "DUE;VALUE=DATE:20250629",
                        "RRULE:FREQ=DAILY;COUNT=4", "EXDATE;VALUE=DATE:20250628"}),
              due(4));
  EXPECT_EQ(lineOf(text, "DTSTART"), "DTSTART;VALUE=DATE:20250629");
  EXPECT_EQ(lineOf(text, "DUE"), "DUE;VALUE=DATE:20250704");
  EXPECT_EQ(lineOf(text, "RRULE"), "RRULE:FREQ=DAILY;COUNT=3");
  EXPECT_EQ(lineOf(text, "SEQUENCE"), "SEQUENCE:1");
}

TEST(TodoSuccessor, CarriesTheZonesItNames) {
  std::string text = todoWith({"DUE;TZID=Ours:20250328T090000", "RRULE:FREQ=DAILY"});
  const std::string zone =
      crlf({"BEGIN:VTIMEZONE", "TZID:Ours", "BEGIN:STANDARD", "DTSTART:19700101T000000",
            "TZOFFSETFROM:+0530", "TZOFFSETTO:+0530", "END:STANDARD", "END:VTIMEZONE"});
  text.insert(text.find("BEGIN:VTODO"), zone);
  const Successor next = successorOf(text);
  EXPECT_EQ(componentOf(next.text, "VTIMEZONE"), zone);
  EXPECT_EQ(lineOf(next.text, "DUE"), "DUE;TZID=Ours:20250329T090000");
}

}  // namespace
}  // namespace tidemark::local
