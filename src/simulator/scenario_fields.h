// Strict reading of the JSON objects of a scenario.
//
// The first error is kept and reading goes on with defaults, so that the code that reads stays a
// plain list of keys; whoever started asks for the error at the end. One thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/json.h"
#include "store/types.h"

namespace tidemark {

class ScenarioErrors {
 public:
  void add(const std::string& place, std::string_view problem);
  const std::optional<std::string>& first() const { return first_; }

 private:
  std::optional<std::string> first_;
};

// One JSON object. A key that is absent or null gives the default; so does one of another type,
// which is an error. What was not asked for when the object goes is an error too.
class ScenarioFields {
 public:
  // `json`: null, or an object that outlives this one.
  ScenarioFields(const Json* json, std::string place, ScenarioErrors& errors);
  ~ScenarioFields();
  ScenarioFields(const ScenarioFields&) = delete;
  ScenarioFields& operator=(const ScenarioFields&) = delete;

  std::optional<std::string> text(std::string_view key);
  bool flag(std::string_view key, bool absent);
  std::optional<std::int64_t> integer(std::string_view key,
                                      std::int64_t least = std::numeric_limits<std::int64_t>::min(),
                                      std::int64_t most = std::numeric_limits<std::int64_t>::max());
  std::optional<int> smallInteger(std::string_view key, int least = std::numeric_limits<int>::min(),
                                  int most = std::numeric_limits<int>::max());
  std::chrono::milliseconds delay(std::string_view key);
  // YYYY-MM-DDTHH:MM:SSZ, with or without a fraction.
  std::optional<Instant> date(std::string_view key);
  // The numbers of an array.
  std::vector<double> numbers(std::string_view key);
  // Null when absent. For another ScenarioFields, whose place is place(key).
  const Json* object(std::string_view key);

  // Calls read(ScenarioFields&) for each object of an array.
  template <typename Read>
  void forEach(std::string_view key, Read read) {
    const JsonArray* list = array(key);
    if (list == nullptr) return;
    for (std::size_t i = 0; i < list->size(); ++i) {
      ScenarioFields fields(&(*list)[i], place(key) + "[" + std::to_string(i) + "]", errors_);
      read(fields);
    }
  }
  bool has(std::string_view key);

  std::string place(std::string_view key) const;
  void fail(std::string_view key, std::string_view problem) { errors_.add(place(key), problem); }

 private:
  // Notes that the key exists. Null when it is absent or null.
  const Json* find(std::string_view key);
  const JsonArray* array(std::string_view key);

  const JsonObject* object_ = nullptr;
  std::string place_;
  ScenarioErrors& errors_;
  std::vector<std::string_view> known_;
};

}  // namespace tidemark
