#include "codec/dates.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>

#include "codec/days.h"

namespace tidemark {
namespace {

constexpr std::size_t dateSize = std::string_view("2025-03-01").size();
constexpr std::size_t dateTimeSize = std::string_view("2025-03-01T09:30:00").size();

// The number that these digits make; absent unless all of them are digits.
std::optional<unsigned> digits(std::string_view text) {
  unsigned number = 0;
  for (char c : text) {
    if (c < '0' || c > '9') return std::nullopt;
    number = number * 10 + static_cast<unsigned>(c - '0');
  }
  return number;
}

std::optional<unsigned> digitsBelow(unsigned limit, std::string_view text) {
  const std::optional<unsigned> number = digits(text);
  if (!number || *number >= limit) return std::nullopt;
  return number;
}

// HH:MM:SS, all of the text.
std::optional<std::chrono::seconds> parseTime(std::string_view text) {
  if (text.size() != 8 || text[2] != ':' || text[5] != ':') return std::nullopt;
  const auto hour = digitsBelow(24, text.substr(0, 2));
  const auto minute = digitsBelow(60, text.substr(3, 2));
  const auto second = digitsBelow(60, text.substr(6, 2));
  if (!hour || !minute || !second) return std::nullopt;
  return std::chrono::hours(*hour) + std::chrono::minutes(*minute) + std::chrono::seconds(*second);
}

// Z or +HH:MM or -HH:MM, all of the text: what local time is ahead of UTC.
std::optional<std::chrono::seconds> parseOffset(std::string_view text) {
  if (text == "Z") return std::chrono::seconds(0);
  if (text.size() != 6 || (text[0] != '+' && text[0] != '-') || text[3] != ':') return std::nullopt;
  const auto hours = digitsBelow(24, text.substr(1, 2));
  const auto minutes = digitsBelow(60, text.substr(4, 2));
  if (!hours || !minutes) return std::nullopt;
  const std::chrono::seconds size = std::chrono::hours(*hours) + std::chrono::minutes(*minutes);
  return text[0] == '-' ? -size : size;
}

// A dot and at least one digit from the front of the text, which loses them.
std::optional<double> takeFraction(std::string_view& text) {
  if (!text.starts_with('.')) return std::nullopt;
  const std::size_t end = std::min(text.find_first_not_of("0123456789", 1), text.size());
  if (end == 1) return std::nullopt;
  double fraction = 0;
  for (std::size_t i = end - 1; i > 0; --i) fraction = (fraction + (text[i] - '0')) / 10;
  text.remove_prefix(end);
  return fraction;
}

// "00" to "99".
constexpr auto digitPairs = [] {
  std::array<char, 200> pairs{};
  for (std::size_t i = 0; i < 100; ++i) {
    pairs[2 * i] = static_cast<char>('0' + i / 10);
    pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
  }
  return pairs;
}();

void writeTwoDigits(std::size_t number, char* out) {
  std::memcpy(out, &digitPairs[2 * number], 2);
}

// Without the library's function, which is a call on processors of the baseline.
std::int64_t wholeSeconds(double seconds) {
  const auto towardsZero = static_cast<std::int64_t>(seconds);
  return seconds < static_cast<double>(towardsZero) ? towardsZero - 1 : towardsZero;
}

}  // namespace

std::optional<std::chrono::year_month_day> parseGregorianDay(std::string_view text) {
  if (text.size() != dateSize || text[4] != '-' || text[7] != '-') return std::nullopt;
  const auto year = digits(text.substr(0, 4));
  const auto month = digits(text.substr(5, 2));
  const auto day = digits(text.substr(8, 2));
  if (!year || !month || !day) return std::nullopt;
  const std::chrono::year_month_day date{std::chrono::year(static_cast<int>(*year)),
                                         std::chrono::month(*month), std::chrono::day(*day)};
  if (!date.ok()) return std::nullopt;
  return date;
}

std::optional<Instant> DateTimeReader::parse(std::string_view text) const {
  if (text.size() <= dateTimeSize || text[dateSize] != 'T') return std::nullopt;
  const auto day = parseGregorianDay(text.substr(0, dateSize));
  const auto time = parseTime(text.substr(dateSize + 1, dateTimeSize - dateSize - 1));
  if (!day || !time) return std::nullopt;

  std::string_view rest = text.substr(dateTimeSize);
  double fraction = 0;
  if (fraction_ == Fraction::required) {
    const auto taken = takeFraction(rest);
    if (!taken) return std::nullopt;
    fraction = *taken;
  }
  const auto offset = parseOffset(rest);
  if (!offset) return std::nullopt;
  return Instant(std::chrono::sys_days(*day) + *time - *offset) +
         std::chrono::duration<double>(fraction);
}

DateText DateTimeFormatter::format(Instant instant) const {
  using namespace std::chrono;
  constexpr sys_seconds first = sys_days(year(0) / January / 1);
  constexpr sys_seconds last = sys_days(year(9999) / December / 31) + days(1) - seconds(1);
  constexpr auto lowest = static_cast<double>(first.time_since_epoch().count());
  constexpr auto highest = static_cast<double>(last.time_since_epoch().count());
  // In this order, what is not a number becomes the lowest.
  const double inRange = std::min(std::max(lowest, instant.time_since_epoch().count()), highest);
  const sys_seconds time(seconds(wholeSeconds(inRange)));

  const sys_days midnight = floor<days>(time);
  const year_month_day date(midnight);
  const auto second = static_cast<unsigned>((time - midnight).count());

  DateText text{{'0', '0', '0', '0', '-', '0', '0', '-', '0', '0',
                 'T', '0', '0', ':', '0', '0', ':', '0', '0', 'Z'}};
  char* out = text.characters.data();
  const auto yearNumber = static_cast<unsigned>(static_cast<int>(date.year()));
  writeTwoDigits(yearNumber / 100, out);
  writeTwoDigits(yearNumber % 100, out + 2);
  writeTwoDigits(static_cast<unsigned>(date.month()), out + 5);
  writeTwoDigits(static_cast<unsigned>(date.day()), out + 8);
  writeTwoDigits(second / 3600, out + 11);
  writeTwoDigits(second / 60 % 60, out + 14);
  writeTwoDigits(second % 60, out + 17);
  return text;
}

std::optional<Instant> parseDate(const Json* value) {
  const std::string* text = value == nullptr ? nullptr : value->string();
  if (text == nullptr) return std::nullopt;
  if (const auto instant = iso.parse(*text)) return instant;
  if (const auto instant = isoFractional.parse(*text)) return instant;
  return parseUsersDay(*text);
}

}  // namespace tidemark
