// read_files THREADS ROOT: finds the .ics files one and two levels below ROOT and reads each from
// start to end, then writes one line with the number of bytes. What a first answer costs when
// nothing is done with what was read.
#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <pthread.h>
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

static char** paths;
static size_t pathCount, pathCapacity;
static atomic_size_t nextPath, totalBytes;

static void addPath(const char* folder, const char* name) {
  if (pathCount == pathCapacity) {
    pathCapacity = pathCapacity ? 2 * pathCapacity : 1024;
    paths = realloc(paths, pathCapacity * sizeof *paths);
    if (!paths) exit(1);
  }
  size_t size = strlen(folder) + strlen(name) + 2;
  char* path = malloc(size);
  if (!path) exit(1);
  snprintf(path, size, "%s/%s", folder, name);
  paths[pathCount++] = path;
}

static void findFiles(const char* folder, int levels) {
  DIR* directory = opendir(folder);
  if (!directory) return;
  for (struct dirent* entry; (entry = readdir(directory));) {
    if (entry->d_name[0] == '.') continue;
    size_t length = strlen(entry->d_name);
    if (entry->d_type == DT_DIR && levels > 0) {
      char path[PATH_MAX];
      snprintf(path, sizeof path, "%s/%s", folder, entry->d_name);
      findFiles(path, levels - 1);
    } else if (length > 4 && !strcmp(entry->d_name + length - 4, ".ics")) {
      addPath(folder, entry->d_name);
    }
  }
  closedir(directory);
}

static void* readFiles(void* unused) {
  (void)unused;
  enum { bufferSize = 1 << 20, filesAtOnce = 64 };
  char* buffer = malloc(bufferSize);
  if (!buffer) exit(1);
  size_t bytes = 0;
  for (size_t first; (first = atomic_fetch_add(&nextPath, filesAtOnce)) < pathCount;) {
    for (size_t i = first; i < first + filesAtOnce && i < pathCount; i++) {
      int file = open(paths[i], O_RDONLY | O_CLOEXEC);
      if (file < 0) continue;
      for (ssize_t got; (got = read(file, buffer, bufferSize)) > 0;) {
        bytes += (size_t)got;
        if (got < bufferSize) break;
      }
      close(file);
    }
  }
  atomic_fetch_add(&totalBytes, bytes);
  free(buffer);
  return NULL;
}

int main(int argc, char** argv) {
  enum { maximumThreads = 64 };
  int threadCount = argc == 3 ? atoi(argv[1]) : 0;
  if (threadCount < 1 || threadCount > maximumThreads) return 2;
  findFiles(argv[2], 2);
  pthread_t threads[maximumThreads];
  for (int i = 1; i < threadCount; i++) {
    if (pthread_create(&threads[i], NULL, readFiles, NULL)) return 1;
  }
  readFiles(NULL);
  for (int i = 1; i < threadCount; i++) pthread_join(threads[i], NULL);
  printf("%zu\n", (size_t)totalBytes);
  return 0;
}
