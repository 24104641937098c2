// One decoded request line, and the fields that the commands read from it.
#pragma once

#include <string>
#include <string_view>

#include "host/json.h"

namespace tidemark {

using Request = JsonObject;

// The field's string or boolean; null when it is absent or of another type, which commands treat
// alike.
inline const std::string* stringField(const Request& request, std::string_view key) {
  const Json* value = request.find(key);
  return value == nullptr ? nullptr : value->string();
}
inline const bool* booleanField(const Request& request, std::string_view key) {
  const Json* value = request.find(key);
  return value == nullptr ? nullptr : value->boolean();
}

}  // namespace tidemark
