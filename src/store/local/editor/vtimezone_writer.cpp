#include "store/local/editor/vtimezone_writer.h"

#include <absl/time/civil_time.h>
#include <absl/time/time.h>

#include <algorithm>
#include <optional>
#include <vector>

#include "store/local/editor/content_line_writer.h"
#include "store/local/text/civil.h"

namespace tidemark::local {
namespace {

// Where a rule still holds in this year, it is taken to hold for ever.
constexpr int horizonYear = 2037;
constexpr int horizonYears = 12;
// Onsets before this year say nothing that a calendar needs, unless an event lies there.
constexpr int earliestYear = 1970;
// The description starts this many years before the event.
constexpr int yearsBefore = 1;
// Fewer onsets than this make no rule.
constexpr std::size_t shortestRule = 3;

// An instant at which the offset changes.
struct Onset {
  absl::Time instant;
  absl::CivilSecond wall;  // what the clock would have shown without the change
  int offsetBefore = 0;
  int offsetAfter = 0;
  std::string abbreviation;
  bool isDaylight = false;

  bool isOfKind(const Onset& other) const {
    return offsetBefore == other.offsetBefore && offsetAfter == other.offsetAfter &&
           isDaylight == other.isDaylight && abbreviation == other.abbreviation;
  }
};

int lengthOfMonth(const absl::CivilSecond& date) {
  return (absl::CivilDay(absl::CivilMonth(date) + 1) - 1).day();
}

// The yearly rule that onsets of one kind follow: the same month, weekday and time of day, and a
// week of the month.
class YearlyRule {
 public:
  explicit YearlyRule(const Onset& onset)
      : first_(onset.wall),
        weeks_(weeksOf(onset.wall)),
        firstDay_(onset.wall.day()),
        lastDay_(onset.wall.day()) {}

  // The rule that gives `onset` too; absent when none does.
  std::optional<YearlyRule> extended(const Onset& onset) const {
    const absl::CivilSecond& wall = onset.wall;
    const bool isSameTime = wall.hour() == first_.hour() && wall.minute() == first_.minute() &&
                            wall.second() == first_.second();
    if (wall.month() != first_.month() || weekday(wall) != weekday(first_) || !isSameTime) {
      return std::nullopt;
    }
    YearlyRule rule = *this;
    rule.weeks_ &= weeksOf(wall);
    rule.firstDay_ = std::min(firstDay_, wall.day());
    rule.lastDay_ = std::max(lastDay_, wall.day());
    if (rule.weeks_ == 0 && rule.lastDay_ - rule.firstDay_ >= 7) return std::nullopt;
    return rule;
  }

  std::string text() const {
    std::string text = "FREQ=YEARLY;BYMONTH=" + std::to_string(first_.month());
    if (weeks_ == 0) {
      // Such as the Saturday before the last Sunday: seven days of which one is the weekday.
      text += ";BYMONTHDAY=" + std::to_string(firstDay_);
      for (int day = firstDay_ + 1; day < firstDay_ + 7; ++day) text += "," + std::to_string(day);
    }
    text += ";BYDAY=";
    if (weeks_ & lastWeek) {
      text += "-1";
    } else if (weeks_ != 0) {
      text += std::to_string(weekOf(first_));
    }
    return text + std::string(weekday(first_));
  }

 private:
  static constexpr unsigned lastWeek = 1U << 7;

  static int weekOf(const absl::CivilSecond& date) { return (date.day() - 1) / 7 + 1; }

  // The weeks of the month that a rule could name to give this date, as bits.
  static unsigned weeksOf(const absl::CivilSecond& date) {
    const unsigned numbered = 1U << weekOf(date);
    return date.day() > lengthOfMonth(date) - 7 ? numbered | lastWeek : numbered;
  }

  static std::string_view weekday(const absl::CivilSecond& date) {
    static constexpr std::string_view names[] = {"MO", "TU", "WE", "TH", "FR", "SA", "SU"};
    return names[static_cast<std::size_t>(absl::GetWeekday(absl::CivilDay(date)))];
  }

  absl::CivilSecond first_;
  unsigned weeks_;
  int firstDay_;
  int lastDay_;
};

// Onsets of one kind in successive years that one rule gives, or a single onset.
struct Run {
  std::vector<Onset> onsets;
  YearlyRule rule;
};

std::vector<Onset> onsetsOf(const absl::TimeZone& zone, int describedFrom, int horizon) {
  std::vector<Onset> onsets;
  absl::Time instant = absl::FromCivil(absl::CivilYear(describedFrom), zone);
  absl::TimeZone::CivilTransition transition;
  while (zone.NextTransition(instant, &transition)) {
    const absl::Time next = zone.At(transition.to).trans;
    if (transition.from.year() > horizon || next <= instant) break;
    instant = next;
    const auto before = zone.At(instant - absl::Seconds(1));
    const auto after = zone.At(instant);
    if (before.offset == after.offset) continue;
    const bool isDaylight =
        before.is_dst == after.is_dst ? after.is_dst : after.offset > before.offset;
    onsets.push_back(
        {instant, transition.from, before.offset, after.offset, after.zone_abbr, isDaylight});
  }
  return onsets;
}

std::vector<Run> runsOf(const std::vector<Onset>& onsets) {
  std::vector<Run> runs;
  for (const Onset& onset : onsets) {
    bool isTaken = false;
    for (auto run = runs.rbegin(); run != runs.rend() && !isTaken; ++run) {
      const Onset& last = run->onsets.back();
      if (!last.isOfKind(onset)) continue;
      const auto rule =
          last.wall.year() + 1 == onset.wall.year() ? run->rule.extended(onset) : std::nullopt;
      if (!rule) break;
      run->rule = *rule;
      run->onsets.push_back(onset);
      isTaken = true;
    }
    if (!isTaken) runs.push_back({{onset}, YearlyRule(onset)});
  }
  return runs;
}

// What is written as one STANDARD or DAYLIGHT: the onsets of a rule, or a list of onsets.
struct Observance {
  std::vector<Onset> onsets;
  std::string rule;
};

// Onsets that follow no rule are gathered by kind, so that each kind has one list.
void addListed(std::vector<Observance>& observances, const Onset& onset) {
  const auto found =
      std::find_if(observances.begin(), observances.end(), [&](const Observance& observance) {
        return observance.rule.empty() && observance.onsets.front().isOfKind(onset);
      });
  if (found == observances.end()) {
    observances.push_back({{onset}, {}});
  } else {
    found->onsets.push_back(onset);
  }
}

bool reaches(const Run& run, int year) {
  return run.onsets.back().wall.year() == year;
}

// Whether rules can say how it goes on. One season's rule without the other's would hold for ever
// alone.
bool endsInRules(const std::vector<Run>& runs, int horizon) {
  return std::all_of(runs.begin(), runs.end(), [&](const Run& run) {
    return !reaches(run, horizon) || run.onsets.size() >= shortestRule;
  });
}

// The year from which rules are said. A season may have followed its rule for longer than the
// other: what it did alone is left out, and both start together.
int firstYearOfRules(const std::vector<Run>& runs, const Onset& needed, int horizon) {
  int latest = earliestYear;
  for (const Run& run : runs) {
    const auto start = static_cast<int>(run.onsets.front().wall.year());
    if (reaches(run, horizon)) latest = std::max(latest, start);
  }
  return std::min(latest, static_cast<int>(needed.wall.year()));
}

// What `runs`, which end with the year `horizon`, say from the onset `needed` on: rules for what
// goes on for ever, lists for all else.
std::vector<Observance> observancesOf(const std::vector<Run>& runs, const Onset& needed,
                                      int horizon) {
  const bool hasRules = endsInRules(runs, horizon);
  const int rulesFrom = firstYearOfRules(runs, needed, horizon);
  std::vector<Observance> observances;
  for (const Run& run : runs) {
    if (hasRules && reaches(run, horizon)) {
      Observance observance{run.onsets, run.rule.text()};
      std::erase_if(observance.onsets,
                    [&](const Onset& onset) { return onset.wall.year() < rulesFrom; });
      observances.push_back(std::move(observance));
      continue;
    }
    for (const Onset& onset : run.onsets) {
      if (onset.instant >= needed.instant) addListed(observances, onset);
    }
  }
  return observances;
}

std::string wallText(const absl::CivilSecond& wall) {
  return dateTimeText(absl::ToUnixSeconds(absl::FromCivil(wall, absl::UTCTimeZone())));
}

std::string observanceText(const Observance& observance, std::string_view lineEnd) {
  const Onset& first = observance.onsets.front();
  const std::string_view name = first.isDaylight ? "DAYLIGHT" : "STANDARD";
  std::string text = contentLine("BEGIN", "", name, lineEnd);
  text += contentLine("TZOFFSETFROM", "", offsetText(first.offsetBefore), lineEnd);
  text += contentLine("TZOFFSETTO", "", offsetText(first.offsetAfter), lineEnd);
  text += contentLine("TZNAME", "", textValue(first.abbreviation), lineEnd);
  text += contentLine("DTSTART", "", wallText(first.wall), lineEnd);
  if (!observance.rule.empty()) {
    text += contentLine("RRULE", "", observance.rule, lineEnd);
  } else {
    for (std::size_t at = 1; at < observance.onsets.size(); ++at) {
      text += contentLine("RDATE", "", wallText(observance.onsets[at].wall), lineEnd);
    }
  }
  return text + contentLine("END", "", name, lineEnd);
}

// The offset at `instant`, as if it had held since `year`.
Observance constantOffset(const absl::TimeZone& zone, absl::Time instant, int year) {
  const auto info = zone.At(instant);
  Onset onset;
  onset.instant = instant;
  onset.wall = absl::CivilSecond(year);
  onset.offsetBefore = onset.offsetAfter = info.offset;
  onset.abbreviation = info.zone_abbr;
  onset.isDaylight = info.is_dst;
  return {{onset}, {}};
}

std::string describe(const std::string& name, const absl::TimeZone& zone, int eventYear,
                     std::string_view lineEnd) {
  const int describedFrom = eventYear - yearsBefore;
  const int collectedFrom = std::min(describedFrom, earliestYear);
  const int horizon = std::max(horizonYear, eventYear + horizonYears);
  const std::vector<Onset> onsets = onsetsOf(zone, collectedFrom, horizon);

  const absl::Time from = absl::FromCivil(absl::CivilYear(describedFrom), zone);
  const auto firstAfter = std::find_if(onsets.begin(), onsets.end(),
                                       [&](const Onset& onset) { return onset.instant > from; });
  std::vector<Observance> observances;
  if (firstAfter == onsets.begin() || firstAfter == onsets.end()) {
    observances.push_back(constantOffset(zone, from, collectedFrom));
  }
  if (firstAfter != onsets.end()) {
    const Onset& needed = firstAfter == onsets.begin() ? *firstAfter : *std::prev(firstAfter);
    auto described = observancesOf(runsOf(onsets), needed, horizon);
    std::move(described.begin(), described.end(), std::back_inserter(observances));
  }
  std::stable_sort(observances.begin(), observances.end(), [](const auto& one, const auto& other) {
    return one.onsets.front().wall < other.onsets.front().wall;
  });

  std::string text = contentLine("BEGIN", "", "VTIMEZONE", lineEnd);
  text += contentLine("TZID", "", textValue(name), lineEnd);
  for (const Observance& observance : observances) text += observanceText(observance, lineEnd);
  return text + contentLine("END", "", "VTIMEZONE", lineEnd);
}

}  // namespace

std::string vtimezoneText(const std::string& name, UtcSeconds instant, std::string_view lineEnd) {
  absl::TimeZone zone;
  if (!absl::LoadTimeZone(name, &zone)) return {};
  const absl::Time event = absl::FromUnixSeconds(std::clamp(instant, firstWall, lastWall));
  // Later years repeat what the rules of the horizon say.
  const int eventYear =
      std::min(static_cast<int>(absl::ToCivilYear(event, zone).year()), horizonYear);

  // One event after the other is made for the same zone and year.
  struct Described {
    std::string name;
    int eventYear = 0;
    std::string lineEnd;
    std::string text;
  };
  thread_local Described last;
  if (last.name != name || last.eventYear != eventYear || last.lineEnd != lineEnd) {
    last = {name, eventYear, std::string(lineEnd), describe(name, zone, eventYear, lineEnd)};
  }
  return last.text;
}

}  // namespace tidemark::local
