#include "store/local/editor/this_and_future.h"

#include "store/local/editor/event_times.h"
#include "store/local/editor/item_changes.h"

namespace tidemark::local {

bool handOn(ComponentEditor& editor, const ItemFamily& family, const Entry& followed,
            UtcSeconds now) {
  const Item& item = *followed.item;
  const UtcSeconds own = item.recurrenceId->toUtc();
  const auto next = family.firstOccurrence(
      own + 1, [&](const Occurrence& one) { return !family.overrideOf(one.start.toUtc()); });
  if (!next) return false;
  const ComponentEditor series(editor.tree(), family.master->component);
  setTime(editor, "RECURRENCE-ID", timeText(anchorForm(series, *family.master->item), next->start));
  const Moment start = startFollowing(item, next->start.toUtc());
  const Span span = spanOfOccurrence(item, start, nullptr);
  writeTimes(editor, item, {span.start, span.end, item.start->isDate});
  stampChange(editor, item, now);
  return true;
}

}  // namespace tidemark::local
