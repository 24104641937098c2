// Every item of every calendar file of the project, changed in every way: what a change does not
// concern keeps its bytes, another library still reads the file, and our reader finds what was
// asked for and everything else as it was.
//
// Further files and directories may be named on the command line.

#include <absl/time/time.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "calendar_checks.h"
#include "sample_files.h"
#include "store/local/editor/calendar_editor.h"
#include "store/local/recurrence/recurrence.h"
#include "tests/support/libical_complaints.h"

namespace tidemark::local {
namespace {

std::vector<std::filesystem::path> places = {CALENDAR_DATA, PROJECT_ROOT "/tests/data",
                                             PROJECT_ROOT "/examples/calendars"};

constexpr UtcSeconds now = 1'767'225'600;  // 2026-01-01T00:00:00Z
constexpr std::int64_t week = 7 * secondsPerDay;
// Of a series so many of the first occurrences are changed, of a large file so many of the first
// items.
constexpr std::size_t occurrencesChanged = 3;
constexpr std::size_t itemsChanged = 12;

const Names stampLines = {"DTSTAMP", "LAST-MODIFIED", "SEQUENCE"};
const Names recurrenceLines = {"RRULE", "RDATE", "EXDATE", "EXRULE"};
const std::string longTitle =
    "Zürich; \\ \"Tee\": a title that has to be folded, 日本語日本語日本語日本語";

std::size_t changedItems(const SampleFile& file) {
  return std::min(file.calendar.items.size(), itemsChanged);
}

// A UID that several masters share makes it a matter of rank which of them an edit means; such
// items are left to their own tests.
bool isAlone(const CalendarText& calendar, const Item& item) {
  return 1 == std::count_if(calendar.items.begin(), calendar.items.end(), [&](const auto& other) {
           return other->uid() == item.uid() && other->kind == item.kind &&
                  other->recurrenceId.has_value() == item.recurrenceId.has_value() &&
                  (!item.recurrenceId ||
                   other->recurrenceId->toUtc() == item.recurrenceId->toUtc());
         });
}

absl::CivilDay localDay(UtcSeconds instant) {
  return absl::ToCivilDay(absl::FromUnixSeconds(instant), absl::LocalTimeZone());
}

UtcSeconds startOfDay(absl::CivilDay day) {
  return absl::ToUnixSeconds(absl::LocalTimeZone().At(absl::CivilSecond(day)).pre);
}

std::string lastSecondOf(absl::CivilDay day) {
  return std::to_string(startOfDay(day + 1) - 1);
}

// A change, the lines that it may touch, and what the reader finds in other fields than before.
struct Case {
  std::string name;
  EventChange change;
  Names lines;
  Fields found;
};

std::vector<Case> fieldCases() {
  std::vector<Case> cases;
  const auto add = [&](std::string name, Names lines, Fields found) -> EventChange& {
    cases.push_back({std::move(name), {}, std::move(lines), std::move(found)});
    return cases.back().change;
  };
  add("title", {"SUMMARY"}, {{"title", "'" + longTitle + "'"}}).title = longTitle;
  add("notes", {"DESCRIPTION"}, {{"notes", "'one\ntwo'"}}).notes = "one\ntwo";
  add("no notes", {"DESCRIPTION"}, {{"notes", "''"}}).notes = "";
  add("location", {"LOCATION"}, {{"location", "'hall'"}}).location = "hall";
  add("url", {"URL"}, {{"url", "'https://example.org/a;b,c'"}}).url = "https://example.org/a;b,c";
  add("no url", {"URL"}, {{"url", "none"}}).url = std::optional<std::string>();
  for (const int number : {0, 1, 2, 3}) {
    add("availability " + std::to_string(number), {"TRANSP", "X-MICROSOFT-CDO-BUSYSTATUS"},
        {{"availability", std::to_string(number)}})
        .availability = number;
  }
  return cases;
}

std::vector<Case> timeCases(const Span& span, bool isAllDay) {
  const Names lines = {"DTSTART", "DTEND", "DURATION"};
  std::vector<Case> cases;
  const auto add = [&](std::string name, std::optional<UtcSeconds> start,
                       std::optional<UtcSeconds> end, bool allDay) {
    Case one{std::move(name), {}, lines, {}};
    one.change.start = start;
    one.change.end = end;
    if (allDay != isAllDay) one.change.isAllDay = allDay;
    const UtcSeconds newStart = start.value_or(span.start);
    const UtcSeconds newEnd = end.value_or(span.end);
    if (allDay) {
      absl::CivilDay last = localDay(newEnd);
      if (newEnd > newStart && startOfDay(last) == newEnd) --last;
      one.found = {{"start", std::to_string(startOfDay(localDay(newStart)))},
                   {"end", lastSecondOf(last)}};
    } else {
      one.found = {{"start", std::to_string(newStart)}, {"end", std::to_string(newEnd)}};
    }
    one.found["all day"] = allDay ? "yes" : "no";
    cases.push_back(std::move(one));
  };
  add("moved", span.start + week, span.end + week, isAllDay);
  add("moved by an hour", span.start + 3600, span.end + 3600, isAllDay);
  add("earlier start", span.start - week, std::nullopt, isAllDay);
  add("later end", std::nullopt, span.end + 2 * secondsPerDay + 5400, isAllDay);
  add("all day", std::nullopt, std::nullopt, true);
  add("timed", std::nullopt, std::nullopt, false);
  add("timed in summer", 1'751'364'000, 1'751'367'600, false);
  add("all day in winter", 1'736'899'200, 1'737'072'000, true);
  return cases;
}

// A time zone that the change added is taken out, so that the rest is compared.
std::string withoutNewZone(const std::string& before, std::string after) {
  const std::string last = "END:VTIMEZONE";
  for (std::size_t begin = after.find("BEGIN:VTIMEZONE"); begin != std::string::npos;
       begin = after.find("BEGIN:VTIMEZONE", begin + 1)) {
    const std::size_t end = after.find('\n', after.find(last, begin)) + 1;
    if (before.find(after.substr(begin, end - begin)) == std::string::npos) {
      return after.erase(begin, end - begin);
    }
  }
  return after;
}

class EveryChange : public testing::Test {
 protected:
  static void SetUpTestSuite() { files = new std::vector<SampleFile>(readSampleFiles(places)); }
  static void TearDownTestSuite() { delete files; }
  static std::vector<SampleFile>* files;
};
std::vector<SampleFile>* EveryChange::files;

void expectReadable(const SampleFile& file, const std::string& text) {
  // A file that is broken from the start may have its broken lines copied.
  if (complaintsOfLibical(file.text) != 0) return;
  EXPECT_EQ(complaintsOfLibical(text), 0);
}

// The items of `after` are those of `before`, the one at `changed` aside.
void expectOthersUnchanged(const SampleFile& before, const CalendarText& after, std::size_t changed,
                           std::size_t added) {
  ASSERT_EQ(after.items.size(), before.fields.size() + added);
  for (std::size_t at = 0; at < before.fields.size(); ++at) {
    if (at == changed && added == 0) continue;
    EXPECT_EQ(fieldsOf(*after.items[at > changed ? at + added : at]), before.fields[at]);
  }
}

void changeInPlace(const SampleFile& file, std::size_t index, const Case& one) {
  const Item& item = *file.calendar.items[index];
  ItemName name{std::string(item.uid()), {}};
  if (item.recurrenceId) name.occurrence = item.recurrenceId->toUtc();
  const Edit edit = changeEvent(file.text, fileName, name, one.change, now);
  ASSERT_EQ(edit.outcome, Edit::Outcome::changed);

  Fields expected = fieldsOf(item);
  for (const auto& [field, value] : one.found) expected[field] = value;
  if (expected == fieldsOf(item)) {
    EXPECT_EQ(edit.text, file.text);
    return;
  }
  expected["sequence"] = std::to_string(item.sequence + 1);
  expected["last modified"] = std::to_string(now);
  const CalendarText after = readCalendar(edit.text, fileName);
  expectOthersUnchanged(file, after, index, 0);
  EXPECT_EQ(fieldsOf(*after.items[index]), expected);

  Names touched = stampLines;
  touched.insert(one.lines.begin(), one.lines.end());
  const Difference difference = differenceOf(file.text, withoutNewZone(file.text, edit.text));
  EXPECT_EQ(textOf(without(difference.before, touched)),
            textOf(without(difference.after, touched)));
  expectReadable(file, edit.text);
}

void changeOccurrence(const SampleFile& file, std::size_t index, const Occurrence& occurrence,
                      const Case& one) {
  const Item& series = *file.calendar.items[index];
  const UtcSeconds start = occurrence.start.toUtc();
  const Edit edit =
      changeEvent(file.text, fileName, {std::string(series.uid()), start}, one.change, now);
  ASSERT_EQ(edit.outcome, Edit::Outcome::changed);

  Fields expected = fieldsOf(series);
  const Span span = spanOfOccurrence(series, occurrence.start, occurrence.period);
  expected["start"] = std::to_string(span.start);
  expected["end"] = std::to_string(span.end);
  Fields wanted = expected;
  for (const auto& [field, value] : one.found) wanted[field] = value;
  if (wanted == expected) {
    EXPECT_EQ(edit.text, file.text);
    return;
  }
  wanted.erase("occurrences");
  wanted["sequence"] = std::to_string(series.sequence + 1);
  wanted["last modified"] = std::to_string(now);
  const CalendarText after = readCalendar(edit.text, fileName);
  expectOthersUnchanged(file, after, index, 1);
  const Item& made = *after.items[index + 1];
  ASSERT_TRUE(made.recurrenceId);
  EXPECT_EQ(made.recurrenceId->toUtc(), start);
  EXPECT_EQ(made.recurrenceId->isDate, series.start->isDate);
  EXPECT_EQ(made.recurrenceId->zone, series.start->zone);
  Fields found = fieldsOf(made);
  wanted["recurrence id"] = found["recurrence id"];
  EXPECT_EQ(found, wanted);

  // Nothing went, and what came is the series' own text.
  const std::string rest = withoutNewZone(file.text, edit.text);
  const std::size_t inserted = rest.size() - file.text.size();
  const std::size_t position = readCalendar(rest, fileName).begins[index + 1];
  EXPECT_EQ(std::string(rest).erase(position, inserted), file.text);
  Names touched = stampLines;
  touched.merge(Names(one.lines));
  touched.merge(Names(recurrenceLines));
  touched.merge(Names{"DTSTART", "DTEND", "DURATION", "RECURRENCE-ID"});
  const std::string copy = rest.substr(position, inserted);
  const std::string original =
      file.text.substr(file.calendar.begins[index], position - file.calendar.begins[index]);
  EXPECT_EQ(textOf(without(rawLinesOf(copy), touched)),
            textOf(without(rawLinesOf(original), touched)));
  expectReadable(file, edit.text);
}

std::vector<Occurrence> occurrencesOf(const Item& series) {
  std::vector<Occurrence> found;
  forEachOccurrence(series, -3'000'000'000, 9'000'000'000, [&](const Occurrence& one) {
    found.push_back(one);
    return found.size() < occurrencesChanged;
  });
  return found;
}

bool hasOverride(const CalendarText& calendar, const Item& series, UtcSeconds occurrence) {
  return std::any_of(calendar.items.begin(), calendar.items.end(), [&](const auto& item) {
    return item->uid() == series.uid() && item->recurrenceId &&
           item->recurrenceId->toUtc() == occurrence;
  });
}

TEST_F(EveryChange, FindsFiles) {
  EXPECT_GT(files->size(), 5U);
}

TEST_F(EveryChange, OfAnEventInPlace) {
  for (const SampleFile& file : *files) {
    for (std::size_t index = 0; index < changedItems(file); ++index) {
      const Item& item = *file.calendar.items[index];
      if (item.kind != ItemKind::event || item.series || !isAlone(file.calendar, item)) continue;
      std::vector<Case> cases = fieldCases();
      for (Case& one : timeCases(spanOf(item), item.start->isDate)) cases.push_back(std::move(one));
      for (const Case& one : cases) {
        SCOPED_TRACE(file.path + ", item " + std::to_string(index) + ", " + one.name);
        changeInPlace(file, index, one);
      }
    }
  }
}

TEST_F(EveryChange, OfOneOccurrence) {
  for (const SampleFile& file : *files) {
    for (std::size_t index = 0; index < changedItems(file); ++index) {
      const Item& item = *file.calendar.items[index];
      if (item.kind != ItemKind::event || !item.series || !isAlone(file.calendar, item)) continue;
      for (const Occurrence& occurrence : occurrencesOf(item)) {
        if (hasOverride(file.calendar, item, occurrence.start.toUtc())) continue;
        const Span span = spanOfOccurrence(item, occurrence.start, occurrence.period);
        std::vector<Case> cases = fieldCases();
        for (Case& one : timeCases(span, item.start->isDate)) cases.push_back(std::move(one));
        for (const Case& one : cases) {
          SCOPED_TRACE(file.path + ", item " + std::to_string(index) + ", occurrence " +
                       std::to_string(occurrence.start.toUtc()) + ", " + one.name);
          changeOccurrence(file, index, occurrence, one);
        }
      }
    }
  }
}

TEST_F(EveryChange, OfNothingLeavesTheBytes) {
  for (const SampleFile& file : *files) {
    for (std::size_t index = 0; index < changedItems(file); ++index) {
      const auto& item = file.calendar.items[index];
      if (!isAlone(file.calendar, *item)) continue;
      SCOPED_TRACE(file.path + ", " + std::string(item->uid()));
      ItemName name{std::string(item->uid()), {}};
      if (item->recurrenceId) name.occurrence = item->recurrenceId->toUtc();
      const Edit edit = item->todo ? changeTodo(file.text, fileName, name, {}, now)
                                   : changeEvent(file.text, fileName, name, {}, now);
      if (item->series && startsOf(*item, 1).empty()) continue;
      ASSERT_EQ(edit.outcome, Edit::Outcome::changed);
      EXPECT_EQ(edit.text, file.text);
    }
  }
}

TEST_F(EveryChange, RemovesOneOccurrence) {
  for (const SampleFile& file : *files) {
    for (std::size_t index = 0; index < changedItems(file); ++index) {
      const Item& item = *file.calendar.items[index];
      if (!item.series || !isAlone(file.calendar, item)) continue;
      for (const UtcSeconds start : startsOf(item, occurrencesChanged)) {
        SCOPED_TRACE(file.path + ", item " + std::to_string(index) + ", occurrence " +
                     std::to_string(start));
        const ItemName name{std::string(item.uid()), start};
        const Edit edit = item.todo ? removeTodo(file.text, fileName, name, now)
                                    : removeEvent(file.text, fileName, name, now);
        const std::vector<UtcSeconds> before = startsOf(item, 50);
        if (before.size() == 1) continue;  // then the series goes
        ASSERT_EQ(edit.outcome, Edit::Outcome::changed);
        const CalendarText after = readCalendar(edit.text, fileName);
        const auto found =
            std::find_if(after.items.begin(), after.items.end(), [&](const auto& one) {
              return one->uid() == item.uid() && one->kind == item.kind && !one->recurrenceId;
            });
        ASSERT_NE(found, after.items.end());
        std::vector<UtcSeconds> expected = before;
        std::erase(expected, start);
        std::vector<UtcSeconds> left = startsOf(**found, 50);
        left.resize(std::min(left.size(), expected.size()));
        EXPECT_EQ(left, expected);
        EXPECT_FALSE(hasOverride(after, item, start));
        if (!hasOverride(file.calendar, item, start)) {
          // One line more.
          Difference difference = differenceOf(file.text, edit.text);
          difference.after = without(difference.after, stampLines);
          const auto added =
              std::find_if(difference.after.rbegin(), difference.after.rend(),
                           [](const RawLine& line) { return line.name == "EXDATE"; });
          ASSERT_NE(added, difference.after.rend());
          difference.after.erase(std::next(added).base());
          EXPECT_EQ(textOf(without(difference.before, stampLines)), textOf(difference.after));
        }
        expectReadable(file, edit.text);
      }
    }
  }
}

TEST_F(EveryChange, RemovesAnItemAndNothingElse) {
  for (const SampleFile& file : *files) {
    for (std::size_t index = 0; index < changedItems(file); ++index) {
      const auto& item = file.calendar.items[index];
      SCOPED_TRACE(file.path + ", " + std::string(item->uid()));
      const ItemName name{std::string(item->uid()), {}};
      const Edit edit = item->todo ? removeTodo(file.text, fileName, name, now)
                                   : removeEvent(file.text, fileName, name, now);
      std::vector<Fields> others;
      for (std::size_t at = 0; at < file.fields.size(); ++at) {
        const Item& other = *file.calendar.items[at];
        if (other.uid() != item->uid() || other.kind != item->kind)
          others.push_back(file.fields[at]);
      }
      if (edit.outcome == Edit::Outcome::empty) {
        EXPECT_TRUE(others.empty());
        continue;
      }
      ASSERT_EQ(edit.outcome, Edit::Outcome::changed);
      std::vector<Fields> left;
      for (const auto& other : readCalendar(edit.text, fileName).items)
        left.push_back(fieldsOf(*other));
      EXPECT_EQ(left, others);
      expectReadable(file, edit.text);
    }
  }
}

TEST_F(EveryChange, MovesAnItemAsItIs) {
  for (const SampleFile& file : *files) {
    for (std::size_t index = 0; index < changedItems(file); ++index) {
      const auto& item = file.calendar.items[index];
      SCOPED_TRACE(file.path + ", " + std::string(item->uid()));
      const std::string moved = extractItem(file.text, fileName, item->uid());
      std::vector<Fields> expected;
      for (std::size_t at = 0; at < file.fields.size(); ++at) {
        if (file.calendar.items[at]->uid() == item->uid()) expected.push_back(file.fields[at]);
      }
      std::vector<Fields> found;
      for (const auto& one : readCalendar(moved, fileName).items) found.push_back(fieldsOf(*one));
      EXPECT_EQ(found, expected);
      expectReadable(file, moved);
    }
  }
}

TEST_F(EveryChange, OfATodo) {
  for (const SampleFile& file : *files) {
    for (std::size_t index = 0; index < changedItems(file); ++index) {
      const Item& item = *file.calendar.items[index];
      if (!item.todo || item.series || !isAlone(file.calendar, item)) continue;
      SCOPED_TRACE(file.path + ", item " + std::to_string(index));
      ItemName name{std::string(item.uid()), {}};
      if (item.recurrenceId) name.occurrence = item.recurrenceId->toUtc();
      const auto expectChange = [&](const TodoChange& change, const Names& lines,
                                    const Fields& found) {
        const TodoEdit edit = changeTodo(file.text, fileName, name, change, now);
        ASSERT_EQ(edit.outcome, Edit::Outcome::changed);
        EXPECT_FALSE(edit.successor);
        if (edit.text == file.text) return;
        Fields expected = fieldsOf(item);
        for (const auto& [field, value] : found) expected[field] = value;
        expected["sequence"] = std::to_string(item.sequence + 1);
        expected["last modified"] = std::to_string(now);
        const CalendarText after = readCalendar(edit.text, fileName);
        expectOthersUnchanged(file, after, index, 0);
        Fields left = fieldsOf(*after.items[index]);
        if (lines.contains("DTSTART")) left.erase("start"), expected.erase("start");
        EXPECT_EQ(left, expected);
        Names touched = stampLines;
        touched.merge(Names(lines));
        const Difference difference = differenceOf(file.text, edit.text);
        EXPECT_EQ(textOf(without(difference.before, touched)),
                  textOf(without(difference.after, touched)));
        expectReadable(file, edit.text);
      };
      const Names completion = {"STATUS", "COMPLETED", "PERCENT-COMPLETE"};
      TodoChange title, notes, complete, reopen, day, hour;
      title.title = longTitle;
      expectChange(title, {"SUMMARY"}, {{"title", "'" + longTitle + "'"}});
      notes.notes = std::optional<std::string>();
      expectChange(notes, {"DESCRIPTION"}, {{"notes", "none"}});
      complete.completed = true;
      expectChange(complete, completion,
                   {{"completed", std::to_string(now)}, {"status", "3"}, {"percent", "100"}});
      reopen.completed = false;
      expectChange(reopen, completion, {{"completed", "none"}, {"status", "1"}, {"percent", "0"}});
      day.due = DateComponents{2026, 7, 4, {}, {}, {}, {}};
      expectChange(day, {"DUE", "DTSTART", "DURATION"},
                   {{"due", std::to_string(startOfDay(absl::CivilDay(2026, 7, 4))) + " date"}});
      hour.due = DateComponents{2026, 7, 4, 12, 30, {}, {}};
      expectChange(
          hour, {"DUE", "DTSTART", "DURATION"},
          {{"due", std::to_string(startOfDay(absl::CivilDay(2026, 7, 4)) + 45000) + " floating"}});
    }
  }
}

TEST_F(EveryChange, HandsARepeatingTodoOn) {
  for (const SampleFile& file : *files) {
    for (std::size_t index = 0; index < changedItems(file); ++index) {
      const Item& item = *file.calendar.items[index];
      if (!item.todo || !item.series || !isAlone(file.calendar, item)) continue;
      SCOPED_TRACE(file.path + ", item " + std::to_string(index));
      TodoChange complete;
      complete.completed = true;
      const TodoEdit edit =
          changeTodo(file.text, fileName, {std::string(item.uid()), {}}, complete, now);
      ASSERT_EQ(edit.outcome, Edit::Outcome::changed);
      std::vector<UtcSeconds> expected = startsOf(item, 20);
      if (!expected.empty() && expected.front() == anchorOf(item)->toUtc())
        expected.erase(expected.begin());
      ASSERT_EQ(edit.successor.has_value(), !expected.empty());
      if (!edit.successor) continue;
      const CalendarText after = readCalendar(edit.successor->text, fileName);
      ASSERT_FALSE(after.items.empty());
      std::vector<UtcSeconds> left = startsOf(*after.items.front(), 20);
      left.resize(std::min(left.size(), expected.size()));
      EXPECT_EQ(left, expected);
      expectReadable(file, edit.successor->text);
      expectReadable(file, edit.text);
    }
  }
}

}  // namespace
}  // namespace tidemark::local

int main(int count, char** arguments) {
  testing::InitGoogleTest(&count, arguments);
  for (int at = 1; at < count; ++at) tidemark::local::places.emplace_back(arguments[at]);
  return RUN_ALL_TESTS();
}
