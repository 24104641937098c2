// The change notifications on their way to the main thread.
#pragma once

#include <cstddef>
#include <functional>

#include "store/local/files/descriptor.h"

namespace tidemark::local {

// post() is called from any thread, all else on the main thread.
class ChangeNotices {
 public:
  ChangeNotices();

  void setObserver(std::function<void()> observer) { observer_ = std::move(observer); }

  // Has the main thread deliver that many.
  void post(std::size_t count);
  // Calls the observer once for each.
  void deliver(std::size_t count) const;

  // Waits until something was posted, or `descriptor` (if it is not negative) is readable, and
  // returns how many were posted. No time-out: an idle process does nothing.
  std::size_t wait(int descriptor);

 private:
  std::function<void()> observer_;
  Descriptor readEnd_;
  Descriptor writeEnd_;
};

}  // namespace tidemark::local
