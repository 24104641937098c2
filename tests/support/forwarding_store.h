// A store that hands every call to another one. Tests derive from it to have a call or two fail,
// wait or be counted.
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "store/store.h"

namespace tidemark::test {

class ForwardingStore : public Store {
 public:
  explicit ForwardingStore(std::unique_ptr<Store> target) : target_(std::move(target)) {}

  AuthorizationStatus authorizationStatusForEntityType(EntityType type) const override {
    return target_->authorizationStatusForEntityType(type);
  }
  void requestFullAccessToEvents(AccessCompletion completion) override {
    target_->requestFullAccessToEvents(std::move(completion));
  }
  void requestFullAccessToReminders(AccessCompletion completion) override {
    target_->requestFullAccessToReminders(std::move(completion));
  }
  void reset() override { target_->reset(); }

  std::vector<CalendarRef> calendarsForEntityType(EntityType type) override {
    return target_->calendarsForEntityType(type);
  }
  CalendarRef defaultCalendarForNewEvents() override {
    return target_->defaultCalendarForNewEvents();
  }
  CalendarRef defaultCalendarForNewReminders() override {
    return target_->defaultCalendarForNewReminders();
  }

  std::vector<EventRef> eventsMatchingPredicate(const EventPredicate& predicate) override {
    return target_->eventsMatchingPredicate(predicate);
  }
  EventRef eventWithIdentifier(std::string_view identifier) override {
    return target_->eventWithIdentifier(identifier);
  }
  EventRef newEvent() override { return target_->newEvent(); }
  StoreResult saveEvent(Event& event) override { return target_->saveEvent(event); }
  StoreResult removeEvent(Event& event) override { return target_->removeEvent(event); }

  void fetchRemindersMatchingPredicate(const ReminderPredicate& predicate,
                                       ReminderCompletion completion) override {
    target_->fetchRemindersMatchingPredicate(predicate, std::move(completion));
  }
  ReminderRef calendarItemWithIdentifier(std::string_view identifier) override {
    return target_->calendarItemWithIdentifier(identifier);
  }
  ReminderRef newReminder() override { return target_->newReminder(); }
  StoreResult saveReminder(Reminder& reminder) override { return target_->saveReminder(reminder); }
  StoreResult removeReminder(Reminder& reminder) override {
    return target_->removeReminder(reminder);
  }

  void setChangeObserver(std::function<void()> observer) override {
    target_->setChangeObserver(std::move(observer));
  }
  [[noreturn]] void run() override {
    target_->run();
    std::abort();  // not reached
  }

 private:
  std::unique_ptr<Store> target_;
};

}  // namespace tidemark::test
