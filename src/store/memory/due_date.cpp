#include "store/memory/due_date.h"

#include <absl/time/civil_time.h>
#include <absl/time/time.h>

#include <chrono>
#include <string>
#include <string_view>

namespace tidemark {
namespace {

Instant toInstant(absl::Time time) {
  return Instant(std::chrono::duration<double>(static_cast<double>(absl::ToUnixSeconds(time))));
}

std::optional<int> twoDigits(std::string_view text) {
  const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
  if (text.size() != 2 || !isDigit(text[0]) || !isDigit(text[1])) return std::nullopt;
  return (text[0] - '0') * 10 + (text[1] - '0');
}

// "GMT+hhmm" and "GMT-hhmm", the platform's names of fixed offsets.
std::optional<absl::TimeZone> fixedZone(std::string_view name) {
  if (name.size() != 8 || !name.starts_with("GMT") || (name[3] != '+' && name[3] != '-')) {
    return std::nullopt;
  }
  const std::optional<int> hours = twoDigits(name.substr(4, 2));
  const std::optional<int> minutes = twoDigits(name.substr(6, 2));
  if (!hours || !minutes || *minutes > 59) return std::nullopt;
  const int seconds = (*hours * 60 + *minutes) * 60;
  return absl::FixedTimeZone(name[3] == '+' ? seconds : -seconds);
}

std::optional<absl::TimeZone> zoneNamed(const std::string& name) {
  if (std::optional<absl::TimeZone> zone = fixedZone(name)) return zone;
  absl::TimeZone zone;
  if (!absl::LoadTimeZone(name, &zone)) return std::nullopt;
  return zone;
}

}  // namespace

std::optional<Instant> dueInstant(const DateComponents& due) {
  if (!due.year || !due.month || !due.day) return std::nullopt;
  const std::optional<absl::TimeZone> zone =
      due.timeZone ? zoneNamed(*due.timeZone) : absl::LocalTimeZone();
  if (!zone) return std::nullopt;
  const absl::CivilDay day(*due.year, *due.month, *due.day);
  if (!due.hour && !due.minute && !due.second) return toInstant(absl::FromCivil(day, *zone));
  const absl::CivilSecond wallClock(day.year(), day.month(), day.day(), due.hour.value_or(0),
                                    due.minute.value_or(0), due.second.value_or(0));
  return toInstant(zone->At(wallClock).pre);
}

}  // namespace tidemark
