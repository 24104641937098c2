// Runs the tests on a thread of their own, and leaves the main one to the store's main loop.
#include <gtest/gtest.h>

#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <thread>
#include <utility>

#include "tests/eventkit/main_thread.h"

namespace tidemark::eventkit {
namespace {

struct MainThread {
  std::mutex lock;
  std::condition_variable posted;
  std::function<void()> task;
};

// Never destroyed: the main thread waits for it while the process ends.
MainThread& mainThread() {
  static auto* const instance = new MainThread;
  return *instance;
}

}  // namespace

void runOnMainThread(std::function<void()> task) {
  {
    const std::lock_guard guard(mainThread().lock);
    mainThread().task = std::move(task);
  }
  mainThread().posted.notify_one();
}

}  // namespace tidemark::eventkit

int main(int argc, char** argv) {
  using tidemark::eventkit::mainThread;
  testing::InitGoogleTest(&argc, argv);
  std::thread([] { std::exit(RUN_ALL_TESTS()); }).detach();
  while (true) {
    std::unique_lock guard(mainThread().lock);
    mainThread().posted.wait(guard, [] { return mainThread().task != nullptr; });
    const auto task = std::exchange(mainThread().task, nullptr);
    guard.unlock();
    task();
  }
}
