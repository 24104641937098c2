// The text of files with one new item.

#include "store/local/editor/availability.h"
#include "store/local/editor/calendar_editor.h"
#include "store/local/editor/calendar_file.h"
#include "store/local/editor/content_line_writer.h"
#include "store/local/editor/event_times.h"
#include "store/local/editor/time_form.h"
#include "store/local/editor/todo_due.h"
#include "store/local/editor/vtimezone_writer.h"

namespace tidemark::local {
namespace {

constexpr std::string_view lineEnd = "\r\n";

std::string line(std::string_view name, std::string_view value, std::string_view parameters = {}) {
  return contentLine(name, parameters, value, lineEnd);
}

std::string line(std::string_view name, const TimeText& time) {
  return line(name, time.value, time.parameters);
}

std::string textLine(std::string_view name, const std::optional<std::string>& text) {
  return text ? line(name, textValue(*text)) : std::string();
}

std::string identity(std::string_view uid, UtcSeconds now) {
  return line("UID", textValue(uid)) + line("DTSTAMP", utcText(now)) +
         line("CREATED", utcText(now)) + line("LAST-MODIFIED", utcText(now));
}

// A calendar with that component. `tzid` is empty where its times need no time zone.
std::string calendarOf(std::string_view component, const std::string& properties,
                       const std::string& tzid, UtcSeconds instant) {
  return line("BEGIN", "VCALENDAR") + line("VERSION", "2.0") + line("PRODID", productIdentifier) +
         (tzid.empty() ? std::string() : vtimezoneText(tzid, instant, lineEnd)) +
         line("BEGIN", component) + properties + line("END", component) + line("END", "VCALENDAR");
}

}  // namespace

std::string newEventText(std::string_view uid, const EventChange& event, UtcSeconds now) {
  const UtcSeconds start = event.start.value_or(now);
  const EventTimes times =
      eventTimes(start, event.end.value_or(start), event.isAllDay.value_or(false));
  const TimeForm form = times.isAllDay ? dateForm() : localForm(times.start);

  std::string properties = identity(uid, now) + line("DTSTART", timeText(form, times.start)) +
                           line("DTEND", endText(form, times)) + textLine("SUMMARY", event.title) +
                           textLine("LOCATION", event.location) +
                           textLine("DESCRIPTION", event.notes);
  if (event.url && *event.url) properties += line("URL", plainValue(**event.url));
  if (event.availability) {
    const Availability availability = availabilityOf(*event.availability);
    properties += line("TRANSP", availability.transparency);
    if (availability.needsBusyStatus) properties += line(busyStatusName, availability.busyStatus);
  }
  return calendarOf("VEVENT", properties, form.tzid, times.start);
}

std::string newTodoText(std::string_view uid, const TodoChange& todo, UtcSeconds now) {
  std::string properties = identity(uid, now) + textLine("SUMMARY", todo.title);
  if (todo.notes) properties += textLine("DESCRIPTION", *todo.notes);
  const auto due = todo.due ? dueText(*todo.due) : std::nullopt;
  if (due) properties += line("DUE", *due);
  if (todo.completed.value_or(false)) {
    properties += line("STATUS", "COMPLETED") + line("COMPLETED", utcText(now)) +
                  line("PERCENT-COMPLETE", "100");
  } else {
    properties += line("STATUS", "NEEDS-ACTION");
  }
  return calendarOf("VTODO", properties, due ? due->tzid : std::string(), now);
}

}  // namespace tidemark::local
