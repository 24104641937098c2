// Which events and reminders a range holds. The rules stand at EventPredicate and ReminderPredicate
// in store.h; the stores that apply them on their own (all but EventKit's) share these lines.
#pragma once

#include <optional>

namespace tidemark {

template <typename Time>
constexpr bool rangeHoldsEvent(Time from, Time to, Time start, Time end) {
  if (!(from < to)) return false;
  if (start == end) return from <= start && start < to;
  return start < to && end > from;
}

template <typename Time>
constexpr bool rangeHoldsDate(const std::optional<Time>& from, Time to, Time date) {
  return (!from || *from <= date) && date < to;
}

}  // namespace tidemark
