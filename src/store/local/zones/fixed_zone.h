// A zone that never changes its offset. Immutable; any thread.
#pragma once

#include <string>
#include <utility>

#include "store/local/zones/zone.h"

namespace tidemark::local {

class FixedZone final : public Zone {
 public:
  FixedZone(std::int64_t offset, std::string name) : offset_(offset), name_(std::move(name)) {}

  UtcSeconds toUtc(WallSeconds wall) const override { return wall - offset_; }
  WallSeconds toWall(UtcSeconds utc) const override { return utc + offset_; }
  std::string nameAt(UtcSeconds) const override { return name_; }

 private:
  std::int64_t offset_;
  std::string name_;
};

// "GMT+hhmm" or "GMT-hhmm", without the seconds that an offset may have; "GMT" where that is none.
std::string nameOfOffset(std::int64_t offset);

}  // namespace tidemark::local
