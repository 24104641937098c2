// A growing run of bytes to write into through a pointer: what std::string cannot do without
// filling the room first.
//
// One thread.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

namespace tidemark {

class TextBuffer {
 public:
  TextBuffer() = default;
  TextBuffer(TextBuffer&& other) noexcept { swap(other); }
  TextBuffer& operator=(TextBuffer&& other) noexcept {
    swap(other);
    return *this;
  }

  std::string_view view() const { return {bytes_.get(), size_}; }
  std::size_t capacity() const { return capacity_; }
  void clear() { size_ = 0; }
  // While it is empty: lets the system take the memory when it is short of it. What it did not take
  // by the next use needs no page faults then.
  void offerMemory();
  // Drops bytes from the front; what is left moves there.
  void removePrefix(std::size_t size) {
    if (size == 0) return;
    size_ -= size;
    std::memmove(bytes_.get(), bytes_.get() + size, size_);
  }

  // Where to write next, with room for that many bytes. Valid until the next call; tell the new end
  // to setEnd.
  char* reserve(std::size_t room) {
    if (capacity_ - size_ < room) grow(room);
    return bytes_.get() + size_;
  }
  void setEnd(const char* end) { size_ = static_cast<std::size_t>(end - bytes_.get()); }

  void append(char byte) {
    *reserve(1) = byte;
    ++size_;
  }
  void append(std::string_view text) {
    if (text.empty()) return;
    std::memcpy(reserve(text.size()), text.data(), text.size());
    size_ += text.size();
  }

  void swap(TextBuffer& other) noexcept {
    std::swap(bytes_, other.bytes_);
    std::swap(size_, other.size_);
    std::swap(capacity_, other.capacity_);
  }

 private:
  struct Free {
    void operator()(char* bytes) const { std::free(bytes); }
  };
  void grow(std::size_t room);

  std::unique_ptr<char, Free> bytes_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace tidemark
