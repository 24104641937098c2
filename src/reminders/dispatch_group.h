// Waits for several pieces of work that end on whatever threads, and then does one thing more.
#pragma once

#include <cstddef>
#include <functional>
#include <mutex>

namespace tidemark {

// Any thread. It must live until the last `leave` has returned.
class DispatchGroup {
 public:
  // A piece of work begins; it ends with `leave`, once.
  void enter();
  void leave();

  // Has the task run once all that entered has left: on the global queue, or before the call
  // returns if it has left by now. Called once.
  void notify(std::function<void()> task);

 private:
  std::mutex lock_;
  std::size_t running_ = 0;
  std::function<void()> task_;
};

}  // namespace tidemark
