#include "reminders/global_queue.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace tidemark {
namespace {

class GlobalQueue {
 public:
  void run(std::function<void()> task) {
    std::unique_lock lock(lock_);
    tasks_.push_back(std::move(task));
    if (tasks_.size() <= idleThreads_) {
      // Not under the lock, which the thread that wakes would have to wait for.
      lock.unlock();
      taskAdded_.notify_one();
    } else if (threads_ < maximumThreads_) {
      ++threads_;
      std::thread([this] { work(); }).detach();
    }
  }

 private:
  [[noreturn]] void work() {
    std::unique_lock lock(lock_);
    while (true) {
      ++idleThreads_;
      taskAdded_.wait(lock, [this] { return !tasks_.empty(); });
      --idleThreads_;
      std::function<void()> task = std::move(tasks_.front());
      tasks_.pop_front();
      lock.unlock();
      task();
      task = nullptr;  // what it held is released here, not under the lock
      lock.lock();
    }
  }

  std::mutex lock_;
  std::condition_variable taskAdded_;
  // Under the lock.
  std::deque<std::function<void()>> tasks_;
  std::size_t idleThreads_ = 0;
  std::size_t threads_ = 0;

  const std::size_t maximumThreads_ = std::max(2U, std::thread::hardware_concurrency());
};

}  // namespace

void runOnGlobalQueue(std::function<void()> task) {
  // Never destroyed: its threads outlive everything but the process.
  static auto* const queue = new GlobalQueue;
  queue->run(std::move(task));
}

}  // namespace tidemark
