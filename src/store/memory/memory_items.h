// The events and reminders that the in-memory store gives out: copies of its entries, which setters
// change and a save writes back.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "store/memory/memory_store.h"
#include "store/store.h"

namespace tidemark {

class MemoryEventItem final : public Event {
 public:
  explicit MemoryEventItem(MemoryEvent values) : values_(std::move(values)) { viewAttendees(); }
  // The attendees are views into the values.
  MemoryEventItem(const MemoryEventItem&) = delete;
  MemoryEventItem& operator=(const MemoryEventItem&) = delete;

  const MemoryEvent& values() const { return values_; }
  void setValues(MemoryEvent values) {
    values_ = std::move(values);
    viewAttendees();
  }

  std::optional<std::string_view> eventIdentifier() const override {
    return values_.eventIdentifier;
  }
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
  std::optional<std::span<const Participant>> attendees() const override {
    if (!values_.attendees) return std::nullopt;
    return participants_;
  }

  void setTitle(std::string_view title) override { values_.title = title; }
  void setStartDate(Instant start) override { values_.startDate = start; }
  void setEndDate(Instant end) override { values_.endDate = end; }
  void setAllDay(bool allDay) override { values_.isAllDay = allDay; }
  void setNotes(std::string_view notes) override { values_.notes = notes; }
  void setLocation(std::string_view location) override { values_.location = location; }
  void setUrl(std::optional<std::string_view> url) override { values_.url = url; }
  void setAvailability(std::int64_t availability) override { values_.availability = availability; }
  void setCalendar(CalendarRef calendar) override { values_.calendar = std::move(calendar); }

 private:
  void viewAttendees() {
    participants_.clear();
    if (!values_.attendees) return;
    for (const MemoryAttendee& attendee : *values_.attendees) {
      participants_.push_back({attendee.name, attendee.url});
    }
  }

  MemoryEvent values_;
  std::vector<Participant> participants_;
};

class MemoryReminderItem final : public Reminder {
 public:
  explicit MemoryReminderItem(MemoryReminder values) : values_(std::move(values)) {}

  const MemoryReminder& values() const { return values_; }
  void setValues(MemoryReminder values) { values_ = std::move(values); }

  std::string_view calendarItemIdentifier() const override {
    return values_.calendarItemIdentifier;
  }
  std::optional<std::string_view> title() const override { return values_.title; }
  const Calendar* calendar() const override { return values_.calendar.get(); }
  bool isCompleted() const override { return values_.isCompleted; }
  std::int64_t priority() const override { return values_.priority; }
  std::optional<DateComponents> dueDateComponents() const override {
    return values_.dueDateComponents;
  }
  std::optional<std::string_view> notes() const override { return values_.notes; }

  void setTitle(std::string_view title) override { values_.title = title; }
  void setNotes(std::optional<std::string_view> notes) override { values_.notes = notes; }
  void setCalendar(CalendarRef list) override { values_.calendar = std::move(list); }
  void setDueDateComponents(const DateComponents& due) override { values_.dueDateComponents = due; }
  void setCompleted(bool completed) override { values_.isCompleted = completed; }

 private:
  MemoryReminder values_;
};

}  // namespace tidemark
