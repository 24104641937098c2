#include "events/event_fields.h"

#include "codec/dates.h"
#include "events/calendars.h"
#include "events/loose_values.h"
#include "events/url_reference.h"
#include "host/failure.h"

namespace tidemark {
namespace {

void applyUrl(const std::string& text, Event& event) {
  // What is no URL removes it; the empty text is how a host says so.
  event.setUrl(isUrlReference(text) ? std::optional<std::string_view>(text) : std::nullopt);
}

void applyCalendar(const std::string& identifier, Event& event) {
  CalendarRef calendar = calendarWithId(identifier);
  if (!calendar) throw Failure("unknown calendar: " + identifier);
  if (!calendar->allowsContentModifications)
    throw Failure("calendar is read-only: " + calendar->title);
  event.setCalendar(std::move(calendar));
}

}  // namespace

void apply(const Request& request, Event& event) {
  if (const auto* title = stringField(request, "title")) event.setTitle(*title);
  if (const auto start = parseDate(request.find("start"))) event.setStartDate(*start);
  if (const auto end = parseDate(request.find("end"))) event.setEndDate(*end);
  if (const auto allDay = looseBoolean(request.find("isAllDay"))) event.setAllDay(*allDay);
  if (const auto* notes = stringField(request, "notes")) event.setNotes(*notes);
  if (const auto* location = stringField(request, "location")) event.setLocation(*location);
  if (const auto* url = stringField(request, "url")) applyUrl(*url, event);
  if (const auto availability = looseInteger(request.find("availability")))
    event.setAvailability(*availability);
  if (const auto* calendarId = stringField(request, "calendarId"))
    applyCalendar(*calendarId, event);

  const auto start = event.startDate();
  if (start && !event.endDate()) event.setEndDate(*start + defaultEventDuration);
}

}  // namespace tidemark
