// Dates on the wire. Replies have one form, in UTC; requests may use two more.
//
// The formatters are immutable: any thread, no locks. Nothing here throws or allocates.
#pragma once

#include <optional>
#include <string_view>

#include "codec/fixed_text.h"
#include "host/json.h"
#include "store/types.h"

namespace tidemark {

// "2025-03-01T09:30:00Z"
using DateText = FixedText<20>;

// Reads the internet date-time of RFC 3339, section 5.6, in its strict spelling: capital T and Z,
// an offset as +HH:MM, a day that the calendar has, no 24:00 and no leap second. Nothing before or
// after it.
class DateTimeReader {
 public:
  enum class Fraction { absent, required };
  explicit constexpr DateTimeReader(Fraction fraction) : fraction_(fraction) {}
  std::optional<Instant> parse(std::string_view text) const;

 private:
  Fraction fraction_;
};

class DateTimeFormatter : public DateTimeReader {
 public:
  constexpr DateTimeFormatter() : DateTimeReader(Fraction::absent) {}
  // In UTC. A fraction of a second is dropped, towards the past. What lies outside of the years 0
  // to 9999, which the form cannot say, becomes the nearest that it can.
  DateText format(Instant instant) const;
};

// Whole seconds: for reading, and for all that is written.
inline constexpr DateTimeFormatter iso;
// With a fraction of a second of any length: for reading alone.
inline constexpr DateTimeReader isoFractional(DateTimeReader::Fraction::required);

// The date that a request's field says: in one of the forms above, or a day alone (2025-03-01),
// which is the first instant of that day in the local zone. Absent for a key that is not there
// (null) and for everything else.
std::optional<Instant> parseDate(const Json* value);

}  // namespace tidemark
