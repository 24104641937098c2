#include "reminders/dispatch_group.h"

#include <utility>

#include "reminders/global_queue.h"

namespace tidemark {

void DispatchGroup::enter() {
  const std::lock_guard lock(lock_);
  ++running_;
}

void DispatchGroup::leave() {
  std::function<void()> task;
  {
    const std::lock_guard lock(lock_);
    if (--running_ == 0) task = std::exchange(task_, nullptr);
  }
  if (task) runOnGlobalQueue(std::move(task));
}

void DispatchGroup::notify(std::function<void()> task) {
  {
    const std::lock_guard lock(lock_);
    if (running_ > 0) task_ = std::exchange(task, nullptr);
  }
  // Waking another thread takes longer than most tasks.
  if (task) task();
}

}  // namespace tidemark
