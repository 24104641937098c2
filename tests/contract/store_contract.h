// One suite over every store: what store.h promises, a test each.
//
// A store takes part by a StoreFixture of its own, which seeds the store in its own terms (entries,
// files, a server's objects), and one line:
//
//   INSTANTIATE_TEST_SUITE_P(Memory, StoreContract, testing::Values(StoreForm{"memory", makeIt}));
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "store/store.h"

namespace tidemark {

// How long a test waits for what must come, before it fails.
inline constexpr std::chrono::seconds deadline{20};

struct SeedCalendar {
  std::string title;
  EntityType type = EntityType::event;
  bool writable = true;
};

// Whole seconds; the time zone is UTC.
struct SeedEvent {
  std::string calendar;  // an identifier that addCalendar gave
  std::string title;
  Instant start{};
  Instant end{};
  // More than one: repeated daily, that many times in all.
  int days = 1;
  std::optional<std::string> notes{};
  std::optional<std::string> location{};
  std::optional<std::string> url{};
  // The attendees' names; absent: no list.
  std::optional<std::vector<std::string>> attendees{};
};

struct SeedReminder {
  std::string list;  // an identifier that addCalendar gave
  std::string title;
  std::optional<DateComponents> due{};
  std::optional<Instant> completed{};  // the completion date of a completed one
  std::int64_t priority = 0;
  std::optional<std::string> notes{};
};

// A store with full access and nothing in it but what is added here. What is added or removed once
// the store is made is an outside change, as another program makes it: complete when the call
// returns.
class StoreFixture {
 public:
  virtual ~StoreFixture() = default;

  // These return the identifier under which the store knows the thing.
  virtual std::string addCalendar(const SeedCalendar& calendar) = 0;
  virtual std::string addEvent(const SeedEvent& event) = 0;
  virtual std::string addReminder(const SeedReminder& reminder) = 0;
  virtual void removeEvent(const std::string& identifier) = 0;

  // Makes the store at the first call.
  virtual Store& store() = 0;

  // Has the store's main loop run beside the test, to the end of the process.
  virtual void startMainLoop();

  // False for a store that cannot save and remove: the tests of writing are skipped.
  virtual bool canWrite() const { return true; }
  // Called in place of the destructor when the store's main loop runs, since that never ends:
  // gives back what would outlive the process.
  virtual void abandon() {}
};

struct StoreForm {
  std::string name;
  std::function<std::unique_ptr<StoreFixture>()> make;
};
inline void PrintTo(const StoreForm& form, std::ostream* out) {
  *out << form.name;
}

// Counts what arrives on other threads.
class Arrivals {
 public:
  void arrive();
  int count() const;
  // False when the deadline passes before that many have come.
  bool waitFor(int atLeast) const;

 private:
  mutable std::mutex lock_;
  mutable std::condition_variable arrived_;
  int count_ = 0;
};

class StoreContract : public testing::TestWithParam<StoreForm> {
 public:
  StoreContract();
  ~StoreContract() override;

  StoreFixture& fixture() { return *fixture_; }
  Store& store() { return fixture_->store(); }

  // Starts the store's main loop and gives the count of notifications. To be called before the
  // store is used, at most once.
  const Arrivals& listen();

  // The local time zone for the rest of the test, which begins in UTC. Before the store is made;
  // and since a store may read it but once, ctest runs each test in a process of its own.
  static void setLocalZone(const char* name);

  // All events from 2025 to 2026, or those of one range, of all calendars or one.
  std::vector<EventRef> events();
  std::vector<EventRef> events(Instant from, Instant to);
  std::vector<EventRef> events(Instant from, Instant to, CalendarSelection calendars);
  // The one event of that day in March 2025; null when there is none, or more than one.
  EventRef eventOn(unsigned day);
  // What one fetch delivers; fails the test when it completes twice or not at all.
  std::vector<ReminderRef> fetch(const ReminderPredicate& predicate);
  std::vector<ReminderRef> incomplete(Instant from, Instant to);
  std::vector<ReminderRef> completed(Instant from, Instant to);
  // Null when there is none.
  CalendarRef calendar(const std::string& identifier);

 private:
  std::unique_ptr<StoreFixture> fixture_;
  std::shared_ptr<Arrivals> notifications_;  // set once the main loop runs
};

Instant instant(int year, unsigned month, unsigned day, int hour = 0, int minute = 0,
                double second = 0);
std::vector<std::string> titles(const std::vector<EventRef>& events);
// In the order of the texts: fetches promise none.
std::vector<std::string> titles(const std::vector<ReminderRef>& reminders);

}  // namespace tidemark
