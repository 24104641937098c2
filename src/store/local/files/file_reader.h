// Reads whole files that anybody may have put there: a pipe, a device or a directory in the place
// of a file neither blocks nor harms, and no file is read beyond a bound.
#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

namespace tidemark::local {

// Larger files are passed over: read in full or not at all, since half a calendar would show
// appointments as missing. The largest calendars that people keep in one file have some ten
// megabytes; what is beyond this is no calendar, and holding it would cost the machine its memory.
inline constexpr std::size_t maximumFileSize = std::size_t{256} << 20;

// Device, inode, size, mtime and ctime in one number: while it is the same, so is the file, unless
// it is young. It has so many bits that a few flags find room beside it.
using FileTag = std::uint64_t;
inline constexpr int fileTagBits = 61;
inline constexpr FileTag lastFileTag = (FileTag{1} << fileTagBits) - 1;
// Of a file whose state was not asked for. No state has this tag.
inline constexpr FileTag unknownTag = 0;
FileTag tagOf(const struct stat& status);

// The file changed so recently that it may change again without another tag: the clocks of file
// systems tick every ten milliseconds here, every two seconds at the worst (FAT, old servers).
bool isYoung(const struct stat& status);

struct FileText {
  enum class Outcome {
    read,
    absent,
    passedOver,  // not a regular file, or too large
    unreadable,  // the system refused
    unsteady,    // it kept changing while it was read
  };
  Outcome outcome = Outcome::absent;
  // Valid until the next call.
  std::string_view text;
  FileTag tag = unknownTag;
  bool isYoung = false;
};

// One thread at a time.
class FileReader {
 public:
  enum class Changes {
    toldByWatch,  // a watch tells of every change; the tag is then seldom asked for
    compared,     // the file is read again when it changed during the read
  };

  FileText read(int directory, const char* name, Changes changes);

  // Whether the file ends as a calendar does; reads its last bytes alone.
  static bool endsAsCalendar(int directory, const char* name);

 private:
  std::optional<std::string_view> readSmall(int descriptor);
  FileText readOnce(int descriptor, const struct stat& status);
  void reserve(std::size_t size);

  std::unique_ptr<char[]> buffer_;
  std::size_t capacity_ = 0;
};

}  // namespace tidemark::local
