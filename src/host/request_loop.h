// The request reader: standard input, line by line, to the end of the process.
#pragma once

namespace tidemark {

// Handles each line before it reads the next. At the end of the input it waits for the access
// requests that are still open, at most 120 seconds, and ends the process with status 0. The body
// of the reader's thread.
[[noreturn]] void readLoop() noexcept;

}  // namespace tidemark
