// Which occurrences a repeating item has (RFC 5545, 3.3.10 and 3.8.5): DTSTART, RRULE and RDATE
// less EXDATE. Overrides are not known here; the index puts them in place of the occurrences they
// change.
//
// Any thread. Work is bounded whatever a rule says; see the constants.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

#include "store/local/text/item.h"

namespace tidemark::local {

// A single rule contributes at most this many occurrences to one answer, those that EXDATE takes
// away included.
inline constexpr std::size_t maximumOccurrencesPerRule = 100'000;

// Parses the value of an RRULE; `start` is the DTSTART it belongs to. Null when the rule is not
// valid or not supported (RSCALE): the item then repeats by what else it has.
std::unique_ptr<RecurrenceRule> parseRecurrenceRule(std::string_view value, const Moment& start);

struct Occurrence {
  Moment start;
  const RecurrenceDate* period = nullptr;  // the RDATE that gave it a length of its own
};

// Calls `visit` for each occurrence of `master` whose start lies in from <= start < to, in
// ascending order of instants, each instant once, until it returns false. `master` has an anchor;
// without a series it is one occurrence.
void forEachOccurrence(const Item& master, UtcSeconds from, UtcSeconds to,
                       const std::function<bool(const Occurrence&)>& visit);

}  // namespace tidemark::local
