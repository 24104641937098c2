// Items stand in memory wherever their files put them, and waiting for one takes longer than
// writing its record. So what will be read soon is asked for ahead.
//
// Any thread.
#pragma once

#include <cstddef>

#include "store/local/text/item.h"

namespace tidemark::local {

// How much of an item is asked for: its head, with the identifier, and most of its texts.
inline constexpr std::size_t headOfItem = 192;
inline constexpr std::size_t mostOfItem = 768;

// Has the processor fetch the first `size` bytes from the item on. Changes nothing else.
inline void prefetch(const Item& item, std::size_t size) {
  constexpr std::size_t lineSize = 64;
  const auto* memory = reinterpret_cast<const char*>(&item);
  for (std::size_t done = 0; done < size; done += lineSize) __builtin_prefetch(memory + done);
}

}  // namespace tidemark::local
