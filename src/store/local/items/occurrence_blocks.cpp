#include "store/local/items/occurrence_blocks.h"

#include <algorithm>
#include <functional>
#include <iterator>

#include "store/local/items/prefetch.h"
#include "store/local/recurrence/recurrence.h"
#include "store/local/text/instants.h"
#include "store/range.h"

namespace tidemark::local {
namespace {

constexpr std::int64_t blockLength = 28 * secondsPerDay;
// A query over more blocks (some three years) is answered without keeping what it expands.
constexpr std::int64_t widestKeptRange = 40;
// Some twelve years: more than a host shows, and a bound for one that asks for every week there is.
constexpr std::size_t maximumExpandedBlocks = 160;
// A series with more occurrences in a block (one every twenty minutes) is expanded for each query.
// Times the widest kept range this stays below what a rule may contribute to one answer.
constexpr std::size_t maximumOccurrencesPerBlock = 2000;
static_assert(maximumOccurrencesPerBlock * widestKeptRange <= maximumOccurrencesPerRule);
// So many changes of series between two queries cost more to follow than to expand again.
constexpr std::size_t maximumFollowedChanges = 200;
// A block that nobody asks for does not grow by what happens to it, and is not searched again and
// again for what goes.
constexpr std::size_t maximumNotedRemovals = 1000;

UtcSeconds startOf(std::int64_t block) {
  return block * blockLength;
}

}  // namespace

bool OccurrenceBlocks::Range::holds(const PlacedEvent& event) const {
  return rangeHoldsEvent(from, to, instantOf(event.start), instantOf(event.end));
}

OccurrenceBlocks::BlockNumber OccurrenceBlocks::blockOf(UtcSeconds time) {
  return floorDivide(time, blockLength);
}

bool OccurrenceBlocks::isLong(const PlacedEvent& event) {
  return event.end - event.start > blockLength;
}

void OccurrenceBlocks::add(const ItemGroup& group, std::uint32_t collection) {
  const Item* master = group.master();
  const bool isSeries = master != nullptr && master->series != nullptr;
  if (isSeries) addSeries(*master, group.overrides(), collection);
  bool isMasterReplaced = false;
  for (const auto& item : group.overrides()) {
    const PlacedEvent event = placeItem(*item, collection, isSeries);
    addEvent(event);
    if (master != nullptr && event.occurrence == master->start->toUtc()) isMasterReplaced = true;
  }
  if (master != nullptr && !isSeries && !isMasterReplaced) {
    addEvent(placeItem(*master, collection, false));
  }
}

void OccurrenceBlocks::remove(const ItemGroup& group) {
  for (const auto& item : group.items()) {
    if (item->series != nullptr) removeSeries(*item);
    removeItem(*item);
  }
}

void OccurrenceBlocks::addEvent(const PlacedEvent& event) {
  if (isLong(event)) {
    long_.push_back(event);
    return;
  }
  const BlockNumber first = blockOf(event.start);
  const PlainEvent plain{event.item, event.collection, event.repeats};
  blocks_[first].addedPlain.push_back(plain);
  if (event.end > startOf(first + 1)) blocks_[first + 1].addedPlain.push_back(plain);
}

void OccurrenceBlocks::removeItem(const Item& item) {
  const PlacedEvent event = placeItem(item, 0, false);
  const auto isSame = [&](const auto& other) { return other.item == &item; };
  if (isLong(event)) {
    std::erase_if(long_, isSame);
    return;
  }
  const BlockNumber first = blockOf(event.start);
  for (BlockNumber number = first; number <= first + 1; ++number) {
    const auto found = blocks_.find(number);
    if (found == blocks_.end()) continue;
    if (found->second.addedPlain.size() > maximumNotedRemovals) settle(found->second);
    std::erase_if(found->second.addedPlain, isSame);
    noteRemoved(found->second, item);
  }
}

void OccurrenceBlocks::noteRemoved(Block& block, const Item& item) const {
  if (block.events.empty()) return;
  block.removed.push_back(&item);
  if (block.removed.size() > maximumNotedRemovals) settle(block);
}

void OccurrenceBlocks::addSeries(const Item& master, ItemSpan overrides, std::uint32_t collection) {
  const EventSeries series(master, overrides, collection);
  if (series.reach() > blockLength) {
    direct_.emplace(&master, series);
    return;
  }
  series_.emplace(&master, series);
  if (expandedBlocks_ == 0) return;
  if (++seriesChanges_ > maximumFollowedChanges) {
    forgetExpansions();
    return;
  }
  for (auto block = blocks_.begin(); block != blocks_.end(); ++block) {
    if (!block->second.isExpanded) continue;
    const BlockNumber first = block->first;
    BlockNumber last = first;
    for (auto next = std::next(block);
         next != blocks_.end() && next->first == last + 1 && next->second.isExpanded; ++next) {
      block = next;
      last = next->first;
    }
    if (!expandSeries(series, first, last)) {
      removeSeries(master);
      direct_.emplace(&master, series);
      return;
    }
  }
}

void OccurrenceBlocks::removeSeries(const Item& master) {
  if (direct_.erase(&master) > 0) return;
  const auto found = series_.find(&master);
  if (found == series_.end()) return;
  const EventSeries series = found->second;
  series_.erase(found);
  if (expandedBlocks_ == 0) return;
  if (++seriesChanges_ > maximumFollowedChanges) {
    forgetExpansions();
    return;
  }
  const auto isOfSeries = [&](const PlacedEvent& event) {
    if (!event.isExpanded) return false;
    return event.item == &master ||
           std::any_of(series.overrides().begin(), series.overrides().end(),
                       [&](const auto& item) { return item.get() == event.item; });
  };
  for (auto& [number, block] : blocks_) {
    if (!block.isExpanded) continue;
    std::erase_if(block.added, isOfSeries);
    noteRemoved(block, master);
    // Their occurrences where they count for later ones; their own events go one by one.
    for (const auto& item : series.overrides()) {
      if (item->thisAndFuture) noteRemoved(block, *item);
    }
  }
}

void OccurrenceBlocks::settle(Block& block) const {
  if (!block.removed.empty()) {
    std::sort(block.removed.begin(), block.removed.end());
    std::erase_if(block.events, [&](const PlacedEvent& event) {
      return std::binary_search(block.removed.begin(), block.removed.end(), event.item);
    });
    block.removed.clear();
  }
  for (const PlainEvent& plain : block.addedPlain) {
    block.added.push_back(placeItem(*plain.item, plain.collection, plain.repeats));
  }
  block.addedPlain = {};
  if (block.added.empty()) return;
  std::sort(block.added.begin(), block.added.end(), std::cref(order_));
  const auto middle = static_cast<std::ptrdiff_t>(block.events.size());
  block.events.insert(block.events.end(), block.added.begin(), block.added.end());
  std::inplace_merge(block.events.begin(), block.events.begin() + middle, block.events.end(),
                     std::cref(order_));
  block.added = {};
}

void OccurrenceBlocks::expand(BlockNumber first, BlockNumber last) {
  const auto isExpanded = [&](BlockNumber number) { return blocks_[number].isExpanded; };
  for (BlockNumber number = first; number <= last;) {
    if (isExpanded(number)) {
      ++number;
      continue;
    }
    BlockNumber end = number;
    while (end < last && !isExpanded(end + 1)) ++end;
    for (auto series = series_.begin(); series != series_.end();) {
      if (expandSeries(series->second, number, end)) {
        ++series;
        continue;
      }
      const EventSeries tooDense = series->second;
      ++series;
      removeSeries(tooDense.master());
      direct_.emplace(&tooDense.master(), tooDense);
    }
    expandedBlocks_ += static_cast<std::size_t>(end - number + 1);
    for (; number <= end; ++number) blocks_[number].isExpanded = true;
  }
}

bool OccurrenceBlocks::expandSeries(const EventSeries& series, BlockNumber first,
                                    BlockNumber last) {
  const std::size_t most = maximumOccurrencesPerBlock * static_cast<std::size_t>(last - first + 1);
  scratch_.clear();
  series.forEach(startOf(first), startOf(last + 1), [&](const PlacedEvent& event) {
    scratch_.push_back(event);
    return scratch_.size() <= most;
  });
  if (scratch_.size() > most) return false;
  for (const PlacedEvent& event : scratch_) {
    const BlockNumber start = blockOf(event.start);
    if (start >= first) blocks_[start].added.push_back(event);
    if (start < last && event.end > startOf(start + 1)) blocks_[start + 1].added.push_back(event);
  }
  return true;
}

void OccurrenceBlocks::forgetExpansions() {
  const auto isExpanded = [](const PlacedEvent& event) { return event.isExpanded; };
  for (auto& [number, block] : blocks_) {
    if (!block.isExpanded) continue;
    block.isExpanded = false;
    std::erase_if(block.events, isExpanded);
    std::erase_if(block.added, isExpanded);
  }
  expandedBlocks_ = 0;
}

std::vector<PlacedEvent> OccurrenceBlocks::find(Instant from, Instant to,
                                                const Selection& selection) {
  const Range range{from, to, wholeSeconds(from), secondsFrom(to)};
  if (!(from < to) || range.first >= range.last) return {};
  seriesChanges_ = 0;
  const BlockNumber first = blockOf(range.first);
  const BlockNumber last = blockOf(range.last - 1);
  const bool isKept = last - first < widestKeptRange;
  if (isKept) {
    if (expandedBlocks_ + static_cast<std::size_t>(last - first + 1) > maximumExpandedBlocks) {
      forgetExpansions();
    }
    expand(first, last);
  }
  std::vector<PlacedEvent> found = collect(range, selection, isKept);
  const std::size_t sorted = found.size();
  collectLong(range, selection, found);
  for (const auto& [master, series] : direct_) {
    if (selection[series.collection()]) expandInto(series, range, found);
  }
  if (!isKept) {
    for (const auto& [master, series] : series_) {
      if (selection[series.collection()]) expandInto(series, range, found);
    }
  }
  if (found.size() > sorted) {
    const auto middle = found.begin() + static_cast<std::ptrdiff_t>(sorted);
    std::sort(middle, found.end(), std::cref(order_));
    std::inplace_merge(found.begin(), middle, found.end(), std::cref(order_));
  }
  return found;
}

std::vector<PlacedEvent> OccurrenceBlocks::collect(const Range& range, const Selection& selection,
                                                   bool withExpanded) {
  std::vector<PlacedEvent> found;
  const BlockNumber first = blockOf(range.first);
  const BlockNumber last = blockOf(range.last - 1);
  const auto begin = blocks_.lower_bound(first);
  const auto end = blocks_.upper_bound(last);
  std::size_t most = 0;
  for (auto block = begin; block != end; ++block) {
    settle(block->second);
    most += block->second.events.size();
  }
  found.reserve(most);
  for (auto block = begin; block != end; ++block) {
    // What reaches in from the block before was met there, but in the first one.
    const bool isFirst = block->first == first;
    for (const PlacedEvent& event : block->second.events) {
      if (event.start >= range.last) break;
      // Most of the block, when a week is asked for: passed over with whole numbers.
      if (event.end < range.first) continue;
      if (!isFirst && event.start < startOf(block->first)) continue;
      if (event.isExpanded && !withExpanded) continue;
      if (range.holds(event) && selection[event.collection]) {
        prefetch(*event.item, headOfItem);
        found.push_back(event);
      }
    }
  }
  return found;
}

void OccurrenceBlocks::collectLong(const Range& range, const Selection& selection,
                                   std::vector<PlacedEvent>& found) const {
  for (const PlacedEvent& event : long_) {
    if (range.holds(event) && selection[event.collection]) found.push_back(event);
  }
}

void OccurrenceBlocks::expandInto(const EventSeries& series, const Range& range,
                                  std::vector<PlacedEvent>& found) const {
  std::size_t count = 0;
  series.forEach(range.first, range.last, [&](const PlacedEvent& event) {
    if (!range.holds(event)) return true;
    found.push_back(event);
    return ++count < maximumOccurrencesPerRule;
  });
}

}  // namespace tidemark::local
