#include "store/local/local_reminder.h"

#include <utility>

#include "store/local/text/civil.h"
#include "store/local/text/todo.h"

namespace tidemark::local {
namespace {

DateComponents componentsOf(const Moment& due) {
  const DayNumber day = dayOf(due.wall);
  const CivilDate date = dateOf(day);
  DateComponents components;
  components.year = date.year;
  components.month = static_cast<int>(date.month);
  components.day = static_cast<int>(date.day);
  if (due.isDate) return components;
  const auto second = static_cast<int>(due.wall - day * secondsPerDay);
  components.hour = second / 3600;
  components.minute = second / 60 % 60;
  components.second = second % 60;
  if (!due.isFloating) components.timeZone = due.zone->nameAt(due.toUtc());
  return components;
}

std::optional<std::string_view> presentText(std::string_view text) {
  return text.data() == nullptr ? std::nullopt : std::optional(text);
}

}  // namespace

std::string_view LocalReminder::calendarItemIdentifier() const {
  return isNew() ? std::string_view(newIdentifier_) : identifier_;
}

std::optional<std::string_view> LocalReminder::title() const {
  if (edits_ && edits_->change.title) return *edits_->change.title;
  return isNew() ? std::nullopt : presentText(placed_.item->title());
}

const Calendar* LocalReminder::calendar() const {
  return edits_ && edits_->list ? edits_->list->get() : list_;
}

bool LocalReminder::isCompleted() const {
  if (edits_ && edits_->change.completed) return *edits_->change.completed;
  return !isNew() && local::isCompleted(*placed_.item->todo);
}

std::int64_t LocalReminder::priority() const {
  return isNew() ? 0 : placed_.item->todo->priority;
}

std::optional<DateComponents> LocalReminder::dueDateComponents() const {
  if (edits_ && edits_->change.due) return edits_->change.due;
  return placed_.due ? std::optional(componentsOf(*placed_.due)) : std::nullopt;
}

std::optional<std::string_view> LocalReminder::notes() const {
  if (edits_ && edits_->change.notes) return *edits_->change.notes;
  return isNew() ? std::nullopt : presentText(placed_.item->notes());
}

void LocalReminder::become(std::shared_ptr<const LocalReminder> saved) {
  placed_ = saved->placed_;
  list_ = saved->list_;
  identifier_ = saved->identifier_;
  edits_.reset();
  saved_ = std::move(saved);
}

ReminderEdits& LocalReminder::edited() {
  if (edits_ == nullptr) edits_ = std::make_unique<ReminderEdits>();
  return *edits_;
}

void LocalReminder::setTitle(std::string_view title) {
  edited().change.title = title;
}

void LocalReminder::setNotes(std::optional<std::string_view> notes) {
  edited().change.notes = notes ? std::optional<std::string>(*notes) : std::nullopt;
}

void LocalReminder::setCalendar(CalendarRef list) {
  edited().list = std::dynamic_pointer_cast<const LocalCalendar>(list);
}

void LocalReminder::setDueDateComponents(const DateComponents& due) {
  edited().change.due = due;
}

void LocalReminder::setCompleted(bool completed) {
  edited().change.completed = completed;
}

}  // namespace tidemark::local
