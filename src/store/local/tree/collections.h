// The collections as calendars: what a directory and its metadata make of them.
//
// Values; any thread.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "store/types.h"

namespace tidemark::local {

struct LocalCalendar : Calendar {
  std::string directory;  // its path
  std::uint32_t number = 0;
  std::optional<std::int64_t> order;
  bool holdsEvents = false;
  bool holdsReminders = false;

  bool holds(EntityType type) const {
    return type == EntityType::event ? holdsEvents : holdsReminders;
  }
};
using LocalCalendarRef = std::shared_ptr<const LocalCalendar>;

// All calendars as they were at one moment.
class Calendars {
 public:
  // Puts them into store order: by `order`, those without one last, then by identifier.
  explicit Calendars(std::vector<LocalCalendarRef> calendars);

  const std::vector<LocalCalendarRef>& inStoreOrder() const { return calendars_; }
  // Null when there is none of that number.
  const LocalCalendarRef& numbered(std::uint32_t number) const {
    return number < byNumber_.size() ? byNumber_[number] : none_;
  }
  // The first writable one that holds the type, preferring those that do not hold the other one.
  // Null when there is none.
  LocalCalendarRef defaultFor(EntityType type) const;

 private:
  std::vector<LocalCalendarRef> calendars_;
  std::vector<LocalCalendarRef> byNumber_;
  LocalCalendarRef none_;
};

}  // namespace tidemark::local
