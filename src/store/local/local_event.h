// Events as this store hands them out: views into an item that is kept alive, the occurrence that
// they are, and beside it what was set.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "store/local/editor/calendar_editor.h"
#include "store/local/items/event_series.h"
#include "store/local/tree/collections.h"
#include "store/store.h"

namespace tidemark::local {

// What was set and not yet saved.
struct EventEdits {
  EventChange change;
  std::optional<LocalCalendarRef> calendar;
};

class LocalEvent final : public Event {
 public:
  // A new event.
  LocalEvent() = default;
  // `identifier`, the item and the calendar are kept alive by whoever owns the event.
  LocalEvent(const PlacedEvent& placed, const LocalCalendar& calendar, std::string_view identifier)
      : placed_(placed), calendar_(&calendar), identifier_(identifier) {}

  std::optional<std::string_view> eventIdentifier() const override;
  std::optional<std::string_view> title() const override;
  const Calendar* calendar() const override;
  bool isAllDay() const override;
  bool hasRecurrenceRules() const override;
  std::int64_t availability() const override;
  std::optional<Instant> startDate() const override;
  std::optional<Instant> endDate() const override;
  std::optional<Instant> occurrenceDate() const override;
  std::optional<Instant> lastModifiedDate() const override;
  std::optional<std::string_view> notes() const override;
  std::optional<std::string_view> url() const override;
  std::optional<std::string_view> location() const override;
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

  // The item of an object that is read soon after this one.
  void setNext(const Item& next) { next_ = &next; }

  // For whoever saves it.
  bool isNew() const { return placed_.item == nullptr; }
  const PlacedEvent& placed() const { return placed_; }
  // Where it was when it was fetched; null for a new one.
  const LocalCalendar* fetchedFrom() const { return calendar_; }
  const EventEdits* edits() const { return edits_.get(); }
  // Says from now on what `saved`, the same event as the store has it now, says.
  void become(std::shared_ptr<const LocalEvent> saved);

 private:
  EventEdits& edited();
  // Has the processor fetch the next item from memory while this one is read: an answer's items
  // stand wherever their files put them, and waiting for each takes longer than writing it.
  void prefetchNext() const;

  PlacedEvent placed_;
  const LocalCalendar* calendar_ = nullptr;
  std::string_view identifier_;
  const Item* next_ = nullptr;
  std::unique_ptr<EventEdits> edits_;
  // Made when they are asked for.
  mutable std::vector<Participant> attendees_;
  // Owns what the views show, once the event was saved.
  std::shared_ptr<const LocalEvent> saved_;
};

}  // namespace tidemark::local
