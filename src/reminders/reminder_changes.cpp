#include "reminders/reminder_changes.h"

#include "access/authorization.h"
#include "codec/record_reply.h"
#include "host/failure.h"
#include "reminders/reminder_fields.h"
#include "reminders/reminder_lists.h"
#include "store/current_store.h"
#include "store/invariant.h"

namespace tidemark {
namespace {

void save(RequestId id, Reminder& reminder) {
  replyToSave(id, store->saveReminder(reminder), "reminder", reminder);
}

// The end that "reminder-create" and "reminder-update" share: fields, save, answer.
void applyAndSave(RequestId id, const Request& request, Reminder& reminder) {
  try {
    applyReminder(request, reminder);
  } catch (const Failure& failure) {
    fail(id, failure.message);
    return;
  }
  save(id, reminder);
}

// Where a new reminder goes first. An identifier that names no list is left for `applyReminder` to
// refuse.
CalendarRef listForNewReminder(const Request& request) {
  if (const auto* identifier = stringField(request, "listId")) {
    if (CalendarRef list = reminderListWithId(*identifier)) return list;
  }
  return store->defaultCalendarForNewReminders();
}

// The reminder that the request names, in a list that can be written to; null when the request has
// been answered.
ReminderRef reminder(RequestId id, const Request& request) {
  const auto* identifier = stringField(request, "reminderId");
  if (identifier == nullptr) {
    fail(id, "needs `reminderId`");
    return nullptr;
  }
  ReminderRef found = store->calendarItemWithIdentifier(*identifier);
  if (!found) {
    fail(id, "reminder not found: " + *identifier);
    return nullptr;
  }
  const Calendar* list = found->calendar();
  if (list == nullptr) stopOnBrokenInvariant();
  if (!list->allowsContentModifications) {
    fail(id, "list is read-only: " + list->title);
    return nullptr;
  }
  return found;
}

}  // namespace

void createReminder(RequestId id, const Request& request) {
  if (!requireReminderAccess(id)) return;
  const ReminderRef created = store->newReminder();
  created->setCalendar(listForNewReminder(request));
  if (created->calendar() == nullptr) {
    fail(id, "no reminders list to write to");
    return;
  }
  applyAndSave(id, request, *created);
}

void updateReminder(RequestId id, const Request& request) {
  if (!requireReminderAccess(id)) return;
  if (const ReminderRef found = reminder(id, request)) applyAndSave(id, request, *found);
}

void setReminderCompleted(RequestId id, const Request& request) {
  if (!requireReminderAccess(id)) return;
  const ReminderRef found = reminder(id, request);
  if (!found) return;
  const bool* completed = booleanField(request, "completed");
  found->setCompleted(completed == nullptr || *completed);
  save(id, *found);
}

void deleteReminder(RequestId id, const Request& request) {
  if (!requireReminderAccess(id)) return;
  const ReminderRef found = reminder(id, request);
  if (!found) return;
  replyToRemoval(id, store->removeReminder(*found));
}

}  // namespace tidemark
