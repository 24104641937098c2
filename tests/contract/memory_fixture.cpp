#include "tests/contract/memory_fixture.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace tidemark {

template <typename Edit>
void MemoryFixture::change(const Edit& edit) {
  if (store_) {
    store_->change(edit);
  } else {
    edit(seeds_);
  }
}

std::string MemoryFixture::addCalendar(const SeedCalendar& seed) {
  auto calendar = std::make_shared<Calendar>();
  calendar->calendarIdentifier = nextName("calendar");
  calendar->title = seed.title;
  calendar->source = Source{"Memory", 0};
  calendar->allowsContentModifications = seed.writable;
  calendars_.push_back(calendar);
  change([&](MemoryContents& contents) {
    const bool isEvent = seed.type == EntityType::event;
    (isEvent ? contents.eventCalendars : contents.remindersLists).push_back(calendar);
  });
  return calendar->calendarIdentifier;
}

std::string MemoryFixture::addEvent(const SeedEvent& seed) {
  MemoryEvent event;
  event.eventIdentifier = nextName("event");
  event.title = seed.title;
  event.calendar = calendarNamed(seed.calendar);
  event.hasRecurrenceRules = seed.days > 1;
  event.notes = seed.notes;
  event.location = seed.location;
  event.url = seed.url;
  if (seed.attendees) {
    event.attendees.emplace();
    for (const std::string& name : *seed.attendees) {
      event.attendees->push_back({name, "mailto:" + name + "@example.org"});
    }
  }
  change([&](MemoryContents& contents) {
    for (int day = 0; day < seed.days; ++day) {
      event.startDate = seed.start + std::chrono::days(day);
      event.endDate = seed.end + std::chrono::days(day);
      event.occurrenceDate = event.startDate;
      contents.events.push_back(event);
    }
  });
  return *event.eventIdentifier;
}

std::string MemoryFixture::addReminder(const SeedReminder& seed) {
  MemoryReminder reminder;
  reminder.calendarItemIdentifier = nextName("reminder");
  reminder.title = seed.title;
  reminder.calendar = calendarNamed(seed.list);
  reminder.isCompleted = seed.completed.has_value();
  reminder.completionDate = seed.completed;
  reminder.priority = seed.priority;
  reminder.dueDateComponents = seed.due;
  reminder.notes = seed.notes;
  change([&](MemoryContents& contents) { contents.reminders.push_back(reminder); });
  return reminder.calendarItemIdentifier;
}

void MemoryFixture::removeEvent(const std::string& identifier) {
  change([&](MemoryContents& contents) {
    std::erase_if(contents.events,
                  [&](const MemoryEvent& event) { return event.eventIdentifier == identifier; });
  });
}

Store& MemoryFixture::store() {
  if (!store_) {
    seeds_.start = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
    store_ = makeMemoryStore(std::move(seeds_));
  }
  return *store_;
}

CalendarRef MemoryFixture::calendarNamed(const std::string& identifier) const {
  const auto found = std::find_if(
      calendars_.begin(), calendars_.end(),
      [&](const CalendarRef& calendar) { return calendar->calendarIdentifier == identifier; });
  return found == calendars_.end() ? nullptr : *found;
}

std::string MemoryFixture::nextName(const char* kind) {
  return kind + std::string("-") + std::to_string(++named_);
}

}  // namespace tidemark
