#include "store/local/text/value_text.h"

#include <bit>
#include <cstdint>
#include <cstring>

namespace tidemark::local {
namespace {

using Byte = unsigned char;

bool isContinuation(Byte byte) {
  return (byte & 0xC0) == 0x80;
}

// The length of the well-formed UTF-8 sequence at the start of `text`, which is not empty; 0 when
// there is none (Unicode standard, table 3-7).
std::size_t utf8Length(std::string_view text) {
  const auto at = [&](std::size_t index) { return static_cast<Byte>(text[index]); };
  const Byte first = at(0);
  if (first < 0x80) return 1;
  if (first < 0xC2 || first > 0xF4) return 0;
  const std::size_t length = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
  if (text.size() < length) return 0;
  Byte lowest = 0x80;
  Byte highest = 0xBF;
  if (first == 0xE0) lowest = 0xA0;
  if (first == 0xED) highest = 0x9F;
  if (first == 0xF0) lowest = 0x90;
  if (first == 0xF4) highest = 0x8F;
  if (at(1) < lowest || at(1) > highest) return 0;
  for (std::size_t index = 2; index < length; ++index) {
    if (!isContinuation(at(index))) return 0;
  }
  return length;
}

// What the escape character followed by `next` stands for; 0 when the two are no escape.
char resolveEscape(Escapes escapes, char next) {
  if (escapes == Escapes::text) {
    switch (next) {
      case 'n':
      case 'N':
        return '\n';
      case ',':
      case ';':
      case '\\':
        return next;
      default:
        return 0;
    }
  }
  switch (next) {
    case 'n':
      return '\n';
    case '\'':
      return '"';
    case '^':
      return '^';
    default:
      return 0;
  }
}

// How many of the eight bytes at `text` come before the first one that is not ASCII, NUL or
// `escape`.
std::size_t plainLength(const char* text, char escape) {
  constexpr std::uint64_t ones = 0x0101010101010101;
  constexpr std::uint64_t highs = 0x8080808080808080;
  std::uint64_t bytes = 0;
  std::memcpy(&bytes, text, sizeof bytes);
  const std::uint64_t different = bytes ^ (ones * static_cast<Byte>(escape));
  // The highest bit of a byte that is not plain; and perhaps of the plain ones after it.
  const std::uint64_t marks = (bytes | (bytes - ones) | (different - ones)) & highs;
  if constexpr (std::endian::native == std::endian::little) {
    return static_cast<std::size_t>(std::countr_zero(marks)) / 8;
  }
  return marks == 0 ? sizeof bytes : 0;
}

}  // namespace

char* writeReadable(std::string_view raw, Escapes escapes, char* target) {
  const char escape = escapes == Escapes::parameter ? '^' : '\\';
  std::size_t at = 0;
  while (at < raw.size()) {
    if (constexpr std::size_t step = sizeof(std::uint64_t); raw.size() - at >= step) {
      const std::size_t plain = plainLength(raw.data() + at, escape);
      // All of them, whatever counts: there is room, and the rest is written over.
      std::memcpy(target, raw.data() + at, step);
      target += plain;
      at += plain;
      if (plain > 0) continue;
    }
    const char byte = raw[at];
    if (byte == escape && escapes != Escapes::none && at + 1 < raw.size()) {
      if (const char meant = resolveEscape(escapes, raw[at + 1])) {
        *target++ = meant;
        at += 2;
        continue;
      }
    }
    const std::size_t length = utf8Length(raw.substr(at));
    if (length == 0) {
      *target++ = static_cast<char>(0xC0 | static_cast<Byte>(byte) >> 6);
      *target++ = static_cast<char>(0x80 | (static_cast<Byte>(byte) & 0x3F));
      ++at;
    } else if (byte == '\0') {
      ++at;
    } else {
      std::memcpy(target, raw.data() + at, length);
      target += length;
      at += length;
    }
  }
  return target;
}

}  // namespace tidemark::local
