// The access requests that the store has not answered yet: what the end of the input waits for.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace tidemark {

// Any thread.
class PendingRequests {
 public:
  // A request goes to the store; its answer is written. More answers than requests, or more
  // requests than can be counted, end the process: the count would be wrong for good.
  void begin();
  void finish();

  // Returns once none is left, at the latest at the deadline.
  void waitUntilNone(std::chrono::steady_clock::time_point deadline);

 private:
  std::mutex lock_;
  std::condition_variable finished_;
  std::int64_t pendingCount_ = 0;
};

// Never destroyed: completions may arrive while the process ends.
extern PendingRequests& pending;

}  // namespace tidemark
