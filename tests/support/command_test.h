// The fixture of tests that ask commands in this process.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <string_view>

#include "store/memory/memory_store.h"
#include "tests/support/forwarding_store.h"
#include "tests/support/lines.h"
#include "tests/support/time_zone.h"

namespace tidemark::test {

// An instant from "2025-03-01T09:30:00Z".
Instant at(std::string_view date);

struct CalendarOptions {
  std::string source = "Home";
  bool isWritable = true;
  std::optional<Color> color;
};
CalendarRef makeCalendar(std::string identifier, std::string title, CalendarOptions options = {});

// An event of an hour.
MemoryEvent makeEvent(std::string identifier, std::string title, CalendarRef calendar,
                      Instant start);
DateComponents day(int year, int month, int dayOfMonth);

// A reminder of that day, without a time.
MemoryReminder makeReminder(std::string identifier, std::string title, CalendarRef list, int year,
                            int month, int dayOfMonth);

// Tests fill `contents` and then ask; the store is made by the first question. The local zone is
// UTC until a test says otherwise.
class CommandTest : public ::testing::Test {
 protected:
  CommandTest();
  ~CommandTest() override;

  // The one answer to the request, normalized. Fails the test when there is none or more than one.
  std::string ask(std::string_view request);
  // The "error" of the one answer; the whole answer when it has none.
  std::string error(std::string_view request);

  // The store as it is, for tests that look behind the commands.
  MemoryStore& memory();
  // Puts a store around the one in memory, as `Wrapper(std::unique_ptr<Store>, arguments...)`.
  template <typename Wrapper, typename... Arguments>
  Wrapper& wrap(Arguments&&... arguments) {
    memory();
    auto wrapper =
        std::make_unique<Wrapper>(std::move(store_), std::forward<Arguments>(arguments)...);
    Wrapper& wrapped = *wrapper;
    use(std::move(wrapper));
    return wrapped;
  }

  MemoryContents contents;

 private:
  void use(std::unique_ptr<Store> other);

  std::unique_ptr<Store> store_;
  MemoryStore* memory_ = nullptr;
};

}  // namespace tidemark::test
