// The text of an RRULE, read leniently where its meaning is plain: parts in any order and case,
// unknown parts passed over, lists of any length.

#include <algorithm>
#include <array>
#include <memory>
#include <utility>
#include <vector>

#include "store/local/recurrence/recurrence.h"
#include "store/local/recurrence/recurrence_rule.h"
#include "store/local/text/content_line.h"
#include "store/local/text/date_value.h"

namespace tidemark::local {
namespace {

// No rule reaches a second occurrence with more: it is longer than the calendar in seconds.
constexpr std::int64_t maximumInterval = 1'000'000'000'000;

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

// Calls `accept` for each piece between the separators that is not blank; false when it says so
// once.
template <typename Accept>
bool forEachPiece(std::string_view text, char separator, Accept accept) {
  while (true) {
    const std::size_t end = text.find(separator);
    const std::string_view piece = trimmed(text.substr(0, end));
    if (!piece.empty() && !accept(piece)) return false;
    if (end == std::string_view::npos) return true;
    text.remove_prefix(end + 1);
  }
}

std::optional<unsigned> parseWeekday(std::string_view text) {
  constexpr std::array<std::string_view, 7> names = {"SU", "MO", "TU", "WE", "TH", "FR", "SA"};
  const auto found = std::find_if(names.begin(), names.end(), [&](std::string_view name) {
    return equalsIgnoringCase(text, name);
  });
  if (found == names.end()) return std::nullopt;
  return static_cast<unsigned>(found - names.begin());
}

std::optional<Frequency> parseFrequency(std::string_view text) {
  constexpr std::array<std::string_view, 7> names = {"SECONDLY", "MINUTELY", "HOURLY", "DAILY",
                                                     "WEEKLY",   "MONTHLY",  "YEARLY"};
  const auto found = std::find_if(names.begin(), names.end(), [&](std::string_view name) {
    return equalsIgnoringCase(text, name);
  });
  if (found == names.end()) return std::nullopt;
  return static_cast<Frequency>(found - names.begin());
}

// A list of numbers from `lowest` to `highest` as the bits of a mask.
template <typename Mask>
bool parseMask(std::string_view text, std::int64_t lowest, std::int64_t highest, Mask& mask) {
  return forEachPiece(text, ',', [&](std::string_view piece) {
    const auto number = parseInteger(piece);
    if (!number || *number < lowest || *number > highest) return false;
    mask |= static_cast<Mask>(Mask{1} << *number);
    return true;
  });
}

template <typename Part>
std::vector<Part> sortedUnique(std::vector<Part> list) {
  std::sort(list.begin(), list.end());
  list.erase(std::unique(list.begin(), list.end()), list.end());
  list.shrink_to_fit();
  return list;
}

// A list of numbers from -highest to highest without 0.
bool parseList(std::string_view text, std::int64_t highest, RuleList<std::int16_t>& parts) {
  std::vector<std::int16_t> list;
  const bool isUsable = forEachPiece(text, ',', [&](std::string_view piece) {
    const auto number = parseInteger(piece);
    if (!number || *number == 0 || *number < -highest || *number > highest) return false;
    list.push_back(static_cast<std::int16_t>(*number));
    return true;
  });
  parts = sortedUnique(std::move(list));
  return isUsable;
}

bool parseMonthDays(std::string_view text, RecurrenceRule& rule) {
  RuleList<std::int16_t> days;
  if (!parseList(text, 31, days)) return false;
  for (const std::int16_t day : days) {
    if (day > 0) rule.monthDays |= 1U << day;
    if (day < 0) rule.monthDaysFromEnd |= 1U << -day;
  }
  return true;
}

bool parseWeekdays(std::string_view text, RecurrenceRule& rule) {
  std::vector<OrdinalDay> ordinalDays;
  const bool isUsable = forEachPiece(text, ',', [&](std::string_view piece) {
    if (piece.size() < 2) return false;
    const auto weekday = parseWeekday(piece.substr(piece.size() - 2));
    if (!weekday) return false;
    if (piece.size() == 2) {
      rule.weekdays = static_cast<std::uint8_t>(rule.weekdays | 1U << *weekday);
      return true;
    }
    const auto ordinal = parseInteger(piece.substr(0, piece.size() - 2));
    if (!ordinal || *ordinal == 0 || *ordinal < -53 || *ordinal > 53) return false;
    ordinalDays.push_back(
        {static_cast<std::int8_t>(*ordinal), static_cast<std::uint8_t>(*weekday)});
    return true;
  });
  rule.ordinalDays = sortedUnique(std::move(ordinalDays));
  return isUsable;
}

bool parseUntil(std::string_view text, RecurrenceRule& rule) {
  const auto until = parseDateValue(text);
  if (!until) return false;
  if (until->isUtc) {
    rule.untilInstant = until->wall;
  } else {
    rule.untilWall = until->isDate ? until->wall + secondsPerDay - 1 : until->wall;
  }
  return true;
}

enum class Part {
  frequency,
  until,
  count,
  interval,
  second,
  minute,
  hour,
  day,
  monthDay,
  yearDay,
  weekNumber,
  month,
  position,
  weekStart,
  scale,
  skip,
  unknown
};

Part partOf(std::string_view name) {
  constexpr std::array<std::string_view, 16> names = {
      "FREQ",       "UNTIL",     "COUNT",    "INTERVAL", "BYSECOND", "BYMINUTE", "BYHOUR", "BYDAY",
      "BYMONTHDAY", "BYYEARDAY", "BYWEEKNO", "BYMONTH",  "BYSETPOS", "WKST",     "RSCALE", "SKIP"};
  for (std::size_t index = 0; index < names.size(); ++index) {
    if (equalsIgnoringCase(name, names[index])) return static_cast<Part>(index);
  }
  return Part::unknown;
}

// False when the rule is not to be used.
bool parsePart(Part part, std::string_view text, RecurrenceRule& rule) {
  switch (part) {
    case Part::frequency: {
      const auto frequency = parseFrequency(text);
      if (frequency) rule.frequency = *frequency;
      return frequency.has_value();
    }
    case Part::until:
      return parseUntil(text, rule);
    case Part::count:
      rule.count = parseInteger(text);
      return rule.count && *rule.count >= 1;
    case Part::interval: {
      const auto interval = parseInteger(text);
      rule.interval = std::min(interval.value_or(0), maximumInterval);
      return rule.interval >= 1;
    }
    case Part::second:
      return parseMask(text, 0, 60, rule.seconds);
    case Part::minute:
      return parseMask(text, 0, 59, rule.minutes);
    case Part::hour:
      return parseMask(text, 0, 23, rule.hours);
    case Part::day:
      return parseWeekdays(text, rule);
    case Part::monthDay:
      return parseMonthDays(text, rule);
    case Part::yearDay:
      return parseList(text, 366, rule.yearDays);
    case Part::weekNumber:
      return parseList(text, 53, rule.weekNumbers);
    case Part::month:
      return parseMask(text, 1, 12, rule.months);
    case Part::position:
      return parseList(text, 366, rule.positions);
    case Part::weekStart: {
      const auto weekday = parseWeekday(text);
      if (weekday) rule.weekStart = static_cast<std::uint8_t>(*weekday);
      return weekday.has_value();
    }
    // Other calendars than the Gregorian, and other ways to treat a day that is not there, are not
    // supported (RFC 7529).
    case Part::scale:
      return equalsIgnoringCase(text, "GREGORIAN");
    case Part::skip:
      return equalsIgnoringCase(text, "OMIT");
    case Part::unknown:
      return true;
  }
  return true;
}

bool canMatchDayOfMonth(const RecurrenceRule& rule) {
  if (!rule.monthDays && !rule.monthDaysFromEnd) return true;
  constexpr int leapYear = 2000;
  for (unsigned month = 1; month <= 12; ++month) {
    if (rule.months && !(rule.months >> month & 1)) continue;
    if (monthDaysOf(rule, lengthOfMonth(leapYear, month))) return true;
  }
  return false;
}

// Whether the parts go together (the table of RFC 5545, 3.3.10).
bool isConsistent(const RecurrenceRule& rule) {
  const bool isYearly = rule.frequency == Frequency::yearly;
  if (!rule.weekNumbers.empty() && (!isYearly || !rule.ordinalDays.empty())) return false;
  if (!rule.yearDays.empty() && !isYearly && !rule.isSubDaily()) return false;
  return rule.frequency != Frequency::weekly || (!rule.monthDays && !rule.monthDaysFromEnd);
}

// A rule without one of these says it by its DTSTART.
void completeFromStart(RecurrenceRule& rule) {
  const bool isMonthly = rule.frequency == Frequency::monthly;
  const bool isYearly = rule.frequency == Frequency::yearly;
  if (!isMonthly && !isYearly) {
    // Numbers of weekdays mean nothing here; the days do.
    for (const OrdinalDay& day : rule.ordinalDays) {
      rule.weekdays = static_cast<std::uint8_t>(rule.weekdays | 1U << day.weekday);
    }
    rule.ordinalDays = {};
  }
  // Every Monday is every week's Monday, and whole weeks are counted faster.
  if (rule.frequency == Frequency::daily && rule.interval == 1 && rule.weekdays &&
      !rule.monthDays && !rule.monthDaysFromEnd && rule.positions.empty()) {
    rule.frequency = Frequency::weekly;
  }
  const DayNumber day = dayOf(rule.start);
  const CivilDate date = dateOf(day);
  const bool hasWeekdays = rule.weekdays || !rule.ordinalDays.empty();
  if (rule.frequency == Frequency::weekly && !rule.weekdays) {
    rule.weekdays = static_cast<std::uint8_t>(1U << weekdayOf(day));
  }
  const bool hasMonthDays = rule.monthDays || rule.monthDaysFromEnd;
  if (hasWeekdays || hasMonthDays || !rule.yearDays.empty()) return;
  if (!rule.weekNumbers.empty()) {
    rule.weekdays = static_cast<std::uint8_t>(1U << weekdayOf(day));
  } else if (isMonthly || isYearly) {
    rule.monthDays = 1U << date.day;
    if (isYearly && !rule.months) rule.months = static_cast<std::uint16_t>(1U << date.month);
  }
}

bool needsLibrary(const RecurrenceRule& rule) {
  if (rule.frequency != Frequency::yearly) return false;
  if (!rule.weekNumbers.empty()) return false;
  // Beside BYMONTH, numbered weekdays are those of the month.
  return rule.ordinalDays.empty() ? !rule.yearDays.empty() : !rule.months;
}

}  // namespace

std::unique_ptr<RecurrenceRule> parseRecurrenceRule(std::string_view value, const Moment& start) {
  auto rule = std::make_unique<RecurrenceRule>();
  rule->start = start.wall;
  rule->zone = start.zone;
  unsigned seen = 0;
  const bool isUsable = forEachPiece(value, ';', [&](std::string_view piece) {
    const std::size_t equals = piece.find('=');
    if (equals == std::string_view::npos) return false;
    const Part part = partOf(trimmed(piece.substr(0, equals)));
    if (part == Part::unknown) return true;
    const unsigned bit = 1U << static_cast<unsigned>(part);
    if (seen & bit) return false;
    seen |= bit;
    return parsePart(part, trimmed(piece.substr(equals + 1)), *rule);
  });
  if (!isUsable || !(seen & 1U << static_cast<unsigned>(Part::frequency))) return nullptr;
  if (!isConsistent(*rule)) return nullptr;
  // A leap second is the last one of its minute: no clock here shows the sixtieth.
  if (rule->seconds >> 60)
    rule->seconds = (rule->seconds | std::uint64_t{1} << 59) & ~(std::uint64_t{1} << 60);
  if (start.isDate) rule->hours = 0, rule->minutes = 0, rule->seconds = 0;
  completeFromStart(*rule);
  rule->canMatch = canMatchDayOfMonth(*rule);
  if (needsLibrary(*rule)) rule->libraryDays = std::make_unique<LibraryDays>(*rule);
  return rule;
}

}  // namespace tidemark::local
