#include "store/local/editor/item_family.h"

#include <tuple>

#include "store/local/text/instants.h"

namespace tidemark::local {

bool countsBefore(const Item& one, const Item& other) {
  return std::tuple(one.sequence, one.lastModified) >
         std::tuple(other.sequence, other.lastModified);
}

std::optional<Entry> ItemFamily::overrideOf(UtcSeconds occurrence) const {
  std::optional<Entry> found;
  for (const Entry& entry : overrides) {
    if (entry.item->recurrenceId->toUtc() != occurrence) continue;
    if (!found || countsBefore(*entry.item, *found->item)) found = entry;
  }
  return found;
}

std::optional<Entry> ItemFamily::followedAt(UtcSeconds occurrence) const {
  std::optional<Entry> found;
  for (const Entry& entry : overrides) {
    const Item& item = *entry.item;
    if (!item.thisAndFuture || !item.start || item.recurrenceId->toUtc() > occurrence) continue;
    if (!found || item.recurrenceId->toUtc() > found->item->recurrenceId->toUtc()) found = entry;
  }
  return found;
}

std::optional<Occurrence> ItemFamily::occurrenceAt(UtcSeconds occurrence) const {
  std::optional<Occurrence> found;
  if (!isSeries()) return found;
  forEachOccurrence(*master->item, occurrence, occurrence + 1, [&](const Occurrence& one) {
    found = one;
    return false;
  });
  return found;
}

std::optional<Occurrence> ItemFamily::firstOccurrence(
    UtcSeconds from, const std::function<bool(const Occurrence&)>& accept) const {
  std::optional<Occurrence> found;
  if (!isSeries()) return found;
  forEachOccurrence(*master->item, from, lastInstant, [&](const Occurrence& one) {
    if (accept(one)) found = one;
    return !found;
  });
  return found;
}

Moment startFollowing(const Item& followed, UtcSeconds occurrence) {
  Moment start = *followed.start;
  const Zone& zone = *start.zone;
  start.wall += zone.toWall(occurrence) - zone.toWall(followed.recurrenceId->toUtc());
  return start;
}

}  // namespace tidemark::local
