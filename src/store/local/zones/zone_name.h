// Which names of the system's zone database a TZID may stand for. Any thread.
#pragma once

#include <functional>
#include <string_view>

namespace tidemark::local {

// Whether `name` has the form of a name in the zone database ("Europe/Berlin", "Etc/GMT+5", "UTC").
// Nothing else may reach the database, which opens files by such names.
bool isZoneName(std::string_view name);

// Calls `accept` for each name that `tzid` may stand for, the likeliest first, until it returns
// true: the TZID itself, what follows a vendor's prefix, the zone of a Windows name.
void forEachZoneName(std::string_view tzid, const std::function<bool(std::string_view)>& accept);

}  // namespace tidemark::local
