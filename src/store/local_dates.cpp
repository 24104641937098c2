#include "store/local_dates.h"

#include <absl/time/civil_time.h>
#include <absl/time/time.h>

#include <cmath>
#include <mutex>
#include <string_view>

#include "store/local_time_zone.h"

namespace tidemark {
namespace {

Instant toInstant(absl::Time time) {
  return Instant(std::chrono::duration<double>(static_cast<double>(absl::ToUnixSeconds(time))));
}

// "GMT+hhmm" and "GMT-hhmm", the platform's names of fixed offsets.
std::optional<absl::TimeZone> fixedZone(std::string_view name) {
  if (name.size() != 8 || !name.starts_with("GMT") || (name[3] != '+' && name[3] != '-'))
    return std::nullopt;
  int number = 0;
  for (char c : name.substr(4)) {
    if (c < '0' || c > '9') return std::nullopt;
    number = number * 10 + (c - '0');
  }
  if (number % 100 > 59) return std::nullopt;
  const int seconds = (number / 100 * 60 + number % 100) * 60;
  return absl::FixedTimeZone(name[3] == '-' ? -seconds : seconds);
}

std::optional<absl::TimeZone> zoneNamed(const std::string& name) {
  if (const auto zone = fixedZone(name)) return zone;
  absl::TimeZone zone;
  if (!absl::LoadTimeZone(name, &zone)) return std::nullopt;
  return zone;
}

}  // namespace

void loadLocalZone() {
  static std::once_flag once;
  std::call_once(once, [] { static_cast<void>(localTimeZone()); });
}

Instant startOfDay(std::chrono::year_month_day day) {
  const absl::CivilDay date(static_cast<int>(day.year()), static_cast<unsigned>(day.month()),
                            static_cast<unsigned>(day.day()));
  // Of a skipped time this is the change that skips it, of a doubled one the first.
  return toInstant(absl::FromCivil(date, localTimeZone()));
}

std::optional<Instant> instantOf(const DateComponents& components) {
  if (!components.year || !components.month || !components.day) return std::nullopt;
  const auto zone = components.timeZone ? zoneNamed(*components.timeZone) : localTimeZone();
  if (!zone) return std::nullopt;
  const absl::CivilDay day(*components.year, *components.month, *components.day);
  if (!components.hour && !components.minute && !components.second)
    return toInstant(absl::FromCivil(day, *zone));
  const absl::CivilSecond wall =
      absl::CivilSecond(day) + components.hour.value_or(0) * std::int64_t{3600} +
      components.minute.value_or(0) * std::int64_t{60} + components.second.value_or(0);
  return toInstant(zone->At(wall).pre);
}

DateComponents localComponents(Instant instant, Precision precision) {
  const auto seconds = static_cast<std::int64_t>(std::floor(instant.time_since_epoch().count()));
  const absl::CivilSecond wall = localTimeZone().At(absl::FromUnixSeconds(seconds)).cs;
  DateComponents components;
  components.year = static_cast<int>(wall.year());
  components.month = wall.month();
  components.day = wall.day();
  if (precision == Precision::minute) {
    components.hour = wall.hour();
    components.minute = wall.minute();
  }
  return components;
}

}  // namespace tidemark
