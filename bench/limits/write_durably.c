// Changes one file of a folder so that no crash undoes it, and nothing else. A line that holds a
// number N writes N bytes: to a temporary file, synced, renamed over the file that is there, the
// folder synced. With "+" before N the file is a new one: the one of before goes first and is not
// counted, since freeing it takes some file systems long. Zero removes the file and syncs the
// folder. The answer is the nanoseconds that it took, pipes not included.
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

enum { maximumSize = 1 << 20 };

static int writeFile(int folder, const char* text, size_t size) {
  int file = openat(folder, ".item.tmp", O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (file < 0) return -1;
  int failed = write(file, text, size) != (ssize_t)size || fsync(file);
  failed = close(file) || failed;
  return failed || renameat(folder, ".item.tmp", folder, "item.ics") || fsync(folder) ? -1 : 0;
}

static int removeFile(int folder) {
  return unlinkat(folder, "item.ics", 0) || fsync(folder) ? -1 : 0;
}

int main(int count, char** arguments) {
  static char text[maximumSize];
  memset(text, 'x', sizeof text);
  if (count != 2) return 2;
  int folder = open(arguments[1], O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder < 0) return 1;
  char request[64];
  for (;;) {
    ssize_t got = read(STDIN_FILENO, request, sizeof request - 1);
    if (got <= 0) return 0;
    request[got] = '\0';
    size_t size = strtoull(request, NULL, 10);
    if (size > maximumSize) return 1;
    if (request[0] == '+') (void)unlinkat(folder, "item.ics", 0);
    struct timespec begin, end;
    clock_gettime(CLOCK_MONOTONIC, &begin);
    if (size ? writeFile(folder, text, size) : removeFile(folder)) return 1;
    clock_gettime(CLOCK_MONOTONIC, &end);
    long long taken = (end.tv_sec - begin.tv_sec) * 1000000000LL + end.tv_nsec - begin.tv_nsec;
    dprintf(STDOUT_FILENO, "%lld\n", taken);
  }
}
