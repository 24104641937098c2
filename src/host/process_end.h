// The two ways the process ends of its own accord. Neither unwinds or destroys anything: other
// threads may still be at work, and nobody watches a background process that cannot end.
#pragma once

#include <chrono>

namespace tidemark {

// Nobody listens any more, so there is nobody to tell. Any thread; also with the output lock held.
[[noreturn]] void endQuietly();

// Status 0, once no line is half written; but when the host does not take its lines, not after the
// deadline. The output lock must not be held.
[[noreturn]] void endAfterLastLine(std::chrono::steady_clock::time_point deadline);

}  // namespace tidemark
