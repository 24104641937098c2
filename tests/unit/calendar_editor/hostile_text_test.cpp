// Text that no program should have written: every edit ends soon, and loses no byte that it does
// not concern.

#include "sample.h"

namespace tidemark::local {
namespace {

EventChange titled(const std::string& title) {
  EventChange change;
  change.title = title;
  return change;
}

// Does all there is to do with UID:one and returns the text with a new title, or nothing when that
// is not possible.
std::string tryEverything(const std::string& text) {
  TodoChange complete;
  complete.completed = true;
  (void)changeTodo(text, fileName, {"one", {}}, complete, now);
  (void)removeEvent(text, fileName, {"one", {}}, now);
  (void)removeEvent(text, fileName, {"one", at("2025-03-28T10:00:00Z")}, now);
  (void)removeTodo(text, fileName, {"one", {}}, now);
  (void)extractItem(text, fileName, "one");
  (void)withoutItem(text, fileName, "one");
  return changeEvent(text, fileName, {"one", {}}, titled("new"), now).text;
}

const std::vector<std::string> event = {"BEGIN:VEVENT", "UID:one", "DTSTART:20250328T100000Z"};

std::string repeated(const std::string& text, int times) {
  std::string all;
  for (int count = 0; count < times; ++count) all += text;
  return all;
}

TEST(HostileText, AComponentThatDoesNotEndIsNotEdited) {
  EXPECT_EQ(tryEverything(crlf(event)), "");
  EXPECT_EQ(tryEverything(crlf(event) + "END:VCALENDAR\r\n"), "");
  EXPECT_EQ(tryEverything("BEGIN:VCALENDAR\r\n" + crlf(event) + crlf({"BEGIN:VEVENT", "UID:two"})),
            "");
}

TEST(HostileText, AnItemInsideAnUnendedOneIsEditedAlone) {
  const std::string broken = crlf({"BEGIN:VCALENDAR", "BEGIN:VTODO", "UID:two", "SUMMARY:two"});
  const std::string text =
      tryEverything(broken + crlf(event) + crlf({"END:VEVENT", "END:VCALENDAR"}));
  EXPECT_TRUE(text.starts_with(broken + crlf(event)));
  EXPECT_EQ(linesOf(text, "SUMMARY"), (std::vector<std::string>{"SUMMARY:two", "SUMMARY:new"}));
}

TEST(HostileText, RemovingAnItemTakesNoneThatItSeemsToContain) {
  const std::string inner =
      crlf({"BEGIN:VEVENT", "UID:two", "DTSTART:20250328T100000Z", "END:VEVENT"});
  const std::string text =
      crlf({"BEGIN:VCALENDAR"}) + crlf(event) + inner + crlf({"END:VEVENT", "END:VCALENDAR"});
  EXPECT_EQ(tryEverything(text), "");
  EXPECT_EQ(removeEvent(text, fileName, {"one", {}}, now).outcome, Edit::Outcome::missing);
  const Edit edit = removeEvent(text, fileName, {"two", {}}, now);
  EXPECT_EQ(edit.text,
            crlf({"BEGIN:VCALENDAR"}) + crlf(event) + crlf({"END:VEVENT", "END:VCALENDAR"}));
}

TEST(HostileText, EndsWithoutABeginAreKept) {
  const std::string text =
      tryEverything(crlf({"END:VEVENT", "END:X", "BEGIN:VCALENDAR", "END:VALARM"}) + crlf(event) +
                    crlf({"SUMMARY:a", "END:VALARM", "END:VEVENT", "END:VEVENT"}));
  EXPECT_EQ(linesOf(text, "END").size(), 6U);
  EXPECT_EQ(lineOf(text, "SUMMARY"), "SUMMARY:new");
}

TEST(HostileText, NestingHasNoLimitAndNoCost) {
  const int depth = 50'000;
  const std::string inside =
      repeated("BEGIN:X\r\n", depth) + "SUMMARY:deep\r\n" + repeated("END:X\r\n", depth);
  const std::string text = tryEverything(crlf(event) + inside + crlf({"END:VEVENT"}));
  EXPECT_NE(text.find(inside), std::string::npos);
  EXPECT_EQ(linesOf(text, "SUMMARY"), (std::vector<std::string>{"SUMMARY:new", "SUMMARY:deep"}));
  (void)tryEverything(repeated("BEGIN:VEVENT\r\nUID:one\r\nDTSTART:20250328T100000Z\r\n", depth));
  (void)tryEverything(repeated("BEGIN:VEVENT\r\n", depth) + repeated("END:VTODO\r\n", depth) +
                      repeated("END:VEVENT\r\n", depth));
}

TEST(HostileText, LongLinesAreKept) {
  const std::string blob = "X-BLOB:" + std::string(4'000'000, 'x');
  const std::string folded = "X-FOLDED:" + repeated("x\r\n ", 500'000) + "y";
  const std::string text = tryEverything(
      crlf(event) + crlf({blob, folded, "SUMMARY:" + std::string(2'000'000, 'y'), "END:VEVENT"}));
  EXPECT_NE(text.find(blob), std::string::npos);
  EXPECT_NE(text.find(folded), std::string::npos);
  EXPECT_EQ(lineOf(text, "SUMMARY"), "SUMMARY:new");
}

TEST(HostileText, ManyLinesOfOneNameCostNoMore) {
  const std::string text = tryEverything(crlf(event) + "RRULE:FREQ=DAILY;COUNT=3\r\n" +
                                         repeated("EXDATE:20990101T000000Z\r\n", 100'000) +
                                         repeated("URL:a:b\r\n", 100'000) + crlf({"END:VEVENT"}));
  EXPECT_EQ(linesOf(text, "SUMMARY").size(), 1U);
}

TEST(HostileText, ManyOverridesCostNoMore) {
  std::string text =
      crlf({"BEGIN:VCALENDAR"}) + crlf(event) + crlf({"RRULE:FREQ=DAILY", "END:VEVENT"});
  for (int number = 0; number < 20'000; ++number) {
    text += crlf({"BEGIN:VEVENT", "UID:one", "RECURRENCE-ID:20250328T100000Z",
                  "DTSTART:20250328T100000Z", "SEQUENCE:" + std::to_string(number), "END:VEVENT"});
  }
  text += crlf({"END:VCALENDAR"});
  EXPECT_NE(tryEverything(text).find("SEQUENCE:20000\r\n"), std::string::npos);
}

TEST(HostileText, BytesOfEveryKindAreKept) {
  std::string junk;
  for (int byte = 0; byte < 256; ++byte) {
    if (byte != '\n' && byte != '\r') junk.push_back(static_cast<char>(byte));
  }
  const std::string lines =
      "X-JUNK;" + junk + "\r\n" + std::string("X-NUL:a\0b\r\n", 11) + "\r\r\n:\r\n;\r\nX\r\n";
  const std::string text =
      tryEverything(crlf(event) + lines + crlf({"SUMMARY:a", "END:VEVENT"}) + junk);
  EXPECT_NE(text.find(lines), std::string::npos);
  EXPECT_TRUE(text.ends_with(junk));
}

TEST(HostileText, ParametersThatNeverEndAreKept) {
  const std::string text = tryEverything(crlf(event) + crlf({"SUMMARY;A=\"b:c", "END:VEVENT"}));
  EXPECT_NE(text.find("SUMMARY;A=\"b:new"), std::string::npos) << text;
}

TEST(HostileText, EveryPrefixOfAFileIsSurvived) {
  const std::string text = crlf({"BEGIN:VCALENDAR",
                                 "BEGIN:VTIMEZONE",
                                 "TZID:Ours",
                                 "BEGIN:STANDARD",
                                 "DTSTART:19700101T000000",
                                 "TZOFFSETFROM:+0100",
                                 "TZOFFSETTO:+0100",
                                 "END:STANDARD",
                                 "END:VTIMEZONE",
                                 "BEGIN:VEVENT",
                                 "UID:one",
                                 "DTSTART;TZID=Ours:20250328T100000",
                                 "RRULE:FREQ=DAILY;COUNT=3",
                                 "SUMMARY:a",
                                 " b",
                                 "END:VEVENT",
                                 "BEGIN:VTODO",
                                 "UID:one",
                                 "DUE;VALUE=DATE:20250328",
                                 "RRULE:FREQ=DAILY;COUNT=3",
                                 "END:VTODO",
                                 "END:VCALENDAR"});
  for (std::size_t size = 0; size <= text.size(); ++size) (void)tryEverything(text.substr(0, size));
  for (std::size_t begin = 0; begin <= text.size(); ++begin)
    (void)tryEverything(text.substr(begin));
}

TEST(HostileText, TimesAtTheEndsOfTheCalendarAreWrittenInFourDigits) {
  for (const UtcSeconds instant : {UtcSeconds{-99'999'999'999}, UtcSeconds{999'999'999'999}}) {
    EventChange change;
    change.start = instant;
    change.end = instant;
    for (const bool isAllDay : {false, true}) {
      change.isAllDay = isAllDay;
      const Edit edit = changeEvent(eventWith({"DTSTART;TZID=Europe/Berlin:20250328T100000"}),
                                    fileName, {"one", {}}, change, now);
      const std::string day = instant < 0 ? "00010101" : "99991231";
      const std::string time = instant < 0 ? "T000000" : "T235959";
      EXPECT_EQ(lineOf(edit.text, "DTSTART"), isAllDay
                                                  ? "DTSTART;VALUE=DATE:" + day
                                                  : "DTSTART;TZID=Europe/Berlin:" + day + time);
      (void)newEventText("uid", change, now);
    }
  }
}

}  // namespace
}  // namespace tidemark::local
