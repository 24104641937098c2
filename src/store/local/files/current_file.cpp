#include "store/local/files/current_file.h"

#include <fcntl.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace tidemark::local {
namespace {

bool sameTime(const timespec& one, const timespec& other) {
  return one.tv_sec == other.tv_sec && one.tv_nsec == other.tv_nsec;
}

bool sameTimes(const FileStatus& one, const FileStatus& other) {
#if defined(__APPLE__)
  return sameTime(one.st_mtimespec, other.st_mtimespec) &&
         sameTime(one.st_ctimespec, other.st_ctimespec);
#else
  return sameTime(one.st_mtim, other.st_mtim) && sameTime(one.st_ctim, other.st_ctim);
#endif
}

}  // namespace

CurrentFile::CurrentFile(const std::string& directory, const std::string& name)
    : path_(directory + '/' + name), directory_(directory), name_(name) {
  error_ = directory_.error();
  if (error_ != 0) return;
  directory_.lock();
  error_ = openFile();
  if (error_ == ELOOP) {
    error_ = followLink();
    if (error_ == 0) error_ = openFile();
  }
  if (error_ == 0) error_ = readText();
}

ErrorNumber CurrentFile::followLink() {
  const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path_.c_str(), nullptr),
                                                         &std::free);
  if (!real) return errno;
  const std::string realPath = real.get();
  const std::size_t slash = realPath.rfind('/');
  isLink_ = true;
  name_ = realPath.substr(slash + 1);
  directory_ = OpenDirectory(realPath.substr(0, slash + 1));
  if (directory_.error() == 0) directory_.lock();
  return directory_.error();
}

ErrorNumber CurrentFile::openFile() {
  // Not blocking, lest a pipe of that name wait for a writer.
  constexpr int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  descriptor_ = Descriptor(
      uninterrupted([&] { return ::openat(directory_.descriptor(), name_.c_str(), flags); }));
  if (!descriptor_ || ::fstat(descriptor_.get(), &status_) != 0) return errno;
  if (S_ISDIR(status_.st_mode)) return EISDIR;
  return S_ISREG(status_.st_mode) ? 0 : EINVAL;
}

ErrorNumber CurrentFile::readText() {
  std::size_t length = 0;
  // One byte more than there should be, so that a file of that size never needs more room.
  text_.resize(static_cast<std::size_t>(status_.st_size) + 1);
  while (true) {
    if (length == text_.size()) text_.resize(length * 2);
    const ssize_t count = uninterrupted(
        [&] { return ::read(descriptor_.get(), text_.data() + length, text_.size() - length); });
    if (count < 0) return errno;
    if (count == 0) break;
    length += static_cast<std::size_t>(count);
  }
  text_.resize(length);
  return 0;
}

bool CurrentFile::isUntouched() const {
  const std::optional<FileStatus> now = directory_.status(name_);
  return now && identityOf(*now) == identityOf(status_) && now->st_size == status_.st_size &&
         sameTimes(*now, status_) && leadsTo(identityOf(status_));
}

bool CurrentFile::isAside(const std::string& aside) const {
  const std::optional<FileStatus> now = directory_.status(aside);
  return now && identityOf(*now) == identityOf(status_) && holdsItsText();
}

bool CurrentFile::holdsItsText() const {
  std::array<char, 65536> buffer;
  std::string_view rest = text_;
  while (true) {
    const auto offset = static_cast<off_t>(text_.size() - rest.size());
    const ssize_t count = uninterrupted(
        [&] { return ::pread(descriptor_.get(), buffer.data(), buffer.size(), offset); });
    if (count <= 0) return count == 0 && rest.empty();
    const std::string_view part(buffer.data(), static_cast<std::size_t>(count));
    if (!rest.starts_with(part)) return false;
    rest.remove_prefix(part.size());
  }
}

bool CurrentFile::leadsTo(const FileIdentity& identity) const {
  if (!isLink_) return true;
  FileStatus now;
  return ::stat(path_.c_str(), &now) == 0 && identityOf(now) == identity;
}

void CurrentFile::removeDanglingLink() const {
  FileStatus status;
  const bool dangles = isLink_ && ::stat(path_.c_str(), &status) != 0 && errno == ENOENT &&
                       ::lstat(path_.c_str(), &status) == 0 && S_ISLNK(status.st_mode);
  // A link that stays is no item either.
  if (dangles) ::unlink(path_.c_str());
}

}  // namespace tidemark::local
