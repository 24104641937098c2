// Systems on which no other calendar than the Gregorian is preferred.
#include "codec/days.h"
#include "store/local_dates.h"

namespace tidemark {

std::optional<Instant> parseUsersDay(std::string_view text) {
  const auto day = parseGregorianDay(text);
  if (!day) return std::nullopt;
  return startOfDay(*day);
}

}  // namespace tidemark
