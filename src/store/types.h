// The plain values that cross the store interface. No thread owns them: they are copied or shared
// as const.
//
// Strings are UTF-8. Instants are seconds since 1970-01-01T00:00:00Z with a fraction, leap seconds
// not counted; they carry no time zone.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidemark {

using Instant = std::chrono::sys_time<std::chrono::duration<double>>;

// The numbers are the platform's (EKEntityType).
enum class EntityType { event = 0, reminder = 1 };

// The platform's EKAuthorizationStatus as a number, since a store may report values that have no
// name here.
using AuthorizationStatus = int;
inline constexpr AuthorizationStatus notDetermined = 0;
inline constexpr AuthorizationStatus restricted = 1;
inline constexpr AuthorizationStatus denied = 2;
inline constexpr AuthorizationStatus fullAccess = 3;
inline constexpr AuthorizationStatus writeOnly = 4;

enum class ColorSpace { sRGB, displayP3, gray };

// Components are nominally 0.0 to 1.0 in the order of the colour space; any after the third mean
// nothing here.
struct Color {
  ColorSpace space = ColorSpace::sRGB;
  std::vector<double> components;
};

// An account that holds calendars. `sourceType` is the platform's EKSourceType as a number.
struct Source {
  std::string title;
  int sourceType = 0;
};

// An event calendar or a reminders list. A store may derive from it to keep its own handle beside
// the values.
struct Calendar {
  virtual ~Calendar() = default;

  std::string calendarIdentifier;
  std::string title;
  // Invariant: every calendar of a working store has one. Who meets a calendar without stops the
  // process.
  std::optional<Source> source;
  bool allowsContentModifications = false;
  std::optional<Color> color;
};
using CalendarRef = std::shared_ptr<const Calendar>;

// Views into the event that gave it, valid as long as that event is unchanged and alive.
struct Participant {
  std::optional<std::string_view> name;
  std::string_view url;
};

// A date as a wall clock and a calendar show it (Gregorian). What is absent was not said.
struct DateComponents {
  std::optional<int> year, month, day, hour, minute, second;
  // An IANA name, "UTC", or "GMT+hhmm" / "GMT-hhmm" for a fixed offset. Absent: floating, the
  // reader's local time.
  std::optional<std::string> timeZone;

  friend bool operator==(const DateComponents&, const DateComponents&) = default;
};

// The outcome of a change: nothing when it was made, else why not, in the store's own words.
struct [[nodiscard]] StoreResult {
  std::optional<std::string> error;

  static StoreResult success() { return {}; }
  static StoreResult failure(std::string localizedDescription) {
    return {std::move(localizedDescription)};
  }
  explicit operator bool() const { return !error; }
};

}  // namespace tidemark
