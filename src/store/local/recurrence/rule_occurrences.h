// The occurrences that one rule gives as instants: its readings taken on the clock of the series'
// zone, within UNTIL and COUNT.
//
// One thread at a time; rule and zone must outlive it.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

#include "store/local/recurrence/readings.h"
#include "store/local/recurrence/recurrence_rule.h"
#include "store/local/text/item.h"

namespace tidemark::local {

class RuleOccurrences {
 public:
  struct Instance {
    UtcSeconds instant = 0;
    WallSeconds reading = 0;
  };

  // Those with from <= instant < to, but for the series' start, which is none of the rule's.
  RuleOccurrences(const RecurrenceRule& rule, const Moment& start, UtcSeconds from, UtcSeconds to);

  // The earliest that was not passed yet; absent at the end.
  const std::optional<Instance>& current() const { return current_; }
  void advance();

 private:
  std::optional<Instance> nextInOrder();
  void takePending();
  bool hasSkipped() const { return nextSkipped_ < skipped_.size(); }
  bool isInRange(UtcSeconds instant) const { return from_ <= instant && instant < to_; }

  const Zone* zone_;
  bool isDate_;
  UtcSeconds from_;
  UtcSeconds to_;
  std::unique_ptr<Readings> readings_;
  // Readings that a change of offset skipped are later than those just after the change: they wait
  // here. Those from nextSkipped_ on are still to come, ascending.
  std::vector<Instance> skipped_;
  std::size_t nextSkipped_ = 0;
  // Taken, but one of those may come before it.
  std::optional<Instance> pending_;
  std::optional<Instance> current_;
  std::size_t left_;
};

}  // namespace tidemark::local
