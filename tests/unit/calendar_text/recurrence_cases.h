// The examples of tests/data/recurrence.
#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace tidemark::local::testing {

struct RecurrenceCase {
  std::string name;     // file and number, as a test may be named
  std::string comment;  // what it is about
  std::vector<std::string> lines;
  std::string from, to;
  std::vector<std::string> expected;

  // A calendar with one event of these lines.
  std::string calendarText() const;
  friend std::ostream& operator<<(std::ostream& out, const RecurrenceCase& example) {
    return out << example.comment;
  }
};

// All of them; throws when a file is not in the form that the README tells.
std::vector<RecurrenceCase> recurrenceCases();

}  // namespace tidemark::local::testing
