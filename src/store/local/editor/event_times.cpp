#include "store/local/editor/event_times.h"

#include "store/local/text/civil.h"

namespace tidemark::local {
namespace {

WallSeconds midnightOf(UtcSeconds instant) {
  return dayOf(localZone().toWall(instant)) * secondsPerDay;
}

// Whether the item's DTEND or DURATION, or their absence, makes it end then when it starts at
// `start`.
bool endsThen(const Item& item, const Moment& start, const EventTimes& times) {
  if (item.end && item.end->isDate != times.isAllDay) return false;
  if (item.duration && times.isAllDay && item.duration->seconds != 0) return false;
  ItemProperties probe;
  probe.start = start;
  probe.end = item.end;
  if (item.duration) probe.duration = std::make_unique<const Duration>(*item.duration);
  return spanOf(probe).end == times.end;
}

}  // namespace

EventTimes eventTimes(UtcSeconds start, UtcSeconds end, bool isAllDay) {
  if (!isAllDay) return {start, end, false};
  const Zone& zone = localZone();
  const WallSeconds first = midnightOf(start);
  WallSeconds last = midnightOf(end);
  if (end > start && zone.toUtc(last) == end) last -= secondsPerDay;
  if (last < first) last = first;
  return {zone.toUtc(first), zone.toUtc(last + secondsPerDay) - 1, true};
}

TimeText endText(const TimeForm& form, const EventTimes& times) {
  if (!times.isAllDay) return timeText(form, times.end);
  return timeTextOfWall(form, midnightOf(times.end) + secondsPerDay);
}

std::string writeTimes(ComponentEditor& editor, const Item& item, const EventTimes& times) {
  const ContentLine& startLine = *editor.find("DTSTART");
  TimeForm form = formOf(startLine, *item.start);
  std::string newZone;
  if (times.isAllDay && !item.start->isDate) {
    form = dateForm();
  } else if (!times.isAllDay && item.start->isDate) {
    form = localForm(times.start);
    newZone = form.tzid;
  }
  const TimeText start = timeText(form, times.start);
  setTime(editor, "DTSTART", start);
  if (endsThen(item, start.moment, times)) return newZone;

  const ContentLine* const endLine = editor.find("DTEND");
  if (item.end && item.end->isDate == times.isAllDay) form = formOf(*endLine, *item.end);
  const TimeText end = endText(form, times);
  const ContentLine* const durationLine = editor.find("DURATION");
  if (!endLine && durationLine) {
    editor.replace(*durationLine, "DTEND", end.parameters, end.value);
  } else {
    setTime(editor, "DTEND", end);
  }
  return newZone;
}

}  // namespace tidemark::local
