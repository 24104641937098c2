// Zones as a file describes them: observances, each with an offset and the times at which it sets
// in.

#include <algorithm>
#include <functional>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "store/local/recurrence/recurrence.h"
#include "store/local/recurrence/rule_occurrences.h"
#include "store/local/text/content_line.h"
#include "store/local/text/date_value.h"
#include "store/local/zones/fixed_zone.h"
#include "store/local/zones/transition_zone.h"
#include "store/local/zones/zone.h"

namespace tidemark::local {
namespace {

// Bounds on what one description may cost. Real ones have a few observances with two rules and some
// dozens of dates.
constexpr std::size_t maximumObservances = 2'000;
constexpr std::size_t maximumRules = 200;
constexpr std::size_t maximumDates = 20'000;
constexpr std::size_t maximumOnsetsPerRule = 2'000;
// Descriptions that differ; more are not read.
constexpr std::size_t maximumZones = 10'000;

// STANDARD or DAYLIGHT: from each of its onsets on, `offset` holds. Onsets are written on the clock
// before them.
struct Observance {
  std::int32_t offset = 0;
  std::unique_ptr<FixedZone> clockBefore;
  std::int32_t offsetBefore = 0;
  Moment start;
  std::vector<UtcSeconds> onsets;  // DTSTART and RDATE, sorted
  std::vector<std::unique_ptr<RecurrenceRule>> rules;

  // Calls `visit` for the onsets with from <= onset < to, each source in ascending order.
  template <typename Visit>
  void forEachOnset(UtcSeconds from, UtcSeconds to, Visit visit) const {
    const auto first = std::lower_bound(onsets.begin(), onsets.end(), from);
    std::for_each(first, std::lower_bound(first, onsets.end(), to), visit);
    for (const auto& rule : rules) {
      RuleOccurrences occurrences(*rule, start, from, to);
      for (std::size_t count = 0; occurrences.current() && count < maximumOnsetsPerRule; ++count) {
        visit(occurrences.current()->instant);
        occurrences.advance();
      }
    }
  }
};

class FileZone final : public TransitionZone {
 public:
  explicit FileZone(std::vector<Observance> observances) : observances_(std::move(observances)) {
    const auto first = std::min_element(observances_.begin(), observances_.end(),
                                        [](const Observance& left, const Observance& right) {
                                          return left.onsets.front() < right.onsets.front();
                                        });
    firstOnset_ = first->onsets.front();
    offsetBeforeAll_ = first->offsetBefore;
    fillTable();
  }

  std::string nameAt(UtcSeconds utc) const override { return nameOfOffset(offsetAt(utc)); }

 private:
  struct Onset {
    UtcSeconds at;
    std::int32_t offset;
    friend bool operator<(const Onset& left, const Onset& right) { return left.at < right.at; }
  };

  std::vector<Onset> onsetsIn(UtcSeconds from, UtcSeconds to) const {
    std::vector<Onset> onsets;
    for (const Observance& observance : observances_) {
      observance.forEachOnset(from, to, [&](UtcSeconds at) {
        onsets.push_back({at, observance.offset});
      });
    }
    std::stable_sort(onsets.begin(), onsets.end());
    return onsets;
  }

  void fillTable() {
    std::int32_t offset = distantOffsetAt(tableBegin - 1);
    const std::int32_t initialOffset = offset;
    std::vector<Transition> transitions;
    for (const Onset& onset : onsetsIn(tableBegin, tableEnd)) {
      if (!transitions.empty() && transitions.back().at == onset.at) continue;
      transitions.push_back({onset.at, offset, onset.offset});
      offset = onset.offset;
    }
    setTable(initialOffset, std::move(transitions));
  }

  // The offset of the last onset up to then, sought ever further back.
  std::int32_t distantOffsetAt(UtcSeconds utc) const override {
    if (utc < firstOnset_) return offsetBeforeAll_;
    constexpr std::int64_t year = 366 * secondsPerDay;
    UtcSeconds to = std::min(utc, lastWall) + 1;
    for (std::int64_t reach = year; to > firstOnset_; reach *= 4) {
      const UtcSeconds from = to - reach;
      const std::vector<Onset> onsets = onsetsIn(from, to);
      if (!onsets.empty()) return onsets.back().offset;
      to = from;
    }
    return offsetBeforeAll_;
  }

  std::vector<Observance> observances_;
  UtcSeconds firstOnset_ = 0;
  std::int32_t offsetBeforeAll_ = 0;
};

// Collects the lines of one observance.
class ObservanceReader {
 public:
  void read(const ContentLine& line) {
    if (equalsIgnoringCase(line.name, "DTSTART")) start_ = parseDateValue(line.value);
    if (equalsIgnoringCase(line.name, "TZOFFSETFROM")) before_ = parseUtcOffset(line.value);
    if (equalsIgnoringCase(line.name, "TZOFFSETTO")) offset_ = parseUtcOffset(line.value);
    if (equalsIgnoringCase(line.name, "RRULE")) rules_.push_back(line.value);
    if (equalsIgnoringCase(line.name, "RDATE")) dates_.push_back(line.value);
  }

  // Absent when something is missing without which the observance says nothing.
  std::optional<Observance> finish(std::size_t rulesLeft, std::size_t datesLeft) const {
    if (!start_ || !offset_) return std::nullopt;
    Observance result;
    result.offset = *offset_;
    result.offsetBefore = before_.value_or(*offset_);
    result.clockBefore = std::make_unique<FixedZone>(result.offsetBefore, std::string());
    result.start = {start_->wall, result.clockBefore.get(), false, false};
    result.onsets.push_back(instantOf(*start_, result));
    for (const std::string_view list : dates_) addDates(list, datesLeft, result);
    std::sort(result.onsets.begin(), result.onsets.end());
    for (const std::string_view text : rules_) {
      if (result.rules.size() == rulesLeft) break;
      auto rule = parseRecurrenceRule(text, result.start);
      if (rule && isUsable(*rule)) result.rules.push_back(std::move(rule));
    }
    return result;
  }

 private:
  // No offset changes every week, or by the number of one. Refusing such rules bounds what a
  // description can cost.
  static bool isUsable(const RecurrenceRule& rule) {
    return (rule.frequency == Frequency::yearly || rule.frequency == Frequency::monthly) &&
           !rule.libraryDays;
  }

  static UtcSeconds instantOf(const DateValue& value, const Observance& observance) {
    return value.isUtc ? value.wall : value.wall - observance.offsetBefore;
  }

  static void addDates(std::string_view list, std::size_t datesLeft, Observance& observance) {
    while (!list.empty() && observance.onsets.size() < datesLeft) {
      const std::size_t comma = std::min(list.find(','), list.size());
      const std::string_view piece = list.substr(0, comma);
      if (const auto date = parseDateValue(piece.substr(0, piece.find('/')))) {
        observance.onsets.push_back(instantOf(*date, observance));
      }
      list.remove_prefix(std::min(comma + 1, list.size()));
    }
  }

  std::optional<DateValue> start_;
  std::optional<std::int32_t> before_;
  std::optional<std::int32_t> offset_;
  std::vector<std::string_view> rules_;
  std::vector<std::string_view> dates_;
};

std::vector<Observance> readObservances(std::string_view vtimezone) {
  std::vector<Observance> observances;
  std::size_t rulesLeft = maximumRules;
  std::size_t datesLeft = maximumDates;
  ContentLineScanner scanner(vtimezone);
  std::optional<ObservanceReader> reader;
  while (const auto line = scanner.next()) {
    const bool isBegin = equalsIgnoringCase(line->name, "BEGIN");
    const bool isEnd = equalsIgnoringCase(line->name, "END");
    const bool isObservance =
        equalsIgnoringCase(line->value, "STANDARD") || equalsIgnoringCase(line->value, "DAYLIGHT");
    if (isBegin && isObservance) {
      reader.emplace();
    } else if (isEnd && isObservance && reader) {
      if (auto observance = reader->finish(rulesLeft, datesLeft)) {
        rulesLeft -= observance->rules.size();
        datesLeft -= std::min(datesLeft, observance->onsets.size());
        observances.push_back(std::move(*observance));
      }
      reader.reset();
      if (observances.size() == maximumObservances) break;
    } else if (reader) {
      reader->read(*line);
    }
  }
  return observances;
}

// By the whole text, so that equal descriptions in a thousand files are read once. Null stands for
// an unusable one.
class FileZones {
 public:
  const Zone* find(std::string_view vtimezone) {
    {
      const std::shared_lock lock(mutex_);
      if (const auto found = zones_.find(vtimezone); found != zones_.end()) return found->second;
      if (zones_.size() >= maximumZones) return nullptr;
    }
    std::vector<Observance> observances = readObservances(vtimezone);
    std::unique_ptr<FileZone> zone;
    if (!observances.empty()) zone = std::make_unique<FileZone>(std::move(observances));
    const std::unique_lock lock(mutex_);
    const auto [entry, isNew] = zones_.emplace(vtimezone, nullptr);
    if (isNew && zone) entry->second = Zone::intern(std::move(zone));
    return entry->second;
  }

 private:
  struct Hash : std::hash<std::string_view> {
    using is_transparent = void;
  };
  std::shared_mutex mutex_;
  std::unordered_map<std::string, const Zone*, Hash, std::equal_to<>> zones_;
};

}  // namespace

const Zone* fileZone(std::string_view vtimezone) {
  static FileZones& zones = *new FileZones;
  return zones.find(vtimezone);
}

}  // namespace tidemark::local
