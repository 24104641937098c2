// Events, or single occurrences, as EventKit gives them.
#pragma once

#import <EventKit/EventKit.h>

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "store/eventkit/eventkit_calendar.h"
#include "store/eventkit/native_item.h"
#include "store/store.h"

namespace tidemark {

class EventKitEvent final : public Event, public NativeItem<EKEvent> {
 public:
  enum class Origin { fetched, made };
  // With the session's lock held, in a pool. May raise what EventKit raises.
  EventKitEvent(Session& session, EKEvent* event, Origin origin, CalendarsOfAnswer& calendars);

  std::optional<std::string_view> eventIdentifier() const override { return values_.identifier; }
  std::optional<std::string_view> title() const override { return values_.title; }
  const Calendar* calendar() const override { return values_.calendar.get(); }
  bool isAllDay() const override { return values_.isAllDay; }
  bool hasRecurrenceRules() const override { return values_.hasRecurrenceRules; }
  std::int64_t availability() const override { return values_.availability; }
  std::optional<Instant> startDate() const override { return values_.startDate; }
  std::optional<Instant> endDate() const override { return values_.endDate; }
  std::optional<Instant> occurrenceDate() const override { return values_.occurrenceDate; }
  std::optional<Instant> lastModifiedDate() const override { return values_.lastModifiedDate; }
  std::optional<std::string_view> notes() const override { return values_.notes; }
  std::optional<std::string_view> url() const override { return values_.url; }
  std::optional<std::string_view> location() const override { return values_.location; }
  std::optional<std::span<const Participant>> attendees() const override;

  void setTitle(std::string_view title) override;
  void setStartDate(Instant start) override;
  void setEndDate(Instant end) override;
  void setAllDay(bool allDay) override;
  void setNotes(std::string_view notes) override;
  void setLocation(std::string_view location) override;
  void setUrl(std::optional<std::string_view> url) override;
  void setAvailability(std::int64_t availability) override;
  void setCalendar(CalendarRef calendar) override;

 private:
  struct Attendee {
    std::optional<std::string> name;
    std::string url;
  };
  struct Values {
    std::optional<std::string> identifier, title, notes, url, location;
    CalendarRef calendar;
    bool isAllDay = false;
    bool hasRecurrenceRules = false;
    std::int64_t availability = 0;
    std::optional<Instant> startDate, endDate, occurrenceDate, lastModifiedDate;
    std::optional<std::vector<Attendee>> attendees;
  };

  void read(EKEvent* event) override;
  void read(EKEvent* event, CalendarsOfAnswer& calendars);
  EKEvent* find() override;

  Values values_;
  std::vector<Participant> participants_;  // views of values_.attendees
  std::optional<Instant> storedStart_;     // where a query finds the occurrence
};

}  // namespace tidemark
