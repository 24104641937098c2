// Platforms that hold no process responsible for another's permissions.
#include "host/relaunch.h"

namespace tidemark {

std::optional<pid_t> spawnDisclaimed() {
  return std::nullopt;
}

}  // namespace tidemark
