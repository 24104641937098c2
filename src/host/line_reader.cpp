#include "host/line_reader.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

namespace tidemark {
namespace {

constexpr std::size_t readSize = std::size_t{64} << 10;

// A buffer that one long line made bigger than this is given back after it.
constexpr std::size_t largestKeptBuffer = std::size_t{1} << 20;

std::string_view withoutCarriageReturn(std::string_view line) {
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

void waitUntilReadable(int descriptor) {
  pollfd wait{descriptor, POLLIN, 0};
  static_cast<void>(::poll(&wait, 1, -1));
}

}  // namespace

std::optional<std::string_view> LineReader::next() {
  std::size_t searched = 0;
  while (true) {
    const std::string_view rest = buffer_.view().substr(lineBegin_);
    const std::size_t length = rest.find('\n', searched);
    if (length != std::string_view::npos) {
      lineBegin_ += length + 1;
      return withoutCarriageReturn(rest.substr(0, length));
    }
    searched = rest.size();
    if (readMore()) continue;
    if (searched == 0) return std::nullopt;
    const std::string_view last = buffer_.view().substr(lineBegin_);
    lineBegin_ += last.size();
    return last;
  }
}

bool LineReader::readMore() {
  buffer_.removePrefix(lineBegin_);
  lineBegin_ = 0;
  if (buffer_.view().empty() && buffer_.capacity() > largestKeptBuffer) buffer_ = TextBuffer();
  char* const end = buffer_.reserve(readSize);
  while (true) {
    const ssize_t size = ::read(descriptor_, end, readSize);
    if (size > 0) {
      buffer_.setEnd(end + size);
      return true;
    }
    if (size == 0) return false;
    if (errno == EAGAIN || errno == EWOULDBLOCK) {
      waitUntilReadable(descriptor_);  // hosts hand out non-blocking pipes
    } else if (errno != EINTR) {
      return false;
    }
  }
}

}  // namespace tidemark
