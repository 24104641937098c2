#include "reminders/reminder_query.h"

#include <memory>
#include <optional>
#include <utility>

#include "access/authorization.h"
#include "codec/dates.h"
#include "codec/record_reply.h"
#include "events/calendar_lookup.h"
#include "reminders/reminder_collector.h"
#include "store/current_store.h"

namespace tidemark {
namespace {

void fetchInto(const std::shared_ptr<ReminderCollector>& collector,
               const ReminderPredicate& predicate) {
  collector->group.enter();
  store->fetchRemindersMatchingPredicate(
      predicate, [collector](std::optional<std::vector<ReminderRef>> reminders) {
        collector->add(std::move(reminders));
        collector->group.leave();
      });
}

void answerWhenCollected(const std::shared_ptr<ReminderCollector>& collector, RequestId id) {
  std::optional<Json> kept;
  if (id != nullptr) kept = *id;
  collector->group.notify(
      [collector, kept = std::move(kept)] { collector->answer(kept ? &*kept : nullptr); });
}

}  // namespace

void listReminders(RequestId id, const Request& request) {
  if (!requireReminderAccess(id)) return;
  const auto from = parseDate(request.find("from"));
  const auto to = from ? parseDate(request.find("to")) : std::nullopt;
  if (!from || !to) {
    fail(id, "reminders needs `from` and `to`");
    return;
  }
  const CalendarSelection lists = selectedCalendars(EntityType::reminder, request, "lists");
  if (lists && lists->empty()) {
    replyWithRecords(id, "reminders", std::vector<ReminderRef>());
    return;
  }
  const bool* overdue = booleanField(request, "overdue");
  const auto dueFrom = overdue != nullptr && *overdue ? std::nullopt : from;

  using Kind = ReminderPredicate::Kind;
  const auto collector = std::make_shared<ReminderCollector>();
  fetchInto(collector, {Kind::incompleteByDueDate, dueFrom, *to, lists});
  fetchInto(collector, {Kind::completedByCompletionDate, from, *to, lists});
  answerWhenCollected(collector, id);
}

}  // namespace tidemark
