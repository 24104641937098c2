// Removing items, or one occurrence of a series, and taking items out of a file for a move.

#include <utility>

#include "store/local/editor/calendar_editor.h"
#include "store/local/editor/calendar_file.h"
#include "store/local/editor/item_changes.h"
#include "store/local/editor/this_and_future.h"
#include "store/local/text/instants.h"

namespace tidemark::local {
namespace {

Edit removeComponents(const CalendarFile& file, const std::vector<std::size_t>& components) {
  if (components.empty()) return {};
  FileEdit edit(file.tree());
  for (const std::size_t component : components) edit.remove(component);
  return edit.finish();
}

// The family's components that are no overrides.
std::vector<std::size_t> mastersOf(const CalendarFile& file, const ItemFamily& family) {
  const Item& master = *family.master->item;
  std::vector<std::size_t> masters = file.componentsOf(master.uid(), master.kind);
  std::set<std::size_t> overrides;
  for (const Entry& entry : family.overrides) overrides.insert(entry.component);
  std::erase_if(masters, [&](std::size_t component) { return overrides.contains(component); });
  return masters;
}

void excludeOccurrence(ComponentEditor& editor, const Item& master, const Moment& occurrence) {
  const TimeText exception = timeText(anchorForm(editor, master), occurrence);
  editor.add("EXDATE", exception.parameters, exception.value);
}

// Takes the overrides of an occurrence out, or lets them go on for later ones that follow them. How
// many there were.
std::size_t removeOverrides(FileEdit& edit, const ComponentTree& tree, const ItemFamily& family,
                            UtcSeconds occurrence, UtcSeconds now) {
  std::size_t count = 0;
  for (const Entry& entry : family.overrides) {
    if (entry.item->recurrenceId->toUtc() != occurrence) continue;
    ++count;
    ComponentEditor later(tree, entry.component);
    if (entry.item->thisAndFuture && entry.item->start && handOn(later, family, entry, now)) {
      edit.replace(later);
    } else {
      edit.remove(entry.component);
    }
  }
  return count;
}

Edit removeOccurrence(const CalendarFile& file, const ItemFamily& family, UtcSeconds occurrence,
                      UtcSeconds now) {
  FileEdit edit(file.tree());
  const std::size_t overridesGone = removeOverrides(edit, file.tree(), family, occurrence, now);
  bool isAnyLeft = overridesGone < family.overrides.size();
  const auto found = family.occurrenceAt(occurrence);
  if (found) {
    ComponentEditor editor(file.tree(), family.master->component);
    excludeOccurrence(editor, *family.master->item, found->start);
    stampChange(editor, *family.master->item, now);
    edit.replace(editor);
  }
  if (family.isSeries()) {
    const auto other = family.firstOccurrence(
        firstInstant, [&](const Occurrence& one) { return one.start.toUtc() != occurrence; });
    isAnyLeft = isAnyLeft || other;
  } else if (family.master) {
    // It is its own only occurrence; masters that did not count go with it.
    const OptionalMoment anchor = anchorOf(*family.master->item);
    const bool isItself = overridesGone == 0 && anchor && anchor->toUtc() == occurrence;
    if (isItself) return removeComponents(file, mastersOf(file, family));
    isAnyLeft = true;
  }
  if (!found && overridesGone == 0) return {};
  if (isAnyLeft) return edit.finish();
  const Item& any = family.master ? *family.master->item : *family.overrides.front().item;
  return removeComponents(file, file.componentsOf(any.uid(), any.kind));
}

Edit removeItem(ItemKind kind, std::string_view text, std::string_view fileName,
                const ItemName& name, UtcSeconds now) {
  const CalendarFile file(text, fileName);
  if (!name.occurrence) return removeComponents(file, file.componentsOf(name.uid, kind));
  return removeOccurrence(file, file.family(kind, name.uid), *name.occurrence, now);
}

}  // namespace

Edit removeEvent(std::string_view text, std::string_view fileName, const ItemName& name,
                 UtcSeconds now) {
  return removeItem(ItemKind::event, text, fileName, name, now);
}

Edit removeTodo(std::string_view text, std::string_view fileName, const ItemName& name,
                UtcSeconds now) {
  return removeItem(ItemKind::todo, text, fileName, name, now);
}

std::string extractItem(std::string_view text, std::string_view fileName, std::string_view uid) {
  const CalendarFile file(text, fileName);
  const std::vector<std::size_t> components = file.componentsOf(uid, std::nullopt);
  if (components.empty()) return {};
  // A file that holds nothing else moves as it is, with all that only its author understands.
  if (removeComponents(file, components).outcome == Edit::Outcome::empty) return std::string(text);
  std::vector<std::string> texts;
  for (const std::size_t component : components) {
    texts.push_back(ComponentEditor(file.tree(), component).text());
  }
  return fileOf(file.tree(), components, texts);
}

Edit withoutItem(std::string_view text, std::string_view fileName, std::string_view uid) {
  const CalendarFile file(text, fileName);
  return removeComponents(file, file.componentsOf(uid, std::nullopt));
}

}  // namespace tidemark::local
