#include "events/loose_values.h"

#include <charconv>
#include <cmath>
#include <cstdlib>

namespace tidemark {
namespace {

// Digits alone are read exactly, beyond what a double tells apart.
std::optional<std::int64_t> integralValue(const JsonNumber& number) {
  const char* const begin = number.text.data();
  const char* const end = begin + number.text.size();
  std::int64_t exact = 0;
  const auto read = std::from_chars(begin, end, exact);
  if (read.ptr == end && read.ec == std::errc()) return exact;

  constexpr double limit = 9223372036854775808.0;  // 2^63
  const double value = std::strtod(number.text.c_str(), nullptr);
  if (value != std::trunc(value) || value < -limit || value >= limit) return std::nullopt;
  return static_cast<std::int64_t>(value);
}

}  // namespace

std::optional<bool> looseBoolean(const Json* value) {
  if (value == nullptr) return std::nullopt;
  if (const bool* flag = value->boolean()) return *flag;
  const auto integer = looseInteger(value);
  if (integer != 0 && integer != 1) return std::nullopt;
  return *integer == 1;
}

std::optional<std::int64_t> looseInteger(const Json* value) {
  if (value == nullptr) return std::nullopt;
  if (const bool* flag = value->boolean()) return *flag ? 1 : 0;
  const JsonNumber* number = value->number();
  return number == nullptr ? std::nullopt : integralValue(*number);
}

}  // namespace tidemark
