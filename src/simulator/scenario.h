// What the simulator plays: the contents of a store, and what it does late, wrongly or of its own
// accord. Read from one JSON file, whose keys docs/simulator.md lists.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "store/memory/memory_store.h"

namespace tidemark {

struct ScenarioAccess {
  AccessResult result{.granted = true, .error = std::nullopt};
  std::chrono::milliseconds delay{0};
  // Holds from the completion on, whatever the result is.
  AuthorizationStatus status = fullAccess;
};

struct ScenarioFetch {
  std::chrono::milliseconds delay{0};
  // The fetch delivers no array: the store's way to say that it failed.
  bool none = false;
};

struct ScenarioChange {
  std::chrono::milliseconds after{0};
  int count = 1;
};

struct Scenario {
  MemoryContents contents;
  ScenarioAccess eventsAccess;
  ScenarioAccess remindersAccess;
  // Where there is a text, the operation fails with it.
  std::optional<std::string> saveEventFailure;
  std::optional<std::string> removeEventFailure;
  std::optional<std::string> saveReminderFailure;
  std::optional<std::string> removeReminderFailure;
  ScenarioFetch incompleteFetch;
  ScenarioFetch completedFetch;
  std::vector<ScenarioChange> changes;
};

struct ScenarioError {
  std::string message;  // one sentence that begins with the place, such as "events[2].calendar"
};

// Strict, so that a slip of the pen does not pass for a rule of the protocol: a key that does not
// exist, a value of another type and a reference to nothing are errors. A null is a key left out.
std::variant<Scenario, ScenarioError> parseScenario(std::string_view json);

}  // namespace tidemark
