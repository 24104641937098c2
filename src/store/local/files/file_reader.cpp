#include "store/local/files/file_reader.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <ctime>

#include "store/local/files/descriptor.h"

namespace tidemark::local {
namespace {

constexpr std::size_t smallestBuffer = std::size_t{64} << 10;
// A buffer that one large file needed is not kept for all the small ones after it.
constexpr std::size_t largestKeptBuffer = std::size_t{4} << 20;
constexpr int maximumAttempts = 4;
constexpr std::int64_t clockGrainSeconds = 2;

// O_NONBLOCK: opening a pipe must not wait for a writer. O_NOCTTY: nor make a terminal ours.
constexpr int openFlags = O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY;

// Spreads every bit of `value` over the hash: two rounds of multiply and shift.
std::uint64_t mix(std::uint64_t hash, std::uint64_t value) {
  hash = (hash ^ value) * 0x9E3779B97F4A7C15u;
  hash = (hash ^ (hash >> 32)) * 0xD6E8FEB86659FD93u;
  return hash ^ (hash >> 32);
}

std::uint64_t nanoseconds(const timespec& time) {
  return static_cast<std::uint64_t>(time.tv_sec) * 1'000'000'000u +
         static_cast<std::uint64_t>(time.tv_nsec);
}

}  // namespace

FileTag tagOf(const struct stat& status) {
  std::uint64_t hash = 0x243F6A8885A308D3u;
  hash = mix(hash, static_cast<std::uint64_t>(status.st_dev));
  hash = mix(hash, static_cast<std::uint64_t>(status.st_ino));
  hash = mix(hash, static_cast<std::uint64_t>(status.st_size));
  hash = mix(hash, nanoseconds(status.st_mtim));
  hash = mix(hash, nanoseconds(status.st_ctim));
  const FileTag tag = hash & lastFileTag;
  return tag == unknownTag ? 1 : tag;
}

bool isYoung(const struct stat& status) {
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME_COARSE, &now);
  return std::max(status.st_mtim.tv_sec, status.st_ctim.tv_sec) >= now.tv_sec - clockGrainSeconds;
}

FileText FileReader::read(int directory, const char* name, Changes changes) {
  FileText result;
  const Descriptor file(::openat(directory, name, openFlags));
  if (!file) {
    const bool isAbsent = errno == ENOENT || errno == ENOTDIR || errno == ELOOP;
    // A socket cannot be opened at all.
    result.outcome = isAbsent         ? FileText::Outcome::absent
                     : errno == ENXIO ? FileText::Outcome::passedOver
                                      : FileText::Outcome::unreadable;
    return result;
  }
  if (changes == Changes::toldByWatch) {
    if (const auto text = readSmall(file.get())) {
      result.outcome = FileText::Outcome::read;
      result.text = *text;
      return result;
    }
  }
  struct stat before {};
  if (::fstat(file.get(), &before) != 0) {
    result.outcome = FileText::Outcome::unreadable;
    return result;
  }
  for (int attempt = 0; attempt < maximumAttempts; ++attempt) {
    result = readOnce(file.get(), before);
    if (result.outcome == FileText::Outcome::read) {
      const bool hasAllBytes = result.text.size() == static_cast<std::size_t>(before.st_size);
      if (changes == Changes::toldByWatch && hasAllBytes) return result;
    } else if (result.outcome != FileText::Outcome::unsteady) {
      return result;
    }
    struct stat after {};
    if (::fstat(file.get(), &after) != 0) break;
    if (result.outcome == FileText::Outcome::read && tagOf(after) == result.tag) return result;
    before = after;
  }
  result.outcome = FileText::Outcome::unsteady;
  return result;
}

// Three system calls a file, opening and closing included: asking for its state would be a fourth,
// a twelfth of the time that reading it takes. Absent where one read does not do.
std::optional<std::string_view> FileReader::readSmall(int descriptor) {
  reserve(smallestBuffer);
  const ssize_t count = ::read(descriptor, buffer_.get(), capacity_);
  // A read that comes back short has met the end.
  if (count < 0 || static_cast<std::size_t>(count) == capacity_) return std::nullopt;
  return std::string_view(buffer_.get(), static_cast<std::size_t>(count));
}

FileText FileReader::readOnce(int descriptor, const struct stat& status) {
  FileText result;
  result.tag = tagOf(status);
  result.isYoung = isYoung(status);
  result.outcome = FileText::Outcome::passedOver;
  if (!S_ISREG(status.st_mode)) return result;
  const auto expected = static_cast<std::size_t>(std::max<off_t>(status.st_size, 0));
  if (expected > maximumFileSize) return result;

  // One byte more than the file has: a read that comes back short has met its end.
  reserve(expected + 1);
  std::size_t size = 0;
  for (;;) {
    if (size == capacity_) {
      result.outcome = FileText::Outcome::unsteady;
      return result;
    }
    const ssize_t count =
        ::pread(descriptor, buffer_.get() + size, capacity_ - size, static_cast<off_t>(size));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) {
      result.outcome = FileText::Outcome::unreadable;
      return result;
    }
    size += static_cast<std::size_t>(count);
    if (count == 0 || size == expected) break;
  }
  result.outcome = FileText::Outcome::read;
  result.text = std::string_view(buffer_.get(), size);
  return result;
}

void FileReader::reserve(std::size_t size) {
  const bool isWasteful = capacity_ > largestKeptBuffer && size < largestKeptBuffer;
  if (size <= capacity_ && !isWasteful) return;
  buffer_.reset();
  capacity_ = std::max(size, smallestBuffer);
  // Not value-initialised: the pages of a large buffer are touched as they are filled.
  buffer_.reset(new char[capacity_]);
}

bool FileReader::endsAsCalendar(int directory, const char* name) {
  constexpr std::string_view end = "END:VCALENDAR";
  const Descriptor file(::openat(directory, name, openFlags));
  struct stat status {};
  if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return false;
  // Room for the blank lines that some programs leave behind the end.
  std::array<char, 256> tail{};
  const off_t from = std::max<off_t>(0, status.st_size - static_cast<off_t>(tail.size()));
  const ssize_t count = ::pread(file.get(), tail.data(), tail.size(), from);
  if (count <= 0) return false;
  const std::string_view text(tail.data(), static_cast<std::size_t>(count));
  const auto isSame = [](char a, char b) { return (a >= 'a' && a <= 'z' ? a - 32 : a) == b; };
  return std::search(text.begin(), text.end(), end.begin(), end.end(), isSame) != text.end();
}

}  // namespace tidemark::local
