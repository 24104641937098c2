#include "store/local/editor/todo_successor.h"

#include <absl/numeric/int128.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>

#include "store/local/editor/content_line_writer.h"
#include "store/local/editor/item_changes.h"
#include "store/local/editor/time_form.h"
#include "store/local/text/date_value.h"
#include "store/local/text/instants.h"
#include "store/local/text/todo.h"

namespace tidemark::local {
namespace {

// A UUID that follows from a name (RFC 9562, version 8), hashed with 128-bit FNV-1a.
std::string uuidOfName(std::string_view name) {
  absl::uint128 hash = absl::MakeUint128(0x6C62272E07BB0142, 0x62B821756295C58D);
  const absl::uint128 prime = absl::MakeUint128(0x0000000001000000, 0x000000000000013B);
  for (const char byte : name) hash = (hash ^ static_cast<unsigned char>(byte)) * prime;
  std::uint64_t high = absl::Uint128High64(hash);
  std::uint64_t low = absl::Uint128Low64(hash);
  high = (high & ~0xF000ULL) | 0x8000ULL;
  low = (low & ~(0b11ULL << 62)) | (0b10ULL << 62);
  char text[40];
  std::snprintf(text, sizeof text, "%08x-%04x-%04x-%04x-%012llx", static_cast<unsigned>(high >> 32),
                static_cast<unsigned>(high >> 16 & 0xFFFF), static_cast<unsigned>(high & 0xFFFF),
                static_cast<unsigned>(low >> 48),
                static_cast<unsigned long long>(low & 0xFFFFFFFFFFFF));
  return text;
}

std::string successorUid(const Item& master, const Moment& current) {
  return uuidOfName(std::string(master.uid()) + "\n" + utcText(current.toUtc()));
}

// Where the digits of a rule's COUNT stand in its value.
struct Count {
  std::size_t begin = 0;
  std::size_t size = 0;
  std::int64_t number = 0;
};

std::optional<Count> countOf(std::string_view rule) {
  for (std::size_t at = 0; at < rule.size();) {
    const std::size_t end = std::min(rule.find(';', at), rule.size());
    const std::string_view part = rule.substr(at, end - at);
    constexpr std::string_view key = "COUNT=";
    if (part.size() > key.size() && equalsIgnoringCase(part.substr(0, key.size()), key)) {
      if (const auto number = parseInteger(part.substr(key.size()))) {
        return Count{at + key.size(), part.size() - key.size(), *number};
      }
    }
    at = end + 1;
  }
  return std::nullopt;
}

// What one rule of a series gives, exceptions and other rules aside.
struct RulePast {
  std::int64_t before = 0;  // occurrences before the next one, the start included
  bool givesNext = false;
};

RulePast pastOf(const CalendarFile& file, const Entry& master, const ContentLine& rule,
                UtcSeconds next) {
  ComponentEditor alone(file.tree(), master.component);
  removeRecurrence(alone);
  alone.replace(rule, "RRULE", rule.parameters, rule.value);
  const std::string text = fileOf(file.tree(), {master.component}, {alone.text()});
  const CalendarText calendar = readCalendar(text, master.item->uid());
  RulePast past;
  if (calendar.items.empty()) return past;
  forEachOccurrence(*calendar.items.front(), firstInstant, next + 1, [&](const Occurrence& one) {
    past.givesNext = one.start.toUtc() == next;
    if (!past.givesNext) ++past.before;
    return true;
  });
  return past;
}

// Each COUNT loses the occurrences that are over. An occurrence that an RDATE gave is none of the
// rule's, but as the new start it counts as one.
void reduceCounts(ComponentEditor& editor, const CalendarFile& file, const Entry& master,
                  UtcSeconds next) {
  for (const ContentLine* const rule : editor.findAll("RRULE")) {
    const auto count = countOf(rule->value);
    if (!count) continue;
    const RulePast past = pastOf(file, master, *rule, next);
    const std::int64_t left = count->number - past.before;
    if (left <= 0) {
      editor.remove(*rule);
      continue;
    }
    std::string value(rule->value);
    value.replace(count->begin, count->size, std::to_string(past.givesNext ? left : left + 1));
    editor.replace(*rule, rule->name, rule->parameters, value);
  }
}

// The instant of one value of an RDATE line of the master.
std::optional<UtcSeconds> instantOf(const ContentLine& line, std::string_view value,
                                    const TimeForm& seriesForm) {
  const auto date = parseDateValue(value.substr(0, value.find('/')));
  if (!date) return std::nullopt;
  if (date->isUtc) return date->wall;
  const Zone* zone = &localZone();
  if (const auto tzid = parameterOf(line.parameters, "TZID"); tzid && !date->isDate) {
    const Zone* const known = *tzid == seriesForm.tzid ? seriesForm.zone : systemZone(*tzid);
    if (known) zone = known;
  }
  return zone->toUtc(date->wall);
}

// RDATEs that are over would come before the new start.
void removePastDates(ComponentEditor& editor, const TimeForm& seriesForm, UtcSeconds next) {
  for (const ContentLine* const line : editor.findAll("RDATE")) {
    std::string kept;
    for (std::size_t at = 0; at <= line->value.size();) {
      const std::size_t end = std::min(line->value.find(',', at), line->value.size());
      const std::string_view value = line->value.substr(at, end - at);
      const auto instant = instantOf(*line, value, seriesForm);
      if (!instant || *instant > next) {
        if (!kept.empty()) kept.push_back(',');
        kept.append(value);
      }
      at = end + 1;
    }
    if (kept.empty()) {
      editor.remove(*line);
    } else if (kept != line->value) {
      editor.replace(*line, line->name, line->parameters, kept);
    }
  }
}

void moveTimes(ComponentEditor& editor, const Item& master, const Moment& next) {
  const TimeText start = timeText(anchorForm(editor, master), next);
  if (!master.start) {
    setTime(editor, "DUE", start);
    return;
  }
  setTime(editor, "DTSTART", start);
  const ContentLine* const dueLine = editor.find("DUE");
  if (!dueLine || !master.todo->due) return;
  const TimeForm form = formOf(*dueLine, *master.todo->due);
  setTime(editor, "DUE", timeText(form, *dueOfOccurrence(master, next)));
}

// Alarms that go off at an instant of their own go off as long before the next occurrence.
void moveAlarms(ComponentEditor& editor, const Moment& current, const Moment& next) {
  const Component& component = editor.component();
  const auto firstLine = static_cast<std::ptrdiff_t>(component.firstLine);
  const auto endLine = static_cast<std::ptrdiff_t>(component.endLine);
  const auto& lines = editor.tree().lines();
  for (auto line = lines.begin() + firstLine; line != lines.begin() + endLine; ++line) {
    if (!equalsIgnoringCase(line->name, "TRIGGER")) continue;
    const auto trigger = parseDateValue(line->value);
    if (!trigger || !trigger->isUtc) continue;
    const WallSeconds moved = current.zone->toWall(trigger->wall) + (next.wall - current.wall);
    editor.replace(*line, line->name, line->parameters, utcText(current.zone->toUtc(moved)));
  }
}

// As a to-do that nobody has touched yet.
void reset(ComponentEditor& editor, UtcSeconds now) {
  if (editor.find("STATUS")) editor.setValue("STATUS", "NEEDS-ACTION");
  editor.removeAll("COMPLETED");
  editor.removeAll("PERCENT-COMPLETE");
  if (editor.find("SEQUENCE")) editor.setValue("SEQUENCE", "0");
  for (const std::string_view name : {"CREATED", "DTSTAMP", "LAST-MODIFIED"}) {
    setUtc(editor, name, now);
  }
}

}  // namespace

std::optional<Moment> openOccurrence(const ItemFamily& family, UtcSeconds from) {
  const auto found = family.firstOccurrence(from, [&](const Occurrence& one) {
    const auto override = family.overrideOf(one.start.toUtc());
    return !override || isOpen(*override->item->todo);
  });
  return found ? std::optional(found->start) : std::nullopt;
}

void startSeriesAt(ComponentEditor& editor, const CalendarFile& file, const Entry& master,
                   const Moment& occurrence) {
  const Moment anchor = *anchorOf(*master.item);
  reduceCounts(editor, file, master, occurrence.toUtc());
  removePastDates(editor, anchorForm(editor, *master.item), occurrence.toUtc());
  moveTimes(editor, *master.item, occurrence);
  moveAlarms(editor, anchor, occurrence);
}

std::optional<SuccessorPlan> planSuccessor(const CalendarFile& file, const ItemFamily& family,
                                           const Moment& current, UtcSeconds now) {
  const Entry& master = *family.master;
  const auto next = openOccurrence(family, current.toUtc() + 1);
  if (!next) return std::nullopt;

  SuccessorPlan plan;
  plan.successor.uid = successorUid(*master.item, current);
  ComponentEditor editor(file.tree(), master.component);
  editor.setValue("UID", plan.successor.uid);
  startSeriesAt(editor, file, master, *next);
  reset(editor, now);

  std::vector<std::size_t> components{master.component};
  std::vector<std::string> texts{editor.text()};
  for (const Entry& entry : family.overrides) {
    if (entry.item->recurrenceId->toUtc() < next->toUtc()) continue;
    ComponentEditor override(file.tree(), entry.component);
    override.setValue("UID", plan.successor.uid);
    components.push_back(entry.component);
    texts.push_back(override.text());
    plan.movedComponents.push_back(entry.component);
  }
  plan.successor.text = fileOf(file.tree(), components, texts);
  return plan;
}

}  // namespace tidemark::local
