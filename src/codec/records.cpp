#include "codec/records.h"

#include <array>

#include "codec/color.h"
#include "codec/dates.h"
#include "store/invariant.h"
#include "store/local_dates.h"

namespace tidemark {
namespace {

template <typename Item>
const Calendar& calendarOf(const Item& item) {
  const Calendar* calendar = item.calendar();
  if (calendar == nullptr) stopOnBrokenInvariant();
  return *calendar;
}

// The keys are arrays, so that their length is known where they are copied.
template <std::size_t size>
void addDate(JsonWriter& writer, const char (&key)[size], std::optional<Instant> date) {
  if (date) writer.plainMember(key, iso.format(*date).characters);
}

template <std::size_t size>
void addText(JsonWriter& writer, const char (&key)[size], std::optional<std::string_view> text) {
  if (text) writer.member(key, *text);
}

void addColor(JsonWriter& writer, const Calendar& calendar) {
  const std::optional<ColorText> color = hexColor(calendar.color);
  if (color) writer.plainMember("color", color->characters);
}

void addAttendees(JsonWriter& writer, std::optional<std::span<const Participant>> attendees) {
  if (!attendees) return;
  writer.key("attendees");
  writer.beginArray();
  for (const Participant& attendee : *attendees) writer.value(attendee.name.value_or(attendee.url));
  writer.endArray();
}

}  // namespace

std::string_view sourceName(int sourceType) {
  constexpr std::array<std::string_view, 6> names = {"local",    "exchange",   "caldav",
                                                     "mobileme", "subscribed", "birthdays"};
  if (sourceType < 0 || static_cast<std::size_t>(sourceType) >= names.size()) return "unknown";
  return names[static_cast<std::size_t>(sourceType)];
}

void encode(const Calendar& calendar, JsonWriter& writer) {
  if (!calendar.source) stopOnBrokenInvariant();
  writer.beginObject();
  writer.member("id", calendar.calendarIdentifier);
  writer.member("title", calendar.title);
  writer.member("source", calendar.source->title);
  writer.member("sourceType", sourceName(calendar.source->sourceType));
  writer.member("writable", calendar.allowsContentModifications);
  addColor(writer, calendar);
  writer.endObject();
}

void encode(const Event& event, JsonWriter& writer) {
  const Calendar& calendar = calendarOf(event);
  writer.beginObject();
  writer.member("id", event.eventIdentifier().value_or(""));
  writer.member("title", event.title().value_or(""));
  writer.member("isAllDay", event.isAllDay());
  writer.member("calendarId", calendar.calendarIdentifier);
  writer.member("calendar", calendar.title);
  writer.member("isRecurring", event.hasRecurrenceRules());
  writer.member("writable", calendar.allowsContentModifications);
  writer.member("availability", event.availability());
  addDate(writer, "start", event.startDate());
  addDate(writer, "end", event.endDate());
  addDate(writer, "occurrence", event.occurrenceDate());
  addDate(writer, "lastModified", event.lastModifiedDate());
  addText(writer, "notes", event.notes());
  addText(writer, "url", event.url());
  addText(writer, "location", event.location());
  addColor(writer, calendar);
  addAttendees(writer, event.attendees());
  writer.endObject();
}

void encode(const Reminder& reminder, JsonWriter& writer) {
  const Calendar& list = calendarOf(reminder);
  const std::optional<DateComponents> due = reminder.dueDateComponents();
  writer.beginObject();
  writer.member("id", reminder.calendarItemIdentifier());
  writer.member("title", reminder.title().value_or(""));
  writer.member("listId", list.calendarIdentifier);
  writer.member("list", list.title);
  writer.member("isCompleted", reminder.isCompleted());
  writer.member("priority", reminder.priority());
  writer.member("hasDueTime", due && due->hour);
  writer.member("writable", list.allowsContentModifications);
  if (due) addDate(writer, "dueDate", instantOf(*due));
  addText(writer, "notes", reminder.notes());
  addColor(writer, list);
  writer.endObject();
}

}  // namespace tidemark
