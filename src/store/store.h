// The calendar store as the commands see it. Everything an author of another store has to know
// stands in this file and in types.h; tests/contract/ runs one suite over every store.
//
// Names are those of the platform's EventKit, so that its store is a plain translation. Each
// operation says: what it does; the order of what it returns; what an empty or absent argument
// means; how it fails.
//
// Threads
//   - authorizationStatusForEntityType is called from any thread.
//   - Access requests, look-ups, queries, saves and removals are called from one thread at a time
//     (the request reader).
//   - reset is called from the thread on which an access request completes.
//   - run is called on the main thread, once, and serves it for ever; the change observer is called
//     there alone.
//   - An Event or a Reminder is used by one thread at a time; different ones may be used by
//     different threads at once, also while the store answers another call.
//
// Ownership: the store outlives every item and calendar that it gave out. Items and calendars are
// shared with the caller, and what they say is what the store held when they were fetched (or set
// since); a later change shows in items that are fetched later.
//
// Freshness: an answer shows every change that was complete, whoever made it, before the call was
// made.
//
// Errors: absence is an empty pointer, vector or optional. What returns a StoreResult or completes
// with an AccessResult fails through it, and the text goes to the host as it stands. Look-ups and
// queries of calendars and events may throw a StoreError, where the platform breaks them off;
// nothing else throws.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <stdexcept>

#include "store/types.h"

namespace tidemark {

// One event, or one occurrence of a repeating event.
//
// Views are valid until the next call of a setter on the same event, of a save, or the end of the
// event. Setters change this object alone (the native one at once, where there is one); nothing
// reaches the store before Store::saveEvent.
class Event {
 public:
  virtual ~Event() = default;

  // Absent for an event that was never saved, if the store names events only then.
  virtual std::optional<std::string_view> eventIdentifier() const = 0;
  virtual std::optional<std::string_view> title() const = 0;
  // Invariant: never null for an event that a query or a look-up returned. Valid as long as the
  // event is unchanged.
  virtual const Calendar* calendar() const = 0;
  virtual bool isAllDay() const = 0;
  // True for every occurrence of a repeating event, also for one that was changed on its own.
  virtual bool hasRecurrenceRules() const = 0;
  // The platform's EKEventAvailability as a number: -1 not supported, 0 busy, 1 free, 2 tentative,
  // 3 unavailable.
  virtual std::int64_t availability() const = 0;
  // All-day events start at local midnight and end at 23:59:59 local time on their last day.
  virtual std::optional<Instant> startDate() const = 0;
  virtual std::optional<Instant> endDate() const = 0;
  // Where the occurrence was meant to be: its start, unless it was moved on its own.
  virtual std::optional<Instant> occurrenceDate() const = 0;
  virtual std::optional<Instant> lastModifiedDate() const = 0;
  virtual std::optional<std::string_view> notes() const = 0;
  // The URL's absolute text.
  virtual std::optional<std::string_view> url() const = 0;
  virtual std::optional<std::string_view> location() const = 0;
  // Absent when the store gives no list, which is not the same as an empty list. In the store's
  // order.
  virtual std::optional<std::span<const Participant>> attendees() const = 0;

  virtual void setTitle(std::string_view title) = 0;
  virtual void setStartDate(Instant start) = 0;
  virtual void setEndDate(Instant end) = 0;
  virtual void setAllDay(bool allDay) = 0;
  virtual void setNotes(std::string_view notes) = 0;
  virtual void setLocation(std::string_view location) = 0;
  // Absent removes the URL.
  virtual void setUrl(std::optional<std::string_view> url) = 0;
  virtual void setAvailability(std::int64_t availability) = 0;
  // Null leaves the event without a calendar. The calendar came from the same store.
  virtual void setCalendar(CalendarRef calendar) = 0;
};
using EventRef = std::shared_ptr<Event>;

// One reminder. Views and setters as for Event.
class Reminder {
 public:
  virtual ~Reminder() = default;

  virtual std::string_view calendarItemIdentifier() const = 0;
  virtual std::optional<std::string_view> title() const = 0;
  // The reminder's list. Invariant: never null for a reminder that a query or a look-up returned.
  virtual const Calendar* calendar() const = 0;
  virtual bool isCompleted() const = 0;
  // 0 none, 1 (highest) to 9.
  virtual std::int64_t priority() const = 0;
  virtual std::optional<DateComponents> dueDateComponents() const = 0;
  virtual std::optional<std::string_view> notes() const = 0;

  virtual void setTitle(std::string_view title) = 0;
  // Absent removes the notes.
  virtual void setNotes(std::optional<std::string_view> notes) = 0;
  // Null leaves the reminder without a list. The list came from the same store.
  virtual void setCalendar(CalendarRef list) = 0;
  // Kept with exactly the components that are given.
  virtual void setDueDateComponents(const DateComponents& due) = 0;
  virtual void setCompleted(bool completed) = 0;
};
using ReminderRef = std::shared_ptr<Reminder>;

// What a query asks for. Absent calendars mean all of the query's entity type; an empty list
// matches nothing.
using CalendarSelection = std::optional<std::vector<CalendarRef>>;

// Events with start < endDate and end > startDate; events of zero length with startDate <= start <
// endDate. A range that is empty or inverted holds none. A changed occurrence counts where it is,
// not where it was.
struct EventPredicate {
  Instant startDate;
  Instant endDate;
  CalendarSelection calendars;
};

// Incomplete: starting <= due < ending, where an absent `starting` is no lower bound and a due date
// without a time counts as its local midnight. Completed: starting <= completion date < ending. A
// reminder without the date that is asked for matches neither.
struct ReminderPredicate {
  enum class Kind { incompleteByDueDate, completedByCompletionDate };
  Kind kind = Kind::incompleteByDueDate;
  std::optional<Instant> starting;
  Instant ending;
  CalendarSelection calendars;
};

struct AccessResult {
  bool granted = false;
  // The store's own words; when present, `granted` means nothing.
  std::optional<std::string> error;
};

// A look-up or query that was broken off: an empty answer would be a lie. In the store's own words,
// which go to the host as they stand.
class StoreError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

using AccessCompletion = std::function<void(AccessResult)>;
// Absent is the store's way to say that the fetch failed.
using ReminderCompletion = std::function<void(std::optional<std::vector<ReminderRef>>)>;

class Store {
 public:
  virtual ~Store() = default;
  Store() = default;
  Store(const Store&) = delete;
  Store& operator=(const Store&) = delete;

  // --- access

  // The status at this moment, never a remembered one.
  virtual AuthorizationStatus authorizationStatusForEntityType(EntityType type) const = 0;
  // Asks for full access whatever the status is. Returns at once; completes exactly once, on
  // another thread, perhaps after the user was asked.
  virtual void requestFullAccessToEvents(AccessCompletion completion) = 0;
  virtual void requestFullAccessToReminders(AccessCompletion completion) = 0;
  // Forgets whatever was fetched before, so that what a new permission shows is seen. Called after
  // a grant.
  virtual void reset() = 0;

  // --- calendars

  // Every calendar of the type, in the store's order, the same in every call while nothing changes.
  virtual std::vector<CalendarRef> calendarsForEntityType(EntityType type) = 0;
  // Null when there is none.
  virtual CalendarRef defaultCalendarForNewEvents() = 0;
  virtual CalendarRef defaultCalendarForNewReminders() = 0;

  // --- events

  // Occurrences of repeating events are events of their own. In the store's order, which must not
  // change between two calls over an unchanged store.
  virtual std::vector<EventRef> eventsMatchingPredicate(const EventPredicate& predicate) = 0;
  // The event, or the first occurrence of a repeating one; null when there is none. The first in
  // the store's order wins.
  virtual EventRef eventWithIdentifier(std::string_view identifier) = 0;
  // A new, unsaved event: no identifier, title, dates or calendar.
  virtual EventRef newEvent() = 0;
  // Saves an event of this store, or this one occurrence of a repeating event alone. Durable before
  // it returns; the event then says what was saved. On failure nothing has changed in the store.
  virtual StoreResult saveEvent(Event& event) = 0;
  // Removes the event, or this one occurrence alone. Failures as for saveEvent.
  virtual StoreResult removeEvent(Event& event) = 0;

  // --- reminders

  // Completes exactly once, on a thread of the store's choosing: another one, or the caller's
  // before the call returns. Two fetches may complete at the same time.
  virtual void fetchRemindersMatchingPredicate(const ReminderPredicate& predicate,
                                               ReminderCompletion completion) = 0;
  // Null when there is no such item, or when it is no reminder.
  virtual ReminderRef calendarItemWithIdentifier(std::string_view identifier) = 0;
  // A new, unsaved reminder: no title, list or due date, not completed, priority 0.
  virtual ReminderRef newReminder() = 0;
  // As saveEvent and removeEvent.
  virtual StoreResult saveReminder(Reminder& reminder) = 0;
  virtual StoreResult removeReminder(Reminder& reminder) = 0;

  // --- changes and the main thread

  // Sets who is told that the store changed, whoever changed it, this process included. Called
  // once, before run and before any other thread uses the store. The observer is called from run,
  // once for each notification.
  virtual void setChangeObserver(std::function<void()> observer) = 0;
  // Serves the main thread's event loop; never returns. (The platforms' own loops belong to the
  // main thread, and the notices arrive there, so the loop is the store's.)
  [[noreturn]] virtual void run() = 0;
};

}  // namespace tidemark
