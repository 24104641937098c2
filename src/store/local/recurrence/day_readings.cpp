// Rules that step by days, weeks, months or years: the days of one period after the other, each at
// the rule's times. A period far from the start is found by arithmetic.

#include <algorithm>
#include <cstddef>

#include "store/local/recurrence/readings.h"

namespace tidemark::local {
namespace {

// The days of a month, bit 1 being the 1st, on which the weekdays of BYDAY fall.
std::uint32_t weekdaysOfMonth(const RecurrenceRule& rule, DayNumber first, unsigned length) {
  std::uint32_t days = 0;
  const unsigned firstWeekday = weekdayOf(first);
  for (unsigned weekday = 0; weekday < 7; ++weekday) {
    if (!(rule.weekdays >> weekday & 1)) continue;
    for (unsigned day = 1 + (weekday + 7 - firstWeekday) % 7; day <= length; day += 7) {
      days |= 1U << day;
    }
  }
  for (const OrdinalDay& sought : rule.ordinalDays) {
    const int firstOfKind = 1 + static_cast<int>((sought.weekday + 7 - firstWeekday) % 7);
    const int lastOfKind = firstOfKind + (static_cast<int>(length) - firstOfKind) / 7 * 7;
    const int day = sought.ordinal > 0 ? firstOfKind + (sought.ordinal - 1) * 7
                                       : lastOfKind + (sought.ordinal + 1) * 7;
    if (day >= 1 && day <= static_cast<int>(length)) days |= 1U << day;
  }
  return days;
}

void appendDaysOfMonth(const RecurrenceRule& rule, int year, unsigned month,
                       std::vector<DayNumber>& days) {
  if (rule.months && !(rule.months >> month & 1)) return;
  const unsigned length = lengthOfMonth(year, month);
  const DayNumber first = dayOf(year, month, 1);
  std::uint32_t matching = monthDaysOf(rule, length);
  if (rule.weekdays || !rule.ordinalDays.empty()) matching &= weekdaysOfMonth(rule, first, length);
  for (; matching; matching &= matching - 1) days.push_back(first + std::countr_zero(matching) - 1);
}

// The first day of the first week of a year: the week with 4 January in it.
DayNumber firstWeekOf(int year, unsigned weekStart) {
  const DayNumber within = dayOf(year, 1, 4);
  return within - (weekdayOf(within) + 7 - weekStart) % 7;
}

// The days of the year's numbered weeks. The first may begin in the year before, the last end in
// the year after.
void appendDaysOfWeeks(const RecurrenceRule& rule, int year, std::vector<DayNumber>& days) {
  const DayNumber first = firstWeekOf(year, rule.weekStart);
  const auto count = static_cast<int>((firstWeekOf(year + 1, rule.weekStart) - first) / 7);
  for (int week = 0; week < count; ++week) {
    const auto isNamed = [&](int number) {
      return std::binary_search(rule.weekNumbers.begin(), rule.weekNumbers.end(), number);
    };
    if (!isNamed(week + 1) && !isNamed(week - count)) continue;
    const DayNumber begin = first + DayNumber{7} * week;
    for (DayNumber day = begin; day < begin + 7; ++day) {
      if (passesDayParts(rule, day)) days.push_back(day);
    }
  }
}

// The steps of a rule, counted from the one that holds its start. Period n covers the days from
// firstDayOf(n) up to where the next calendar unit begins.
class Periods {
 public:
  explicit Periods(const RecurrenceRule& rule) : rule_(rule) {
    const DayNumber start = dayOf(rule.start);
    switch (rule.frequency) {
      case Frequency::weekly:
        base_ = start - (weekdayOf(start) + 7 - rule.weekStart) % 7;
        break;
      case Frequency::monthly:
        base_ = monthNumberOf(start);
        break;
      case Frequency::yearly:
        base_ = dateOf(start).year;
        break;
      default:
        base_ = start;
    }
  }

  // The period that holds the day, or the last one before it.
  std::int64_t periodOf(DayNumber day) const {
    return floorDivide(unitOf(day) - base_, unitsPerPeriod());
  }

  // The first period that may have the day or a later one: the weeks of a year reach into the next.
  std::int64_t firstPeriodFor(DayNumber day) const {
    return std::max<std::int64_t>(periodOf(rule_.weekNumbers.empty() ? day : day - 7), 0);
  }

  // How many days each period has, if that is always the same; else 0.
  int daysInEach() const {
    if (rule_.months || !rule_.positions.empty()) return 0;
    if (rule_.frequency == Frequency::weekly) return std::popcount(rule_.weekdays);
    return rule_.frequency == Frequency::daily && !rule_.hasDayParts() ? 1 : 0;
  }

  // Fills `days` with the rule's days in the period, ascending; false when it begins after `limit`.
  bool fill(std::int64_t period, DayNumber limit, std::vector<DayNumber>& days) const {
    days.clear();
    const std::int64_t unit = base_ + period * unitsPerPeriod();
    switch (rule_.frequency) {
      case Frequency::weekly:
        if (unit > limit) return false;
        for (DayNumber day = unit; day < unit + 7; ++day) {
          if (passesDayParts(rule_, day)) days.push_back(day);
        }
        return true;
      case Frequency::monthly: {
        if (unit > monthNumberOf(limit)) return false;
        const auto year = static_cast<int>(floorDivide(unit, 12));
        appendDaysOfMonth(rule_, year, static_cast<unsigned>(unit - std::int64_t{year} * 12 + 1),
                          days);
        return true;
      }
      case Frequency::yearly:
        if (unit > dateOf(limit).year + (rule_.weekNumbers.empty() ? 0 : 1)) return false;
        appendDaysOfYear(static_cast<int>(unit), days);
        return true;
      default:
        if (unit > limit) return false;
        if (passesDayParts(rule_, unit)) days.push_back(unit);
        return true;
    }
  }

 private:
  static std::int64_t monthNumberOf(DayNumber day) {
    const CivilDate date = dateOf(day);
    return std::int64_t{12} * date.year + date.month - 1;
  }

  std::int64_t unitOf(DayNumber day) const {
    if (rule_.frequency == Frequency::monthly) return monthNumberOf(day);
    return rule_.frequency == Frequency::yearly ? dateOf(day).year : day;
  }

  std::int64_t unitsPerPeriod() const {
    return rule_.frequency == Frequency::weekly ? 7 * rule_.interval : rule_.interval;
  }

  void appendDaysOfYear(int year, std::vector<DayNumber>& days) const {
    if (!rule_.weekNumbers.empty()) return appendDaysOfWeeks(rule_, year, days);
    if (rule_.libraryDays) {
      rule_.libraryDays->appendDaysOf(year, days);
    } else {
      for (unsigned month = 1; month <= 12; ++month) appendDaysOfMonth(rule_, year, month, days);
      if (rule_.yearDays.empty()) return;
    }
    std::erase_if(days, [&](DayNumber day) {
      return !(rule_.ordinalDays.empty() ? passesDayParts : passesDateParts)(rule_, day);
    });
  }

  const RecurrenceRule& rule_;
  std::int64_t base_ = 0;  // in days, months or years
};

class DayReadings final : public Readings {
 public:
  DayReadings(const RecurrenceRule& rule, WallSeconds from, WallSeconds to)
      : rule_(rule),
        periods_(rule),
        clock_(clockSetOf(rule)),
        clockSize_(clock_.size()),
        periodSize_(std::int64_t{periods_.daysInEach()} * clockSize_),
        from_(std::max(from, rule.start + 1)),
        to_(std::min(to, lastWall)) {
    if (!rule.canMatch || from_ > to_) {
      isAtEnd_ = true;
      return;
    }
    fill(periods_.firstPeriodFor(dayOf(from_)));
  }

  std::optional<WallSeconds> next() override { return advance(1); }

  std::optional<WallSeconds> advance(std::int64_t count) override {
    std::optional<WallSeconds> result;
    while (count > 0 && !isAtEnd_) {
      const auto left = static_cast<std::int64_t>(end_ - index_);
      if (left > 0) {
        const std::int64_t taken = std::min(left, count);
        result = readingAt(index_ + static_cast<std::size_t>(taken) - 1);
        index_ += static_cast<std::size_t>(taken);
        count -= taken;
      } else {
        const std::int64_t skipped = wholePeriodsWithin(count - 1);
        count -= skipped * periodSize_;
        fill(period_ + 1 + skipped);
      }
    }
    return result;
  }

 private:
  // The readings of a period are its days at each of the times, or those among them that BYSETPOS
  // names; of these, [index_, end_) lie in the range and are still to come.
  WallSeconds readingAt(std::size_t index) const {
    const std::size_t in = rule_.positions.empty() ? index : chosen_[index];
    const auto times = static_cast<std::size_t>(clockSize_);
    return days_[in / times] * secondsPerDay + clock_.at(static_cast<int>(in % times));
  }

  // How many periods that follow may be counted without being looked at, since they are all alike.
  std::int64_t wholePeriodsWithin(std::int64_t count) const {
    if (periodSize_ == 0) return 0;
    const std::int64_t last = periods_.periodOf(dayOf(to_));
    return std::clamp<std::int64_t>(last - period_ - 1, 0, count / periodSize_);
  }

  void fill(std::int64_t period) {
    period_ = period;
    if (!periods_.fill(period, dayOf(to_), days_)) {
      isAtEnd_ = true;
      return;
    }
    std::size_t size = days_.size() * static_cast<std::size_t>(clockSize_);
    if (!rule_.positions.empty()) {
      choose(size);
      size = chosen_.size();
    }
    index_ = size && readingAt(0) < from_ ? firstAtLeast(from_, size) : 0;
    end_ = size && readingAt(size - 1) > to_ ? firstAtLeast(to_ + 1, size) : size;
  }

  // The index of the first of the period's `size` readings that is `reading` or later.
  std::size_t firstAtLeast(WallSeconds reading, std::size_t size) const {
    std::size_t low = 0;
    while (low < size) {
      const std::size_t middle = low + (size - low) / 2;
      if (readingAt(middle) < reading) {
        low = middle + 1;
      } else {
        size = middle;
      }
    }
    return low;
  }

  void choose(std::size_t size) {
    chosen_.clear();
    for (const std::int16_t position : rule_.positions) {
      const auto fromStart = static_cast<std::size_t>(position > 0 ? position - 1 : -position);
      if (position > 0 ? fromStart < size : fromStart <= size) {
        chosen_.push_back(position > 0 ? fromStart : size - fromStart);
      }
    }
    std::sort(chosen_.begin(), chosen_.end());
    chosen_.erase(std::unique(chosen_.begin(), chosen_.end()), chosen_.end());
  }

  const RecurrenceRule& rule_;
  const Periods periods_;
  const ClockSet clock_;
  const int clockSize_;
  const std::int64_t periodSize_;  // 0 when periods differ
  const WallSeconds from_;
  const WallSeconds to_;
  std::int64_t period_ = 0;
  std::vector<DayNumber> days_;
  std::vector<std::size_t> chosen_;
  std::size_t index_ = 0;
  std::size_t end_ = 0;
  bool isAtEnd_ = false;
};

}  // namespace

std::unique_ptr<Readings> dayReadingsOf(const RecurrenceRule& rule, WallSeconds from,
                                        WallSeconds to) {
  return std::make_unique<DayReadings>(rule, from, to);
}

}  // namespace tidemark::local
