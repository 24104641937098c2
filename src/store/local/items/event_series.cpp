#include "store/local/items/event_series.h"

#include <algorithm>
#include <cstdlib>
#include <tuple>

#include "store/local/recurrence/recurrence.h"
#include "store/local/text/instants.h"
#include "store/range.h"

namespace tidemark::local {
namespace {

// How far an override moves its occurrence, on the clock of its own start.
std::int64_t shiftOf(const Item& override) {
  return override.start->wall - override.start->zone->toWall(override.recurrenceId->toUtc());
}

// What changes of offset can add to a length that is said in days.
constexpr std::int64_t longestShiftOfOffset = secondsPerDay;

bool saysDays(const Duration* duration) {
  return duration != nullptr && duration->days != 0;
}

bool isNominal(const Item& master) {
  const auto& dates = master.series->dates;
  return master.start->isDate || saysDays(master.duration.get()) ||
         std::any_of(dates.begin(), dates.end(), [](const RecurrenceDate& date) {
           return saysDays(date.duration ? &*date.duration : nullptr);
         });
}

std::int64_t longestOccurrence(const Item& master) {
  const Span own = spanOf(master);
  std::int64_t longest = own.end - own.start;
  for (const RecurrenceDate& date : master.series->dates) {
    if (!date.end && !date.duration) continue;
    const Span span = spanOfOccurrence(master, date.start, &date);
    longest = std::max(longest, span.end - span.start);
  }
  return longest;
}

}  // namespace

PlacedEvent placeItem(const Item& item, std::uint32_t collection, bool repeats) {
  const Span span = spanOf(item);
  PlacedEvent event;
  event.start = span.start;
  event.end = span.end;
  event.occurrence = item.recurrenceId ? item.recurrenceId->toUtc() : span.start;
  event.item = &item;
  event.collection = collection;
  event.repeats = repeats;
  return event;
}

EventSeries::EventSeries(const Item& master, ItemSpan overrides, std::uint32_t collection)
    : master_(&master), overrides_(overrides), collection_(collection) {
  reach_ = longestOccurrence(master);
  for (const auto& item : overrides) {
    if (!item->thisAndFuture || !item->start) continue;
    hasFollowed_ = true;
    const Span span = spanOf(*item);
    reach_ = std::max(reach_, std::abs(shiftOf(*item)) + span.end - span.start);
    reach_ += longestShiftOfOffset;
  }
  if (isNominal(master)) reach_ += longestShiftOfOffset;
}

void EventSeries::forEach(UtcSeconds from, UtcSeconds to, const Visit& visit) const {
  const UtcSeconds last = hasFollowed_ ? to + reach_ : to;
  forEachOccurrence(*master_, from - reach_, last, [&](const Occurrence& occurrence) {
    const UtcSeconds meant = occurrence.start.toUtc();
    if (!overrides_.empty() && overrideAt(meant) != nullptr) return true;
    PlacedEvent event;
    event.item = master_;
    event.occurrence = meant;
    event.collection = collection_;
    event.repeats = true;
    event.isExpanded = true;
    Span span;
    if (const Item* followed = followedAt(meant)) {
      event.item = followed;
      Moment start = *followed->start;
      start.wall = start.zone->toWall(meant) + shiftOf(*followed);
      span = spanOfOccurrence(*followed, start, nullptr);
    } else {
      span = spanOfOccurrence(*master_, occurrence.start, occurrence.period);
    }
    event.start = span.start;
    event.end = span.end;
    return !rangeHoldsEvent(from, to, event.start, event.end) || visit(event);
  });
}

std::optional<PlacedEvent> firstEvent(const ItemGroup& group, std::uint32_t collection) {
  const Item* master = group.master();
  const bool isSeries = master != nullptr && master->series != nullptr;
  std::optional<PlacedEvent> first;
  const auto consider = [&](const PlacedEvent& event) {
    if (!first ||
        std::tie(event.start, event.occurrence) < std::tie(first->start, first->occurrence))
      first = event;
  };
  bool isMasterReplaced = false;
  for (const auto& item : group.overrides()) {
    const PlacedEvent event = placeItem(*item, collection, isSeries);
    consider(event);
    if (master != nullptr && event.occurrence == master->start->toUtc()) isMasterReplaced = true;
  }
  if (isSeries) {
    const EventSeries series(*master, group.overrides(), collection);
    series.forEach(firstInstant, lastInstant, [&](const PlacedEvent& event) {
      consider(event);
      return false;
    });
  } else if (master != nullptr && !isMasterReplaced) {
    consider(placeItem(*master, collection, false));
  }
  return first;
}

std::optional<PlacedEvent> eventAt(const ItemGroup& group, std::uint32_t collection,
                                   UtcSeconds occurrence) {
  const Item* master = group.master();
  const bool isSeries = master != nullptr && master->series != nullptr;
  for (const auto& item : group.overrides()) {
    const PlacedEvent event = placeItem(*item, collection, isSeries);
    if (event.occurrence == occurrence) return event;
  }
  std::optional<PlacedEvent> found;
  if (isSeries) {
    const EventSeries series(*master, group.overrides(), collection);
    const std::int64_t reach = series.reach();
    series.forEach(occurrence - reach, occurrence + reach, [&](const PlacedEvent& event) {
      if (event.occurrence == occurrence) found = event;
      return !found;
    });
  } else if (master != nullptr && master->start->toUtc() == occurrence) {
    found = placeItem(*master, collection, false);
  }
  return found;
}

const Item* EventSeries::overrideAt(UtcSeconds occurrence) const {
  const auto place = std::lower_bound(
      overrides_.begin(), overrides_.end(), occurrence,
      [](const auto& item, UtcSeconds time) { return item->recurrenceId->toUtc() < time; });
  const bool isFound = place != overrides_.end() && (*place)->recurrenceId->toUtc() == occurrence;
  return isFound ? place->get() : nullptr;
}

const Item* EventSeries::followedAt(UtcSeconds occurrence) const {
  if (!hasFollowed_) return nullptr;
  const Item* followed = nullptr;
  for (const auto& item : overrides_) {
    if (item->recurrenceId->toUtc() > occurrence) break;
    if (item->thisAndFuture && item->start) followed = item.get();
  }
  return followed;
}

}  // namespace tidemark::local
