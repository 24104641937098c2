#include "reminders/reminder_fields.h"

#include "codec/dates.h"
#include "host/failure.h"
#include "reminders/reminder_lists.h"
#include "store/local_dates.h"

namespace tidemark {
namespace {

void applyNotes(const Json& value, Reminder& reminder) {
  const std::string* notes = value.string();
  const bool hasText = notes != nullptr && !notes->empty();
  reminder.setNotes(hasText ? std::optional<std::string_view>(*notes) : std::nullopt);
}

void applyList(const std::string& identifier, Reminder& reminder) {
  CalendarRef list = reminderListWithId(identifier);
  if (!list) throw Failure("unknown list: " + identifier);
  if (!list->allowsContentModifications) throw Failure("list is read-only: " + list->title);
  reminder.setCalendar(std::move(list));
}

// A due date is what the wall clock says, not an instant: it floats with whoever reads it.
void applyDueDate(Instant due, const bool* hasDueTime, Reminder& reminder) {
  const bool dayOnly = hasDueTime != nullptr && !*hasDueTime;
  reminder.setDueDateComponents(localComponents(due, dayOnly ? Precision::day : Precision::minute));
}

}  // namespace

void applyReminder(const Request& request, Reminder& reminder) {
  if (const auto* title = stringField(request, "title")) reminder.setTitle(*title);
  if (const Json* notes = request.find("notes")) applyNotes(*notes, reminder);
  if (const auto* listId = stringField(request, "listId")) applyList(*listId, reminder);
  // There is no way to remove a due date: what is no date leaves it.
  if (const auto due = parseDate(request.find("dueDate"))) {
    applyDueDate(*due, booleanField(request, "hasDueTime"), reminder);
  }
  if (const bool* completed = booleanField(request, "completed")) reminder.setCompleted(*completed);
}

}  // namespace tidemark
