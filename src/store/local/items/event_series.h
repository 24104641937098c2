// The occurrences of a series as they are shown: those of its rules, less the ones that an override
// stands for, and changed by overrides that count for all later ones (RANGE=THISANDFUTURE).
// Overrides are events of their own, wherever they are.
//
// Any thread.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "store/local/items/item_groups.h"

namespace tidemark::local {

// One event of the calendar: a single event, or one occurrence of a series.
struct PlacedEvent {
  UtcSeconds start = 0;
  UtcSeconds end = 0;
  UtcSeconds occurrence = 0;  // where it was meant to be
  const Item* item = nullptr;
  std::uint32_t collection = 0;  // the collection's number
  bool repeats = false;          // belongs to a series
  bool isExpanded = false;       // comes from the rules of a series
};

// The event of an override, or of an event that does not repeat. `item` has a start.
PlacedEvent placeItem(const Item& item, std::uint32_t collection, bool repeats);

// The master of a group that is a series, with the group's overrides.
class EventSeries {
 public:
  EventSeries(const Item& master, ItemSpan overrides, std::uint32_t collection);

  const Item& master() const { return *master_; }
  std::uint32_t collection() const { return collection_; }
  ItemSpan overrides() const { return overrides_; }
  // No occurrence is longer, and none is moved further from where it was meant to be.
  std::int64_t reach() const { return reach_; }

  using Visit = std::function<bool(const PlacedEvent&)>;
  // Every occurrence with start < to and end > from, those of no length with from <= start, until
  // `visit` returns false. In the order of where they were meant to be.
  void forEach(UtcSeconds from, UtcSeconds to, const Visit& visit) const;

 private:
  const Item* overrideAt(UtcSeconds occurrence) const;
  // The last override for all later occurrences that is meant to be before `occurrence`.
  const Item* followedAt(UtcSeconds occurrence) const;

  const Item* master_;
  ItemSpan overrides_;
  std::uint32_t collection_;
  bool hasFollowed_ = false;
  std::int64_t reach_ = 0;
};

// The group's first event in the store's order: a single event, or the first occurrence that a
// series still has. Absent when it has none.
std::optional<PlacedEvent> firstEvent(const ItemGroup& group, std::uint32_t collection);

// The group's event that was meant to be at that instant. Absent when it has none.
std::optional<PlacedEvent> eventAt(const ItemGroup& group, std::uint32_t collection,
                                   UtcSeconds occurrence);

}  // namespace tidemark::local
