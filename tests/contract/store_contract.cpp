#include "tests/contract/store_contract.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <thread>
#include <utility>

namespace tidemark {

void StoreFixture::startMainLoop() {
  std::thread([listened = &store()] { listened->run(); }).detach();
}

void Arrivals::arrive() {
  {
    std::lock_guard guard(lock_);
    ++count_;
  }
  arrived_.notify_all();
}

int Arrivals::count() const {
  std::lock_guard guard(lock_);
  return count_;
}

bool Arrivals::waitFor(int atLeast) const {
  std::unique_lock guard(lock_);
  return arrived_.wait_for(guard, deadline, [&] { return count_ >= atLeast; });
}

StoreContract::StoreContract() : fixture_(GetParam().make()) {
  setLocalZone("UTC");
}

StoreContract::~StoreContract() {
  if (!notifications_) return;
  // The main loop of the store goes on, so the store must stay; reachable, for the leak checkers.
  static auto* const abandoned = new std::vector<std::unique_ptr<StoreFixture>>;
  fixture_->abandon();
  abandoned->push_back(std::move(fixture_));
}

const Arrivals& StoreContract::listen() {
  notifications_ = std::make_shared<Arrivals>();
  store().setChangeObserver([arrivals = notifications_] { arrivals->arrive(); });
  fixture_->startMainLoop();
  return *notifications_;
}

void StoreContract::setLocalZone(const char* name) {
  ::setenv("TZ", name, 1);
  ::tzset();
}

std::vector<EventRef> StoreContract::events() {
  return events(instant(2025, 1, 1), instant(2027, 1, 1));
}

std::vector<EventRef> StoreContract::events(Instant from, Instant to) {
  return events(from, to, std::nullopt);
}

std::vector<EventRef> StoreContract::events(Instant from, Instant to, CalendarSelection calendars) {
  return store().eventsMatchingPredicate({from, to, std::move(calendars)});
}

EventRef StoreContract::eventOn(unsigned day) {
  const auto found = events(instant(2025, 3, day), instant(2025, 3, day + 1));
  return found.size() == 1 ? found.front() : nullptr;
}

std::vector<ReminderRef> StoreContract::fetch(const ReminderPredicate& predicate) {
  struct Delivery {
    Arrivals arrivals;
    std::optional<std::vector<ReminderRef>> reminders;
  };
  const auto delivery = std::make_shared<Delivery>();
  store().fetchRemindersMatchingPredicate(
      predicate, [delivery](std::optional<std::vector<ReminderRef>> reminders) {
        delivery->reminders = std::move(reminders);
        delivery->arrivals.arrive();
      });
  if (!delivery->arrivals.waitFor(1)) {
    ADD_FAILURE() << "the fetch did not complete";
    return {};
  }
  EXPECT_EQ(delivery->arrivals.count(), 1);
  EXPECT_TRUE(delivery->reminders.has_value());
  return delivery->reminders.value_or(std::vector<ReminderRef>());
}

std::vector<ReminderRef> StoreContract::incomplete(Instant from, Instant to) {
  return fetch({ReminderPredicate::Kind::incompleteByDueDate, from, to, std::nullopt});
}

std::vector<ReminderRef> StoreContract::completed(Instant from, Instant to) {
  return fetch({ReminderPredicate::Kind::completedByCompletionDate, from, to, std::nullopt});
}

CalendarRef StoreContract::calendar(const std::string& identifier) {
  for (const EntityType type : {EntityType::event, EntityType::reminder}) {
    for (const CalendarRef& candidate : store().calendarsForEntityType(type)) {
      if (candidate->calendarIdentifier == identifier) return candidate;
    }
  }
  return nullptr;
}

Instant instant(int year, unsigned month, unsigned day, int hour, int minute, double second) {
  using namespace std::chrono;
  const sys_days midnight = std::chrono::year(year) / std::chrono::month(month) / day;
  return Instant(midnight) + hours(hour) + minutes(minute) + duration<double>(second);
}

std::vector<std::string> titles(const std::vector<EventRef>& events) {
  std::vector<std::string> result;
  for (const EventRef& event : events) result.emplace_back(event->title().value_or("(none)"));
  return result;
}

std::vector<std::string> titles(const std::vector<ReminderRef>& reminders) {
  std::vector<std::string> result;
  for (const ReminderRef& reminder : reminders) {
    result.emplace_back(reminder->title().value_or("(none)"));
  }
  std::sort(result.begin(), result.end());
  return result;
}

}  // namespace tidemark
