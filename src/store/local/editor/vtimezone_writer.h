// Describes a zone of the system as a VTIMEZONE (RFC 5545, 3.6.5), for readers that lack the
// system's database. Pure; any thread.
#pragma once

#include <string>
#include <string_view>

#include "store/local/zones/zone.h"

namespace tidemark::local {

// The component of the zone with that IANA name, its TZID the plain name. It is right from the year
// before `instant` on: for ever where a yearly rule says when the offset changes, through 2037 (or
// twelve years after `instant`) where only a list of onsets can say it. Empty when the system has
// no such zone.
std::string vtimezoneText(const std::string& name, UtcSeconds instant, std::string_view lineEnd);

}  // namespace tidemark::local
