// Preloaded into a program, counts the calls by which it changes files below one folder, from 1,
// and does at chosen ones what crashes, full disks and other programs do. The environment says
// what:
//
//   FAULT_FOLDER   the folder, as a real path; without it nothing is counted
//   FAULT_LOG      a file that gets one line a call: "number call path [second path]"
//   FAULT_PLAN     steps, separated by blanks, each "number:action" or "number:action=path":
//     kill-before, kill-after      the process dies at once
//     ENOSPC, EIO, EACCES, ...     the call is not made and fails so
//     short                        a write takes half of what it was given
//     rename-before, rename-after  another program renames the file `path` to FAULT_TARGET
//     write-before, write-after    another program writes the text of `path` into FAULT_TARGET
//     where it is remove-before, remove-after  another program removes FAULT_TARGET
//   FAULT_WITHOUT  what the file system shall not know, separated by blanks: exchange, noreplace,
//   link
//
// Counted are: open to create, write, pwrite, ftruncate, fsync, fdatasync, rename in all forms,
// link, unlink, fchmod, fchown, flock, and close of what was open for writing. A close that shall
// fail closes nevertheless.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <signal.h>
#include <stdarg.h>
#include <stdatomic.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

// --- the plan

struct step {
  int error;      // the call fails with it
  bool shortens;  // a write takes half
  long number;    // of the call; 0 for one that is not counted
};

static const struct {
  const char* name;
  int number;
} errors[] = {{"ENOSPC", ENOSPC}, {"EIO", EIO},       {"EACCES", EACCES}, {"EROFS", EROFS},
              {"EINTR", EINTR},   {"EDQUOT", EDQUOT}, {"EPERM", EPERM},   {"ENOLCK", ENOLCK}};

static const char* setting(const char* name) {
  const char* value = getenv(name);
  return value != NULL ? value : "";
}

// The interference of another program. Raw system calls, so that nothing of it is counted.
static void interfere(const char* what, const char* path) {
  const char* target = setting("FAULT_TARGET");
  if (strcmp(what, "rename") == 0) {
    syscall(SYS_rename, path, target);
  } else if (strcmp(what, "remove") == 0) {
    syscall(SYS_unlink, target);
  } else if (strcmp(what, "write") == 0) {
    char text[65536];
    int from = (int)syscall(SYS_openat, AT_FDCWD, path, O_RDONLY | O_CLOEXEC, 0);
    long length = syscall(SYS_read, from, text, sizeof text);
    int to = (int)syscall(SYS_openat, AT_FDCWD, target, O_WRONLY | O_TRUNC | O_CLOEXEC, 0);
    if (to >= 0 && length >= 0) syscall(SYS_write, to, text, length);
    syscall(SYS_close, from);
    syscall(SYS_close, to);
  } else if (strcmp(what, "kill") == 0) {
    syscall(SYS_kill, getpid(), SIGKILL);
  }
}

// Does what the plan has for this call at this moment ("-before" or "-after"), and notes how the
// call shall end.
static void follow_plan(struct step* step, const char* moment) {
  char plan[4096];
  snprintf(plan, sizeof plan, "%s", setting("FAULT_PLAN"));
  char* rest = NULL;
  for (char* word = strtok_r(plan, " ", &rest); word != NULL; word = strtok_r(NULL, " ", &rest)) {
    char* action = strchr(word, ':');
    if (action == NULL || atol(word) != step->number) continue;
    char* path = strchr(++action, '=');
    if (path != NULL) *path++ = '\0';

    char* when = strchr(action, '-');
    if (when != NULL && strcmp(when, moment) == 0) {
      *when = '\0';
      interfere(action, path);
    }
    if (strcmp(action, "short") == 0) step->shortens = true;
    for (size_t i = 0; i < sizeof errors / sizeof *errors; i++) {
      if (strcmp(action, errors[i].name) == 0) step->error = errors[i].number;
    }
  }
}

static bool lacks(const char* what) {
  char words[256];
  snprintf(words, sizeof words, " %s ", setting("FAULT_WITHOUT"));
  char word[32];
  snprintf(word, sizeof word, " %s ", what);
  return strstr(words, word) != NULL;
}

// --- which calls count

static bool is_below(const char* path) {
  const char* folder = setting("FAULT_FOLDER");
  size_t length = strlen(folder);
  return length > 0 && strncmp(path, folder, length) == 0 &&
         (path[length] == '/' || path[length] == '\0');
}

static void path_of_descriptor(int descriptor, char path[PATH_MAX]) {
  char link[64];
  snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
  long length = syscall(SYS_readlinkat, AT_FDCWD, link, path, PATH_MAX - 1);
  path[length > 0 ? length : 0] = '\0';
  char* mark = strstr(path, " (deleted)");
  if (mark != NULL) *mark = '\0';
}

static void path_at(int directory, const char* name, char path[PATH_MAX]) {
  char start[PATH_MAX] = "";
  if (name[0] != '/') {
    if (directory != AT_FDCWD) {
      path_of_descriptor(directory, start);
    } else if (getcwd(start, sizeof start) == NULL) {
      start[0] = '\0';
    }
  }
  if (name[0] == '/') {
    snprintf(path, PATH_MAX, "%s", name);
  } else {
    int length = snprintf(path, PATH_MAX, "%s/%s", start, name);
    if (length >= PATH_MAX) path[0] = '\0';
  }
}

static struct step begin(const char* call, const char* path, const char* second) {
  static atomic_long count;
  struct step step = {0};
  if (!is_below(path)) return step;
  step.number = ++count;

  const char* log = setting("FAULT_LOG");
  if (log[0] != '\0') {
    char line[3 * PATH_MAX];
    int length = snprintf(line, sizeof line, "%ld %s %s %s\n", step.number, call, path, second);
    int flags = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC;
    int file = (int)syscall(SYS_openat, AT_FDCWD, log, flags, 0600);
    syscall(SYS_write, file, line, length);
    syscall(SYS_close, file);
  }
  follow_plan(&step, "-before");
  return step;
}

static struct step begin_descriptor(const char* call, int descriptor) {
  int error = errno;
  char path[PATH_MAX];
  path_of_descriptor(descriptor, path);
  struct step step = begin(call, path, "");
  errno = error;
  return step;
}

static struct step begin_entry(const char* call, int directory, const char* name) {
  char path[PATH_MAX];
  path_at(directory, name, path);
  return begin(call, path, "");
}

static struct step begin_entries(const char* call, int from, const char* old, int to,
                                 const char* new) {
  char path[PATH_MAX];
  char second[PATH_MAX];
  path_at(from, old, path);
  path_at(to, new, second);
  return begin(call, path, second);
}

static long end(struct step* step, long result) {
  int error = errno;
  if (step->number != 0) follow_plan(step, "-after");
  errno = error;
  return result;
}

static long fail(int error) {
  errno = error;
  return -1;
}

// --- the calls

#define REAL(name, result, ...)       \
  static result (*real)(__VA_ARGS__); \
  if (real == NULL) *(void**)(&real) = dlsym(RTLD_NEXT, name)
// Makes the call unless it shall fail, with what is planned before and after.
#define CARRY_OUT(step, call) end(&(step), (step).error != 0 ? fail((step).error) : (call))

static int open_counted(int directory, const char* path, int flags, mode_t mode) {
  struct step step = {0};
  if (flags & (O_CREAT | O_TRUNC)) step = begin_entry("open", directory, path);
  return (int)CARRY_OUT(step, syscall(SYS_openat, directory, path, flags, mode));
}

static mode_t mode_argument(int flags, va_list arguments) {
  return flags & (O_CREAT | O_TMPFILE) ? va_arg(arguments, mode_t) : 0;
}

#define OPEN(name)                                    \
  int name(const char* path, int flags, ...) {        \
    va_list arguments;                                \
    va_start(arguments, flags);                       \
    mode_t mode = mode_argument(flags, arguments);    \
    va_end(arguments);                                \
    return open_counted(AT_FDCWD, path, flags, mode); \
  }
OPEN(open)
OPEN(open64)

#define OPENAT(name)                                          \
  int name(int directory, const char* path, int flags, ...) { \
    va_list arguments;                                        \
    va_start(arguments, flags);                               \
    mode_t mode = mode_argument(flags, arguments);            \
    va_end(arguments);                                        \
    return open_counted(directory, path, flags, mode);        \
  }
OPENAT(openat)
OPENAT(openat64)

ssize_t write(int file, const void* data, size_t length) {
  REAL("write", ssize_t, int, const void*, size_t);
  struct step step = begin_descriptor("write", file);
  return CARRY_OUT(step, real(file, data, step.shortens ? length / 2 : length));
}

ssize_t pwrite(int file, const void* data, size_t length, off_t offset) {
  REAL("pwrite", ssize_t, int, const void*, size_t, off_t);
  struct step step = begin_descriptor("pwrite", file);
  return CARRY_OUT(step, real(file, data, step.shortens ? length / 2 : length, offset));
}

int ftruncate(int file, off_t length) {
  REAL("ftruncate", int, int, off_t);
  struct step step = begin_descriptor("ftruncate", file);
  return (int)CARRY_OUT(step, real(file, length));
}

int fsync(int file) {
  REAL("fsync", int, int);
  struct step step = begin_descriptor("fsync", file);
  return (int)CARRY_OUT(step, real(file));
}

int fdatasync(int file) {
  REAL("fdatasync", int, int);
  struct step step = begin_descriptor("fdatasync", file);
  return (int)CARRY_OUT(step, real(file));
}

static int rename_counted(int from, const char* old, int to, const char* new, unsigned flags) {
  if ((flags & RENAME_EXCHANGE) != 0 && lacks("exchange")) return (int)fail(EINVAL);
  if ((flags & RENAME_NOREPLACE) != 0 && lacks("noreplace")) return (int)fail(EINVAL);
  const char* call = flags & RENAME_EXCHANGE ? "exchange" : "rename";
  struct step step = begin_entries(call, from, old, to, new);
  return (int)CARRY_OUT(step, syscall(SYS_renameat2, from, old, to, new, flags));
}

int renameat2(int from, const char* old, int to, const char* new, unsigned flags) {
  return rename_counted(from, old, to, new, flags);
}

int renameat(int from, const char* old, int to, const char* new) {
  return rename_counted(from, old, to, new, 0);
}

int rename(const char* old, const char* new) {
  return rename_counted(AT_FDCWD, old, AT_FDCWD, new, 0);
}

int linkat(int from, const char* old, int to, const char* new, int flags) {
  REAL("linkat", int, int, const char*, int, const char*, int);
  if (lacks("link")) return (int)fail(EPERM);
  struct step step = begin_entries("link", from, old, to, new);
  return (int)CARRY_OUT(step, real(from, old, to, new, flags));
}

int link(const char* old, const char* new) {
  return linkat(AT_FDCWD, old, AT_FDCWD, new, 0);
}

int unlinkat(int directory, const char* name, int flags) {
  REAL("unlinkat", int, int, const char*, int);
  struct step step = begin_entry("unlink", directory, name);
  return (int)CARRY_OUT(step, real(directory, name, flags));
}

int unlink(const char* path) {
  return unlinkat(AT_FDCWD, path, 0);
}

int fchmod(int file, mode_t mode) {
  REAL("fchmod", int, int, mode_t);
  struct step step = begin_descriptor("fchmod", file);
  return (int)CARRY_OUT(step, real(file, mode));
}

int fchown(int file, uid_t owner, gid_t group) {
  REAL("fchown", int, int, uid_t, gid_t);
  struct step step = begin_descriptor("fchown", file);
  return (int)CARRY_OUT(step, real(file, owner, group));
}

int flock(int file, int operation) {
  REAL("flock", int, int, int);
  struct step step = begin_descriptor("flock", file);
  return (int)CARRY_OUT(step, real(file, operation));
}

int close(int file) {
  REAL("close", int, int);
  struct step step = {0};
  int flags = fcntl(file, F_GETFL);
  if (flags >= 0 && (flags & O_ACCMODE) != O_RDONLY && (flags & O_PATH) == 0) {
    step = begin_descriptor("close", file);
  }
  int result = real(file);
  return (int)end(&step, step.error != 0 ? fail(step.error) : result);
}
