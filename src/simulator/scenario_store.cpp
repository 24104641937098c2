#include "simulator/scenario_store.h"

#include <array>
#include <atomic>
#include <chrono>
#include <utility>

#include "store/memory/task_thread.h"

namespace tidemark {
namespace {

constexpr std::size_t index(EntityType type) {
  return static_cast<std::size_t>(type);
}

class ScenarioStore final : public Store {
 public:
  explicit ScenarioStore(Scenario scenario)
      : scenario_(std::move(scenario)),
        status_{scenario_.contents.eventsStatus, scenario_.contents.remindersStatus},
        inner_(makeMemoryStore(std::move(scenario_.contents))) {
    for (const ScenarioChange& change : scenario_.changes) {
      changesThread_.post([this, count = change.count] { announceChanges(count); }, change.after);
    }
  }

  AuthorizationStatus authorizationStatusForEntityType(EntityType type) const override {
    return status_[index(type)];
  }
  void requestFullAccessToEvents(AccessCompletion completion) override {
    requestAccess(EntityType::event, scenario_.eventsAccess, std::move(completion));
  }
  void requestFullAccessToReminders(AccessCompletion completion) override {
    requestAccess(EntityType::reminder, scenario_.remindersAccess, std::move(completion));
  }
  void reset() override { inner_->reset(); }

  std::vector<CalendarRef> calendarsForEntityType(EntityType type) override {
    return inner_->calendarsForEntityType(type);
  }
  CalendarRef defaultCalendarForNewEvents() override {
    return inner_->defaultCalendarForNewEvents();
  }
  CalendarRef defaultCalendarForNewReminders() override {
    return inner_->defaultCalendarForNewReminders();
  }

  std::vector<EventRef> eventsMatchingPredicate(const EventPredicate& predicate) override {
    return inner_->eventsMatchingPredicate(predicate);
  }
  EventRef eventWithIdentifier(std::string_view identifier) override {
    return inner_->eventWithIdentifier(identifier);
  }
  EventRef newEvent() override { return inner_->newEvent(); }
  StoreResult saveEvent(Event& event) override {
    if (scenario_.saveEventFailure) return StoreResult::failure(*scenario_.saveEventFailure);
    return inner_->saveEvent(event);
  }
  StoreResult removeEvent(Event& event) override {
    if (scenario_.removeEventFailure) return StoreResult::failure(*scenario_.removeEventFailure);
    return inner_->removeEvent(event);
  }

  void fetchRemindersMatchingPredicate(const ReminderPredicate& predicate,
                                       ReminderCompletion completion) override;
  ReminderRef calendarItemWithIdentifier(std::string_view identifier) override {
    return inner_->calendarItemWithIdentifier(identifier);
  }
  ReminderRef newReminder() override { return inner_->newReminder(); }
  StoreResult saveReminder(Reminder& reminder) override {
    if (scenario_.saveReminderFailure) return StoreResult::failure(*scenario_.saveReminderFailure);
    return inner_->saveReminder(reminder);
  }
  StoreResult removeReminder(Reminder& reminder) override {
    if (scenario_.removeReminderFailure) {
      return StoreResult::failure(*scenario_.removeReminderFailure);
    }
    return inner_->removeReminder(reminder);
  }

  void setChangeObserver(std::function<void()> observer) override {
    inner_->setChangeObserver(std::move(observer));
  }
  [[noreturn]] void run() override {
    while (true) inner_->run();
  }

 private:
  void requestAccess(EntityType type, const ScenarioAccess& access, AccessCompletion completion);
  void announceChanges(int count);

  const Scenario scenario_;  // but for the contents, which the inner store has
  std::array<std::atomic<AuthorizationStatus>, 2> status_;
  const std::unique_ptr<MemoryStore> inner_;

  // Last, so that no task runs while the members above go. What the platform may do at the same
  // time has a thread each.
  std::array<TaskThread, 2> accessThreads_;
  std::array<TaskThread, 2> fetchThreads_;
  TaskThread changesThread_;
};

void ScenarioStore::requestAccess(EntityType type, const ScenarioAccess& access,
                                  AccessCompletion completion) {
  accessThreads_[index(type)].post(
      [this, type, &access, completion = std::move(completion)] {
        status_[index(type)] = access.status;
        completion(access.result);
      },
      access.delay);
}

void ScenarioStore::fetchRemindersMatchingPredicate(const ReminderPredicate& predicate,
                                                    ReminderCompletion completion) {
  const bool incomplete = predicate.kind == ReminderPredicate::Kind::incompleteByDueDate;
  const ScenarioFetch& fetch = incomplete ? scenario_.incompleteFetch : scenario_.completedFetch;
  fetchThreads_[incomplete ? 0 : 1].post(
      [this, predicate, &fetch, completion = std::move(completion)] {
        if (fetch.none) {
          completion(std::nullopt);
        } else {
          inner_->fetchRemindersMatchingPredicate(predicate, completion);
        }
      },
      fetch.delay);
}

void ScenarioStore::announceChanges(int count) {
  for (int i = 0; i < count; ++i) {
    inner_->change([](MemoryContents&) {});
  }
}

}  // namespace

std::unique_ptr<Store> makeScenarioStore(Scenario scenario) {
  using namespace std::chrono;
  // Whole seconds, as dates are on the wire.
  scenario.contents.start = floor<seconds>(system_clock::now());
  return std::make_unique<ScenarioStore>(std::move(scenario));
}

}  // namespace tidemark
