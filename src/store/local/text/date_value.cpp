#include "store/local/text/date_value.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>

#include "store/local/text/civil.h"

namespace tidemark::local {
namespace {

bool isDigit(char byte) {
  return byte >= '0' && byte <= '9';
}

// `count` digits at `at`; -1 when there are other bytes. The text is long enough.
int digits(std::string_view text, std::size_t at, std::size_t count) {
  int number = 0;
  for (std::size_t index = at; index < at + count; ++index) {
    if (!isDigit(text[index])) return -1;
    number = number * 10 + (text[index] - '0');
  }
  return number;
}

std::string_view trimmed(std::string_view value) {
  while (!value.empty() && (value.front() == ' ' || value.front() == '\t')) value.remove_prefix(1);
  while (!value.empty() && (value.back() == ' ' || value.back() == '\t')) value.remove_suffix(1);
  return value;
}

constexpr std::int64_t longestDays = lastDay - firstDay;

// What a unit of a DURATION adds; absent when the letter is no unit of that half.
std::optional<std::int64_t> secondsOfUnit(char unit, bool isTime) {
  switch (unit) {
    case 'W':
    case 'w':
      return isTime ? std::nullopt : std::optional(7 * secondsPerDay);
    case 'D':
    case 'd':
      return isTime ? std::nullopt : std::optional(secondsPerDay);
    case 'H':
    case 'h':
      return isTime ? std::optional<std::int64_t>(3600) : std::nullopt;
    case 'M':
    case 'm':
      return isTime ? std::optional<std::int64_t>(60) : std::nullopt;
    case 'S':
    case 's':
      return isTime ? std::optional<std::int64_t>(1) : std::nullopt;
    default:
      return std::nullopt;
  }
}

}  // namespace

std::optional<DateValue> parseDateValue(std::string_view value) {
  value = trimmed(value);
  if (value.size() < 8) return std::nullopt;
  const int year = digits(value, 0, 4);
  const int month = digits(value, 4, 2);
  const int day = digits(value, 6, 2);
  if (year < firstYear || month < 1 || month > 12 || day < 1 ||
      static_cast<unsigned>(day) > lengthOfMonth(year, static_cast<unsigned>(month))) {
    return std::nullopt;
  }
  DateValue result;
  result.wall =
      dayOf(year, static_cast<unsigned>(month), static_cast<unsigned>(day)) * secondsPerDay;
  if (value.size() == 8) {
    result.isDate = true;
    return result;
  }
  if (value.size() != 15 && value.size() != 16) return std::nullopt;
  const int hour = digits(value, 9, 2);
  const int minute = digits(value, 11, 2);
  const int second = digits(value, 13, 2);
  if ((value[8] != 'T' && value[8] != 't') || hour < 0 || hour > 23 || minute < 0 || minute > 59 ||
      second < 0 || second > 60) {
    return std::nullopt;
  }
  if (value.size() == 16) {
    if (value[15] != 'Z' && value[15] != 'z') return std::nullopt;
    result.isUtc = true;
  }
  // A leap second is the last one of its minute: no clock here shows the sixtieth.
  result.wall += hour * 3600 + minute * 60 + std::min(second, 59);
  return result;
}

std::optional<Duration> parseDuration(std::string_view value) {
  value = trimmed(value);
  bool isNegative = false;
  if (!value.empty() && (value.front() == '+' || value.front() == '-')) {
    isNegative = value.front() == '-';
    value.remove_prefix(1);
  }
  if (value.empty() || (value.front() != 'P' && value.front() != 'p')) return std::nullopt;
  Duration duration;
  bool isTime = false;
  bool hasUnit = false;
  for (std::size_t at = 1; at < value.size();) {
    if (!isTime && (value[at] == 'T' || value[at] == 't')) {
      isTime = true;
      ++at;
      continue;
    }
    std::int64_t amount = 0;
    const char* const end = value.data() + value.size();
    const auto [next, error] = std::from_chars(value.data() + at, end, amount);
    if (error != std::errc() || next == end || amount < 0 || amount > longestDays * secondsPerDay) {
      return std::nullopt;
    }
    const auto unit = secondsOfUnit(*next, isTime);
    if (!unit) return std::nullopt;
    if (isTime) {
      duration.seconds += amount * *unit;
    } else {
      duration.days += amount * (*unit / secondsPerDay);
    }
    if (duration.days > longestDays || duration.seconds > longestDays * secondsPerDay) {
      return std::nullopt;
    }
    hasUnit = true;
    at = static_cast<std::size_t>(next - value.data()) + 1;
  }
  if (!hasUnit) return std::nullopt;
  if (isNegative) duration = {-duration.days, -duration.seconds};
  return duration;
}

std::optional<std::int32_t> parseUtcOffset(std::string_view value) {
  value = trimmed(value);
  const bool isNegative = value.starts_with('-');
  if (isNegative || value.starts_with('+')) value.remove_prefix(1);
  if (value.size() != 4 && value.size() != 6) return std::nullopt;
  const int hours = digits(value, 0, 2);
  const int minutes = digits(value, 2, 2);
  const int seconds = value.size() == 6 ? digits(value, 4, 2) : 0;
  if (hours < 0 || hours > 23 || minutes < 0 || minutes > 59 || seconds < 0 || seconds > 59) {
    return std::nullopt;
  }
  const std::int32_t offset = hours * 3600 + minutes * 60 + seconds;
  return isNegative ? -offset : offset;
}

std::optional<std::int64_t> parseInteger(std::string_view value) {
  value = trimmed(value);
  if (value.starts_with('+') && !value.starts_with("+-")) value.remove_prefix(1);
  std::int64_t number = 0;
  const char* const end = value.data() + value.size();
  const auto [next, error] = std::from_chars(value.data(), end, number);
  if (next != end) return std::nullopt;
  if (error == std::errc::result_out_of_range) {
    return value.front() == '-' ? std::numeric_limits<std::int64_t>::min()
                                : std::numeric_limits<std::int64_t>::max();
  }
  return error == std::errc() ? std::optional(number) : std::nullopt;
}

}  // namespace tidemark::local
