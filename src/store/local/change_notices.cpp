#include "store/local/change_notices.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>

namespace tidemark::local {

ChangeNotices::ChangeNotices() {
  std::array<int, 2> ends{-1, -1};
  // A pipe is everywhere; each byte in it is a notification.
  if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) return;
  readEnd_ = Descriptor(ends[0]);
  writeEnd_ = Descriptor(ends[1]);
}

void ChangeNotices::post(std::size_t count) {
  constexpr char notice = 1;
  // A pipe that is full holds tens of thousands of them: one more tells nothing new.
  for (; count > 0; --count) static_cast<void>(!::write(writeEnd_.get(), &notice, 1));
}

void ChangeNotices::deliver(std::size_t count) const {
  if (!observer_) return;
  for (; count > 0; --count) observer_();
}

std::size_t ChangeNotices::wait(int descriptor) {
  // Descriptors below zero are passed over.
  std::array<pollfd, 2> polled = {{{readEnd_.get(), POLLIN, 0}, {descriptor, POLLIN, 0}}};
  static_cast<void>(::poll(polled.data(), polled.size(), -1));
  if ((polled.front().revents & POLLIN) == 0) return 0;
  std::array<char, 256> posted{};
  const ssize_t count = ::read(readEnd_.get(), posted.data(), posted.size());
  return count > 0 ? static_cast<std::size_t>(count) : 0;
}

}  // namespace tidemark::local
