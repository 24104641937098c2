// watch_folder FOLDER: writes a line when it watches, then one for each batch of renames into
// FOLDER that the kernel reports. What a change notice costs.
#include <stdio.h>
#include <string.h>
#include <sys/inotify.h>
#include <unistd.h>

int main(int argc, char** argv) {
  static const char line[] = "{\"event\":\"changed\"}\n";
  char events[1 << 16];
  int watcher = inotify_init1(IN_CLOEXEC);
  if (argc != 2 || watcher < 0 || inotify_add_watch(watcher, argv[1], IN_MOVED_TO) < 0) return 1;
  do {
    if (write(STDOUT_FILENO, line, strlen(line)) < 0) return 1;
  } while (read(watcher, events, sizeof events) > 0);
  return 0;
}
