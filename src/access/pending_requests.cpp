#include "access/pending_requests.h"

#include <limits>

#include "store/invariant.h"

namespace tidemark {

void PendingRequests::begin() {
  const std::lock_guard lock(lock_);
  if (pendingCount_ == std::numeric_limits<std::int64_t>::max()) stopOnBrokenInvariant();
  ++pendingCount_;
}

void PendingRequests::finish() {
  const std::lock_guard lock(lock_);
  if (pendingCount_ == 0) stopOnBrokenInvariant();
  --pendingCount_;
  finished_.notify_all();
}

void PendingRequests::waitUntilNone(std::chrono::steady_clock::time_point deadline) {
  std::unique_lock lock(lock_);
  finished_.wait_until(lock, deadline, [this] { return pendingCount_ == 0; });
}

PendingRequests& pending = *new PendingRequests;

}  // namespace tidemark
