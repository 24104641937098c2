#include "store/eventkit/eventkit_event.h"

#include <chrono>
#include <cmath>

namespace tidemark {

EventKitEvent::EventKitEvent(Session& session, EKEvent* event, Origin origin,
                             CalendarsOfAnswer& calendars)
    : NativeItem(session, event, origin == Origin::made) {
  read(event, calendars);
  storedStart_ = values_.startDate;
}

std::optional<std::span<const Participant>> EventKitEvent::attendees() const {
  if (!values_.attendees) return std::nullopt;
  return participants_;
}

void EventKitEvent::setTitle(std::string_view title) {
  change([title = std::string(title)](EKEvent* event) { event.title = toNSString(title); });
}

void EventKitEvent::setStartDate(Instant start) {
  change([start](EKEvent* event) { event.startDate = toNSDate(start); });
}

void EventKitEvent::setEndDate(Instant end) {
  change([end](EKEvent* event) { event.endDate = toNSDate(end); });
}

void EventKitEvent::setAllDay(bool allDay) {
  change([allDay](EKEvent* event) { event.allDay = allDay; });
}

void EventKitEvent::setNotes(std::string_view notes) {
  change([notes = std::string(notes)](EKEvent* event) { event.notes = toNSString(notes); });
}

void EventKitEvent::setLocation(std::string_view location) {
  change([location = std::string(location)](EKEvent* event) {
    event.location = toNSString(location);
  });
}

void EventKitEvent::setUrl(std::optional<std::string_view> url) {
  const auto text = url ? std::optional<std::string>(*url) : std::nullopt;
  change(
      [text](EKEvent* event) { event.URL = text ? [NSURL URLWithString:toNSString(*text)] : nil; });
}

void EventKitEvent::setAvailability(std::int64_t availability) {
  // Any number goes to EventKit, which knows what it takes.
  change([availability](EKEvent* event) {
    event.availability = static_cast<EKEventAvailability>(availability);
  });
}

void EventKitEvent::setCalendar(CalendarRef calendar) {
  change([&session = session(), calendar](EKEvent* event) {
    event.calendar = nativeCalendar(session, calendar);
  });
}

void EventKitEvent::read(EKEvent* event) {
  CalendarsOfAnswer calendars(session());
  read(event, calendars);
}

void EventKitEvent::read(EKEvent* event, CalendarsOfAnswer& calendars) {
  Values values;
  values.identifier = optionalText(event.eventIdentifier);
  values.title = optionalText(event.title);
  values.notes = optionalText(event.notes);
  values.url = optionalText(event.URL.absoluteString);
  values.location = optionalText(event.location);
  values.calendar = calendars.of(event.calendar);
  values.isAllDay = event.isAllDay;
  values.hasRecurrenceRules = event.hasRecurrenceRules;
  values.availability = event.availability;
  values.startDate = instantOf(event.startDate);
  values.endDate = instantOf(event.endDate);
  values.occurrenceDate = instantOf(event.occurrenceDate);
  values.lastModifiedDate = instantOf(event.lastModifiedDate);
  if (NSArray<EKParticipant*>* const attendees = event.attendees; attendees != nil) {
    values.attendees.emplace();
    for (EKParticipant* attendee in attendees) {
      values.attendees->push_back(
          {optionalText(attendee.name), textOf(attendee.URL.absoluteString)});
    }
  }

  values_ = std::move(values);
  participants_.clear();
  if (!values_.attendees) return;
  for (const Attendee& attendee : *values_.attendees) {
    participants_.push_back({attendee.name, attendee.url});
  }
}

EKEvent* EventKitEvent::find() {
  EKEventStore* const events = session().events;
  if (isNew()) return [EKEvent eventWithEventStore:events];
  NSString* const identifier = toNSString(values_.identifier.value_or(""));
  if (!values_.hasRecurrenceRules || !storedStart_ || !values_.occurrenceDate) {
    return [events eventWithIdentifier:identifier];
  }
  // The identifier alone is that of the first occurrence.
  constexpr std::chrono::seconds tolerance{1};
  NSPredicate* const around =
      [events predicateForEventsWithStartDate:toNSDate(*storedStart_ - tolerance)
                                      endDate:toNSDate(*storedStart_ + tolerance)
                                    calendars:nil];
  for (EKEvent* event in [events eventsMatchingPredicate:around]) {
    const std::optional<Instant> occurrence = instantOf(event.occurrenceDate);
    if (occurrence && *occurrence == *values_.occurrenceDate &&
        [event.eventIdentifier isEqualToString:identifier]) {
      return event;
    }
  }
  return nil;
}

}  // namespace tidemark
