// What the store promises and everything above relies on: an event or reminder has a calendar, a
// calendar has a source.
#pragma once

#include <cstdlib>

namespace tidemark {

// Ends the process at once, without an answer and without a word: a store that broke its promise
// cannot be served from, and carrying on could harm what it holds. (assert would write to standard
// error, and release builds leave it out.)
[[noreturn]] inline void stopOnBrokenInvariant() {
  std::abort();
}

}  // namespace tidemark
