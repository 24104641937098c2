// Our readings beside those of libical's own iterator: for every rule in the test data, and for
// rules drawn at random from a grid of parts.

#include <gtest/gtest.h>
#include <libical/ical.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "store/local/recurrence/readings.h"
#include "store/local/recurrence/recurrence.h"
#include "store/local/text/civil.h"
#include "tests/unit/calendar_text/recurrence_cases.h"
#include "tests/unit/calendar_text/support.h"

namespace tidemark::local {
namespace {

using Readings = std::vector<std::string>;

// Our first readings up to `last`, the start among them.
Readings ours(const RecurrenceRule& rule, WallSeconds last, std::size_t count) {
  Readings result{testing::textOf(rule.start)};
  const auto readings = readingsOf(rule, rule.start, std::min(last, lastReadingOf(rule)));
  while (result.size() < count) {
    const auto reading = readings->next();
    if (!reading) break;
    result.push_back(testing::textOf(*reading));
  }
  return result;
}

// As many of the library's, after the start.
Readings libraryReadings(const std::string& rule, const std::string& start, std::size_t count) {
  icalerror_set_errors_are_fatal(0);
  Readings result{start};
  const icalrecurrencetype parsed = icalrecurrencetype_from_string(rule.c_str());
  icalrecur_iterator* const iterator =
      icalrecur_iterator_new(parsed, icaltime_from_string(start.c_str()));
  // So it answers rules that can give nothing.
  if (!iterator) return result;
  while (result.size() < count) {
    const icaltimetype time = icalrecur_iterator_next(iterator);
    if (icaltime_is_null_time(time)) break;
    char* const text = icaltime_as_ical_string_r(time);
    if (text != start) result.push_back(text);
    icalmemory_free_buffer(text);
  }
  icalrecur_iterator_free(iterator);
  return result;
}

std::string listFrom(std::mt19937& random, std::initializer_list<const char*> choices) {
  return std::data(choices)[random() % choices.size()];
}

// A rule that a person or program might write. Left out is where the library goes astray: it counts
// the positions of BYSETPOS in days, not in readings, passes over a negative BYMONTHDAY of a daily
// rule, and walks sparse rules day by day for seconds.
std::string drawRule(std::mt19937& random) {
  const std::string frequency =
      listFrom(random, {"DAILY", "WEEKLY", "MONTHLY", "MONTHLY", "YEARLY", "YEARLY"});
  std::string rule = "FREQ=" + frequency;
  rule += listFrom(random, {"", ";INTERVAL=2", ";INTERVAL=3", ";INTERVAL=5"});
  rule += listFrom(random, {"", ";WKST=SU", ";WKST=MO"});
  const bool isLong = frequency == "MONTHLY" || frequency == "YEARLY";
  bool hasDays = false;
  if (isLong && random() % 2) {
    rule +=
        ";BYDAY=" + listFrom(random, {"1MO", "-1FR", "2TU,-2TH", "SA,SU", "MO,TU,WE,TH,FR", "3SU"});
    hasDays = true;
  } else if (frequency != "DAILY" && random() % 2) {
    rule += ";BYDAY=" + listFrom(random, {"MO", "MO,WE,FR", "SA,SU", "TU,TH"});
    hasDays = true;
  } else if (frequency == "DAILY" && random() % 2) {
    rule += ";BYMONTHDAY=" + listFrom(random, {"1", "15", "31", "13,29", "1,2,3,30"});
  } else if (isLong && random() % 2) {
    rule += ";BYMONTHDAY=" + listFrom(random, {"1", "15", "31", "-1", "13,-13", "29", "1,2,3,30"});
    hasDays = true;
  }
  if (frequency == "YEARLY" || (frequency != "DAILY" && random() % 4 == 0)) {
    rule += ";BYMONTH=" + listFrom(random, {"1", "2,3", "4,10", "12", "1,2,3,4,5,6"});
  }
  const std::string positions =
      hasDays && isLong
          ? listFrom(random, {"", "", ";BYSETPOS=1", ";BYSETPOS=-1", ";BYSETPOS=2,-2"})
          : std::string();
  if (!positions.empty()) return rule + positions;
  rule += listFrom(random, {"", "", ";BYHOUR=9", ";BYHOUR=8,17;BYMINUTE=0,30"});
  return rule;
}

TEST(RecurrenceDifferential, AgreesWithTheLibraryOnTheGrid) {
  std::mt19937 random(5545);
  const std::vector<std::string> starts = {"20250131T100000", "20240229T173000", "19970902T090000",
                                           "20251231T235959", "20230101T000000"};
  int compared = 0;
  for (int round = 0; round < 400; ++round) {
    const std::string text = drawRule(random);
    const std::string& start = starts[random() % starts.size()];
    const auto rule =
        parseRecurrenceRule(text, Moment{testing::reading(start), &utcZone(), false, false});
    ASSERT_TRUE(rule) << text;
    if (!rule->canMatch) continue;
    const Readings mine = ours(*rule, testing::reading("20600101T000000"), 25);
    EXPECT_EQ(mine, libraryReadings(text, start, mine.size())) << text << " from " << start;
    ++compared;
  }
  EXPECT_GT(compared, 350);
}

// Whether a rule numbers its days or weekdays from the start or the end of the year.
bool isNumberedDay(DayNumber day, int fromStart, int fromEnd) {
  const int year = dateOf(day).year;
  return day - dayOf(year, 1, 1) + 1 == fromStart || day - dayOf(year + 1, 1, 1) == fromEnd;
}

bool isNumberedWeekday(DayNumber day, unsigned weekday, int ordinal) {
  const int year = dateOf(day).year;
  const DayNumber distance =
      ordinal > 0 ? day - dayOf(year, 1, 1) : dayOf(year + 1, 1, 1) - 1 - day;
  return weekdayOf(day) == weekday && distance / 7 + 1 == std::abs(ordinal);
}

// The library itself, which answers these, beside a look at every day.
TEST(RecurrenceDifferential, LibraryAgreesWithEveryDayOfTheYear) {
  const struct {
    const char* rule;
    bool (*holds)(DayNumber);
  } cases[] = {
      {"FREQ=YEARLY;BYYEARDAY=60,-60", [](DayNumber day) { return isNumberedDay(day, 60, -60); }},
      {"FREQ=YEARLY;BYYEARDAY=366,-366",
       [](DayNumber day) { return isNumberedDay(day, 366, -366); }},
      {"FREQ=YEARLY;BYYEARDAY=1,-1;BYMONTH=12",
       [](DayNumber day) { return isNumberedDay(day, 0, -1); }},
      {"FREQ=YEARLY;BYYEARDAY=100;BYDAY=TH",
       [](DayNumber day) { return isNumberedDay(day, 100, 0) && weekdayOf(day) == 4; }},
      {"FREQ=YEARLY;BYYEARDAY=208,-158;BYMONTHDAY=27,-3",
       [](DayNumber day) {
         return isNumberedDay(day, 208, -158) && dateOf(day).month == 7 && dateOf(day).day == 27;
       }},
      {"FREQ=YEARLY;BYDAY=20MO,-20MO;BYMONTHDAY=15,-15",
       [](DayNumber day) {
         const CivilDate date = dateOf(day);
         const unsigned fromEnd = lengthOfMonth(date.year, date.month) - date.day + 1;
         return (isNumberedWeekday(day, 1, 20) || isNumberedWeekday(day, 1, -20)) &&
                (date.day == 15 || fromEnd == 15);
       }},
      {"FREQ=YEARLY;BYDAY=20MO,-20MO",
       [](DayNumber day) {
         return isNumberedWeekday(day, 1, 20) || isNumberedWeekday(day, 1, -20);
       }},
      {"FREQ=YEARLY;BYDAY=53SU,-53WE",
       [](DayNumber day) {
         return isNumberedWeekday(day, 0, 53) || isNumberedWeekday(day, 3, -53);
       }},
      {"FREQ=YEARLY;BYDAY=1SU,MO",
       [](DayNumber day) { return isNumberedWeekday(day, 0, 1) || weekdayOf(day) == 1; }}};
  for (const auto& example : cases) {
    const Moment start{testing::reading("19991231T100000"), &utcZone(), false, false};
    const auto rule = parseRecurrenceRule(example.rule, start);
    ASSERT_TRUE(rule && rule->libraryDays) << example.rule;
    Readings expected{testing::textOf(start.wall)};
    for (DayNumber day = dayOf(2000, 1, 1); day < dayOf(2101, 1, 1); ++day) {
      if (example.holds(day)) expected.push_back(testing::textOf(day * secondsPerDay + 36000));
    }
    EXPECT_EQ(ours(*rule, testing::reading("21001231T235959"), 10'000), expected) << example.rule;
  }
}

TEST(RecurrenceDifferential, ManyThreadsReadOneRule) {
  const Moment start{testing::reading("20000101T100000"), &utcZone(), false, false};
  const auto rule = parseRecurrenceRule("FREQ=YEARLY;BYDAY=20MO;COUNT=300", start);
  ASSERT_TRUE(rule);
  std::vector<Readings> results(4);
  std::vector<std::thread> threads;
  for (Readings& result : results) {
    threads.emplace_back([&] { result = ours(*rule, testing::reading("29000101"), 10'000); });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(results[0].size(), 300u);
  for (const Readings& result : results) EXPECT_EQ(result, results[0]);
}

TEST(RecurrenceDifferential, AgreesWithTheLibraryOnTheTestData) {
  int compared = 0;
  for (const testing::RecurrenceCase& example : testing::recurrenceCases()) {
    if (example.comment.find("[not the library") != std::string::npos) continue;
    const auto item = testing::onlyItemOf(example.calendarText());
    ASSERT_TRUE(item) << example.name;
    for (const std::string& line : example.lines) {
      if (!line.starts_with("RRULE:")) continue;
      // Where rules end is compared in the cases themselves: an end needs a zone, and counts the
      // start.
      std::string text = line.substr(6);
      for (const std::string_view part : {";COUNT=", ";UNTIL="}) {
        const std::size_t at = text.find(part);
        if (at != std::string::npos)
          text.erase(at, std::min(text.find(';', at + 1), text.size()) - at);
      }
      const auto rule = parseRecurrenceRule(text, *item->start);
      ASSERT_TRUE(rule) << text;
      const std::string start = testing::textOf(item->start->wall);
      const Readings mine = ours(*rule, testing::reading("21000101T000000"), 40);
      EXPECT_EQ(mine, libraryReadings(text, start, mine.size())) << example.name << " " << text;
      ++compared;
    }
  }
  EXPECT_GT(compared, 40);
}

}  // namespace
}  // namespace tidemark::local
