#include "store/local/recurrence/readings.h"

namespace tidemark::local {

std::unique_ptr<Readings> readingsOf(const RecurrenceRule& rule, WallSeconds from, WallSeconds to) {
  return rule.isSubDaily() ? clockReadingsOf(rule, from, to) : dayReadingsOf(rule, from, to);
}

WallSeconds lastReadingOf(const RecurrenceRule& rule) {
  if (!rule.count) return lastWall;
  if (const WallSeconds known = rule.lastCounted.load(std::memory_order_relaxed);
      known != RecurrenceRule::notCounted) {
    return known;
  }
  WallSeconds last = rule.start;
  if (*rule.count > 1) {
    const auto readings = readingsOf(rule, rule.start, lastWall);
    last = readings->advance(*rule.count - 1).value_or(rule.start);
  }
  // Two threads may both come here; they find the same.
  rule.lastCounted.store(last, std::memory_order_relaxed);
  return last;
}

}  // namespace tidemark::local
