#include "simulator/scenario_fields.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <utility>

#include "codec/dates.h"

namespace tidemark {
namespace {

// Some thirty years: a delay that never ends, and far from what the clock's arithmetic can hold.
constexpr std::int64_t longestDelay = 1'000'000'000'000;

}  // namespace

void ScenarioErrors::add(const std::string& place, std::string_view problem) {
  if (first_) return;
  first_ = place.empty() ? "the scenario" : place;
  first_->append(" ").append(problem);
}

ScenarioFields::ScenarioFields(const Json* json, std::string place, ScenarioErrors& errors)
    : place_(std::move(place)), errors_(errors) {
  if (json == nullptr) return;
  object_ = json->object();
  if (object_ == nullptr) errors_.add(place_, "must be an object");
}

ScenarioFields::~ScenarioFields() {
  if (object_ == nullptr) return;
  for (const auto& [key, value] : object_->members) {
    if (std::find(known_.begin(), known_.end(), key) == known_.end()) {
      fail(key, "is no key of a scenario");
    }
  }
}

std::optional<std::string> ScenarioFields::text(std::string_view key) {
  const Json* value = find(key);
  if (value == nullptr) return std::nullopt;
  if (value->string() == nullptr) {
    fail(key, "must be a string");
    return std::nullopt;
  }
  return *value->string();
}

bool ScenarioFields::flag(std::string_view key, bool absent) {
  const Json* value = find(key);
  if (value == nullptr) return absent;
  if (value->boolean() == nullptr) {
    fail(key, "must be true or false");
    return absent;
  }
  return *value->boolean();
}

std::optional<std::int64_t> ScenarioFields::integer(std::string_view key, std::int64_t least,
                                                    std::int64_t most) {
  const Json* value = find(key);
  if (value == nullptr) return std::nullopt;
  if (const JsonNumber* number = value->number()) {
    const std::string& digits = number->text;
    std::int64_t result = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), result);
    const bool whole = error == std::errc{} && end == digits.data() + digits.size();
    if (whole && result >= least && result <= most) return result;
  }
  fail(key, "must be an integer in the range of its meaning");
  return std::nullopt;
}

std::optional<int> ScenarioFields::smallInteger(std::string_view key, int least, int most) {
  const std::optional<std::int64_t> value = integer(key, least, most);
  if (!value) return std::nullopt;
  return static_cast<int>(*value);
}

std::chrono::milliseconds ScenarioFields::delay(std::string_view key) {
  return std::chrono::milliseconds(integer(key, 0, longestDelay).value_or(0));
}

std::optional<Instant> ScenarioFields::date(std::string_view key) {
  const Json* value = find(key);
  if (value == nullptr) return std::nullopt;
  if (const std::string* written = value->string(); written && written->ends_with('Z')) {
    if (const auto instant = iso.parse(*written)) return instant;
    if (const auto instant = isoFractional.parse(*written)) return instant;
  }
  fail(key, "must be a date like 2025-03-01T09:30:00Z");
  return std::nullopt;
}

std::vector<double> ScenarioFields::numbers(std::string_view key) {
  std::vector<double> result;
  const JsonArray* list = array(key);
  if (list == nullptr) return result;
  for (const Json& element : *list) {
    if (element.number() == nullptr) {
      fail(key, "must hold numbers alone");
      return {};
    }
    result.push_back(std::strtod(element.number()->text.c_str(), nullptr));
  }
  return result;
}

const Json* ScenarioFields::object(std::string_view key) {
  return find(key);
}

bool ScenarioFields::has(std::string_view key) {
  return find(key) != nullptr;
}

std::string ScenarioFields::place(std::string_view key) const {
  return place_.empty() ? std::string(key) : place_ + "." + std::string(key);
}

const Json* ScenarioFields::find(std::string_view key) {
  known_.push_back(key);
  if (object_ == nullptr) return nullptr;
  const Json* value = object_->find(key);
  return value == nullptr || value->isNull() ? nullptr : value;
}

const JsonArray* ScenarioFields::array(std::string_view key) {
  const Json* value = find(key);
  if (value == nullptr) return nullptr;
  if (value->array() == nullptr) fail(key, "must be an array");
  return value->array();
}

}  // namespace tidemark
