#include "store/local/recurrence/recurrence.h"

#include <algorithm>
#include <utility>

#include "store/local/recurrence/rule_occurrences.h"
#include "store/local/text/civil.h"

namespace tidemark::local {
namespace {

// The EXDATEs of a series, asked about ever later occurrences.
class Exceptions {
 public:
  Exceptions(const std::vector<Moment>& moments, const Zone& zone, UtcSeconds from)
      : zone_(zone),
        firstDate_(std::partition_point(moments.begin(), moments.end(),
                                        [](const Moment& moment) { return !moment.isDate; })),
        end_(moments.end()),
        next_(std::partition_point(moments.begin(), firstDate_,
                                   [&](const Moment& moment) { return moment.toUtc() < from; })) {}

  bool contain(UtcSeconds instant) {
    while (next_ != firstDate_ && next_->toUtc() < instant) ++next_;
    if (next_ != firstDate_ && next_->toUtc() == instant) return true;
    if (firstDate_ == end_) return false;
    const WallSeconds day = dayOf(zone_.toWall(instant)) * secondsPerDay;
    const auto found = std::lower_bound(
        firstDate_, end_, day,
        [](const Moment& moment, WallSeconds sought) { return moment.wall < sought; });
    return found != end_ && found->wall == day;
  }

 private:
  using Iterator = std::vector<Moment>::const_iterator;
  const Zone& zone_;
  const Iterator firstDate_;  // of those that are dates
  const Iterator end_;
  Iterator next_;
};

// Everything that makes occurrences of one item, merged.
class Occurrences {
 public:
  Occurrences(const Item& master, UtcSeconds from, UtcSeconds to)
      : start_(*anchorOf(master)),
        from_(from),
        to_(to),
        first_(start_.toUtc()),
        isFirstToCome_(from <= first_ && first_ < to),
        nextDate_(master.series->dates.begin()),
        dateEnd_(master.series->dates.end()),
        exceptions_(master.series->exceptions, *start_.zone, from) {
    nextDate_ = std::partition_point(nextDate_, dateEnd_, [&](const RecurrenceDate& date) {
      return date.start.toUtc() < from_;
    });
    rules_.reserve(master.series->rules.size());
    for (const auto& rule : master.series->rules) {
      rules_.emplace_back(*rule, start_, from, to);
      if (!rules_.back().current()) rules_.pop_back();
    }
  }

  std::optional<Occurrence> next() {
    while (true) {
      const std::optional<UtcSeconds> instant = earliest();
      if (!instant) return std::nullopt;
      const Occurrence occurrence = takeAll(*instant);
      if (!exceptions_.contain(*instant)) return occurrence;
    }
  }

 private:
  std::optional<UtcSeconds> earliest() const {
    std::optional<UtcSeconds> result;
    const auto consider = [&](UtcSeconds instant) {
      if (!result || instant < *result) result = instant;
    };
    if (isFirstToCome_) consider(first_);
    if (nextDate_ != dateEnd_) {
      if (const UtcSeconds instant = nextDate_->start.toUtc(); instant < to_) consider(instant);
    }
    for (const RuleOccurrences& rule : rules_) {
      if (rule.current()) consider(rule.current()->instant);
    }
    return result;
  }

  // The occurrence at that instant; whatever else falls on it is the same one.
  Occurrence takeAll(UtcSeconds instant) {
    Occurrence occurrence;
    occurrence.start = start_;
    bool hasReading = false;
    if (isFirstToCome_ && first_ == instant) {
      isFirstToCome_ = false;
      hasReading = true;
    }
    for (RuleOccurrences& rule : rules_) {
      if (!rule.current() || rule.current()->instant != instant) continue;
      if (!hasReading) occurrence.start.wall = rule.current()->reading;
      hasReading = true;
      rule.advance();
    }
    for (; nextDate_ != dateEnd_ && nextDate_->start.toUtc() == instant; ++nextDate_) {
      if (!hasReading) occurrence.start.wall = readingOf(instant);
      hasReading = true;
      if (nextDate_->end || nextDate_->duration) occurrence.period = &*nextDate_;
    }
    return occurrence;
  }

  WallSeconds readingOf(UtcSeconds instant) const {
    const WallSeconds reading = start_.zone->toWall(instant);
    return start_.isDate ? dayOf(reading) * secondsPerDay : reading;
  }

  const Moment start_;
  const UtcSeconds from_;
  const UtcSeconds to_;
  const UtcSeconds first_;
  bool isFirstToCome_;
  std::vector<RuleOccurrences> rules_;
  std::vector<RecurrenceDate>::const_iterator nextDate_;
  const std::vector<RecurrenceDate>::const_iterator dateEnd_;
  Exceptions exceptions_;
};

}  // namespace

void forEachOccurrence(const Item& master, UtcSeconds from, UtcSeconds to,
                       const std::function<bool(const Occurrence&)>& visit) {
  if (!master.series) {
    const Moment start = *anchorOf(master);
    if (from <= start.toUtc() && start.toUtc() < to) visit({start, nullptr});
    return;
  }
  Occurrences occurrences(master, from, to);
  while (const auto occurrence = occurrences.next()) {
    if (!visit(*occurrence)) return;
  }
}

}  // namespace tidemark::local
