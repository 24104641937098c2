// Changes of to-dos.

#include <utility>

#include "store/local/editor/calendar_editor.h"
#include "store/local/editor/calendar_file.h"
#include "store/local/editor/item_changes.h"
#include "store/local/editor/time_form.h"
#include "store/local/editor/todo_due.h"
#include "store/local/editor/todo_successor.h"
#include "store/local/text/instants.h"
#include "store/local/text/todo.h"

namespace tidemark::local {
namespace {

// The component that a change concerns.
struct Target {
  Entry entry;
  // Of an open series: the occurrence that is shown, and changed.
  std::optional<Moment> occurrence;
};

// A repeating to-do is its first occurrence that is still open: what an override makes of it, else
// the series itself.
std::optional<Target> shownTarget(const ItemFamily& family) {
  if (!family.master) {
    if (family.overrides.empty()) return std::nullopt;
    return Target{family.overrides.front(), {}};
  }
  if (!family.isSeries() || !isOpen(*family.master->item->todo)) return Target{*family.master, {}};
  const auto occurrence = openOccurrence(family, firstInstant);
  const auto override = occurrence ? family.overrideOf(occurrence->toUtc()) : std::nullopt;
  return Target{override ? *override : *family.master, occurrence};
}

std::optional<Target> targetOf(const ItemFamily& family, std::optional<UtcSeconds> occurrence) {
  const auto shown = shownTarget(family);
  if (!occurrence || !shown) return shown;
  if (shown->occurrence && shown->occurrence->toUtc() == *occurrence) return shown;
  if (const auto override = family.overrideOf(*occurrence)) return Target{*override, {}};
  const OptionalMoment anchor = family.master ? anchorOf(*family.master->item) : OptionalMoment();
  if (anchor && !family.isSeries() && anchor->toUtc() == *occurrence) return shown;
  const auto found = family.occurrenceAt(*occurrence);
  return found ? std::optional(Target{*family.master, found->start}) : std::nullopt;
}

// All but the completion. Returns the TZID that a time got anew, else nothing.
std::string applyFields(ComponentEditor& editor, const Item& item, const TodoChange& change) {
  setText(editor, "SUMMARY", item.title(), change.title);
  if (change.notes && *change.notes) {
    setText(editor, "DESCRIPTION", item.notes(), *change.notes);
  } else if (change.notes) {
    editor.removeAll("DESCRIPTION");
  }
  const auto due = change.due ? dueText(*change.due) : std::nullopt;
  if (!due) return {};
  setDue(editor, item, *due);
  return due->tzid;
}

void setCompleted(ComponentEditor& editor, const Todo& todo, bool completed, UtcSeconds now) {
  if (completed == isCompleted(todo)) return;
  if (completed) {
    editor.setValue("STATUS", "COMPLETED");
    setUtc(editor, "COMPLETED", now);
    editor.setValue("PERCENT-COMPLETE", "100");
  } else {
    editor.setValue("STATUS", "NEEDS-ACTION");
    editor.removeAll("COMPLETED");
    editor.removeAll("PERCENT-COMPLETE");
  }
}

TodoEdit withoutSuccessor(Edit edit) {
  return {std::move(edit), {}};
}

// Completes the occurrence that the target is and leaves the rule to its successor. What is
// completed stays under the UID that it had: the series' own component, or the override that stands
// for it.
TodoEdit completeSeries(const CalendarFile& file, const ItemFamily& family, const Target& target,
                        UtcSeconds now) {
  const Entry& master = *family.master;
  const bool isMaster = target.entry.component == master.component;
  ComponentEditor editor(file.tree(), target.entry.component);
  if (isMaster) {
    const bool isFirst = target.occurrence->toUtc() == anchorOf(*master.item)->toUtc();
    if (!isFirst) startSeriesAt(editor, file, master, *target.occurrence);
    removeRecurrence(editor);
  }
  setCompleted(editor, *target.entry.item->todo, true, now);
  stampChange(editor, *target.entry.item, now);

  FileEdit edit(file.tree());
  edit.replace(editor);
  if (!isMaster) edit.remove(master.component);
  TodoEdit result;
  if (auto plan = planSuccessor(file, family, *target.occurrence, now)) {
    for (const std::size_t component : plan->movedComponents) edit.remove(component);
    result.successor = std::move(plan->successor);
  }
  static_cast<Edit&>(result) = edit.finish();
  return result;
}

// The file with the series begun at the occurrence that is shown: a new due date is that one's.
Edit advanceSeries(const CalendarFile& file, const Target& target) {
  ComponentEditor editor(file.tree(), target.entry.component);
  keepName(editor, *target.entry.item);
  startSeriesAt(editor, file, target.entry, *target.occurrence);
  FileEdit edit(file.tree());
  edit.replace(editor);
  return edit.finish();
}

bool needsAdvance(const Target& target, const TodoChange& change) {
  return change.due && target.occurrence && target.entry.item->series &&
         target.occurrence->toUtc() != anchorOf(*target.entry.item)->toUtc();
}

}  // namespace

TodoEdit changeTodo(std::string_view text, std::string_view fileName, const ItemName& name,
                    const TodoChange& change, UtcSeconds now) {
  const CalendarFile file(text, fileName);
  const ItemFamily family = file.family(ItemKind::todo, name.uid);
  const auto target = targetOf(family, name.occurrence);
  if (!target) return {};
  const Item& item = *target->entry.item;
  if (needsAdvance(*target, change)) {
    const Edit advanced = advanceSeries(file, *target);
    return changeTodo(advanced.text, fileName, {name.uid, {}}, change, now);
  }

  ComponentEditor editor(file.tree(), target->entry.component);
  const std::string newZone = applyFields(editor, item, change);
  const bool completesSeries =
      change.completed.value_or(false) && target->occurrence && !isCompleted(*item.todo);
  if (completesSeries && !editor.isChanged()) return completeSeries(file, family, *target, now);

  if (!completesSeries) {
    if (change.completed) setCompleted(editor, *item.todo, *change.completed, now);
    if (!editor.isChanged()) {
      return withoutSuccessor({Edit::Outcome::changed, std::string(text)});
    }
    stampChange(editor, item, now);
  }
  keepName(editor, item);
  FileEdit edit(file.tree());
  if (!newZone.empty()) edit.requireZone(target->entry.component, newZone, now);
  edit.replace(editor);
  Edit changed = edit.finish();
  if (!completesSeries) return withoutSuccessor(std::move(changed));
  // The successor carries on what the other fields became.
  TodoChange complete;
  complete.completed = true;
  return changeTodo(changed.text, fileName, {name.uid, {}}, complete, now);
}

}  // namespace tidemark::local
