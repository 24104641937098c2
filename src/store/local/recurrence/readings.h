// The wall-clock readings that a rule gives, without regard to zones, UNTIL and COUNT.
#pragma once

#include <memory>
#include <optional>

#include "store/local/recurrence/recurrence_rule.h"
#include "store/local/zones/zone.h"

namespace tidemark::local {

// One thread at a time; the rule must outlive it.
class Readings {
 public:
  virtual ~Readings() = default;
  // The next reading, later than the one before; absent when there are no more.
  virtual std::optional<WallSeconds> next() = 0;
  // What the last of `count` calls of next() would give that gave something; `count` is at least 1.
  virtual std::optional<WallSeconds> advance(std::int64_t count) = 0;
};

// Those after the rule's start with from <= reading <= to; the start itself is an occurrence
// whatever the rule says.
std::unique_ptr<Readings> readingsOf(const RecurrenceRule& rule, WallSeconds from, WallSeconds to);

// The same for the rules that step by days or more, and for the others.
std::unique_ptr<Readings> dayReadingsOf(const RecurrenceRule& rule, WallSeconds from,
                                        WallSeconds to);
std::unique_ptr<Readings> clockReadingsOf(const RecurrenceRule& rule, WallSeconds from,
                                          WallSeconds to);

// The last reading that COUNT allows (the start is the first); lastWall for a rule without COUNT.
WallSeconds lastReadingOf(const RecurrenceRule& rule);

}  // namespace tidemark::local
