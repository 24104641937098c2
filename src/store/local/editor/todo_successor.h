// What a repeating to-do leaves behind when it is completed: a new to-do at the next occurrence
// that carries the rule on.
//
// One thread at a time.
#pragma once

#include <optional>
#include <vector>

#include "store/local/editor/calendar_editor.h"
#include "store/local/editor/calendar_file.h"

namespace tidemark::local {

struct SuccessorPlan {
  Successor successor;
  // Overrides of occurrences still to come: they go with the successor.
  std::vector<std::size_t> movedComponents;
};

// The series' first occurrence at `from` or later that nobody completed or cancelled by an
// override; absent when there is none, or no series.
std::optional<Moment> openOccurrence(const ItemFamily& family, UtcSeconds from);

// Lets the series of the editor's component begin at one of its occurrences: what was before is
// gone, COUNT and RDATE know it, and alarms that go off at an instant go off as long before.
void startSeriesAt(ComponentEditor& editor, const CalendarFile& file, const Entry& master,
                   const Moment& occurrence);

// What follows the occurrence `current` of the family's series. Absent when nothing does. The UID
// follows from the old one and from `current`.
std::optional<SuccessorPlan> planSuccessor(const CalendarFile& file, const ItemFamily& family,
                                           const Moment& current, UtcSeconds now);

}  // namespace tidemark::local
