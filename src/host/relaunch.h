// The relaunch as a child that answers for its own permissions, where the platform asks for it.
#pragma once

#include <sys/types.h>

#include <optional>

namespace tidemark {

// The environment variable that marks the child, with any value, so that it is not relaunched
// again.
inline constexpr const char* disclaimFlag = "TIDEMARK_CAL_DISCLAIMED";

// Starts this program again, with its arguments and descriptors, as a child for whose permissions
// this process does not answer. Absent when that fails or the platform knows no such thing; then
// this process serves. On the main thread, before any other exists.
std::optional<pid_t> spawnDisclaimed();

}  // namespace tidemark
