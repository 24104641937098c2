// Lines from a file descriptor, blocking or not, of any length that memory holds.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "host/text_buffer.h"

namespace tidemark {

// One thread. The C and C++ streams are not used since they take a descriptor that is not blocking
// for ended.
class LineReader {
 public:
  explicit LineReader(int descriptor) : descriptor_(descriptor) {}

  // The next line without its end, which is a line feed, or a carriage return and a line feed; the
  // input's last line may lack it. Absent at the end of the input, and when reading fails. Valid
  // until the next call.
  std::optional<std::string_view> next();

 private:
  // Makes room and reads once. False at the end.
  bool readMore();

  const int descriptor_;
  TextBuffer buffer_;
  std::size_t lineBegin_ = 0;
};

}  // namespace tidemark
