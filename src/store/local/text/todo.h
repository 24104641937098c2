// What a to-do is: open or completed, and due when. Reading and editing ask here, so that both
// always mean the same occurrence of one that repeats.
#pragma once

#include <optional>

#include "store/local/text/item.h"

namespace tidemark::local {

// STATUS:COMPLETED, COMPLETED or PERCENT-COMPLETE:100.
bool isCompleted(const Todo& todo);
// Neither completed nor cancelled.
bool isOpen(const Todo& todo);

// When the occurrence of `master` that starts at `start` is due: as far from it as the master's due
// date from its start, on the clock, or exactly where the two are in different zones. `start` is in
// the zone and kind of the master's anchor. Absent when the master has no due date.
std::optional<Moment> dueOfOccurrence(const Item& master, const Moment& start);

}  // namespace tidemark::local
