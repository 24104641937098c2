// The colour names of CSS (Color Module Level 4, 6.1). Any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tidemark::local {

// As 0xRRGGBB; in any case. Absent when there is no such name.
std::optional<std::uint32_t> colorNamed(std::string_view name);

}  // namespace tidemark::local
