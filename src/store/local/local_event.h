// Events as this store hands them out: views into an item that is kept alive, the occurrence that
// they are, and beside it what was set.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

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
  // The item, the calendar, `identifier` and `attendees`, which has room for those of the item, are
  // kept alive by whoever owns the event.
  LocalEvent(const PlacedEvent& placed, const LocalCalendar& calendar, std::string_view identifier,
             Participant* attendees);

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

  // The item of an event that is read soon after this one: the processor fetches it from memory
  // while this one is read. An answer's items stand wherever their files put them, and waiting for
  // each takes longer than writing it.
  void setNext(const Item& next) { next_ = &next; }

  // For whoever saves it. A new one has no item.
  const Item* item() const { return item_; }
  // Which occurrence of its series it is; absent for one that stands alone.
  std::optional<UtcSeconds> occurrence() const;
  // Where it was when it was fetched; null for a new one.
  const LocalCalendar* fetchedFrom() const { return calendar_; }
  const EventEdits* edits() const { return edits_.get(); }
  // Says from now on what `saved`, the same event as the store has it now, says.
  void become(std::shared_ptr<const LocalEvent> saved);

 private:
  EventEdits& edited();

  const Item* item_ = nullptr;
  const LocalCalendar* calendar_ = nullptr;
  std::string_view identifier_;
  // As they are handed out.
  std::optional<Instant> start_;
  std::optional<Instant> end_;
  std::optional<Instant> occurrence_;
  std::optional<Instant> lastModified_;
  bool repeats_ = false;
  const Item* next_ = nullptr;
  // Filled when they are asked for.
  Participant* attendees_ = nullptr;
  std::unique_ptr<EventEdits> edits_;
  // Owns what the views show, once the event was saved.
  std::shared_ptr<const LocalEvent> saved_;
};

}  // namespace tidemark::local
