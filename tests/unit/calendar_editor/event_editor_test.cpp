// Changes of one event that does not repeat.

#include "sample.h"

namespace tidemark::local {
namespace {

const std::string berlin = "DTSTART;TZID=Europe/Berlin:20250701T100000";
const std::string berlinEnd = "DTEND;TZID=Europe/Berlin:20250701T110000";

EventChange titled(const std::string& title) {
  EventChange change;
  change.title = title;
  return change;
}

EventChange available(std::int64_t availability) {
  EventChange change;
  change.availability = availability;
  return change;
}

EventChange times(std::optional<UtcSeconds> start, std::optional<UtcSeconds> end = std::nullopt) {
  EventChange change;
  change.start = start;
  change.end = end;
  return change;
}

EventChange allDay(bool isAllDay) {
  EventChange change;
  change.isAllDay = isAllDay;
  return change;
}

// --- what stays

TEST(EventEditor, ChangesThatLineAndTheStampsAlone) {
  const std::vector<std::string> head = {"X-BEFORE;X-A=\"b;c\":odd  ", "dtstart:20250701T100000Z"};
  const std::vector<std::string> tail = {"X-AFTER:1",     "ATTENDEE;CN=Ada:mailto:ada@example.org",
                                         "BEGIN:VALARM",  "TRIGGER:-PT15M",
                                         "SUMMARY:alarm", "END:VALARM"};
  const auto with = [&](const std::vector<std::string>& changing,
                        const std::vector<std::string>& added) {
    std::string text =
        crlf({"BEGIN:VCALENDAR", "BEGIN:VEVENT", "UID:one"}) + crlf(head) + crlf(changing);
    text += crlf({tail[0], tail[1]}) + crlf(added) + crlf({tail.begin() + 2, tail.end()});
    return text + crlf({"END:VEVENT", "END:VCALENDAR"});
  };
  EXPECT_EQ(changed(with({"SUMMARY;LANGUAGE=de:Tee", "DTSTAMP:20250101T000000Z", "SEQUENCE:4"}, {}),
                    titled("Kaffee")),
            with({"SUMMARY;LANGUAGE=de:Kaffee", "DTSTAMP:" + stamp, "SEQUENCE:5"},
                 {"LAST-MODIFIED:" + stamp}));
}

TEST(EventEditor, AddsBeforeTheFirstSubcomponent) {
  const std::string text =
      changed(eventWith({berlin, "BEGIN:VALARM", "TRIGGER:-PT5M", "END:VALARM", "X-LATE:1"}),
              titled("Tea"));
  EXPECT_NE(text.find(berlin + "\r\nSUMMARY:Tea\r\nLAST-MODIFIED:" + stamp +
                      "\r\nSEQUENCE:1\r\nBEGIN:VALARM"),
            std::string::npos)
      << text;
}

TEST(EventEditor, NewLinesEndAsTheirNeighbours) {
  const std::string text =
      "\xEF\xBB\xBF"
      "BEGIN:VCALENDAR\r\nBEGIN:VEVENT\nUID:one\nDTSTART:20250701T100000Z\nSUMMARY:a\r\n"
      "END:VEVENT\nEND:VCALENDAR";
  EXPECT_EQ(changed(text, titled("b")),
            "\xEF\xBB\xBF"
            "BEGIN:VCALENDAR\r\nBEGIN:VEVENT\nUID:one\nDTSTART:20250701T100000Z\nSUMMARY:b\r\n"
            "DTSTAMP:" +
                stamp + "\r\nLAST-MODIFIED:" + stamp +
                "\r\nSEQUENCE:1\r\n"
                "END:VEVENT\nEND:VCALENDAR");
}

TEST(EventEditor, NothingToChangeLeavesEveryByte) {
  const std::string text =
      eventWith({berlin, berlinEnd, "SUMMARY:a\\, b", "LOCATION:c", "URL:d:e"});
  EventChange same = titled("a, b");
  same.location = "c";
  same.url = "d:e";
  same.start = at("2025-07-01T10:00:00");
  same.end = at("2025-07-01T11:00:00");
  same.isAllDay = false;
  same.availability = 0;
  EXPECT_EQ(changed(text, same), text);
  EXPECT_EQ(changed(text, EventChange{}), text);
}

TEST(EventEditor, LeavesOtherUidsAlone) {
  const std::string other = crlf({"BEGIN:VEVENT", "UID:two", "DTSTART:20250701T100000Z",
                                  "SUMMARY:a", "END:VEVENT", "junk without a colon"});
  std::string text = eventWith({berlin, "SUMMARY:a"});
  text.insert(text.find("BEGIN:VEVENT"), other);
  text.insert(text.find("END:VCALENDAR"), other);
  const std::string after = changed(text, titled("b"));
  EXPECT_EQ(after.find(other), text.find(other));
  EXPECT_NE(after.rfind(other), after.find(other));
  EXPECT_EQ(linesOf(after, "SUMMARY"),
            (std::vector<std::string>{"SUMMARY:a", "SUMMARY:b", "SUMMARY:a"}));
}

TEST(EventEditor, ChangesOneOfSeveralWithoutAUid) {
  const auto event = [](const std::string& day, const std::string& title) {
    return crlf({"BEGIN:VEVENT", "DTSTART;VALUE=DATE:" + day, "SUMMARY:" + title, "END:VEVENT"});
  };
  const std::string head = crlf({"BEGIN:VCALENDAR"}), tail = crlf({"END:VCALENDAR"});
  const std::string first = event("20250701", "a"), third = event("20250703", "c");
  const std::string text = head + first + event("20250702", "b") + third + tail;
  const ItemName second{fileName + "/20250702/b", {}};
  const Edit edit = changeEvent(text, fileName, second, titled("d"), now);
  ASSERT_EQ(edit.outcome, Edit::Outcome::changed);
  EXPECT_TRUE(edit.text.starts_with(head + first)) << edit.text;
  EXPECT_TRUE(edit.text.ends_with(third + tail)) << edit.text;
  EXPECT_EQ(linesOf(edit.text, "SUMMARY"),
            (std::vector<std::string>{"SUMMARY:a", "SUMMARY:d", "SUMMARY:c"}));
  EXPECT_EQ(lineOf(edit.text, "UID"), "UID:" + second.uid);
  EXPECT_EQ(removeEvent(text, fileName, second, now).text, head + first + third + tail);
  // None of them has the file's name alone.
  EXPECT_EQ(removeEvent(text, fileName, {fileName, {}}, now).outcome, Edit::Outcome::missing);
}

TEST(EventEditor, AnOverrideAndItsSeriesHaveOneName) {
  const auto series = [](const std::string& day) {
    return crlf({"BEGIN:VEVENT", "DTSTART:" + day + "T100000Z", "RRULE:FREQ=DAILY", "END:VEVENT"});
  };
  const std::string other = series("20250701");
  const std::string text =
      crlf({"BEGIN:VCALENDAR"}) + other + series("20250702") + crlf({"END:VCALENDAR"});
  const ItemName third{fileName + "/20250702T100000Z/", at("2025-07-04T10:00:00Z")};
  const Edit edit = changeEvent(text, fileName, third, titled("moved"), now);
  ASSERT_EQ(edit.outcome, Edit::Outcome::changed);
  EXPECT_NE(edit.text.find(other), std::string::npos) << edit.text;
  EXPECT_EQ(linesOf(edit.text, "UID"), std::vector<std::string>(2, "UID:" + third.uid));
  EXPECT_EQ(lineOf(edit.text, "RECURRENCE-ID"), "RECURRENCE-ID:20250704T100000Z");
}

TEST(EventEditor, TheFileNameStandsInForAUid) {
  const std::string text = crlf({"BEGIN:VCALENDAR", "BEGIN:VEVENT", "DTSTART:20250701T100000Z",
                                 "END:VEVENT", "END:VCALENDAR"});
  const Edit edit = changeEvent(text, fileName, {fileName, {}}, titled("a"), now);
  EXPECT_EQ(lineOf(edit.text, "SUMMARY"), "SUMMARY:a");
  EXPECT_TRUE(linesOf(edit.text, "UID").empty());
}

TEST(EventEditor, SaysWhatIsMissing) {
  const std::string text = eventWith({berlin});
  EXPECT_EQ(changeEvent(text, fileName, {"two", {}}, titled("a"), now).outcome,
            Edit::Outcome::missing);
  EXPECT_EQ(
      changeEvent(text, fileName, {"one", at("2025-07-02T10:00:00")}, titled("a"), now).outcome,
      Edit::Outcome::missing);
  EXPECT_EQ(changeEvent("", fileName, {"one", {}}, titled("a"), now).outcome,
            Edit::Outcome::missing);
}

TEST(EventEditor, OfSeveralLinesChangesTheOneThatIsRead) {
  const std::string text = changed(eventWith({"DTSTART:soon", berlin, "SUMMARY:first",
                                              "SUMMARY:second", "SEQUENCE:1", "SEQUENCE:7"}),
                                   titled("new"));
  EXPECT_EQ(linesOf(text, "SUMMARY"), (std::vector<std::string>{"SUMMARY:new", "SUMMARY:second"}));
  EXPECT_EQ(linesOf(text, "SEQUENCE"), (std::vector<std::string>{"SEQUENCE:1", "SEQUENCE:8"}));
  EXPECT_EQ(
      linesOf(changed(text, times(at("2025-07-02T10:00:00"))), "DTSTART"),
      (std::vector<std::string>{"DTSTART:soon", "DTSTART;TZID=Europe/Berlin:20250702T100000"}));
}

TEST(EventEditor, OfTwoMastersTheHigherSequenceThenTheLaterChangeCounts) {
  const auto master = [](const std::string& sequence, const std::string& modified) {
    return crlf({"BEGIN:VEVENT", "UID:one", berlin, "SEQUENCE:" + sequence,
                 "LAST-MODIFIED:" + modified, "SUMMARY:" + sequence + "-" + modified,
                 "END:VEVENT"});
  };
  const std::string text = crlf({"BEGIN:VCALENDAR"}) + master("2", "20250101T000000Z") +
                           master("3", "20240101T000000Z") + master("3", "20250101T000000Z") +
                           master("3", "20230101T000000Z") + crlf({"END:VCALENDAR"});
  EXPECT_EQ(linesOf(changed(text, titled("new")), "SUMMARY")[2], "SUMMARY:new");
}

TEST(EventEditor, AFullSequenceStaysFull) {
  EXPECT_EQ(lineOf(changed(eventWith({berlin, "SEQUENCE:2147483647"}), titled("a")), "SEQUENCE"),
            "SEQUENCE:2147483647");
}

// --- fields

TEST(EventEditor, DropsHowTheOldTextWasEncoded) {
  EXPECT_EQ(
      lineOf(
          changed(eventWith({berlin, "SUMMARY;ENCODING=QUOTED-PRINTABLE;X-A=b;CHARSET=UTF-8:=41"}),
                  titled("Ä")),
          "SUMMARY"),
      "SUMMARY;X-A=b:Ä");
}

TEST(EventEditor, AnEmptyTextIsAText) {
  EventChange change = titled("");
  change.notes = "";
  const std::string text = changed(eventWith({berlin, "SUMMARY:a"}), change);
  EXPECT_EQ(lineOf(text, "SUMMARY"), "SUMMARY:");
  EXPECT_EQ(lineOf(text, "DESCRIPTION"), "DESCRIPTION:");
}

TEST(EventEditor, TakesEveryUrlOut) {
  EventChange change;
  change.url = std::optional<std::string>();
  EXPECT_TRUE(
      linesOf(changed(eventWith({berlin, "URL:a:b", "X-A:1", "URL;VALUE=URI:c:d"}), change), "URL")
          .empty());
}

TEST(EventEditor, WritesAUrlAsItIs) {
  EventChange change;
  change.url = "https://example.org/a,b;c?d=\\";
  EXPECT_EQ(lineOf(changed(eventWith({berlin}), change), "URL"),
            "URL:https://example.org/a,b;c?d=\\");
}

TEST(EventEditor, FreeIsTransparentAndTheRestOpaque) {
  EXPECT_EQ(lineOf(changed(eventWith({berlin}), available(1)), "TRANSP"), "TRANSP:TRANSPARENT");
  EXPECT_TRUE(
      linesOf(changed(eventWith({berlin}), available(1)), "X-MICROSOFT-CDO-BUSYSTATUS").empty());
  EXPECT_EQ(
      lineOf(changed(eventWith({berlin, "TRANSP;X-A=b:TRANSPARENT"}), available(0)), "TRANSP"),
      "TRANSP;X-A=b:OPAQUE");
}

TEST(EventEditor, TentativeAndOutOfOfficeNeedTheVendorsProperty) {
  const std::string tentative = changed(eventWith({berlin}), available(2));
  EXPECT_EQ(lineOf(tentative, "TRANSP"), "TRANSP:OPAQUE");
  EXPECT_EQ(lineOf(tentative, "X-MICROSOFT-CDO-BUSYSTATUS"),
            "X-MICROSOFT-CDO-BUSYSTATUS:TENTATIVE");
  EXPECT_EQ(lineOf(changed(eventWith({berlin}), available(3)), "X-MICROSOFT-CDO-BUSYSTATUS"),
            "X-MICROSOFT-CDO-BUSYSTATUS:OOF");
}

TEST(EventEditor, TheVendorsPropertyFollows) {
  const std::string text = eventWith({berlin, "X-MICROSOFT-CDO-BUSYSTATUS:OOF"});
  const std::string free = changed(text, available(1));
  EXPECT_EQ(lineOf(free, "X-MICROSOFT-CDO-BUSYSTATUS"), "X-MICROSOFT-CDO-BUSYSTATUS:FREE");
  EXPECT_EQ(lineOf(free, "TRANSP"), "TRANSP:TRANSPARENT");
  EXPECT_EQ(lineOf(changed(text, available(0)), "X-MICROSOFT-CDO-BUSYSTATUS"),
            "X-MICROSOFT-CDO-BUSYSTATUS:BUSY");
}

TEST(EventEditor, AvailabilitiesWithoutAMeaningAreBusy) {
  for (const std::int64_t number : {std::int64_t{-1}, std::int64_t{7}, INT64_MIN, INT64_MAX}) {
    EXPECT_EQ(
        lineOf(changed(eventWith({berlin, "TRANSP:TRANSPARENT"}), available(number)), "TRANSP"),
        "TRANSP:OPAQUE");
  }
}

// --- times

TEST(EventEditor, TimesKeepTheirForm) {
  struct Form {
    std::string before, after;
  };
  const std::vector<Form> forms = {
      {"DTSTART:20250701T080000Z", "DTSTART:20250702T080000Z"},
      {"DTSTART:20250701T100000", "DTSTART:20250702T100000"},
      {"DTSTART;TZID=America/New_York:20250701T040000",
       "DTSTART;TZID=America/New_York:20250702T040000"},
      {"DTSTART;X-A=b;TZID=W. Europe Standard Time:20250701T100000",
       "DTSTART;X-A=b;TZID=W. Europe Standard Time:20250702T100000"},
      {"DTSTART;TZID=\"/example.org/Olson_1/Europe/Berlin\":20250701T100000",
       "DTSTART;TZID=\"/example.org/Olson_1/Europe/Berlin\":20250702T100000"},
      {"DTSTART;VALUE=DATE-TIME;TZID=Nobody knows:20250701T100000",
       "DTSTART;VALUE=DATE-TIME;TZID=Nobody knows:20250702T100000"},
  };
  for (const Form& form : forms) {
    EXPECT_EQ(lineOf(changed(eventWith({form.before}),
                             times(at("2025-07-02T10:00:00"), at("2025-07-02T10:00:00"))),
                     "DTSTART"),
              form.after);
  }
}

TEST(EventEditor, KeepsAZoneThatOnlyTheFileKnows) {
  const std::string zone =
      crlf({"BEGIN:VTIMEZONE", "TZID:Ours", "BEGIN:STANDARD", "DTSTART:19700101T000000",
            "TZOFFSETFROM:+0530", "TZOFFSETTO:+0530", "END:STANDARD", "END:VTIMEZONE"});
  std::string text = eventWith({"DTSTART;TZID=Ours:20250701T133000"});
  text.insert(text.find("BEGIN:VEVENT"), zone);
  const EventChange change = times(at("2025-07-01T09:00:00Z"), at("2025-07-01T09:00:00Z"));
  EXPECT_EQ(lineOf(componentOf(changed(text, change), "VEVENT"), "DTSTART"),
            "DTSTART;TZID=Ours:20250701T143000");
}

TEST(EventEditor, OneEndMovesAlone) {
  const std::string text = eventWith({berlin, berlinEnd});
  const std::string laterStart = changed(text, times(at("2025-07-01T10:30:00")));
  EXPECT_EQ(lineOf(laterStart, "DTSTART"), "DTSTART;TZID=Europe/Berlin:20250701T103000");
  EXPECT_EQ(lineOf(laterStart, "DTEND"), berlinEnd);
  const std::string laterEnd = changed(text, times({}, at("2025-07-01T12:00:00")));
  EXPECT_EQ(lineOf(laterEnd, "DTSTART"), berlin);
  EXPECT_EQ(lineOf(laterEnd, "DTEND"), "DTEND;TZID=Europe/Berlin:20250701T120000");
}

TEST(EventEditor, StartAndEndMayHaveZonesOfTheirOwn) {
  const std::string text =
      changed(eventWith({berlin, "DTEND;TZID=America/New_York:20250701T120000"}),
              times({}, at("2025-07-01T17:00:00Z")));
  EXPECT_EQ(lineOf(text, "DTSTART"), berlin);
  EXPECT_EQ(lineOf(text, "DTEND"), "DTEND;TZID=America/New_York:20250701T130000");
}

TEST(EventEditor, ADurationStaysWhileTheLengthDoes) {
  const std::string text = eventWith({berlin, "DURATION:PT1H", "SUMMARY:a"});
  const std::string moved =
      changed(text, times(at("2025-07-02T10:00:00"), at("2025-07-02T11:00:00")));
  EXPECT_EQ(lineOf(moved, "DURATION"), "DURATION:PT1H");
  EXPECT_TRUE(linesOf(moved, "DTEND").empty());
  const std::string longer = changed(text, times({}, at("2025-07-01T12:00:00")));
  EXPECT_TRUE(linesOf(longer, "DURATION").empty());
  EXPECT_NE(longer.find(berlin + "\r\nDTEND;TZID=Europe/Berlin:20250701T120000\r\nSUMMARY:a"),
            std::string::npos);
}

TEST(EventEditor, AnEventWithoutAnEndGetsOneWhenItNeedsIt) {
  const std::string text = eventWith({berlin});
  const auto hour = at("2025-07-01T10:00:00");
  EXPECT_TRUE(linesOf(changed(text, times(hour + 60, hour + 60)), "DTEND").empty());
  EXPECT_EQ(lineOf(changed(text, times(hour - 3600)), "DTEND"),
            "DTEND;TZID=Europe/Berlin:20250701T100000");
}

TEST(EventEditor, TheSecondOfADoubledHourIsWrittenInUtc) {
  const std::string text = changed(eventWith({berlin, berlinEnd}),
                                   times(at("2025-10-26T00:30:00Z"), at("2025-10-26T01:30:00Z")));
  EXPECT_EQ(lineOf(text, "DTSTART"), "DTSTART;TZID=Europe/Berlin:20251026T023000");
  EXPECT_EQ(lineOf(text, "DTEND"), "DTEND:20251026T013000Z");
}

// --- all day

TEST(EventEditor, ADayEndsOnTheDayAfter) {
  struct Days {
    std::string start, end, first, after;
  };
  const std::vector<Days> cases = {
      {"2025-07-01T10:00:00", "2025-07-01T11:00:00", "20250701", "20250702"},
      {"2025-07-01T00:00:00", "2025-07-01T00:00:00", "20250701", "20250702"},
      {"2025-07-01T10:00:00", "2025-07-02T00:00:00", "20250701", "20250702"},
      {"2025-07-01T00:00:00", "2025-07-03T00:00:00", "20250701", "20250703"},
      {"2025-07-01T00:00:00", "2025-07-03T00:00:01", "20250701", "20250704"},
      {"2025-07-01T23:59:59", "2025-07-02T23:59:59", "20250701", "20250703"},
  };
  for (const Days& days : cases) {
    EventChange change = times(at(days.start), at(days.end));
    change.isAllDay = true;
    const std::string text = changed(eventWith({berlin, berlinEnd}), change);
    EXPECT_EQ(lineOf(text, "DTSTART"), "DTSTART;VALUE=DATE:" + days.first)
        << days.start << " " << days.end;
    EXPECT_EQ(lineOf(text, "DTEND"), "DTEND;VALUE=DATE:" + days.after)
        << days.start << " " << days.end;
  }
}

TEST(EventEditor, BecomesAllDayAndKeepsUnknownParameters) {
  const std::string text =
      changed(eventWith({"DTSTART;X-A=b;TZID=Europe/Berlin;X-C=d:20250701T100000", berlinEnd}),
              allDay(true));
  EXPECT_EQ(lineOf(text, "DTSTART"), "DTSTART;VALUE=DATE;X-A=b;X-C=d:20250701");
  EXPECT_EQ(lineOf(text, "DTEND"), "DTEND;VALUE=DATE:20250702");
}

TEST(EventEditor, AnAllDayEventStaysWhenItIsSetToItsOwnTimes) {
  const std::string text = eventWith({"DTSTART;VALUE=DATE:20250701", "DURATION:P2D"});
  EXPECT_EQ(changed(text, times(at("2025-07-01T00:00:00"), at("2025-07-02T23:59:59"))), text);
}

TEST(EventEditor, ADurationInDaysServesDates) {
  const std::string text = changed(eventWith({"DTSTART;VALUE=DATE:20250701", "DURATION:P2D"}),
                                   times(at("2025-07-08T00:00:00"), at("2025-07-09T23:59:59")));
  EXPECT_EQ(lineOf(text, "DTSTART"), "DTSTART;VALUE=DATE:20250708");
  EXPECT_EQ(lineOf(text, "DURATION"), "DURATION:P2D");
}

TEST(EventEditor, BecomesTimedInTheLocalZoneAndDescribesIt) {
  EventChange change = times(at("2025-07-01T09:00:00"), at("2025-07-01T10:00:00"));
  change.isAllDay = false;
  const std::string text = changed(
      eventWith({"DTSTART;VALUE=DATE;X-A=b:20250701", "DTEND;VALUE=DATE:20250702"}), change);
  EXPECT_EQ(lineOf(componentOf(text, "VEVENT"), "DTSTART"),
            "DTSTART;TZID=Europe/Berlin;X-A=b:20250701T090000");
  EXPECT_EQ(lineOf(text, "DTEND"), "DTEND;TZID=Europe/Berlin:20250701T100000");
  EXPECT_EQ(lineOf(componentOf(text, "VTIMEZONE"), "TZID"), "TZID:Europe/Berlin");
  EXPECT_LT(text.find("BEGIN:VTIMEZONE"), text.find("BEGIN:VEVENT"));
}

TEST(EventEditor, DescribesTheLocalZoneOnce) {
  const std::string zone =
      crlf({"BEGIN:VTIMEZONE", "TZID:Europe/Berlin", "X-OURS:1", "END:VTIMEZONE"});
  std::string text = eventWith({"DTSTART;VALUE=DATE:20250701"});
  text.insert(text.find("BEGIN:VEVENT"), zone);
  EXPECT_EQ(lineOf(changed(text, allDay(false)), "TZID"), "TZID:Europe/Berlin");
}

TEST(EventEditor, ATimedDayLastsFromMidnightToItsLastSecond) {
  const std::string text =
      componentOf(changed(eventWith({"DTSTART;VALUE=DATE:20250701"}), allDay(false)), "VEVENT");
  EXPECT_EQ(lineOf(text, "DTSTART"), "DTSTART;TZID=Europe/Berlin:20250701T000000");
  EXPECT_EQ(lineOf(text, "DTEND"), "DTEND;TZID=Europe/Berlin:20250701T235959");
}

}  // namespace
}  // namespace tidemark::local
