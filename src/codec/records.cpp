#include "codec/records.h"

#include <array>
#include <functional>

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
void addDate(JsonWriter& writer, const char (&key)[size], const std::optional<Instant>& date) {
  if (date) writer.plainMember(key, iso.format(*date).characters);
}

template <std::size_t size>
void addText(JsonWriter& writer, const char (&key)[size],
             const std::optional<std::string_view>& text) {
  if (text) writer.member(key, *text);
}

void addColor(JsonWriter& writer, const Calendar& calendar) {
  const std::optional<ColorText> color = hexColor(calendar.color);
  if (color) writer.plainMember("color", color->characters);
}

void addAttendees(JsonWriter& writer,
                  const std::optional<std::span<const Participant>>& attendees) {
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

void RecordEncoder::encode(const Calendar& calendar) {
  if (!calendar.source) stopOnBrokenInvariant();
  writer_.beginObject();
  writer_.member("id", calendar.calendarIdentifier);
  writer_.member("title", calendar.title);
  writer_.member("source", calendar.source->title);
  writer_.member("sourceType", sourceName(calendar.source->sourceType));
  writer_.member("writable", calendar.allowsContentModifications);
  addColor(writer_, calendar);
  writer_.endObject();
}

void RecordEncoder::encode(const Event& event) {
  // All is read before anything is written: calls of the store between the many small writes hold
  // the processor up.
  const Calendar& calendar = calendarOf(event);
  const auto identifier = event.eventIdentifier();
  const auto title = event.title();
  const bool isAllDay = event.isAllDay();
  const bool isRecurring = event.hasRecurrenceRules();
  const std::int64_t availability = event.availability();
  const auto start = event.startDate();
  const auto end = event.endDate();
  const auto occurrence = event.occurrenceDate();
  const auto lastModified = event.lastModifiedDate();
  const auto notes = event.notes();
  const auto url = event.url();
  const auto location = event.location();
  const auto attendees = event.attendees();

  writer_.beginObject();
  writer_.member("id", identifier.value_or(""));
  writer_.member("title", title.value_or(""));
  addCalendar(calendar, "calendarId", "calendar");
  writer_.member("isAllDay", isAllDay);
  writer_.member("isRecurring", isRecurring);
  writer_.member("availability", availability);
  addDate(writer_, "start", start);
  addDate(writer_, "end", end);
  addDate(writer_, "occurrence", occurrence);
  addDate(writer_, "lastModified", lastModified);
  addText(writer_, "notes", notes);
  addText(writer_, "url", url);
  addText(writer_, "location", location);
  addAttendees(writer_, attendees);
  writer_.endObject();
}

void RecordEncoder::encode(const Reminder& reminder) {
  const Calendar& list = calendarOf(reminder);
  const std::optional<DateComponents> due = reminder.dueDateComponents();
  writer_.beginObject();
  writer_.member("id", reminder.calendarItemIdentifier());
  writer_.member("title", reminder.title().value_or(""));
  addCalendar(list, "listId", "list");
  writer_.member("isCompleted", reminder.isCompleted());
  writer_.member("priority", reminder.priority());
  writer_.member("hasDueTime", due && due->hour);
  if (due) addDate(writer_, "dueDate", instantOf(*due));
  addText(writer_, "notes", reminder.notes());
  writer_.endObject();
}

template <std::size_t idSize, std::size_t titleSize>
void RecordEncoder::addCalendar(const Calendar& calendar, const char (&idKey)[idSize],
                                const char (&titleKey)[titleSize]) {
  CalendarMembers& written = written_[std::hash<const Calendar*>()(&calendar) % written_.size()];
  if (written.calendar == &calendar) {
    writer_.repeat(written.begin, written.end);
    return;
  }
  const std::size_t begin = writer_.size();
  writer_.member(idKey, calendar.calendarIdentifier);
  writer_.member(titleKey, calendar.title);
  writer_.member("writable", calendar.allowsContentModifications);
  addColor(writer_, calendar);
  written = {&calendar, begin, writer_.size()};
}

}  // namespace tidemark
