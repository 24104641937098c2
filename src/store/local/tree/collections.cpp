#include "store/local/tree/collections.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace tidemark::local {
namespace {

bool comesBefore(const LocalCalendarRef& a, const LocalCalendarRef& b) {
  const auto key = [](const LocalCalendar& calendar) {
    return std::tuple(!calendar.order.has_value(), calendar.order.value_or(0),
                      std::string_view(calendar.calendarIdentifier));
  };
  return key(*a) < key(*b);
}

}  // namespace

Calendars::Calendars(std::vector<LocalCalendarRef> calendars) : calendars_(std::move(calendars)) {
  std::sort(calendars_.begin(), calendars_.end(), comesBefore);
  for (const LocalCalendarRef& calendar : calendars_) {
    if (byNumber_.size() <= calendar->number) byNumber_.resize(calendar->number + 1);
    byNumber_[calendar->number] = calendar;
  }
}

LocalCalendarRef Calendars::defaultFor(EntityType type) const {
  const EntityType other = type == EntityType::event ? EntityType::reminder : EntityType::event;
  LocalCalendarRef shared;
  for (const LocalCalendarRef& calendar : calendars_) {
    if (!calendar->allowsContentModifications || !calendar->holds(type)) continue;
    if (!calendar->holds(other)) return calendar;
    if (shared == nullptr) shared = calendar;
  }
  return shared;
}

}  // namespace tidemark::local
