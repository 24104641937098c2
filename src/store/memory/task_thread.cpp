#include "store/memory/task_thread.h"

namespace tidemark {

TaskThread::~TaskThread() {
  {
    std::lock_guard guard(lock_);
    ending_ = true;
  }
  wakeUp_.notify_one();
  if (thread_.joinable()) thread_.join();
}

void TaskThread::post(Task task, Clock::duration delay) {
  {
    std::lock_guard guard(lock_);
    // A multimap keeps equal keys in the order of their insertion.
    waiting_.emplace(Clock::now() + delay, std::move(task));
    if (!thread_.joinable()) thread_ = std::thread([this] { work(); });
  }
  wakeUp_.notify_one();
}

void TaskThread::work() {
  std::unique_lock guard(lock_);
  while (!ending_) {
    if (waiting_.empty()) {
      wakeUp_.wait(guard);
      continue;
    }
    const Clock::time_point next = waiting_.begin()->first;
    if (Clock::now() < next) {
      wakeUp_.wait_until(guard, next);
      continue;
    }
    Task task = std::move(waiting_.extract(waiting_.begin()).mapped());
    guard.unlock();
    task();
    task = nullptr;  // what it holds goes outside the lock too
    guard.lock();
  }
}

}  // namespace tidemark
