#include "host/text_buffer.h"

#include <algorithm>
#include <new>

namespace tidemark {

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
