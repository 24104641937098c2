#include "host/text_buffer.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <new>

namespace tidemark {

void TextBuffer::offerMemory() {
  const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  void* begin = bytes_.get();
  std::size_t size = capacity_;
  if (std::align(page, page, begin, size) == nullptr) return;
  static_cast<void>(::madvise(begin, size / page * page, MADV_FREE));
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
