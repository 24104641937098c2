// Makes readable text of raw values: escapes resolved, always valid UTF-8. Any thread.
#pragma once

#include <cstddef>
#include <string_view>

namespace tidemark::local {

enum class Escapes {
  none,
  text,  // TEXT values: \n \N \, \; \\ (RFC 5545, 3.3.11); any other backslash stands for itself
  parameter,  // parameter values: ^n ^' ^^ (RFC 6868); any other caret stands for itself
};

// No value of `size` bytes becomes longer than this.
constexpr std::size_t readableCapacity(std::size_t size) {
  return 2 * size;
}

// Writes the readable form of `raw` to `target`, which has room for readableCapacity(raw.size())
// bytes, and returns the end of what it wrote. Well-formed UTF-8 stays; every other byte is taken
// for Latin-1, as old programs wrote it; NUL bytes are dropped.
char* writeReadable(std::string_view raw, Escapes escapes, char* target);

}  // namespace tidemark::local
