/* What macOS keeps for itself, as far as a test can see it: a child that was disclaimed is the
 * leader of a process group of its own. */
#include <spawn.h>

int responsibility_spawnattrs_setdisclaim(posix_spawnattr_t* attributes, int disclaim) {
  return disclaim == 1 ? posix_spawnattr_setflags(attributes, POSIX_SPAWN_SETPGROUP) : -1;
}
