// The booleans and integers of an event's fields, in the looseness of the platform's own JSON
// values, where both are numbers.
#pragma once

#include <cstdint>
#include <optional>

#include "host/json.h"

namespace tidemark {

// A boolean, or a number that is exactly 0 or 1.
std::optional<bool> looseBoolean(const Json* value);

// A number without a fraction that 64 bits hold, however it is spelled (2, 2.0, 2e0), or a boolean
// as 0 or 1.
std::optional<std::int64_t> looseInteger(const Json* value);

}  // namespace tidemark
