// Rules that step by hours, minutes or seconds. Without BY parts a reading is plain arithmetic;
// with them, what a day, an hour or a minute rules out as a whole is stepped over as a whole.

#include <algorithm>
#include <cstddef>

#include "store/local/recurrence/readings.h"

namespace tidemark::local {
namespace {

// Steps that one query may look at: more than any answer has room for, some ten milliseconds of
// work. A rule that is still silent then counts as ended.
constexpr std::int64_t maximumSteps = 1'000'000;

std::int64_t unitSecondsOf(Frequency frequency) {
  switch (frequency) {
    case Frequency::hourly:
      return 3600;
    case Frequency::minutely:
      return 60;
    default:
      return 1;
  }
}

// Where in each unit (an hour, a minute or a second) the rule's readings stand, BYSETPOS applied;
// ascending.
std::vector<int> offsetsInUnit(const RecurrenceRule& rule) {
  ClockSet clock = clockSetOf(rule);
  clock.hours = 1;
  if (rule.frequency < Frequency::hourly) clock.minutes = 1;
  if (rule.frequency < Frequency::minutely) clock.seconds = 1;
  const int size = clock.size();
  std::vector<int> offsets;
  for (int index = 0; index < size; ++index) {
    const auto isNamed = [&](int position) {
      return std::binary_search(rule.positions.begin(), rule.positions.end(), position);
    };
    if (rule.positions.empty() || isNamed(index + 1) || isNamed(index - size)) {
      offsets.push_back(clock.at(index));
    }
  }
  return offsets;
}

class ClockReadings final : public Readings {
 public:
  ClockReadings(const RecurrenceRule& rule, WallSeconds from, WallSeconds to)
      : rule_(rule),
        unitSeconds_(unitSecondsOf(rule.frequency)),
        base_(floorDivide(rule.start, unitSeconds_) * unitSeconds_),
        step_(rule.interval * unitSeconds_),
        isFiltered_(rule.hasDayParts() || rule.hasClockParts()),
        offsets_(offsetsInUnit(rule)),
        from_(std::max(from, rule.start + 1)),
        to_(std::min(to, lastWall)) {
    unit_ =
        from_ > to_ || !rule.canMatch ? to_ + 1 : base_ + floorDivide(from_ - base_, step_) * step_;
  }

  std::optional<WallSeconds> next() override {
    while (unit_ <= to_ && stepsLeft_-- > 0) {
      if (index_ == 0 && isFiltered_ && skipRuledOut()) continue;
      if (index_ == offsets_.size()) {
        unit_ += step_;
        index_ = 0;
        continue;
      }
      const WallSeconds reading = unit_ + offsets_[index_++];
      if (reading >= from_ && reading <= to_) return reading;
    }
    return std::nullopt;
  }

  std::optional<WallSeconds> advance(std::int64_t count) override {
    if (!isFiltered_) return advanceByArithmetic(count);
    std::optional<WallSeconds> result;
    for (; count > 0; --count) {
      const auto reading = next();
      if (!reading) break;
      result = reading;
    }
    return result;
  }

 private:
  // Without BY parts every unit has its one reading.
  std::optional<WallSeconds> advanceByArithmetic(std::int64_t count) {
    const auto reading = next();
    if (!reading || count == 1) return reading;
    const std::int64_t more = std::min(count - 1, (to_ - *reading) / step_);
    unit_ += more * step_;
    return *reading + more * step_;
  }

  // Moves on when the day, hour or minute of the unit is ruled out; says whether it did.
  bool skipRuledOut() {
    const DayNumber day = dayOf(unit_);
    if (day != checkedDay_) {
      checkedDay_ = day;
      isDayIn_ = passesDayParts(rule_, day);
    }
    if (!isDayIn_) {
      moveTo(dayAfterRuledOut(day) * secondsPerDay);
      return true;
    }
    const std::int64_t second = unit_ - day * secondsPerDay;
    if (rule_.hours && !(rule_.hours >> (second / 3600) & 1)) {
      moveTo(unit_ - second % 3600 + 3600);
      return true;
    }
    if (unitSeconds_ == 3600) return false;
    if (rule_.minutes && !(rule_.minutes >> (second / 60 % 60) & 1)) {
      moveTo(unit_ - second % 60 + 60);
      return true;
    }
    if (unitSeconds_ == 60) return false;
    if (rule_.seconds && !(rule_.seconds >> (second % 60) & 1)) {
      moveTo(unit_ + 1);
      return true;
    }
    return false;
  }

  // A whole month goes when BYMONTH says so, else the day alone.
  DayNumber dayAfterRuledOut(DayNumber day) const {
    if (!rule_.months) return day + 1;
    const CivilDate date = dateOf(day);
    if (rule_.months >> date.month & 1) return day + 1;
    return day + lengthOfMonth(date.year, date.month) - date.day + 1;
  }

  // To the first unit at or after `wall`, which is later than the present one.
  void moveTo(WallSeconds wall) {
    const std::int64_t steps = floorDivide(wall - unit_ + step_ - 1, step_);
    unit_ += steps * step_;
  }

  const RecurrenceRule& rule_;
  const std::int64_t unitSeconds_;
  const WallSeconds base_;
  const std::int64_t step_;
  const bool isFiltered_;
  const std::vector<int> offsets_;
  const WallSeconds from_;
  const WallSeconds to_;
  WallSeconds unit_ = 0;
  std::size_t index_ = 0;
  std::int64_t stepsLeft_ = maximumSteps;
  DayNumber checkedDay_ = INT64_MIN;
  bool isDayIn_ = false;
};

}  // namespace

std::unique_ptr<Readings> clockReadingsOf(const RecurrenceRule& rule, WallSeconds from,
                                          WallSeconds to) {
  return std::make_unique<ClockReadings>(rule, from, to);
}

}  // namespace tidemark::local
