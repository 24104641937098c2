#include "store/eventkit/eventkit_reminder.h"

namespace tidemark {

EventKitReminder::EventKitReminder(Session& session, EKReminder* reminder, Origin origin,
                                   CalendarsOfAnswer& calendars)
    : NativeItem(session, reminder, origin == Origin::made) {
  read(reminder, calendars);
}

void EventKitReminder::setTitle(std::string_view title) {
  change(
      [title = std::string(title)](EKReminder* reminder) { reminder.title = toNSString(title); });
}

void EventKitReminder::setNotes(std::optional<std::string_view> notes) {
  const auto text = notes ? std::optional<std::string>(*notes) : std::nullopt;
  change([text](EKReminder* reminder) { reminder.notes = text ? toNSString(*text) : nil; });
}

void EventKitReminder::setCalendar(CalendarRef list) {
  change([&session = session(), list](EKReminder* reminder) {
    reminder.calendar = nativeCalendar(session, list);
  });
}

void EventKitReminder::setDueDateComponents(const DateComponents& due) {
  change([due](EKReminder* reminder) { reminder.dueDateComponents = toNSDateComponents(due); });
}

void EventKitReminder::setCompleted(bool completed) {
  change([completed](EKReminder* reminder) { reminder.completed = completed; });
}

void EventKitReminder::read(EKReminder* reminder) {
  CalendarsOfAnswer calendars(session());
  read(reminder, calendars);
}

void EventKitReminder::read(EKReminder* reminder, CalendarsOfAnswer& calendars) {
  Values values;
  values.identifier = textOf(reminder.calendarItemIdentifier);
  values.title = optionalText(reminder.title);
  values.notes = optionalText(reminder.notes);
  values.calendar = calendars.of(reminder.calendar);
  values.isCompleted = reminder.isCompleted;
  values.priority = static_cast<std::int64_t>(reminder.priority);
  values.due = componentsOf(reminder.dueDateComponents);
  values_ = std::move(values);
}

EKReminder* EventKitReminder::find() {
  if (isNew()) return [EKReminder reminderWithEventStore:session().events];
  return reminderWithIdentifier(session(), values_.identifier);
}

EKReminder* reminderWithIdentifier(const Session& session, std::string_view identifier) {
  EKCalendarItem* const item = [session.events calendarItemWithIdentifier:toNSString(identifier)];
  return [item isKindOfClass:[EKReminder class]] ? static_cast<EKReminder*>(item) : nil;
}

}  // namespace tidemark
