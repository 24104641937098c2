#include "host/text_buffer.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <new>

namespace tidemark {

void TextBuffer::offerMemory() {
  const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
  const auto begin = (reinterpret_cast<std::uintptr_t>(bytes_.get()) + page - 1) / page * page;
  const auto end = (reinterpret_cast<std::uintptr_t>(bytes_.get()) + capacity_) / page * page;
  if (begin >= end) return;
  static_cast<void>(::madvise(reinterpret_cast<void*>(begin), end - begin, MADV_FREE));
}

void TextBuffer::grow(std::size_t room) {
  const std::size_t capacity = std::max({size_ + room, 2 * capacity_, std::size_t{1024}});
  // realloc moves big buffers by their pages, without copying them.
  auto* bytes = static_cast<char*>(std::realloc(bytes_.get(), capacity));
  if (bytes == nullptr) throw std::bad_alloc();
  static_cast<void>(bytes_.release());
  bytes_.reset(bytes);
  capacity_ = capacity;
}

}  // namespace tidemark
