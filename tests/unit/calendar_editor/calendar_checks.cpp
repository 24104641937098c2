#include "calendar_checks.h"

#include <algorithm>
#include <cctype>

#include "store/local/recurrence/recurrence.h"
#include "store/local/text/content_line.h"

namespace tidemark::local {
namespace {

// 1870 to 2280: more than any sample covers.
constexpr UtcSeconds distantPast = -3'155'673'600;
constexpr UtcSeconds distantFuture = 9'782'640'000;
constexpr std::size_t occurrencesCompared = 12;

std::string showText(std::string_view text) {
  return text.data() ? "'" + std::string(text) + "'" : "none";
}

std::string showMoment(const std::optional<Moment>& moment) {
  if (!moment) return "none";
  return std::to_string(moment->toUtc()) + (moment->isDate ? " date" : "") +
         (moment->isFloating ? " floating" : "");
}

std::string showInstant(const std::optional<UtcSeconds>& instant) {
  return instant ? std::to_string(*instant) : "none";
}

}  // namespace

std::vector<UtcSeconds> startsOf(const Item& item, std::size_t limit) {
  std::vector<UtcSeconds> starts;
  if (!anchorOf(item)) return starts;
  forEachOccurrence(item, distantPast, distantFuture, [&](const Occurrence& one) {
    starts.push_back(one.start.toUtc());
    return starts.size() < limit;
  });
  return starts;
}

Fields fieldsOf(const Item& item) {
  Fields fields;
  fields["uid"] = item.uid();
  fields["title"] = showText(item.title());
  fields["notes"] = showText(item.notes());
  fields["location"] = showText(item.location());
  fields["url"] = showText(item.url());
  fields["availability"] = std::to_string(item.availability);
  fields["recurrence id"] = showMoment(item.recurrenceId);
  fields["sequence"] = std::to_string(item.sequence);
  fields["last modified"] = showInstant(item.lastModified);
  item.forEachAttendee([&](const Attendee& attendee) {
    fields["attendees"] += std::string(attendee.address) + " ";
  });
  if (item.todo) {
    fields["start"] = showMoment(item.start);
    fields["due"] = showMoment(item.todo->due);
    fields["completed"] = showInstant(item.todo->completed);
    fields["status"] = std::to_string(static_cast<int>(item.todo->status));
    fields["percent"] = std::to_string(item.todo->percentComplete);
    fields["priority"] = std::to_string(item.todo->priority);
  } else {
    const Span span = spanOf(item);
    fields["start"] = std::to_string(span.start);
    fields["end"] = std::to_string(span.end);
    fields["all day"] = item.start->isDate ? "yes" : "no";
  }
  if (item.series) {
    for (const UtcSeconds start : startsOf(item, occurrencesCompared)) {
      fields["occurrences"] += std::to_string(start) + " ";
    }
  }
  return fields;
}

RawLines rawLinesOf(const std::string& text) {
  RawLines lines;
  ContentLineScanner scanner(text);
  std::size_t end = 0;
  while (const auto line = scanner.next()) {
    if (line->begin > end) lines.push_back({"", text.substr(end, line->begin - end)});
    RawLine raw{std::string(line->name), text.substr(line->begin, line->end - line->begin)};
    std::transform(raw.name.begin(), raw.name.end(), raw.name.begin(),
                   [](unsigned char byte) { return static_cast<char>(std::toupper(byte)); });
    lines.push_back(std::move(raw));
    end = line->end;
  }
  lines.push_back({"", text.substr(end)});
  return lines;
}

RawLines without(RawLines lines, const Names& names) {
  std::erase_if(lines, [&](const RawLine& line) { return names.contains(line.name); });
  return lines;
}

std::string textOf(const RawLines& lines) {
  std::string text;
  for (const RawLine& line : lines) text += line.bytes;
  return text;
}

Difference differenceOf(const std::string& before, const std::string& after) {
  Difference difference{rawLinesOf(before), rawLinesOf(after)};
  auto& [old, fresh] = difference;
  const auto begins = std::mismatch(old.begin(), old.end(), fresh.begin(), fresh.end());
  old.erase(old.begin(), begins.first);
  fresh.erase(fresh.begin(), begins.second);
  const auto ends = std::mismatch(old.rbegin(), old.rend(), fresh.rbegin(), fresh.rend());
  old.erase(ends.first.base(), old.end());
  fresh.erase(ends.second.base(), fresh.end());
  return difference;
}

}  // namespace tidemark::local
