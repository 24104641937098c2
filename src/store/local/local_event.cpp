#include "store/local/local_event.h"

#include <utility>

#include "store/local/text/instants.h"

namespace tidemark::local {
namespace {

// The text that was set, else the item's; its absence is a view of nothing.
std::optional<std::string_view> textOf(const std::optional<std::string>* edited,
                                       std::string_view fetched) {
  if (edited != nullptr && *edited) return **edited;
  return fetched.data() == nullptr ? std::nullopt : std::optional(fetched);
}

// The item, and of its texts what follows it in memory.
void prefetch(const Item& item) {
  constexpr std::size_t lineSize = 64;
  const auto* memory = reinterpret_cast<const char*>(&item);
  for (std::size_t line = 0; line < 12; ++line) __builtin_prefetch(memory + line * lineSize);
}

}  // namespace

std::optional<std::string_view> LocalEvent::eventIdentifier() const {
  if (next_ != nullptr) prefetch(*next_);
  return isNew() ? std::nullopt : std::optional(identifier_);
}

std::optional<std::string_view> LocalEvent::title() const {
  return textOf(edits_ ? &edits_->change.title : nullptr,
                isNew() ? std::string_view() : placed_.item->title());
}

const Calendar* LocalEvent::calendar() const {
  return edits_ && edits_->calendar ? edits_->calendar->get() : calendar_;
}

bool LocalEvent::isAllDay() const {
  if (edits_ && edits_->change.isAllDay) return *edits_->change.isAllDay;
  return !isNew() && placed_.item->start->isDate;
}

bool LocalEvent::hasRecurrenceRules() const {
  return placed_.repeats;
}

std::int64_t LocalEvent::availability() const {
  if (edits_ && edits_->change.availability) return *edits_->change.availability;
  return isNew() ? 0 : placed_.item->availability;
}

std::optional<Instant> LocalEvent::startDate() const {
  if (edits_ && edits_->change.start) return instantOf(*edits_->change.start);
  return isNew() ? std::nullopt : std::optional(instantOf(placed_.start));
}

std::optional<Instant> LocalEvent::endDate() const {
  if (edits_ && edits_->change.end) return instantOf(*edits_->change.end);
  return isNew() ? std::nullopt : std::optional(instantOf(placed_.end));
}

std::optional<Instant> LocalEvent::occurrenceDate() const {
  return isNew() ? std::nullopt : std::optional(instantOf(placed_.occurrence));
}

std::optional<Instant> LocalEvent::lastModifiedDate() const {
  if (isNew() || !placed_.item->lastModified) return std::nullopt;
  return instantOf(*placed_.item->lastModified);
}

std::optional<std::string_view> LocalEvent::notes() const {
  return textOf(edits_ ? &edits_->change.notes : nullptr,
                isNew() ? std::string_view() : placed_.item->notes());
}

std::optional<std::string_view> LocalEvent::url() const {
  if (edits_ && edits_->change.url) return *edits_->change.url;
  return textOf(nullptr, isNew() ? std::string_view() : placed_.item->url());
}

std::optional<std::string_view> LocalEvent::location() const {
  return textOf(edits_ ? &edits_->change.location : nullptr,
                isNew() ? std::string_view() : placed_.item->location());
}

std::optional<std::span<const Participant>> LocalEvent::attendees() const {
  if (isNew() || placed_.item->attendeeCount() == 0) return std::nullopt;
  if (attendees_.empty()) {
    attendees_.reserve(placed_.item->attendeeCount());
    placed_.item->forEachAttendee([this](const Attendee& attendee) {
      attendees_.push_back({attendee.name, attendee.address});
    });
  }
  return attendees_;
}

void LocalEvent::become(std::shared_ptr<const LocalEvent> saved) {
  placed_ = saved->placed_;
  calendar_ = saved->calendar_;
  identifier_ = saved->identifier_;
  edits_.reset();
  attendees_.clear();
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
}

void LocalEvent::setEndDate(Instant end) {
  edited().change.end = wholeSeconds(end);
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
