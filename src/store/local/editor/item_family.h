// The components of one UID and kind in a file that is about to be changed: the series, or the item
// that does not repeat, and what overrides its occurrences.
//
// One thread at a time; the file must outlive it.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

#include "store/local/recurrence/recurrence.h"
#include "store/local/text/item.h"

namespace tidemark::local {

// An item and the component that it was read from.
struct Entry {
  const Item* item = nullptr;
  std::size_t component = 0;
};

// Whether the first of two components with the same UID (and RECURRENCE-ID) counts and not the
// second: the higher SEQUENCE, then the later LAST-MODIFIED.
bool countsBefore(const Item& one, const Item& other);

struct ItemFamily {
  // Of several the one that counts.
  std::optional<Entry> master;
  std::vector<Entry> overrides;

  bool isSeries() const { return master && master->item->series; }
  // The override of that occurrence, the one that counts where there are several.
  std::optional<Entry> overrideOf(UtcSeconds occurrence) const;
  // The last override for itself and all later occurrences (RANGE=THISANDFUTURE) up to that one.
  std::optional<Entry> followedAt(UtcSeconds occurrence) const;
  // That occurrence of the series; absent when it has none there.
  std::optional<Occurrence> occurrenceAt(UtcSeconds occurrence) const;
  // The series' first occurrence at `from` or later that is accepted.
  std::optional<Occurrence> firstOccurrence(
      UtcSeconds from, const std::function<bool(const Occurrence&)>& accept) const;
};

// Where the occurrence that was meant to be at `occurrence` starts when it follows that override:
// moved as far on the clock as the override's own.
Moment startFollowing(const Item& followed, UtcSeconds occurrence);

}  // namespace tidemark::local
