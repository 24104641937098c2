// Every event of the store by time, in blocks of 28 days.
//
// Events that stand where they stand are in their blocks from the start. The occurrences of series
// come into a block when it is first asked for, and stay until the series changes; a query over
// many years expands them for itself alone. A block is sorted when it is asked for.
//
// One thread at a time.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "absl/container/flat_hash_map.h"
#include "store/local/items/event_series.h"
#include "store/local/items/store_order.h"
#include "store/types.h"

namespace tidemark::local {

class OccurrenceBlocks {
 public:
  explicit OccurrenceBlocks(const StoreOrder& order) : order_(order) {}

  // Adds or removes what the group shows. It must be as it was when it was added, and its items
  // stay where they are until it is removed.
  void add(const ItemGroup& group, std::uint32_t collection);
  void remove(const ItemGroup& group);

  // Whether a collection, by its number, is in the answer.
  using Selection = std::vector<bool>;
  // In the store's order: start < to and end > from, those of no length with from <= start. A
  // series gives at most maximumOccurrencesPerRule.
  std::vector<PlacedEvent> find(Instant from, Instant to, const Selection& selection);

 private:
  using BlockNumber = std::int64_t;

  // An event that stands where it stands. The rest is found again when its block is asked for: most
  // never are.
  struct PlainEvent {
    const Item* item = nullptr;
    std::uint32_t collection = 0;
    bool repeats = false;
  };
  struct Block {
    // Sorted. What began in the block before and reaches into this one is here too.
    std::vector<PlacedEvent> events;
    // To be taken out of `events`, and then in.
    std::vector<const Item*> removed;
    std::vector<PlacedEvent> added;
    std::vector<PlainEvent> addedPlain;
    bool isExpanded = false;
  };
  // What was asked for, and the whole seconds around it.
  struct Range {
    Instant from;
    Instant to;
    UtcSeconds first;
    UtcSeconds last;

    bool holds(const PlacedEvent& event) const;
  };

  static BlockNumber blockOf(UtcSeconds time);
  static bool isLong(const PlacedEvent& event);
  void addEvent(const PlacedEvent& event);
  void removeItem(const Item& item);
  void noteRemoved(Block& block, const Item& item) const;
  void addSeries(const Item& master, ItemSpan overrides, std::uint32_t collection);
  void removeSeries(const Item& master);
  void settle(Block& block) const;

  void expand(BlockNumber first, BlockNumber last);
  // False when the series has too many occurrences to be kept in blocks.
  bool expandSeries(const EventSeries& series, BlockNumber first, BlockNumber last);
  void forgetExpansions();

  std::vector<PlacedEvent> collect(const Range& range, const Selection& selection,
                                   bool withExpanded);
  void collectLong(const Range& range, const Selection& selection,
                   std::vector<PlacedEvent>& found) const;
  void expandInto(const EventSeries& series, const Range& range,
                  std::vector<PlacedEvent>& found) const;

  const StoreOrder& order_;
  std::map<BlockNumber, Block> blocks_;
  std::size_t expandedBlocks_ = 0;
  // Series whose occurrences are kept in blocks, and those that are expanded for each query, by
  // their masters.
  absl::flat_hash_map<const Item*, EventSeries> series_;
  absl::flat_hash_map<const Item*, EventSeries> direct_;
  // Events longer than a block.
  std::vector<PlacedEvent> long_;
  std::size_t seriesChanges_ = 0;
  std::vector<PlacedEvent> scratch_;  // of expandSeries
};

}  // namespace tidemark::local
