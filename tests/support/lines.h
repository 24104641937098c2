// Lines of JSON, compared by what they mean, and lines that arrive on a descriptor.
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

#include "host/json.h"

namespace tidemark::test {

// The same text for texts that say the same: the keys of objects in byte order, no spaces. "not
// JSON: " and the text for what is no JSON.
std::string normalized(std::string_view json);

// What waits for something that never comes fails after this.
inline constexpr std::chrono::seconds patience{20};

// Reads lines from a descriptor, which it owns, on a thread of its own.
class LineCollector {
 public:
  explicit LineCollector(int descriptor);
  // The other end must be closed by then.
  ~LineCollector();

  // The next line; absent at the end of the input or when patience ends.
  std::optional<std::string> next();
  // All that comes until the end of the input, as one text.
  std::string rest();

 private:
  void collect();

  const int descriptor_;
  std::mutex lock_;
  std::condition_variable arrived_;
  std::string text_;    // what has arrived and was not taken
  bool ended_ = false;  // both under lock_
  std::thread thread_;
};

}  // namespace tidemark::test
