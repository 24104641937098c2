// Writes content lines (RFC 5545, 3.1) and the values that stand in them. Pure functions; any
// thread.
#pragma once

#include <string>
#include <string_view>

#include "store/local/zones/zone.h"

namespace tidemark::local {

// No line is longer than this many octets, its line end not counted.
inline constexpr std::size_t longestLine = 75;

// One line, folded and ended. `parameters` is empty or starts with its semicolon; `value` stands as
// it is. A fold never falls inside a UTF-8 sequence.
std::string contentLine(std::string_view name, std::string_view parameters, std::string_view value,
                        std::string_view lineEnd);

// The TEXT value (3.3.11) that says `text`. Every kind of line break becomes \n; other control
// characters, which no value may hold, are left out.
std::string textValue(std::string_view text);

// `text`, which is one value and no list, without the control characters that would break the line.
std::string plainValue(std::string_view text);

// The parameters less those of that name (in upper case); the others keep their bytes.
std::string withoutParameter(std::string_view parameters, std::string_view upperName);

// A DATE: the day on which the wall clock shows that reading. Years before 0 and after 9999 are
// written as these.
std::string dateText(WallSeconds wall);
// A DATE-TIME of local time.
std::string dateTimeText(WallSeconds wall);
// A DATE-TIME in UTC.
std::string utcText(UtcSeconds utc);

// UTC-OFFSET (3.3.14).
std::string offsetText(int seconds);

}  // namespace tidemark::local
