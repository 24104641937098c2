// A short text of fixed length, on the stack.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace tidemark {

template <std::size_t length>
struct FixedText {
  std::array<char, length> characters;

  std::string_view view() const { return {characters.data(), length}; }
};

}  // namespace tidemark
