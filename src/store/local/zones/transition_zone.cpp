#include "store/local/zones/transition_zone.h"

#include <algorithm>
#include <utility>

namespace tidemark::local {

void TransitionZone::setTable(std::int32_t initialOffset, std::vector<Transition> transitions) {
  initialOffset_ = initialOffset;
  std::erase_if(transitions,
                [](const Transition& change) { return change.before == change.after; });
  transitions.shrink_to_fit();
  transitions_ = std::move(transitions);
}

std::int32_t TransitionZone::offsetAt(UtcSeconds utc) const {
  if (utc < tableBegin || utc >= tableEnd) return distantOffsetAt(utc);
  const auto next = std::upper_bound(
      transitions_.begin(), transitions_.end(), utc,
      [](UtcSeconds instant, const Transition& change) { return instant < change.at; });
  return next == transitions_.begin() ? initialOffset_ : std::prev(next)->after;
}

UtcSeconds TransitionZone::toUtc(WallSeconds wall) const {
  // Two days: more than any offset, and than any change of one.
  constexpr std::int64_t margin = 2 * secondsPerDay;
  if (wall < tableBegin + margin || wall >= tableEnd - margin) return distantToUtc(wall);
  // The first change that the reading comes before, on a clock that has not changed yet. Up to
  // there the offset is `before`: for what the last change doubled that is the first reading, for
  // what it skipped see below.
  const auto next = std::upper_bound(transitions_.begin(), transitions_.end(), wall,
                                     [](WallSeconds reading, const Transition& change) {
                                       return reading < change.at + change.before;
                                     });
  if (next == transitions_.begin()) return wall - initialOffset_;
  const Transition& last = *std::prev(next);
  const UtcSeconds utc = wall - last.after;
  return utc < last.at ? wall - last.before : utc;
}

UtcSeconds TransitionZone::distantToUtc(WallSeconds wall) const {
  // The offsets on either side of a change that may be near. The earlier one decides unless it
  // leads past the change.
  const std::int32_t before = offsetAt(wall - secondsPerDay);
  const std::int32_t after = offsetAt(wall + secondsPerDay);
  const UtcSeconds early = wall - before;
  if (before == after || offsetAt(early) == before) return early;
  const UtcSeconds late = wall - after;
  return offsetAt(late) == after ? late : early;
}

}  // namespace tidemark::local
