#include "host/reply_channel.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

#include "host/process_end.h"

namespace tidemark {
namespace {

// A thread keeps a line's buffer for its next one: fresh memory costs a page fault every 4 kB,
// several times what filling it costs. One that is bigger than a week of a big calendar is offered
// to the system meanwhile, and one that is bigger than a year of it is given back.
constexpr std::size_t largestOwnBuffer = std::size_t{8} << 20;
constexpr std::size_t largestSpareBuffer = std::size_t{128} << 20;
thread_local TextBuffer spareBuffer;

void waitUntilWritable(int descriptor) {
  pollfd wait{descriptor, POLLOUT, 0};
  static_cast<void>(::poll(&wait, 1, -1));
}

// One write a line, unless the pipe takes less of it.
void writeWhole(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(descriptor, text.data(), text.size());
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
      waitUntilWritable(descriptor);  // hosts hand out non-blocking pipes
    } else if (errno != EINTR) {
      endQuietly();
    }
  }
}

std::timed_mutex& makeOutputLock() {
  static auto* const lock = new std::timed_mutex;
  return *lock;
}

}  // namespace

std::timed_mutex& outputLock = makeOutputLock();

ReplyObject::ReplyObject() : line_(std::move(spareBuffer)), writer_(line_) {
  writer_.beginObject();
}

ReplyObject::~ReplyObject() {
  if (line_.capacity() > largestSpareBuffer) return;
  line_.clear();
  if (line_.capacity() > largestOwnBuffer) line_.offerMemory();
  spareBuffer = std::move(line_);
}

void emit(ReplyObject&& object) {
  object.writer_.endObject();
  if (!object.writer_.isValid()) return;
  object.line_.append('\n');
  const std::lock_guard lock(outputLock);
  writeWhole(STDOUT_FILENO, object.line_.view());
}

void reply(RequestId id, ReplyObject&& object) {
  if (id != nullptr) object.writer_.member("id", *id);
  emit(std::move(object));
}

void fail(RequestId id, std::string_view message) {
  ReplyObject object;
  object.add("error", message);
  reply(id, std::move(object));
}

}  // namespace tidemark
