// An owned file descriptor, closed at its end; and the errors of the calls that take one. One
// thread.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace tidemark::local {

// A value of errno; 0 is success.
using ErrorNumber = int;

class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    Descriptor old(std::exchange(number_, std::exchange(other.number_, -1)));
    return *this;
  }
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }

  explicit operator bool() const { return number_ >= 0; }
  int get() const { return number_; }

 private:
  int number_ = -1;
};

// Makes a system call again for as long as a signal interrupts it.
template <typename Call>
auto uninterrupted(const Call& call) {
  while (true) {
    const auto result = call();
    if (result != -1 || errno != EINTR) return result;
  }
}

}  // namespace tidemark::local
