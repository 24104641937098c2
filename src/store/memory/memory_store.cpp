#include "store/memory/memory_store.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <utility>

#include "store/canonical_text.h"
#include "store/local_dates.h"
#include "store/memory/memory_items.h"
#include "store/memory/task_thread.h"
#include "store/range.h"

namespace tidemark {
namespace {

constexpr Instant distantPast = std::chrono::sys_days{std::chrono::year{1} / 1 / 1};

// The texts reach the host as they stand.
constexpr const char* readOnly = "The calendar is read-only.";
constexpr const char* endBeforeStart = "The start date must be before the end date.";
constexpr const char* eventWithoutCalendar = "The event has no calendar.";
constexpr const char* reminderWithoutList = "The reminder has no list.";
constexpr const char* noSuchEvent = "The event does not exist.";
constexpr const char* noSuchReminder = "The reminder does not exist.";

bool rangeHolds(const EventPredicate& predicate, const MemoryEvent& event) {
  const Instant from = predicate.startDate;
  const Instant to = predicate.endDate;
  if (!event.startDate && !event.endDate) return from < to;
  const Instant start = event.startDate.value_or(distantPast);
  return rangeHoldsEvent(from, to, start, event.endDate.value_or(start));
}

bool rangeHolds(const ReminderPredicate& predicate, const MemoryReminder& reminder) {
  std::optional<Instant> date;
  if (predicate.kind == ReminderPredicate::Kind::completedByCompletionDate) {
    if (reminder.isCompleted) date = reminder.completionDate;
  } else if (!reminder.isCompleted && reminder.dueDateComponents) {
    date = instantOf(*reminder.dueDateComponents);
  }
  return date && rangeHoldsDate(predicate.starting, predicate.ending, *date);
}

// By identifier, since an outside change may have put other objects in the calendars' place.
bool selectionHolds(const CalendarSelection& selection, const CalendarRef& calendar) {
  if (!selection) return true;
  return calendar &&
         std::any_of(selection->begin(), selection->end(), [&](const CalendarRef& selected) {
           return canonicallyEqual(selected->calendarIdentifier, calendar->calendarIdentifier);
         });
}

bool isReadOnly(const CalendarRef& calendar) {
  return calendar && !calendar->allowsContentModifications;
}

template <typename Entry>
auto entryWithHandle(std::vector<Entry>& entries, std::uint64_t handle) {
  return std::find_if(entries.begin(), entries.end(),
                      [&](const Entry& entry) { return handle != 0 && entry.handle == handle; });
}

class Memory final : public MemoryStore {
 public:
  explicit Memory(MemoryContents contents) : contents_(std::move(contents)) { numberEntries(); }

  AuthorizationStatus authorizationStatusForEntityType(EntityType type) const override {
    std::lock_guard guard(lock_);
    return type == EntityType::event ? contents_.eventsStatus : contents_.remindersStatus;
  }

  void requestFullAccessToEvents(AccessCompletion completion) override {
    requestAccess(&MemoryContents::eventsStatus, std::move(completion));
  }
  void requestFullAccessToReminders(AccessCompletion completion) override {
    requestAccess(&MemoryContents::remindersStatus, std::move(completion));
  }
  void reset() override {}  // nothing is remembered beside the contents

  std::vector<CalendarRef> calendarsForEntityType(EntityType type) override {
    std::lock_guard guard(lock_);
    return type == EntityType::event ? contents_.eventCalendars : contents_.remindersLists;
  }
  CalendarRef defaultCalendarForNewEvents() override {
    std::lock_guard guard(lock_);
    return contents_.defaultCalendarForNewEvents;
  }
  CalendarRef defaultCalendarForNewReminders() override {
    std::lock_guard guard(lock_);
    return contents_.defaultCalendarForNewReminders;
  }

  std::vector<EventRef> eventsMatchingPredicate(const EventPredicate& predicate) override {
    std::lock_guard guard(lock_);
    std::vector<EventRef> found;
    for (const MemoryEvent& event : contents_.events) {
      if (rangeHolds(predicate, event) && selectionHolds(predicate.calendars, event.calendar)) {
        found.push_back(std::make_shared<MemoryEventItem>(event));
      }
    }
    return found;
  }
  EventRef eventWithIdentifier(std::string_view identifier) override {
    std::lock_guard guard(lock_);
    for (const MemoryEvent& event : contents_.events) {
      if (event.eventIdentifier && canonicallyEqual(*event.eventIdentifier, identifier)) {
        return std::make_shared<MemoryEventItem>(event);
      }
    }
    return nullptr;
  }
  EventRef newEvent() override { return std::make_shared<MemoryEventItem>(MemoryEvent{}); }
  StoreResult saveEvent(Event& event) override;
  StoreResult removeEvent(Event& event) override;

  void fetchRemindersMatchingPredicate(const ReminderPredicate& predicate,
                                       ReminderCompletion completion) override;
  ReminderRef calendarItemWithIdentifier(std::string_view identifier) override {
    std::lock_guard guard(lock_);
    for (const MemoryReminder& reminder : contents_.reminders) {
      if (canonicallyEqual(reminder.calendarItemIdentifier, identifier)) {
        return std::make_shared<MemoryReminderItem>(reminder);
      }
    }
    return nullptr;
  }
  ReminderRef newReminder() override {
    return std::make_shared<MemoryReminderItem>(MemoryReminder{});
  }
  StoreResult saveReminder(Reminder& reminder) override;
  StoreResult removeReminder(Reminder& reminder) override;

  void setChangeObserver(std::function<void()> observer) override {
    observer_ = std::move(observer);
  }
  [[noreturn]] void run() override;

  void change(const std::function<void(MemoryContents&)>& edit) override {
    {
      std::lock_guard guard(lock_);
      edit(contents_);
      numberEntries();
    }
    postChangeNotification();
  }

 private:
  void requestAccess(AuthorizationStatus MemoryContents::*status, AccessCompletion completion);
  void postChangeNotification();
  // These are called with lock_ held.
  void numberEntries();
  Instant tick() {
    ++saves_;
    return contents_.start + std::chrono::seconds(saves_);
  }

  mutable std::mutex lock_;
  MemoryContents contents_;  // this and the counters: under lock_
  std::uint64_t lastHandle_ = 0;
  std::int64_t saves_ = 0;
  int newEvents_ = 0;
  int newReminders_ = 0;

  std::function<void()> observer_;  // constant from run on
  std::mutex notificationLock_;
  std::condition_variable notificationPosted_;
  std::size_t notifications_ = 0;  // under notificationLock_

  // Last, so that no task runs while the members above go. Each kind of fetch has its own thread:
  // the two of one request do complete at the same time.
  TaskThread accessThread_;
  std::array<TaskThread, 2> fetchThreads_;
};

void Memory::requestAccess(AuthorizationStatus MemoryContents::*status,
                           AccessCompletion completion) {
  accessThread_.post([this, status, completion = std::move(completion)] {
    AccessResult result;
    {
      std::lock_guard guard(lock_);
      if (contents_.*status == notDetermined) contents_.*status = fullAccess;
      result.granted = contents_.*status == fullAccess;
    }
    completion(std::move(result));
  });
}

StoreResult Memory::saveEvent(Event& event) {
  auto& item = static_cast<MemoryEventItem&>(event);
  MemoryEvent values = item.values();
  const bool isNew = values.handle == 0;
  {
    std::lock_guard guard(lock_);
    const auto entry = entryWithHandle(contents_.events, values.handle);
    if (!isNew && entry == contents_.events.end()) return StoreResult::failure(noSuchEvent);
    if (!values.calendar) return StoreResult::failure(eventWithoutCalendar);
    // A move takes the item out of one calendar and puts it into another: both are written.
    if (isReadOnly(values.calendar) || (!isNew && isReadOnly(entry->calendar))) {
      return StoreResult::failure(readOnly);
    }
    if (values.startDate && values.endDate && *values.endDate < *values.startDate) {
      return StoreResult::failure(endBeforeStart);
    }
    values.lastModifiedDate = tick();
    if (isNew) {
      values.handle = ++lastHandle_;
      values.eventIdentifier = "new-" + std::to_string(++newEvents_);
      values.occurrenceDate = values.startDate;
      contents_.events.push_back(values);
    } else {
      *entry = values;
    }
  }
  item.setValues(std::move(values));
  postChangeNotification();
  return StoreResult::success();
}

StoreResult Memory::removeEvent(Event& event) {
  {
    std::lock_guard guard(lock_);
    const auto entry =
        entryWithHandle(contents_.events, static_cast<MemoryEventItem&>(event).values().handle);
    if (entry == contents_.events.end()) return StoreResult::failure(noSuchEvent);
    if (isReadOnly(entry->calendar)) return StoreResult::failure(readOnly);
    contents_.events.erase(entry);
  }
  postChangeNotification();
  return StoreResult::success();
}

void Memory::fetchRemindersMatchingPredicate(const ReminderPredicate& predicate,
                                             ReminderCompletion completion) {
  std::vector<ReminderRef> found;
  {
    std::lock_guard guard(lock_);
    for (const MemoryReminder& reminder : contents_.reminders) {
      if (rangeHolds(predicate, reminder) &&
          selectionHolds(predicate.calendars, reminder.calendar)) {
        found.push_back(std::make_shared<MemoryReminderItem>(reminder));
      }
    }
  }
  const auto kind = static_cast<std::size_t>(predicate.kind);
  fetchThreads_[kind].post(
      [found = std::move(found), completion = std::move(completion)] { completion(found); });
}

StoreResult Memory::saveReminder(Reminder& reminder) {
  auto& item = static_cast<MemoryReminderItem&>(reminder);
  MemoryReminder values = item.values();
  const bool isNew = values.handle == 0;
  {
    std::lock_guard guard(lock_);
    const auto entry = entryWithHandle(contents_.reminders, values.handle);
    if (!isNew && entry == contents_.reminders.end()) return StoreResult::failure(noSuchReminder);
    if (!values.calendar) return StoreResult::failure(reminderWithoutList);
    // A move takes the item out of one calendar and puts it into another: both are written.
    if (isReadOnly(values.calendar) || (!isNew && isReadOnly(entry->calendar))) {
      return StoreResult::failure(readOnly);
    }
    const Instant now = tick();
    const bool wasCompleted = !isNew && entry->isCompleted;
    if (!values.isCompleted) {
      values.completionDate.reset();
    } else if (!wasCompleted) {
      values.completionDate = now;
    }
    if (isNew) {
      values.handle = ++lastHandle_;
      values.calendarItemIdentifier = "new-reminder-" + std::to_string(++newReminders_);
      contents_.reminders.push_back(values);
    } else {
      *entry = values;
    }
  }
  item.setValues(std::move(values));
  postChangeNotification();
  return StoreResult::success();
}

StoreResult Memory::removeReminder(Reminder& reminder) {
  {
    std::lock_guard guard(lock_);
    const auto entry = entryWithHandle(contents_.reminders,
                                       static_cast<MemoryReminderItem&>(reminder).values().handle);
    if (entry == contents_.reminders.end()) return StoreResult::failure(noSuchReminder);
    if (isReadOnly(entry->calendar)) return StoreResult::failure(readOnly);
    contents_.reminders.erase(entry);
  }
  postChangeNotification();
  return StoreResult::success();
}

void Memory::run() {
  std::unique_lock guard(notificationLock_);
  while (true) {
    notificationPosted_.wait(guard, [this] { return notifications_ > 0; });
    --notifications_;
    guard.unlock();
    if (observer_) observer_();
    guard.lock();
  }
}

void Memory::postChangeNotification() {
  {
    std::lock_guard guard(notificationLock_);
    ++notifications_;
  }
  notificationPosted_.notify_one();
}

void Memory::numberEntries() {
  const auto number = [this](auto& entry) {
    if (entry.handle == 0) entry.handle = ++lastHandle_;
  };
  std::for_each(contents_.events.begin(), contents_.events.end(), number);
  std::for_each(contents_.reminders.begin(), contents_.reminders.end(), number);
}

}  // namespace

std::unique_ptr<MemoryStore> makeMemoryStore(MemoryContents contents) {
  return std::make_unique<Memory>(std::move(contents));
}

}  // namespace tidemark
