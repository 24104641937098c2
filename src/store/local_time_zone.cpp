#include "store/local_time_zone.h"

#include <absl/strings/ascii.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>

namespace tidemark {
namespace {

bool isLetter(char byte) {
  return absl::ascii_isalpha(static_cast<unsigned char>(byte));
}

// Takes the zone's name, at least three letters or anything in angle brackets, from the front.
bool takeName(std::string_view& text) {
  const bool isQuoted = text.starts_with('<');
  const auto end = isQuoted ? std::find(text.begin(), text.end(), '>')
                            : std::find_if_not(text.begin(), text.end(), isLetter);
  const auto size = static_cast<std::size_t>(end - text.begin());
  if (isQuoted ? end == text.end() : size < 3) return false;
  text.remove_prefix(isQuoted ? size + 1 : size);
  return true;
}

std::optional<int> takeNumber(std::string_view& text, int limit) {
  unsigned number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc{} || number > static_cast<unsigned>(limit)) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return static_cast<int>(number);
}

}  // namespace

absl::TimeZone localTimeZone() {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing in the process sets the environment once threads
  // run.
  const char* const variable = std::getenv("TZ");
  const auto fixed = variable ? fixedTimeZone(variable) : std::nullopt;
  return fixed ? *fixed : absl::LocalTimeZone();
}

std::optional<absl::TimeZone> fixedTimeZone(std::string_view variable) {
  std::string_view rest = variable;
  if (!takeName(rest)) return std::nullopt;
  const bool isEast = rest.starts_with('-');
  if (isEast || rest.starts_with('+')) rest.remove_prefix(1);
  int seconds = 0;
  for (const int unit : {3600, 60, 1}) {
    const auto number = takeNumber(rest, unit == 3600 ? 24 : 59);
    if (!number) return std::nullopt;
    seconds += *number * unit;
    if (rest.empty()) return absl::FixedTimeZone(isEast ? seconds : -seconds);
    if (!rest.starts_with(':')) return std::nullopt;
    rest.remove_prefix(1);
  }
  return std::nullopt;
}

}  // namespace tidemark
