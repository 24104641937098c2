#include "store/local/editor/calendar_file.h"

#include <algorithm>
#include <utility>

#include "store/local/editor/content_line_writer.h"
#include "store/local/editor/vtimezone_writer.h"
#include "store/local/text/value_text.h"

namespace tidemark::local {
namespace {

std::string_view upperNameOf(ItemKind kind) {
  return kind == ItemKind::event ? "VEVENT" : "VTODO";
}

std::string readable(std::string_view raw) {
  std::string text(readableCapacity(raw.size()), '\0');
  text.resize(
      static_cast<std::size_t>(writeReadable(raw, Escapes::text, text.data()) - text.data()));
  return text;
}

// The raw value of a component's own property; null data() when it has none.
std::string_view ownValue(const ComponentTree& tree, std::size_t component, std::string_view name) {
  for (const std::size_t line : tree.ownLines(component)) {
    if (equalsIgnoringCase(tree.lines()[line].name, name)) return tree.lines()[line].value;
  }
  return {};
}

// The raw TZIDs that the lines of a component name, those of its alarms included.
void collectZones(const ComponentTree& tree, std::size_t component,
                  std::set<std::string_view>& tzids) {
  const Component& owner = tree.components()[component];
  for (std::size_t line = owner.firstLine; line < owner.endLine; ++line) {
    if (const auto tzid = parameterOf(tree.lines()[line].parameters, "TZID")) tzids.insert(*tzid);
  }
}

std::string_view bytesOf(const ComponentTree& tree, const Component& component) {
  return tree.text().substr(component.begin, component.end - component.begin);
}

// How lines end that are written beside this one.
std::string_view plainLineEnd(const ComponentTree& tree, const ContentLine& line) {
  return tree.lineEndOf(line) == "\n" ? "\n" : "\r\n";
}

// Whether the component has the lines that the reader took its item's times from. In text that is
// broken enough the two may differ in what belongs to an item.
bool isSameItem(const ComponentTree& tree, std::size_t component, const Item& item) {
  const ComponentEditor lines(tree, component);
  const bool hasDue = item.todo && item.todo->due && !(item.start && item.duration);
  return (!item.start || lines.find("DTSTART")) && (!item.end || lines.find("DTEND")) &&
         (!item.recurrenceId || lines.find("RECURRENCE-ID")) && (!hasDue || lines.find("DUE"));
}

std::optional<std::size_t> calendarAround(const ComponentTree& tree, std::size_t component) {
  std::optional<std::size_t> around = tree.components()[component].parent;
  while (around && !tree.isNamed(*around, "VCALENDAR")) around = tree.components()[*around].parent;
  return around;
}

}  // namespace

CalendarFile::CalendarFile(std::string_view text, std::string_view fileName)
    : tree_(text),
      isInterrupted_(tree_.components().size()),
      calendar_(readCalendar(text, fileName)),
      fileName_(fileName) {
  for (std::size_t at = 0; at < calendar_.items.size(); ++at) {
    itemAt_.emplace(calendar_.begins[at], calendar_.items[at].get());
  }
  findInterrupted();
}

void CalendarFile::findInterrupted() {
  for (std::size_t at = 0; at < tree_.components().size(); ++at) {
    if (!isItem(at, std::nullopt)) continue;
    // What is marked has marked all that it stands in.
    for (auto around = tree_.components()[at].parent; around && !isInterrupted_[*around];
         around = tree_.components()[*around].parent) {
      isInterrupted_[*around] = true;
    }
  }
}

ItemFamily CalendarFile::family(ItemKind kind, std::string_view uid) const {
  ItemFamily family;
  for (std::size_t at = 0; at < tree_.components().size(); ++at) {
    if (!tree_.components()[at].isClosed) continue;
    const auto found = itemAt_.find(tree_.components()[at].begin);
    if (found == itemAt_.end()) continue;
    const Item& item = *found->second;
    if (item.kind != kind || item.uid() != uid || !isSameItem(tree_, at, item)) continue;
    const Entry entry{&item, at};
    if (item.recurrenceId) {
      family.overrides.push_back(entry);
    } else if (!family.master || countsBefore(item, *family.master->item)) {
      family.master = entry;
    }
  }
  return family;
}

std::vector<std::size_t> CalendarFile::componentsOf(std::string_view uid,
                                                    std::optional<ItemKind> kind) const {
  std::vector<std::size_t> found;
  for (std::size_t at = 0; at < tree_.components().size(); ++at) {
    const bool isWhole = tree_.components()[at].isClosed && !isInterrupted_[at];
    if (isWhole && isItem(at, kind) && uidOf(at) == uid) found.push_back(at);
  }
  return found;
}

bool CalendarFile::isItem(std::size_t component, std::optional<ItemKind> kind) const {
  if (kind) return tree_.isNamed(component, upperNameOf(*kind));
  return tree_.isNamed(component, "VEVENT") || tree_.isNamed(component, "VTODO") ||
         tree_.isNamed(component, "VJOURNAL");
}

std::string CalendarFile::uidOf(std::size_t component) const {
  std::string uid = readable(ownValue(tree_, component, "UID"));
  if (!uid.empty()) return uid;
  const auto item = itemAt_.find(tree_.components()[component].begin);
  return std::string(item == itemAt_.end() ? fileName_ : item->second->uid());
}

void FileEdit::replace(const ComponentEditor& editor) {
  if (editor.isChanged()) replacements_.push_back(editor.replacement());
}

void FileEdit::remove(std::size_t component) {
  const Component& gone = tree_.components()[component];
  replacements_.push_back({gone.begin, gone.end, {}});
  removed_.insert(component);
}

void FileEdit::insertAfter(std::size_t component, std::string text) {
  const Component& neighbour = tree_.components()[component];
  const std::size_t end = neighbour.end;
  if (!tree_.text().substr(0, end).ends_with('\n')) {
    text.insert(0, plainLineEnd(tree_, tree_.lines()[neighbour.firstLine]));
  }
  replacements_.push_back({end, end, std::move(text)});
}

void FileEdit::requireZone(std::size_t component, const std::string& tzid, UtcSeconds instant) {
  const auto calendar = calendarAround(tree_, component);
  if (!calendar) return;
  std::size_t place = *tree_.firstChild(*calendar);
  bool isFirst = true;
  for (std::size_t at = *calendar + 1; at < tree_.components()[*calendar].next;
       at = tree_.components()[at].next) {
    if (!tree_.isNamed(at, "VTIMEZONE")) continue;
    if (ownValue(tree_, at, "TZID") == tzid) return;
    place = at;
    isFirst = false;
  }
  const ContentLine& calendarBegin = tree_.lines()[tree_.components()[*calendar].firstLine];
  const std::string_view lineEnd = plainLineEnd(tree_, calendarBegin);
  const Component& neighbour = tree_.components()[place];
  const std::size_t position = isFirst ? neighbour.begin : neighbour.end;
  replacements_.push_back({position, position, vtimezoneText(tzid, instant, lineEnd)});
}

Edit FileEdit::finish() const {
  if (!removed_.empty() && isFrameAlone()) return {Edit::Outcome::empty, {}};
  return {Edit::Outcome::changed, replaced(tree_.text(), 0, tree_.text().size(), replacements_)};
}

bool FileEdit::isFrameAlone() const {
  // Lines outside every calendar are nobody's frame.
  std::size_t framedTo = 0;
  for (std::size_t at = 0; at < tree_.components().size();) {
    const Component& component = tree_.components()[at];
    if (!component.parent && component.firstLine != framedTo) return false;
    if (!component.parent) framedTo = component.endLine;
    if (removed_.contains(at) || tree_.isNamed(at, "VTIMEZONE")) {
      at = component.next;
    } else if (tree_.isNamed(at, "VCALENDAR")) {
      ++at;
    } else {
      return false;
    }
  }
  return framedTo == tree_.lines().size();
}

std::string fileOf(const ComponentTree& tree, const std::vector<std::size_t>& components,
                   const std::vector<std::string>& texts) {
  std::set<std::string_view> tzids;
  for (const std::size_t component : components) collectZones(tree, component, tzids);
  const ContentLine& first = tree.lines()[tree.components()[components.front()].firstLine];
  const std::string_view lineEnd = plainLineEnd(tree, first);

  std::string text = contentLine("BEGIN", "", "VCALENDAR", lineEnd);
  // The last line of the file may have no end.
  const auto addWhole = [&](std::string_view component) {
    text += component;
    if (!component.ends_with('\n')) text += lineEnd;
  };
  const auto calendar = calendarAround(tree, components.front());
  const auto frameLine = [&](std::string_view name, std::string_view standard) {
    const std::string_view own = calendar ? ownValue(tree, *calendar, name) : std::string_view();
    const std::string_view value = own.empty() ? standard : own;
    if (!value.empty()) text += contentLine(name, "", value, lineEnd);
  };
  frameLine("VERSION", "2.0");
  frameLine("PRODID", productIdentifier);
  frameLine("CALSCALE", {});
  for (std::size_t at = 0; at < tree.components().size(); ++at) {
    const Component& component = tree.components()[at];
    if (!component.isClosed || !tree.isNamed(at, "VTIMEZONE")) continue;
    if (tzids.contains(ownValue(tree, at, "TZID"))) addWhole(bytesOf(tree, component));
  }
  for (const std::string& one : texts) addWhole(one);
  return text + contentLine("END", "", "VCALENDAR", lineEnd);
}

}  // namespace tidemark::local
