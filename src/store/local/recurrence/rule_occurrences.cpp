#include "store/local/recurrence/rule_occurrences.h"

#include <algorithm>
#include <utility>

#include "store/local/recurrence/recurrence.h"

namespace tidemark::local {
namespace {

// More than any change of offset.
constexpr std::int64_t margin = 2 * secondsPerDay;

// Instants on which all arithmetic is safe; nothing occurs outside.
UtcSeconds clamped(UtcSeconds instant) {
  return std::clamp(instant, firstWall - margin, lastWall + margin);
}

bool changesOffset(const Zone& zone, UtcSeconds from, UtcSeconds to) {
  return zone.toWall(from) - from != zone.toWall(to) - to;
}

// The first reading that may be at `from` or later: the clock's own, unless it was just set forward
// and readings that it skipped come later than those it shows.
WallSeconds firstReadingAt(const Zone& zone, UtcSeconds from) {
  const WallSeconds wall = zone.toWall(from);
  return changesOffset(zone, from - margin, from) ? wall - margin : wall;
}

// The last reading that may be before `to`, likewise.
WallSeconds lastReadingBefore(const Zone& zone, UtcSeconds to) {
  const WallSeconds wall = zone.toWall(to);
  return changesOffset(zone, to, to + margin) ? wall + margin : wall;
}

UtcSeconds endOf(const RecurrenceRule& rule, UtcSeconds to) {
  return rule.untilInstant ? std::min(to, *rule.untilInstant + 1) : to;
}

WallSeconds lastReadingOf(const RecurrenceRule& rule, const Zone& zone, UtcSeconds to) {
  const WallSeconds last = std::min(lastReadingBefore(zone, to), lastReadingOf(rule));
  return rule.untilWall ? std::min(last, *rule.untilWall) : last;
}

}  // namespace

RuleOccurrences::RuleOccurrences(const RecurrenceRule& rule, const Moment& start, UtcSeconds from,
                                 UtcSeconds to)
    : zone_(start.zone),
      isDate_(start.isDate),
      from_(clamped(from)),
      to_(clamped(endOf(rule, to))),
      left_(maximumOccurrencesPerRule) {
  if (from_ >= to_) return;
  readings_ = readingsOf(rule, firstReadingAt(*zone_, from_), lastReadingOf(rule, *zone_, to_));
  advance();
}

void RuleOccurrences::advance() {
  const auto last = current_;
  current_.reset();
  while (left_ > 0) {
    const auto next = nextInOrder();
    if (!next) return;
    if (!isInRange(next->instant) || (last && next->instant == last->instant)) continue;
    --left_;
    current_ = next;
    return;
  }
}

std::optional<RuleOccurrences::Instance> RuleOccurrences::nextInOrder() {
  if (!pending_) takePending();
  if (hasSkipped() && (!pending_ || skipped_[nextSkipped_].instant <= pending_->instant)) {
    return skipped_[nextSkipped_++];
  }
  return std::exchange(pending_, std::nullopt);
}

// Takes readings up to the next one that the clock shows.
void RuleOccurrences::takePending() {
  if (!hasSkipped()) {
    skipped_.clear();
    nextSkipped_ = 0;
  }
  while (auto reading = readings_->next()) {
    if (isDate_) *reading = dayOf(*reading) * secondsPerDay;
    const Instance instance{zone_->toUtc(*reading), *reading};
    if (zone_->toWall(instance.instant) == instance.reading) {
      pending_ = instance;
      return;
    }
    const auto isEarlier = [](const Instance& left, const Instance& right) {
      return left.instant < right.instant;
    };
    const auto waiting = skipped_.begin() + static_cast<std::ptrdiff_t>(nextSkipped_);
    skipped_.insert(std::upper_bound(waiting, skipped_.end(), instance, isEarlier), instance);
  }
}

}  // namespace tidemark::local
