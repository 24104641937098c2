#include "reminders/reminder_collector.h"

#include <utility>

#include "codec/records.h"
#include "store/canonical_text.h"

namespace tidemark {

void ReminderCollector::add(std::optional<std::vector<ReminderRef>> reminders) {
  if (!reminders) return;
  const std::lock_guard lock(lock_);
  for (ReminderRef& reminder : *reminders) {
    if (!reminder->dueDateComponents()) continue;
    std::string identifier = canonicalForm(reminder->calendarItemIdentifier());
    collected_.insert_or_assign(std::move(identifier), std::move(reminder));
  }
}

void ReminderCollector::answer(RequestId id) const {
  ReplyObject object;
  JsonWriter& writer = object.writer();
  writer.key("reminders");
  writer.beginArray();
  RecordEncoder encoder(writer);
  for (const auto& [identifier, reminder] : collected_) encoder.encode(*reminder);
  writer.endArray();
  reply(id, std::move(object));
}

}  // namespace tidemark
