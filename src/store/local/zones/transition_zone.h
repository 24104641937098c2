// The common half of the zones that change their offset: a table of the changes for the years that
// people's calendars are about, and a slower answer for all others.
//
// Built by one thread, then immutable and read by any.
#pragma once

#include <cstdint>
#include <vector>

#include "store/local/text/civil.h"
#include "store/local/zones/zone.h"

namespace tidemark::local {

// One change of offset: from `at` on, clocks are `after` seconds ahead of UTC.
struct Transition {
  UtcSeconds at = 0;
  std::int32_t before = 0;
  std::int32_t after = 0;
};

class TransitionZone : public Zone {
 public:
  // The years whose changes stand in the table, and those just outside.
  static constexpr UtcSeconds tableBegin = dayOf(1950, 1, 1) * secondsPerDay;
  static constexpr UtcSeconds tableEnd = dayOf(2100, 1, 1) * secondsPerDay;

  UtcSeconds toUtc(WallSeconds wall) const override;
  WallSeconds toWall(UtcSeconds utc) const override { return utc + offsetAt(utc); }

  std::int32_t offsetAt(UtcSeconds utc) const;

 protected:
  // `transitions` are those of tableBegin <= at < tableEnd, ascending; `initialOffset` holds before
  // the first of them.
  void setTable(std::int32_t initialOffset, std::vector<Transition> transitions);
  // The offset at an instant outside the table.
  virtual std::int32_t distantOffsetAt(UtcSeconds utc) const = 0;

 private:
  UtcSeconds distantToUtc(WallSeconds wall) const;

  std::int32_t initialOffset_ = 0;
  std::vector<Transition> transitions_;
};

}  // namespace tidemark::local
