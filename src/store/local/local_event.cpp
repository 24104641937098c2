#include "store/local/local_event.h"

#include <utility>

#include "store/local/items/prefetch.h"
#include "store/local/text/instants.h"

namespace tidemark::local {
namespace {

// The text that was set, else the item's; its absence is a view of nothing.
std::optional<std::string_view> textOf(const std::optional<std::string>* edited,
                                       std::string_view fetched) {
  if (edited != nullptr && *edited) return **edited;
  return fetched.data() == nullptr ? std::nullopt : std::optional(fetched);
}

}  // namespace

LocalEvent::LocalEvent(const PlacedEvent& placed, const LocalCalendar& calendar,
                       std::string_view identifier, Participant* attendees)
    : item_(placed.item),
      calendar_(&calendar),
      identifier_(identifier),
      start_(instantOf(placed.start)),
      end_(instantOf(placed.end)),
      occurrence_(instantOf(placed.occurrence)),
      repeats_(placed.repeats),
      attendees_(attendees) {
  if (item_->lastModified) lastModified_ = instantOf(*item_->lastModified);
}

std::optional<std::string_view> LocalEvent::eventIdentifier() const {
  if (next_ != nullptr) prefetch(*next_, mostOfItem);
  return item_ == nullptr ? std::nullopt : std::optional(identifier_);
}

std::optional<std::string_view> LocalEvent::title() const {
  return textOf(edits_ ? &edits_->change.title : nullptr,
                item_ == nullptr ? std::string_view() : item_->title());
}

const Calendar* LocalEvent::calendar() const {
  return edits_ && edits_->calendar ? edits_->calendar->get() : calendar_;
}

bool LocalEvent::isAllDay() const {
  if (edits_ && edits_->change.isAllDay) return *edits_->change.isAllDay;
  return item_ != nullptr && item_->start->isDate;
}

bool LocalEvent::hasRecurrenceRules() const {
  return repeats_;
}

std::int64_t LocalEvent::availability() const {
  if (edits_ && edits_->change.availability) return *edits_->change.availability;
  return item_ == nullptr ? 0 : item_->availability;
}

std::optional<Instant> LocalEvent::startDate() const {
  return start_;
}

std::optional<Instant> LocalEvent::endDate() const {
  return end_;
}

std::optional<Instant> LocalEvent::occurrenceDate() const {
  return occurrence_;
}

std::optional<Instant> LocalEvent::lastModifiedDate() const {
  return lastModified_;
}

std::optional<std::string_view> LocalEvent::notes() const {
  return textOf(edits_ ? &edits_->change.notes : nullptr,
                item_ == nullptr ? std::string_view() : item_->notes());
}

std::optional<std::string_view> LocalEvent::url() const {
  if (edits_ && edits_->change.url) return *edits_->change.url;
  return textOf(nullptr, item_ == nullptr ? std::string_view() : item_->url());
}

std::optional<std::string_view> LocalEvent::location() const {
  return textOf(edits_ ? &edits_->change.location : nullptr,
                item_ == nullptr ? std::string_view() : item_->location());
}

std::optional<std::span<const Participant>> LocalEvent::attendees() const {
  if (item_ == nullptr || item_->attendeeCount() == 0) return std::nullopt;
  Participant* next = attendees_;
  item_->forEachAttendee([&next](const Attendee& attendee) {
    *next++ = {attendee.name, attendee.address};
  });
  return std::span<const Participant>(attendees_, next);
}

std::optional<UtcSeconds> LocalEvent::occurrence() const {
  if (item_ == nullptr || !(repeats_ || item_->recurrenceId)) return std::nullopt;
  return wholeSeconds(*occurrence_);
}

void LocalEvent::become(std::shared_ptr<const LocalEvent> saved) {
  item_ = saved->item_;
  calendar_ = saved->calendar_;
  identifier_ = saved->identifier_;
  start_ = saved->start_;
  end_ = saved->end_;
  occurrence_ = saved->occurrence_;
  lastModified_ = saved->lastModified_;
  repeats_ = saved->repeats_;
  attendees_ = saved->attendees_;
  edits_.reset();
  saved_ = std::move(saved);
}

EventEdits& LocalEvent::edited() {
  if (edits_ == nullptr) edits_ = std::make_unique<EventEdits>();
  return *edits_;
}

void LocalEvent::setTitle(std::string_view title) {
  edited().change.title = title;
}

void LocalEvent::setStartDate(Instant start) {
  edited().change.start = wholeSeconds(start);
  start_ = instantOf(*edits_->change.start);
}

void LocalEvent::setEndDate(Instant end) {
  edited().change.end = wholeSeconds(end);
  end_ = instantOf(*edits_->change.end);
}

void LocalEvent::setAllDay(bool allDay) {
  edited().change.isAllDay = allDay;
}

void LocalEvent::setNotes(std::string_view notes) {
  edited().change.notes = notes;
}

void LocalEvent::setLocation(std::string_view location) {
  edited().change.location = location;
}

void LocalEvent::setUrl(std::optional<std::string_view> url) {
  edited().change.url = url ? std::optional<std::string>(*url) : std::nullopt;
}

void LocalEvent::setAvailability(std::int64_t availability) {
  edited().change.availability = availability;
}

void LocalEvent::setCalendar(CalendarRef calendar) {
  edited().calendar = std::dynamic_pointer_cast<const LocalCalendar>(calendar);
}

}  // namespace tidemark::local
