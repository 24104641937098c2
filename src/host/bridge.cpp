#include "host/bridge.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <exception>
#include <optional>
#include <string_view>
#include <thread>
#include <utility>

#include "access/authorization.h"
#include "host/relaunch.h"
#include "host/reply_channel.h"
#include "host/request_loop.h"
#include "store/current_store.h"
#include "store/local_dates.h"

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace tidemark {
namespace {

// Descriptors 0 to 2 that the host left closed would go to the first files opened, and be read or
// written as its pipes.
void openStandardDescriptors() {
  for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
    // The lowest that is free, which is this one.
    if (::fcntl(descriptor, F_GETFD) == -1) static_cast<void>(::open("/dev/null", O_RDWR));
  }
}

void silenceDeath() {
  // A host that goes away is noticed by the write that fails.
  std::signal(SIGPIPE, SIG_IGN);
  // The default handler writes to standard error.
  std::set_terminate([] { std::abort(); });
}

// By default each thread gets a heap of its own from the C library, which grows by single pages,
// each with a system call; and what one thread frees is of no use to the others. The threads here
// seldom meet.
void useOneHeap() {
#if defined(__GLIBC__)
  // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread exists yet
  static_cast<void>(::mallopt(M_ARENA_MAX, 1));
#endif
}

std::optional<pid_t> relaunch() {
  // NOLINTBEGIN(concurrency-mt-unsafe): one thread
  const char* const desktop = std::getenv("TIDEMARK_DESKTOP");
  const bool hostedByDesktop = desktop != nullptr && std::string_view(desktop) == "1";
  const bool isChild = std::getenv(disclaimFlag) != nullptr;
  // NOLINTEND(concurrency-mt-unsafe)
  if (hostedByDesktop || isChild) return std::nullopt;
  return spawnDisclaimed();
}

// The child's exit code; 1 when a signal ended it. A wait that fails counts as a child that ended
// well.
int waitForChild(pid_t child) {
  int status = 0;
  static_cast<void>(::waitpid(child, &status, 0));
  return WIFEXITED(status) ? WEXITSTATUS(status) : EXIT_FAILURE;
}

void onStoreChanged() {
  ReplyObject object;
  object.add("event", "changed");
  emit(std::move(object));
}

void sayReady() {
  ReplyObject object;
  object.add("event", "ready").add("status", statusName(currentStatus()));
  emit(std::move(object));
}

}  // namespace

int runBridge(const std::function<std::unique_ptr<Store>()>& makeStore) {
  openStandardDescriptors();
  silenceDeath();
  useOneHeap();
  if (const auto child = relaunch()) return waitForChild(*child);

  store = makeStore().release();
  store->setChangeObserver(onStoreChanged);
  // From here on a second thread exists; an early answer may precede the ready line.
  std::thread(readLoop).detach();
  sayReady();
  // Not before, since it takes a quarter of a millisecond.
  loadLocalZone();
  store->run();
  return EXIT_SUCCESS;
}

}  // namespace tidemark
