// The days of yearly rules that number the weekdays of the year (BYDAY=20MO), or else its days
// (BYYEARDAY): libical finds them. The rule's other parts, its times, positions and ends are not
// its concern. Nor are numbered weeks: libical takes week 53 of a year that has none for the next
// year's first, and loses its way without a BYDAY.
//
// Any thread; the days found are remembered.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "store/local/text/civil.h"

namespace tidemark::local {

struct RecurrenceRule;

class LibraryDays {
 public:
  // The last year that libical knows.
  static constexpr int lastLibraryYear = 2582;

  // What the rule says is copied.
  explicit LibraryDays(const RecurrenceRule& rule);
  ~LibraryDays();

  // Appends the days so numbered in that year of the calendar, ascending. The years before the
  // rule's start have none.
  void appendDaysOf(int year, std::vector<DayNumber>& days);

 private:
  class Walk;
  std::unique_ptr<Walk> walk_;
};

}  // namespace tidemark::local
