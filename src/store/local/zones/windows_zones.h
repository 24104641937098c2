// The names that Windows gives time zones, and the names of the zone database for them. Any thread.
#pragma once

#include <optional>
#include <string_view>

namespace tidemark::local {

// "W. Europe Standard Time" gives "Europe/Berlin". ASCII case does not matter.
std::optional<std::string_view> zoneNameOfWindowsName(std::string_view windowsName);

}  // namespace tidemark::local
