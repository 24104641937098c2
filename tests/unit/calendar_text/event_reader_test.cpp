// Events out of calendar text.

#include <gtest/gtest.h>

#include <string>

#include "tests/unit/calendar_text/support.h"

namespace tidemark::local {
namespace {

using testing::attendeesOf;
using testing::eventOf;
using testing::instant;
using testing::linesOf;
using testing::onlyItemOf;
using testing::reading;
using testing::todoOf;

constexpr std::string_view someStart = "DTSTART:20250101T100000Z";

TEST(EventReader, ReadsEveryProperty) {
  const auto item = onlyItemOf(eventOf(
      {"UID:one@example.org", "SUMMARY:Lunch\\, long", "DESCRIPTION:First\\nsecond",
       "LOCATION:Room 1\\; north", "URL:https://example.org/a\\nb,c",
       "DTSTART;TZID=America/New_York:20250101T100000", "DTEND:20250101T160000Z",
       "LAST-MODIFIED:20241231T120000Z", "SEQUENCE:3", "TRANSP:TRANSPARENT",
       "ATTENDEE;CN=Ada;ROLE=CHAIR:mailto:ada@example.org", "ATTENDEE:mailto:ben@example.org"}));
  ASSERT_TRUE(item);
  EXPECT_EQ(item->kind, ItemKind::event);
  EXPECT_EQ(item->uid(), "one@example.org");
  EXPECT_EQ(item->title(), "Lunch, long");
  EXPECT_EQ(item->notes(), "First\nsecond");
  EXPECT_EQ(item->location(), "Room 1; north");
  EXPECT_EQ(item->url(), "https://example.org/a\\nb,c");
  EXPECT_EQ(item->start->wall, reading("20250101T100000"));
  EXPECT_EQ(item->start->zone, systemZone("America/New_York"));
  EXPECT_FALSE(item->start->isFloating);
  EXPECT_EQ(item->end->zone, &utcZone());
  EXPECT_EQ(item->lastModified, instant("20241231T120000Z"));
  EXPECT_EQ(item->sequence, 3);
  EXPECT_EQ(item->availability, 1);
  ASSERT_EQ(attendeesOf(*item).size(), 2u);
  EXPECT_EQ(attendeesOf(*item)[0].name, "Ada");
  EXPECT_EQ(attendeesOf(*item)[0].address, "mailto:ada@example.org");
  EXPECT_EQ(attendeesOf(*item)[1].name, std::nullopt);
  EXPECT_EQ(item->series, nullptr);
  EXPECT_EQ(item->todo, nullptr);
}

TEST(EventReader, TellsAbsentFromEmpty) {
  const auto item = onlyItemOf(eventOf({someStart, "SUMMARY:"}));
  ASSERT_TRUE(item);
  EXPECT_NE(item->title().data(), nullptr);
  EXPECT_TRUE(item->title().empty());
  EXPECT_EQ(item->notes().data(), nullptr);
  EXPECT_EQ(item->url().data(), nullptr);
  EXPECT_EQ(item->attendeeCount(), 0u);
  EXPECT_FALSE(item->end);
  EXPECT_FALSE(item->lastModified);
}

TEST(EventReader, TakesTheFileNameForAMissingUid) {
  EXPECT_EQ(onlyItemOf(eventOf({someStart}))->uid(), "file.ics");
  EXPECT_EQ(onlyItemOf(eventOf({someStart, "UID:"}))->uid(), "file.ics");
}

TEST(EventReader, ReadsNamesInAnyCase) {
  const auto item = onlyItemOf(
      "begin:vcalendar\nbegin:vevent\nuid:a\ndtstart;tzid=Europe/Berlin:20250101t100000\n"
      "summary:b\ntransp:transparent\nend:vevent\nend:vcalendar\n");
  ASSERT_TRUE(item);
  EXPECT_EQ(item->uid(), "a");
  EXPECT_EQ(item->title(), "b");
  EXPECT_EQ(item->availability, 1);
  EXPECT_EQ(item->start->zone, systemZone("Europe/Berlin"));
}

TEST(EventReader, DecodesTheNamesOfAttendees) {
  const auto item = onlyItemOf(
      eventOf({someStart, "ATTENDEE;CN=\"Ada: the ^'first^'; M\xFCller\":mailto:ada@example.org"}));
  ASSERT_EQ(attendeesOf(*item).size(), 1u);
  EXPECT_EQ(attendeesOf(*item)[0].name, "Ada: the \"first\"; M\xC3\xBCller");
}

TEST(EventReader, MakesValidUtf8OfEveryText) {
  const auto item =
      onlyItemOf(eventOf({someStart, "SUMMARY:Caf\xE9", "UID:\xFF", "LOCATION:\xC3\r\n \xA4"}));
  EXPECT_EQ(item->title(), "Caf\xC3\xA9");
  EXPECT_EQ(item->uid(), "\xC3\xBF");
  EXPECT_EQ(item->location(), "\xC3\xA4");
}

TEST(EventReader, KeepsAlarmsApart) {
  const auto item = onlyItemOf(
      eventOf({someStart, "BEGIN:VALARM", "DESCRIPTION:Alarm", "DURATION:PT5M",
               "ATTENDEE:mailto:a@b.c", "BEGIN:X-DEEPER", "SUMMARY:Deeper", "END:X-DEEPER",
               "SUMMARY:Alarm", "UID:alarm", "END:VALARM", "SUMMARY:Event"}));
  ASSERT_TRUE(item);
  EXPECT_EQ(item->title(), "Event");
  EXPECT_EQ(item->notes().data(), nullptr);
  EXPECT_FALSE(item->duration);
  EXPECT_EQ(item->attendeeCount(), 0u);
  EXPECT_EQ(item->uid(), "file.ics");
}

TEST(EventReader, ReadsEveryItemOfEveryCalendar) {
  const CalendarText text =
      readCalendar(eventOf({"UID:a", someStart}) + eventOf({"UID:b", someStart}) +
                       "BEGIN:VEVENT\r\nUID:c\r\n" + linesOf({someStart, "END:VEVENT"}),
                   "file.ics");
  ASSERT_EQ(text.items.size(), 3u);
  EXPECT_EQ(text.items[0]->uid(), "a");
  EXPECT_EQ(text.items[1]->uid(), "b");
  EXPECT_EQ(text.items[2]->uid(), "c");
}

TEST(EventReader, KeepsNothingOfTheTextBefore) {
  const std::string zone =
      linesOf({"BEGIN:VTIMEZONE", "TZID:Own", "BEGIN:STANDARD", "DTSTART:19700101T000000",
               "TZOFFSETFROM:+0300", "TZOFFSETTO:+0300", "END:STANDARD", "END:VTIMEZONE"});
  const std::string start = "DTSTART;TZID=Own:20250101T100000";
  CalendarReader reader;
  const CalendarText first = reader.read(
      zone + eventOf({"UID:a", "SUMMARY:Folded\r\n  text", "ATTENDEE:mailto:a@b", start}) +
          "BEGIN:VEVENT\r\nBEGIN:VALARM\r\n",
      "first.ics");
  ASSERT_EQ(first.items.size(), 1u);
  EXPECT_EQ(first.items[0]->start->toUtc(), instant("20250101T070000Z"));
  const CalendarText second =
      reader.read(eventOf({start, "LOCATION:Other\r\n  text"}), "second.ics");
  ASSERT_EQ(second.items.size(), 1u);
  EXPECT_TRUE(second.items[0]->start->isFloating);
  EXPECT_EQ(second.items[0]->uid(), "second.ics");
  EXPECT_EQ(second.items[0]->title().data(), nullptr);
  EXPECT_EQ(second.items[0]->location(), "Other text");
  EXPECT_EQ(second.items[0]->attendeeCount(), 0u);
  EXPECT_EQ(first.items[0]->title(), "Folded text");
}

TEST(EventReader, TellsItemsWithoutAUidApart) {
  const auto uids = [](const std::string& text) {
    std::vector<std::string> found;
    for (const auto& item : readCalendar(text, "tour.ics").items) found.emplace_back(item->uid());
    return found;
  };
  using Uids = std::vector<std::string>;
  const std::string monday = eventOf({"DTSTART:20250106", "SUMMARY:Folded\\, \r\n title"});
  const std::string tuesday = eventOf({"SUMMARY:Late", "DTSTART:20250107T200000"});
  EXPECT_EQ(uids(monday + tuesday + eventOf({"UID:own", someStart})),
            (Uids{"tour.ics/20250106/Folded, title", "tour.ics/20250107T200000/Late", "own"}));
  // The name says nothing of where in the file it stands.
  EXPECT_EQ(uids(tuesday + eventOf({"DTSTART:20250108"}) + monday),
            (Uids{"tour.ics/20250107T200000/Late", "tour.ics/20250108/",
                  "tour.ics/20250106/Folded, title"}));
  // One of its kind has the file's name.
  EXPECT_EQ(uids(monday + todoOf({"DUE:20250107"})), (Uids{"tour.ics", "tour.ics"}));
  EXPECT_EQ(uids(monday + eventOf({"DTSTART:20250113", "RECURRENCE-ID:20250106"})),
            (Uids{"tour.ics", "tour.ics"}));
}

TEST(EventReader, SaysWhetherTheCalendarEnds) {
  EXPECT_TRUE(readCalendar(eventOf({someStart}), "a").isWhole);
  EXPECT_TRUE(readCalendar(eventOf({someStart}) + "\r\n\r\n", "a").isWhole);
  EXPECT_TRUE(readCalendar("BEGIN:VCALENDAR\nEND:VCALENDAR", "a").isWhole);
  EXPECT_FALSE(readCalendar("", "a").isWhole);
  const std::string whole = eventOf({someStart});
  EXPECT_FALSE(readCalendar(whole.substr(0, whole.size() - 6), "a").isWhole);
  EXPECT_FALSE(readCalendar(whole + "BEGIN:VCALENDAR\r\n", "a").isWhole);
}

TEST(EventReader, LosesOnlyWhatIsBroken) {
  const CalendarText text = readCalendar(linesOf({"BEGIN:VCALENDAR",
                                                  "BEGIN:VEVENT",
                                                  "UID:no start",
                                                  "END:VEVENT",
                                                  "BEGIN:VEVENT",
                                                  "UID:bad start",
                                                  "DTSTART:tomorrow",
                                                  "END:VEVENT",
                                                  "BEGIN:VEVENT",
                                                  "UID:never ended",
                                                  someStart,
                                                  "BEGIN:VEVENT",
                                                  "UID:good",
                                                  someStart,
                                                  "DTEND:later",
                                                  "DURATION:long",
                                                  "RRULE:FREQ=SOMETIMES",
                                                  "LAST-MODIFIED:now",
                                                  "garbage",
                                                  ";;::\"",
                                                  "SEQUENCE:many",
                                                  "END:VEVENT",
                                                  "BEGIN:VEVENT",
                                                  "UID:ended by another",
                                                  someStart,
                                                  "END:VTODO",
                                                  "BEGIN:VEVENT",
                                                  "UID:cut off",
                                                  someStart,
                                                  "END:VCALENDAR"}),
                                         "file.ics");
  ASSERT_EQ(text.items.size(), 1u);
  const Item& item = *text.items[0];
  EXPECT_EQ(item.uid(), "good");
  EXPECT_FALSE(item.end);
  EXPECT_FALSE(item.duration);
  EXPECT_EQ(item.series, nullptr);
  EXPECT_EQ(item.sequence, 0);
}

TEST(EventReader, TakesTheFirstStartThatIsOne) {
  EXPECT_EQ(onlyItemOf(eventOf({"DTSTART:soon", "DTSTART:20250101", someStart}))->start->wall,
            reading("20250101"));
}

TEST(EventReader, TellsDatesByTheirShape) {
  EXPECT_TRUE(onlyItemOf(eventOf({"DTSTART:20250101"}))->start->isDate);
  EXPECT_TRUE(onlyItemOf(eventOf({"DTSTART;VALUE=DATE:20250101"}))->start->isDate);
  EXPECT_TRUE(onlyItemOf(eventOf({"DTSTART;TZID=Asia/Tokyo;VALUE=DATE:20250101"}))->start->isDate);
  // Exporters set the type and leave the time, which is what their user entered.
  const auto item = onlyItemOf(eventOf({"DTSTART;VALUE=DATE:20250101T100000"}));
  EXPECT_FALSE(item->start->isDate);
  EXPECT_EQ(item->start->wall, reading("20250101T100000"));
  EXPECT_FALSE(onlyItemOf(eventOf({"DTSTART;VALUE=DATE-TIME:20250101T100000"}))->start->isDate);
}

TEST(EventReader, ReadsATimeOfNoKnownZoneAsLocal) {
  for (const char* line : {"DTSTART:20250101T100000", "DTSTART;TZID=Nowhere:20250101T100000",
                           "DTSTART;TZID=../../../etc/passwd:20250101T100000"}) {
    const auto item = onlyItemOf(eventOf({line}));
    EXPECT_TRUE(item->start->isFloating) << line;
    EXPECT_EQ(item->start->zone, &localZone()) << line;
  }
}

TEST(EventReader, BelievesAZBeforeATzid) {
  EXPECT_EQ(onlyItemOf(eventOf({"DTSTART;TZID=Asia/Tokyo:20250101T100000Z"}))->start->toUtc(),
            instant("20250101T100000Z"));
}

TEST(EventReader, FindsAZoneAnywhereInTheFile) {
  const std::string zone = linesOf({"BEGIN:VTIMEZONE", "TZID:Office\\, north", "BEGIN:STANDARD",
                                    "DTSTART:19700101T000000", "TZOFFSETFROM:+0200",
                                    "TZOFFSETTO:+0200", "END:STANDARD", "END:VTIMEZONE"});
  const std::string event =
      linesOf({"BEGIN:VEVENT", "DTSTART;TZID=\"Office, north\":20250101T100000", "END:VEVENT"});
  for (const std::string& text : {zone + event, event + zone}) {
    const auto item = onlyItemOf("BEGIN:VCALENDAR\r\n" + text + "END:VCALENDAR\r\n");
    ASSERT_TRUE(item);
    EXPECT_FALSE(item->start->isFloating);
    EXPECT_EQ(item->start->toUtc(), instant("20250101T080000Z"));
  }
}

TEST(EventReader, PrefersTheSystemsZoneToTheFiles) {
  const auto item = onlyItemOf(
      linesOf({"BEGIN:VCALENDAR", "BEGIN:VTIMEZONE", "TZID:Asia/Tokyo", "BEGIN:STANDARD",
               "DTSTART:19700101T000000", "TZOFFSETFROM:-0200", "TZOFFSETTO:-0200", "END:STANDARD",
               "END:VTIMEZONE", "BEGIN:VEVENT", "DTSTART;TZID=Asia/Tokyo:20250101T100000",
               "END:VEVENT", "END:VCALENDAR"}));
  EXPECT_EQ(item->start->toUtc(), instant("20250101T010000Z"));
}

TEST(EventReader, SurvivesAZoneThatNeverEnds) {
  const auto item = onlyItemOf(
      linesOf({"BEGIN:VCALENDAR", "BEGIN:VTIMEZONE", "TZID:Europe/Berlin", "BEGIN:STANDARD",
               "BEGIN:VEVENT", "UID:a", someStart, "END:VEVENT", "END:VCALENDAR"}));
  ASSERT_TRUE(item);
  EXPECT_EQ(item->uid(), "a");
}

TEST(EventReader, KnowsWhoIsFreeWhen) {
  const auto availability = [](std::string_view status, std::string_view transparency) {
    return onlyItemOf(eventOf({someStart, "X-MICROSOFT-CDO-BUSYSTATUS:" + std::string(status),
                               "TRANSP:" + std::string(transparency)}))
        ->availability;
  };
  EXPECT_EQ(availability("BUSY", "TRANSPARENT"), 0);
  EXPECT_EQ(availability("FREE", "OPAQUE"), 1);
  EXPECT_EQ(availability("TENTATIVE", "OPAQUE"), 2);
  EXPECT_EQ(availability("oof", "OPAQUE"), 3);
  EXPECT_EQ(availability("WORKINGELSEWHERE", "TRANSPARENT"), 1);
  EXPECT_EQ(availability("WORKINGELSEWHERE", "OPAQUE"), 0);
  EXPECT_EQ(onlyItemOf(eventOf({someStart}))->availability, 0);
}

TEST(EventReader, ReadsWhichOccurrenceAnOverrideChanges) {
  const auto item = onlyItemOf(
      eventOf({someStart, "RECURRENCE-ID;RANGE=THISANDFUTURE;TZID=Asia/Tokyo:20250102T100000",
               "RRULE:FREQ=DAILY"}));
  ASSERT_TRUE(item->recurrenceId);
  EXPECT_EQ(item->recurrenceId->toUtc(), instant("20250102T010000Z"));
  EXPECT_TRUE(item->thisAndFuture);
  EXPECT_EQ(item->series, nullptr) << "an override repeats nothing itself";
}

TEST(EventReader, CollectsWhatRepeats) {
  const auto item = onlyItemOf(
      eventOf({"RRULE:FREQ=DAILY;COUNT=2", "RRULE:FREQ=NEVER", "RRULE:FREQ=WEEKLY",
               "RDATE:20250301T100000Z,nonsense,20250201T100000Z",
               "RDATE;VALUE=PERIOD:20250401T100000Z/PT3H,20250402T100000Z/20250402T110000Z",
               "EXDATE;VALUE=DATE:20250105", "EXDATE:20250104T100000Z,garbage,20250103T100000Z",
               someStart}));
  ASSERT_TRUE(item->series);
  EXPECT_EQ(item->series->rules.size(), 2u);
  ASSERT_EQ(item->series->dates.size(), 4u);
  EXPECT_EQ(item->series->dates[0].start.toUtc(), instant("20250201T100000Z"));
  EXPECT_EQ(item->series->dates[2].duration->seconds, 3 * 3600);
  EXPECT_EQ(item->series->dates[3].end->toUtc(), instant("20250402T110000Z"));
  ASSERT_EQ(item->series->exceptions.size(), 3u);
  EXPECT_EQ(item->series->exceptions[0].toUtc(), instant("20250103T100000Z"));
  EXPECT_TRUE(item->series->exceptions[2].isDate);
}

TEST(EventReader, IsNoSeriesWithoutAUsableRule) {
  EXPECT_EQ(onlyItemOf(eventOf({someStart, "RRULE:FREQ=NEVER", "RDATE:nonsense"}))->series,
            nullptr);
  EXPECT_EQ(onlyItemOf(eventOf({someStart, "EXDATE:20250101T100000Z"}))->series, nullptr);
}

}  // namespace
}  // namespace tidemark::local
