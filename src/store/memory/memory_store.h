// A calendar store that lives in memory: what it holds is given at construction and kept in that
// order. It is a whole store, for tests and for the simulator; what fails or is slow on purpose is
// put around it (src/simulator/scenario_store.h), not into it.
//
// Threads: beyond what store.h asks, every operation may be called from any thread. Fetches of
// reminders and access requests complete on threads of the store's own.
//
// Rules where store.h leaves them to the store
//   - Order: the order given; what is saved as new comes last.
//   - An event without a start counts as starting in the distant past (the start of year 1), and
//     one without an end has no length. Without both it is in every range that is not empty.
//   - Identifiers are equal when their NFC forms are. New events are named "new-1", "new-2", ...,
//     new reminders "new-reminder-1", "new-reminder-2", ...
//   - The clock stands still but for the second that each save takes: the first save is at `start`
//     plus one second. It gives an event's lastModifiedDate and a reminder's completion date.
//   - A saved event keeps its occurrenceDate; a new one gets its start.
//   - A full-access request grants where the status is notDetermined, which turns it into
//     fullAccess, and where it is fullAccess already.
//   - Saves and removals fail with "The calendar is read-only.", "The start date must be before the
//     end date.", "The event has no calendar.", "The reminder has no list." and, for what is not in
//     the store, "The event does not exist." and "The reminder does not exist."
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "store/store.h"
#include "store/types.h"

namespace tidemark {

struct MemoryAttendee {
  std::optional<std::string> name;
  std::string url;
};

// One event, or one occurrence of a repeating event: occurrences are entries of their own that
// share an identifier.
struct MemoryEvent {
  std::optional<std::string> eventIdentifier;
  std::optional<std::string> title;
  CalendarRef calendar;
  bool isAllDay = false;
  bool hasRecurrenceRules = false;
  std::int64_t availability = 0;
  std::optional<Instant> startDate;
  std::optional<Instant> endDate;
  std::optional<Instant> occurrenceDate;
  std::optional<Instant> lastModifiedDate;
  std::optional<std::string> notes;
  std::optional<std::string> url;
  std::optional<std::string> location;
  std::optional<std::vector<MemoryAttendee>> attendees;
  // The store's own name of the entry, by which an item that was fetched finds its way back. 0 in
  // what is not in a store yet.
  std::uint64_t handle = 0;
};

struct MemoryReminder {
  std::string calendarItemIdentifier;
  std::optional<std::string> title;
  CalendarRef calendar;
  bool isCompleted = false;
  std::optional<Instant> completionDate;
  std::int64_t priority = 0;
  std::optional<DateComponents> dueDateComponents;
  std::optional<std::string> notes;
  std::uint64_t handle = 0;  // as for MemoryEvent
};

// Everything that a store holds. Calendars, events and reminders may share an identifier: the first
// counts in a look-up.
struct MemoryContents {
  AuthorizationStatus eventsStatus = fullAccess;
  AuthorizationStatus remindersStatus = fullAccess;
  std::vector<CalendarRef> eventCalendars;
  std::vector<CalendarRef> remindersLists;
  CalendarRef defaultCalendarForNewEvents;
  CalendarRef defaultCalendarForNewReminders;
  std::vector<MemoryEvent> events;
  std::vector<MemoryReminder> reminders;
  // Where the store's clock begins.
  Instant start{};
};

class MemoryStore : public Store {
 public:
  // Changes the contents as another program would: at once for every later call, whoever makes it,
  // and with one change notification, even where `edit` leaves all as it is. `edit` must not call
  // the store. Any thread.
  virtual void change(const std::function<void(MemoryContents&)>& edit) = 0;
};

std::unique_ptr<MemoryStore> makeMemoryStore(MemoryContents contents);

}  // namespace tidemark
