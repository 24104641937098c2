// The in-memory store under the contract.
#include <algorithm>
#include <chrono>
#include <memory>
#include <utility>

#include "store/memory/memory_store.h"
#include "tests/contract/store_contract.h"

namespace tidemark {
namespace {

class MemoryFixture final : public StoreFixture {
 public:
  std::string addCalendar(const SeedCalendar& seed) override {
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

  std::string addEvent(const SeedEvent& seed) override {
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

  std::string addReminder(const SeedReminder& seed) override {
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

  void removeEvent(const std::string& identifier) override {
    change([&](MemoryContents& contents) {
      std::erase_if(contents.events,
                    [&](const MemoryEvent& event) { return event.eventIdentifier == identifier; });
    });
  }

  Store& store() override {
    if (!store_) {
      seeds_.start = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
      store_ = makeMemoryStore(std::move(seeds_));
    }
    return *store_;
  }

 private:
  template <typename Edit>
  void change(const Edit& edit) {
    if (store_) {
      store_->change(edit);
    } else {
      edit(seeds_);
    }
  }

  CalendarRef calendarNamed(const std::string& identifier) const {
    const auto found = std::find_if(
        calendars_.begin(), calendars_.end(),
        [&](const CalendarRef& calendar) { return calendar->calendarIdentifier == identifier; });
    return found == calendars_.end() ? nullptr : *found;
  }

  std::string nextName(const char* kind) {
    return kind + std::string("-") + std::to_string(++named_);
  }

  MemoryContents seeds_;
  std::vector<CalendarRef> calendars_;
  int named_ = 0;
  std::unique_ptr<MemoryStore> store_;
};

const StoreForm memory{"memory", [] { return std::make_unique<MemoryFixture>(); }};

}  // namespace

INSTANTIATE_TEST_SUITE_P(Memory, StoreContract, testing::Values(memory));

}  // namespace tidemark
