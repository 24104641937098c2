// Reminders as EventKit gives them.
#pragma once

#import <EventKit/EventKit.h>

#include <optional>
#include <string>
#include <string_view>

#include "store/eventkit/eventkit_calendar.h"
#include "store/eventkit/native_item.h"
#include "store/store.h"

namespace tidemark {

class EventKitReminder final : public Reminder, public NativeItem<EKReminder> {
 public:
  enum class Origin { fetched, made };
  // With the session's lock held, in a pool. May raise what EventKit raises.
  EventKitReminder(Session& session, EKReminder* reminder, Origin origin,
                   CalendarsOfAnswer& calendars);

  std::string_view calendarItemIdentifier() const override { return values_.identifier; }
  std::optional<std::string_view> title() const override { return values_.title; }
  const Calendar* calendar() const override { return values_.calendar.get(); }
  bool isCompleted() const override { return values_.isCompleted; }
  std::int64_t priority() const override { return values_.priority; }
  std::optional<DateComponents> dueDateComponents() const override { return values_.due; }
  std::optional<std::string_view> notes() const override { return values_.notes; }

  void setTitle(std::string_view title) override;
  void setNotes(std::optional<std::string_view> notes) override;
  void setCalendar(CalendarRef list) override;
  void setDueDateComponents(const DateComponents& due) override;
  void setCompleted(bool completed) override;

 private:
  struct Values {
    std::string identifier;
    std::optional<std::string> title, notes;
    CalendarRef calendar;
    bool isCompleted = false;
    std::int64_t priority = 0;
    std::optional<DateComponents> due;
  };

  void read(EKReminder* reminder) override;
  void read(EKReminder* reminder, CalendarsOfAnswer& calendars);
  EKReminder* find() override;

  Values values_;
};

// Null when EventKit has no such item, or it is no reminder. With the session's lock held.
EKReminder* reminderWithIdentifier(const Session& session, std::string_view identifier);

}  // namespace tidemark
