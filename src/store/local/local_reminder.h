// Reminders as this store hands them out; see local_event.h.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "store/local/editor/calendar_editor.h"
#include "store/local/items/reminder_dates.h"
#include "store/local/tree/collections.h"
#include "store/store.h"

namespace tidemark::local {

struct ReminderEdits {
  TodoChange change;
  std::optional<LocalCalendarRef> list;
};

class LocalReminder final : public Reminder {
 public:
  // A new reminder. Its identifier is its own until it is saved.
  explicit LocalReminder(std::string identifier) : newIdentifier_(std::move(identifier)) {}
  LocalReminder(const PlacedTodo& placed, const LocalCalendar& list, std::string_view identifier)
      : placed_(placed), list_(&list), identifier_(identifier) {}

  std::string_view calendarItemIdentifier() const override;
  std::optional<std::string_view> title() const override;
  const Calendar* calendar() const override;
  bool isCompleted() const override;
  std::int64_t priority() const override;
  std::optional<DateComponents> dueDateComponents() const override;
  std::optional<std::string_view> notes() const override;

  void setTitle(std::string_view title) override;
  void setNotes(std::optional<std::string_view> notes) override;
  void setCalendar(CalendarRef list) override;
  void setDueDateComponents(const DateComponents& due) override;
  void setCompleted(bool completed) override;

  // As LocalEvent's.
  const Item* item() const { return placed_.item; }
  std::optional<UtcSeconds> occurrence() const { return placed_.occurrence; }
  const LocalCalendar* fetchedFrom() const { return list_; }
  const ReminderEdits* edits() const { return edits_.get(); }
  void become(std::shared_ptr<const LocalReminder> saved);

 private:
  bool isNew() const { return item() == nullptr; }
  ReminderEdits& edited();

  PlacedTodo placed_;
  const LocalCalendar* list_ = nullptr;
  std::string newIdentifier_;
  std::string_view identifier_;
  std::unique_ptr<ReminderEdits> edits_;
  std::shared_ptr<const LocalReminder> saved_;
};

}  // namespace tidemark::local
