// Changes of events: in place, or of one occurrence by an override.

#include <algorithm>
#include <utility>

#include "store/local/editor/availability.h"
#include "store/local/editor/calendar_editor.h"
#include "store/local/editor/calendar_file.h"
#include "store/local/editor/content_line_writer.h"
#include "store/local/editor/event_times.h"
#include "store/local/editor/item_changes.h"
#include "store/local/editor/this_and_future.h"
#include "store/local/text/instants.h"

namespace tidemark::local {
namespace {

// An occurrence that gets an override of its own.
struct NewOverride {
  Moment meant;
  Span span;  // as it is shown so far
};

// The component that a change concerns.
struct Target {
  Entry entry;
  // Present: the entry stays, and a copy of it becomes this.
  std::optional<NewOverride> override;
};

std::optional<Target> targetOf(const ItemFamily& family, UtcSeconds occurrence) {
  const auto override = family.overrideOf(occurrence);
  const auto found = family.occurrenceAt(occurrence);
  if (override) {
    const Item& item = *override->item;
    // It counts for later ones also where it meets no occurrence itself.
    const Moment meant = found ? found->start : *item.recurrenceId;
    const bool countsForLaterOnes = item.thisAndFuture && family.isSeries() &&
                                    meant.isDate == family.master->item->start->isDate;
    if (!countsForLaterOnes) return Target{*override, {}};
    return Target{*override, NewOverride{meant, spanOf(item)}};
  }
  if (found) {
    if (const auto followed = family.followedAt(occurrence)) {
      const Moment start = startFollowing(*followed->item, occurrence);
      const Span span = spanOfOccurrence(*followed->item, start, nullptr);
      return Target{*followed, NewOverride{found->start, span}};
    }
    const Span span = spanOfOccurrence(*family.master->item, found->start, found->period);
    return Target{*family.master, NewOverride{found->start, span}};
  }
  const bool isItself =
      family.master && !family.isSeries() && family.master->item->start->toUtc() == occurrence;
  return isItself ? std::optional(Target{*family.master, {}}) : std::nullopt;
}

// What a change without an occurrence means: the event, or the first occurrence that its series
// still has.
std::optional<Target> firstTargetOf(const ItemFamily& family) {
  if (family.master && !family.isSeries()) return Target{*family.master, {}};
  const auto first = family.firstOccurrence(firstInstant, [](const Occurrence&) { return true; });
  if (first) return targetOf(family, first->start.toUtc());
  const auto earliest = std::min_element(
      family.overrides.begin(), family.overrides.end(), [](const Entry& one, const Entry& other) {
        return one.item->start->toUtc() < other.item->start->toUtc();
      });
  return earliest == family.overrides.end() ? std::nullopt : std::optional(Target{*earliest, {}});
}

EventTimes currentTimes(const Target& target) {
  const Item& item = *target.entry.item;
  const Span span = target.override ? target.override->span : spanOf(item);
  return {span.start, span.end, item.start->isDate};
}

EventTimes wantedTimes(const EventTimes& current, const EventChange& change) {
  if (!change.start && !change.end && !change.isAllDay) return current;
  return eventTimes(change.start.value_or(current.start), change.end.value_or(current.end),
                    change.isAllDay.value_or(current.isAllDay));
}

void setAvailability(ComponentEditor& editor, const Item& item, std::int64_t number) {
  const Availability availability = availabilityOf(number);
  if (availability.number == item.availability) return;
  editor.setValue("TRANSP", availability.transparency);
  // Where the vendor's property stands it counts for more than TRANSP.
  if (availability.needsBusyStatus || editor.find(busyStatusName)) {
    editor.setValue(busyStatusName, availability.busyStatus);
  }
}

void setUrl(ComponentEditor& editor, const Item& item, const std::optional<std::string>& url) {
  if (!url) {
    editor.removeAll("URL");
  } else if (!item.url().data() || item.url() != *url) {
    editor.setValue("URL", plainValue(*url));
  }
}

// All but the times.
void applyFields(ComponentEditor& editor, const Item& item, const EventChange& change) {
  setText(editor, "SUMMARY", item.title(), change.title);
  setText(editor, "DESCRIPTION", item.notes(), change.notes);
  setText(editor, "LOCATION", item.location(), change.location);
  if (change.url) setUrl(editor, item, *change.url);
  if (change.availability) setAvailability(editor, item, *change.availability);
}

// Makes the copy of a series, or of an override that later occurrences follow, the override of one
// occurrence (RFC 5545, 3.8.4.4).
void becomeOverride(ComponentEditor& editor, const TimeText& occurrence) {
  removeRecurrence(editor);
  std::string parameters = occurrence.parameters;
  if (const ContentLine* const line = editor.find("RECURRENCE-ID")) {
    parameters += withoutParameter(
        withoutParameter(withoutParameter(line->parameters, "RANGE"), "TZID"), "VALUE");
  }
  editor.set("RECURRENCE-ID", parameters, occurrence.value);
}

}  // namespace

Edit changeEvent(std::string_view text, std::string_view fileName, const ItemName& name,
                 const EventChange& change, UtcSeconds now) {
  const CalendarFile file(text, fileName);
  const ItemFamily family = file.family(ItemKind::event, name.uid);
  const auto target = name.occurrence ? targetOf(family, *name.occurrence) : firstTargetOf(family);
  if (!target) return {};
  const Entry& entry = target->entry;
  const EventTimes current = currentTimes(*target);
  const EventTimes wanted = wantedTimes(current, change);

  ComponentEditor editor(file.tree(), entry.component);
  applyFields(editor, *entry.item, change);
  if (!editor.isChanged() && wanted == current) return {Edit::Outcome::changed, std::string(text)};

  if (target->override) {
    const ComponentEditor series(file.tree(), family.master->component);
    const TimeForm form = anchorForm(series, *family.master->item);
    becomeOverride(editor, timeText(form, target->override->meant));
  }
  std::string newZone;
  if (target->override || wanted != current) newZone = writeTimes(editor, *entry.item, wanted);
  stampChange(editor, *entry.item, now);

  FileEdit edit(file.tree());
  if (!newZone.empty()) edit.requireZone(entry.component, newZone, wanted.start);
  const bool isOverride = entry.item->recurrenceId.has_value();
  ComponentEditor rest(file.tree(), entry.component);
  if (target->override && isOverride &&
      entry.item->recurrenceId->toUtc() == target->override->meant.toUtc()) {
    // Without a later occurrence to go to, the override is this one's alone.
    if (handOn(rest, family, entry, now)) {
      edit.replace(rest);
      edit.insertAfter(entry.component, editor.text());
    } else {
      edit.replace(editor);
    }
  } else if (target->override) {
    keepName(rest, *entry.item);
    edit.replace(rest);
    edit.insertAfter(entry.component, editor.text());
  } else {
    edit.replace(editor);
  }
  return edit.finish();
}

}  // namespace tidemark::local
