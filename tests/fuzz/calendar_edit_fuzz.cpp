// The text of an .ics file through the reader, a change of one of its items through the editor, and
// the reader again. What was changed reads back; the same change once more changes nothing; all
// else keeps its lines, its bytes and its order. The first three bytes of the data choose the item
// and the change, the rest is the file.
#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "fuzz_check.h"
#include "store/local/editor/calendar_editor.h"
#include "store/local/recurrence/recurrence.h"
#include "store/local/text/calendar_reader.h"

namespace {

using namespace tidemark;
using namespace tidemark::local;

constexpr std::string_view fileName = "file.ics";
constexpr UtcSeconds now = 1'750'000'000;
constexpr UtcSeconds longAgo = -4'000'000'000;
constexpr UtcSeconds farAway = 8'000'000'000;
constexpr std::array<std::string_view, 4> texts = {
    "Plain", "Commas, semicolons; \\backslashes\\n: \"quotes\"", "Zwei\nZeilen mit Umläuten äöü 😀",
    "A line that is a good deal longer than the seventy-five octets "
    "at which lines are folded, ä"};
constexpr std::array<std::string_view, 12> changingInEvents = {
    "SUMMARY",  "DESCRIPTION", "LOCATION",      "URL",
    "DTSTART",  "DTEND",       "DURATION",      "TRANSP",
    "SEQUENCE", "DTSTAMP",     "LAST-MODIFIED", "X-MICROSOFT-CDO-BUSYSTATUS"};
constexpr std::array<std::string_view, 15> changingInTodos = {
    "SUMMARY",  "DESCRIPTION", "DUE",    "DTSTART",          "DURATION",
    "SEQUENCE", "DTSTAMP",     "STATUS", "COMPLETED",        "RRULE",
    "RDATE",    "EXDATE",      "EXRULE", "PERCENT-COMPLETE", "LAST-MODIFIED"};

struct Choice {
  std::uint8_t operation;
  std::uint8_t item;
  std::uint8_t fields;

  bool has(unsigned bit) const { return (fields >> bit & 1U) != 0; }
  std::string text(unsigned offset) const {
    return std::string(texts[(operation + offset) % texts.size()]);
  }
};

bool isSame(std::string_view one, std::string_view other) {
  return one == other && (one.data() == nullptr) == (other.data() == nullptr);
}

bool isSameMoment(const std::optional<Moment>& one, const std::optional<Moment>& other) {
  if (!one || !other) return !one && !other;
  return one->wall == other->wall && one->zone == other->zone && one->isDate == other->isDate;
}

bool isSameItem(const Item& one, const Item& other) {
  return isSame(one.title(), other.title()) && isSame(one.notes(), other.notes()) &&
         isSame(one.location(), other.location()) && isSame(one.url(), other.url()) &&
         isSameMoment(one.start, other.start) && isSameMoment(one.end, other.end) &&
         isSameMoment(one.recurrenceId, other.recurrenceId) && one.sequence == other.sequence &&
         one.availability == other.availability && !one.series == !other.series;
}

bool isOf(const Item& item, const Item& target) {
  return item.kind == target.kind && item.uid() == target.uid();
}

// Lines

std::string unfolded(std::string_view line) {
  std::string text;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] != '\n') {
      text += line[i];
      continue;
    }
    while (text.ends_with('\r')) text.pop_back();
    ++i;  // the blank after the line end
  }
  return text;
}

// The name of the property in capitals, without the group that may stand before it.
std::string nameOf(std::string_view unfoldedLine) {
  std::string name(unfoldedLine.substr(0, unfoldedLine.find_first_of(":;\r")));
  name.erase(0, name.rfind('.') + 1);
  for (char& letter : name) {
    if (letter >= 'a' && letter <= 'z') letter = static_cast<char>(letter - 'a' + 'A');
  }
  return name;
}

// The content lines, folded as they stand and without their ends.
std::vector<std::string> contentLines(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    std::size_t length = std::min(text.find('\n'), text.size());
    while (length + 1 < text.size() && (text[length + 1] == ' ' || text[length + 1] == '\t')) {
      length = std::min(text.find('\n', length + 1), text.size());
    }
    std::string line(text.substr(0, length));
    text.remove_prefix(std::min(length + 1, text.size()));
    if (line.ends_with('\r')) line.pop_back();
    lines.push_back(std::move(line));
  }
  return lines;
}

// Those that no change of such an item concerns.
std::vector<std::string> untouchableLines(std::string_view text, ItemKind kind) {
  std::vector<std::string> lines = contentLines(text);
  std::erase_if(lines, [&](const std::string& folded) {
    const std::string line = unfolded(folded);
    // One that says nothing comes to say what the item is called without it.
    if (nameOf(line) == "UID" && (line.ends_with(':') || line.find(':') == std::string::npos)) {
      return true;
    }
    const auto isAmong = [name = nameOf(line)](const auto& names) {
      return std::find(names.begin(), names.end(), name) != names.end();
    };
    return kind == ItemKind::event ? isAmong(changingInEvents) : isAmong(changingInTodos);
  });
  return lines;
}

// Every component ends before the one around it does, and no item contains another. (An item around
// another is passed over; it can be read once the inner one is removed, and so stays not as it
// was. One within a time zone takes part of that zone's text along when it goes.)
bool areItemsApart(std::string_view text) {
  std::vector<std::string> open;
  std::size_t openItems = 0;
  for (const std::string& folded : contentLines(text)) {
    const std::string line = unfolded(folded);
    const std::string name = nameOf(line);
    const std::string component = line.substr(std::min(line.size(), name.size() + 1));
    const bool isItem = nameOf(component) == "VEVENT" || nameOf(component) == "VTODO";
    if (name == "BEGIN") {
      if (isItem && ++openItems > 1) return false;
      if (isItem && std::find(open.begin(), open.end(), "VTIMEZONE") != open.end()) return false;
      open.push_back(component);
    } else if (name == "END") {
      if (open.empty() || open.back() != component) return false;
      if (isItem) --openItems;
      open.pop_back();
    }
  }
  return open.empty();
}

void checkLinesStay(std::string_view before, std::string_view after, ItemKind kind) {
  const std::vector<std::string> kept = untouchableLines(after, kind);
  auto place = kept.begin();
  for (const std::string& line : untouchableLines(before, kind)) {
    place = std::find(place, kept.end(), line);
    check(place != kept.end(), "a line that the change does not concern stays", line);
    ++place;
  }
}

// Items

// Several without a UID have more than the file's name, one that is left alone has that.
std::string_view lastingName(const Item& item) {
  const std::string_view uid = item.uid();
  return uid.starts_with(fileName) && uid.substr(fileName.size()).starts_with('/') ? fileName : uid;
}

void checkOthersStay(const CalendarText& before, const CalendarText& after, const Item& target) {
  // One that is equal in all that names it was hidden, and may be alone now.
  if (lastingName(target) != target.uid()) return;
  const auto others = [&](const CalendarText& calendar) {
    std::vector<const Item*> items;
    for (const auto& item : calendar.items) {
      if (!isOf(*item, target)) items.push_back(item.get());
    }
    return items;
  };
  const std::vector<const Item*> left = others(after);
  const std::vector<const Item*> were = others(before);
  check(std::equal(were.begin(), were.end(), left.begin(), left.end(),
                   [](const Item* one, const Item* other) {
                     return lastingName(*one) == lastingName(*other) && isSameItem(*one, *other);
                   }),
        "the other items read as before");
}

template <typename Holds>
void checkSomeReads(const CalendarText& after, const Item& target, const Holds& holds) {
  check(std::any_of(after.items.begin(), after.items.end(),
                    [&](const auto& item) { return isOf(*item, target) && holds(*item); }),
        "what was changed reads back", target.uid());
}

// Which occurrence is meant: the one that an override stands for, or one of a series' first three.
std::optional<UtcSeconds> chooseOccurrence(const Item& item, const Choice& choice) {
  if (item.recurrenceId) return item.recurrenceId->toUtc();
  if (!item.series || !anchorOf(item)) return std::nullopt;
  std::optional<UtcSeconds> chosen;
  int index = choice.fields % 3;
  forEachOccurrence(item, longAgo, farAway, [&](const Occurrence& occurrence) {
    chosen = occurrence.start.toUtc();
    return --index >= 0;
  });
  return chosen;
}

void changeAnEvent(std::string_view text, const CalendarText& before, const Item& event,
                   const Choice& choice) {
  EventChange change;
  if (choice.has(0)) change.title = choice.text(0);
  if (choice.has(1)) change.notes = choice.text(1);
  if (choice.has(2)) change.location = choice.text(2);
  if (choice.has(3)) change.url.emplace("https://example.org/new");
  if (choice.has(4)) change.availability = choice.operation / 4 % 4;
  if (choice.has(5)) change.start = 1'749'988'800, change.end = 1'749'992'400;
  if (choice.has(6)) change.isAllDay = choice.has(7);
  const ItemName name{std::string(event.uid()), chooseOccurrence(event, choice)};

  const Edit edit = changeEvent(text, fileName, name, change, now);
  check(edit.outcome != Edit::Outcome::empty, "a change leaves something");
  if (edit.outcome == Edit::Outcome::missing) return;
  const CalendarText after = readCalendar(edit.text, fileName);
  checkLinesStay(text, edit.text, ItemKind::event);
  checkOthersStay(before, after, event);
  check(!before.isWhole || after.isWhole, "a whole file stays whole");
  checkSomeReads(after, event, [&](const Item& item) {
    return (!change.title || item.title() == *change.title) &&
           (!change.notes || item.notes() == *change.notes) &&
           (!change.location || item.location() == *change.location) &&
           (!change.url || item.url() == **change.url) &&
           (!change.availability || item.availability == *change.availability) &&
           (!change.isAllDay || item.start->isDate == *change.isAllDay);
  });
  const bool changesTimes = change.start || change.isAllDay;
  if (!changesTimes) {
    const Edit again = changeEvent(edit.text, fileName, name, change, now + 1);
    check(again.text == edit.text, "the same change once more changes nothing", again.text);
  }
}

void removeAnEvent(std::string_view text, const CalendarText& before, const Item& event,
                   const Choice& choice) {
  const ItemName name{std::string(event.uid()),
                      choice.has(7) ? std::nullopt : chooseOccurrence(event, choice)};
  const Edit edit = removeEvent(text, fileName, name, now);
  if (edit.outcome == Edit::Outcome::missing) return;
  const CalendarText after = readCalendar(edit.text, fileName);
  checkOthersStay(before, after, event);
  for (const auto& item : after.items) {
    if (!isOf(*item, event)) continue;
    check(name.occurrence.has_value(), "a removed event is gone", edit.text);
    check(!item->recurrenceId || item->recurrenceId->toUtc() != *name.occurrence,
          "the override of a removed occurrence is gone", edit.text);
  }
}

void changeATodo(std::string_view text, const CalendarText& before, const Item& todo,
                 const Choice& choice) {
  TodoChange change;
  if (choice.has(0)) change.title = choice.text(0);
  if (choice.has(1)) change.notes.emplace(choice.text(1));
  if (choice.has(2)) change.due = DateComponents{2025, 6, 15, {}, {}, {}, {}};
  if (choice.has(3)) change.completed = choice.has(4);
  const ItemName name{std::string(todo.uid()),
                      choice.has(5) ? chooseOccurrence(todo, choice) : std::nullopt};

  const TodoEdit edit = changeTodo(text, fileName, name, change, now);
  check(edit.outcome != Edit::Outcome::empty, "a change leaves something");
  if (edit.outcome == Edit::Outcome::missing) return;
  const CalendarText after = readCalendar(edit.text, fileName);
  checkLinesStay(text, edit.text, ItemKind::todo);
  checkOthersStay(before, after, todo);
  checkSomeReads(after, todo, [&](const Item& item) {
    return (!change.title || item.title() == *change.title) &&
           (!change.notes || item.notes() == **change.notes);
  });
  if (edit.successor) {
    const CalendarText successor = readCalendar(edit.successor->text, fileName);
    check(successor.isWhole, "a successor is a whole file", edit.successor->text);
    check(successor.items.size() == 1 && successor.items[0]->uid() == edit.successor->uid,
          "a successor is one to-do of its own", edit.successor->text);
  }
}

void removeATodo(std::string_view text, const CalendarText& before, const Item& todo) {
  const Edit edit = removeTodo(text, fileName, {std::string(todo.uid()), {}}, now);
  if (edit.outcome == Edit::Outcome::missing) return;
  const CalendarText after = readCalendar(edit.text, fileName);
  checkOthersStay(before, after, todo);
  for (const auto& item : after.items) check(!isOf(*item, todo), "a removed to-do is gone");
}

// A move: what is taken out and what is left are the file.
void takeOut(std::string_view text, const CalendarText& before, const Item& item) {
  const CalendarText taken = readCalendar(extractItem(text, fileName, item.uid()), fileName);
  const CalendarText left = readCalendar(withoutItem(text, fileName, item.uid()).text, fileName);
  std::size_t places = 0;
  for (const auto& one : before.items) {
    if (one->uid() != item.uid()) continue;
    check(places < taken.items.size() && isSameItem(*one, *taken.items[places]),
          "an item that moves reads as before", item.uid());
    ++places;
  }
  for (const auto& one : left.items) check(one->uid() != item.uid(), "an item that moved is gone");
}

}  // namespace

int LLVMFuzzerInitialize(int*, char***) {
  ::setenv("TZ", "Europe/Berlin", 1);  // NOLINT(concurrency-mt-unsafe): the only thread
  return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 3) return 0;
  const Choice choice{data[0], data[1], data[2]};
  const std::string_view text = asText(data, size).substr(3);
  const CalendarText calendar = readCalendar(text, fileName);
  if (calendar.items.empty() || !areItemsApart(text)) return 0;
  const Item& item = *calendar.items[choice.item % calendar.items.size()];
  const bool isEvent = item.kind == ItemKind::event;
  switch (choice.operation % 4) {
    case 0:
    case 1:
      isEvent ? changeAnEvent(text, calendar, item, choice)
              : changeATodo(text, calendar, item, choice);
      break;
    case 2:
      isEvent ? removeAnEvent(text, calendar, item, choice) : removeATodo(text, calendar, item);
      break;
    default:
      takeOut(text, calendar, item);
  }
  return 0;
}
