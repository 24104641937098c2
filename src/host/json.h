// JSON values as requests carry them. Reading is RapidJSON's; this keeps what the protocol needs:
// numbers digit for digit as they were sent, so that an "id" goes back unchanged.
//
// A value has one owner and no locks; any thread may read a const one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace tidemark {

// Deeper nesting is refused as malformed: the limit that the platform's own reader has, and far
// above any request.
inline constexpr std::size_t maximumJsonNesting = 512;

class Json;
using JsonArray = std::vector<Json>;

// Keys in the order sent. Of a key that was sent twice the last value counts (find), as in most
// readers.
class JsonObject {
 public:
  const Json* find(std::string_view key) const;  // null when absent
  std::vector<std::pair<std::string, Json>> members;
};

struct JsonNumber {
  std::string text;  // RFC 8259, section 6, as sent
};

class Json {
 public:
  using Value = std::variant<std::nullptr_t, bool, JsonNumber, std::string, JsonArray, JsonObject>;
  Json() : value(nullptr) {}
  explicit Json(Value v) : value(std::move(v)) {}

  bool isNull() const { return std::holds_alternative<std::nullptr_t>(value); }
  // Null unless the value is of that type.
  const bool* boolean() const { return std::get_if<bool>(&value); }
  const JsonNumber* number() const { return std::get_if<JsonNumber>(&value); }
  const std::string* string() const { return std::get_if<std::string>(&value); }
  const JsonArray* array() const { return std::get_if<JsonArray>(&value); }
  const JsonObject* object() const { return std::get_if<JsonObject>(&value); }

  Value value;
};

// Reads one JSON text (RFC 8259). Absent when it is not valid JSON, not valid UTF-8 (a lone
// surrogate escape counts as such), nested too deep, or holds a number that no double can hold.
// Never throws but for memory.
std::optional<Json> parseJson(std::string_view text);

}  // namespace tidemark
