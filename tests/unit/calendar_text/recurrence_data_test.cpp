// The cases in tests/data/recurrence, whose README tells their form.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/unit/calendar_text/recurrence_cases.h"
#include "tests/unit/calendar_text/support.h"

namespace tidemark::local {
namespace {

using testing::RecurrenceCase;

class RecurrenceData : public ::testing::TestWithParam<RecurrenceCase> {};

TEST_P(RecurrenceData, GivesTheExpectedStarts) {
  const RecurrenceCase& example = GetParam();
  const auto item = testing::onlyItemOf(example.calendarText());
  ASSERT_TRUE(item);
  std::vector<std::string> starts;
  forEachOccurrence(*item, testing::instant(example.from), testing::instant(example.to),
                    [&](const Occurrence& occurrence) {
                      const UtcSeconds utc = occurrence.start.toUtc();
                      const std::string text = testing::textOf(occurrence.start.zone->toWall(utc));
                      starts.push_back(occurrence.start.isDate ? text.substr(0, 8) : text);
                      return true;
                    });
  EXPECT_EQ(starts, example.expected) << example.comment;
}

INSTANTIATE_TEST_SUITE_P(Cases, RecurrenceData, ::testing::ValuesIn(testing::recurrenceCases()),
                         [](const auto& example) { return example.param.name; });

}  // namespace
}  // namespace tidemark::local
