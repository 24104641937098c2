// Time zones of calendar files: the system's database first, else what the file itself describes
// (RFC 5545, 3.6.5).
//
// A zone is interned: equal descriptions give the same pointer, which lives as long as the process.
// Every function may be called from any thread.
#pragma once

#include <array>
#include <atomic>
#include <compare>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tidemark::local {

// Seconds since 1970-01-01T00:00:00Z.
using UtcSeconds = std::int64_t;
// A wall clock's reading as seconds since its own 1970-01-01T00:00:00; says an instant only
// together with a zone.
using WallSeconds = std::int64_t;

inline constexpr std::int64_t secondsPerDay = 86400;

// A time that may be absent, in half the size of a std::optional. An absent one is the earliest.
class OptionalSeconds {
 public:
  OptionalSeconds() = default;
  OptionalSeconds(std::int64_t seconds) : seconds_(seconds) {}

  bool has_value() const { return seconds_ != absent; }
  explicit operator bool() const { return has_value(); }
  std::int64_t operator*() const { return seconds_; }
  operator std::optional<std::int64_t>() const {
    return has_value() ? std::optional(seconds_) : std::nullopt;
  }
  friend auto operator<=>(const OptionalSeconds&, const OptionalSeconds&) = default;

 private:
  static constexpr std::int64_t absent = INT64_MIN;
  std::int64_t seconds_ = absent;
};

class Zone {
 public:
  virtual ~Zone() = default;

  // A reading that a change of offset skips counts with the offset before the gap; one that it
  // doubles is the first.
  virtual UtcSeconds toUtc(WallSeconds wall) const = 0;
  virtual WallSeconds toWall(UtcSeconds utc) const = 0;
  // What DateComponents::timeZone says for a time of this zone at that instant: an IANA name,
  // "UTC", or "GMT+hhmm" where only the file knows the zone.
  virtual std::string nameAt(UtcSeconds utc) const = 0;

  // Zones that are interned are numbered from 1; others have the number 0.
  static constexpr std::uint32_t maximumNumber = 30'000;
  std::uint32_t number() const { return number_; }
  static const Zone& ofNumber(std::uint32_t number) {
    // Who has a number got it from another thread in a way that orders the two.
    return *interned_[number].load(std::memory_order_relaxed);
  }

  // Gives the zone a number and keeps it for ever. At most maximumNumber may be.
  static const Zone* intern(std::unique_ptr<Zone> zone);

 private:
  static std::array<std::atomic<const Zone*>, maximumNumber + 1> interned_;
  std::uint32_t number_ = 0;
};

// The process's local zone.
const Zone& localZone();
const Zone& utcZone();

// The system's zone of that TZID: an IANA name, one behind a vendor's prefix
// ("/example.org/Olson_1/Europe/Berlin"), or a Windows name ("W. Europe Standard Time"). ASCII case
// does not matter. Null when the system has none.
const Zone* systemZone(std::string_view tzid);

// The zone that a VTIMEZONE component describes (its text, from BEGIN:VTIMEZONE through
// END:VTIMEZONE). Null when it describes none that can be used. Work and memory are bounded
// whatever the text says.
const Zone* fileZone(std::string_view vtimezone);

}  // namespace tidemark::local
