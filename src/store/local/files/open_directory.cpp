#include "store/local/files/open_directory.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cstdio>

namespace tidemark::local {
namespace {

ErrorNumber errorOf(int result) {
  return result == 0 ? 0 : errno;
}

#if defined(__APPLE__)
constexpr int holdFlags = O_EVTONLY | O_NOFOLLOW | O_CLOEXEC;

int renameExchanging(int directory, const char* one, const char* other) {
  return ::renameatx_np(directory, one, directory, other, RENAME_SWAP);
}
int renameExclusively(int directory, const char* from, const char* to) {
  return ::renameatx_np(directory, from, directory, to, RENAME_EXCL);
}
#else
constexpr int holdFlags = O_PATH | O_NOFOLLOW | O_CLOEXEC;

int renameExchanging(int directory, const char* one, const char* other) {
  return ::renameat2(directory, one, directory, other, RENAME_EXCHANGE);
}
int renameExclusively(int directory, const char* from, const char* to) {
  return ::renameat2(directory, from, directory, to, RENAME_NOREPLACE);
}
#endif

}  // namespace

FileIdentity identityOf(const FileStatus& status) {
  return {status.st_dev, status.st_ino};
}

bool isUnsupported(ErrorNumber error) {
  // EINVAL is how renames refuse a flag.
  return error == EINVAL || error == ENOSYS || error == ENOTSUP || error == EOPNOTSUPP;
}

OpenDirectory::OpenDirectory(const std::string& path)
    : descriptor_(
          uninterrupted([&] { return ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); })),
      error_(descriptor_ ? 0 : errno) {}

void OpenDirectory::lock() {
  uninterrupted([&] { return ::flock(descriptor_.get(), LOCK_EX); });
}

std::optional<FileStatus> OpenDirectory::status(const std::string& name) const {
  FileStatus status;
  if (::fstatat(descriptor_.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return {};
  return status;
}

Descriptor OpenDirectory::hold(const std::string& name) const {
  return Descriptor(
      uninterrupted([&] { return ::openat(descriptor_.get(), name.c_str(), holdFlags); }));
}

ErrorNumber OpenDirectory::exchange(const std::string& one, const std::string& other) {
  return errorOf(renameExchanging(descriptor_.get(), one.c_str(), other.c_str()));
}

ErrorNumber OpenDirectory::renameIfAbsent(const std::string& from, const std::string& to) {
  const ErrorNumber error = errorOf(renameExclusively(descriptor_.get(), from.c_str(), to.c_str()));
  if (!isUnsupported(error)) return error;

  // A second name is never given over an existing one, on file systems that know second names.
  if (::linkat(descriptor_.get(), from.c_str(), descriptor_.get(), to.c_str(), 0) == 0) {
    // Should this fail, the file has a temporary name too many, which nobody reads.
    (void)remove(from);
    return 0;
  }
  if (errno != EPERM && !isUnsupported(errno)) return errno;

  // Look, then rename.
  if (status(to)) return EEXIST;
  return errno == ENOENT ? rename(from, to) : errno;
}

ErrorNumber OpenDirectory::rename(const std::string& from, const std::string& to) {
  return errorOf(::renameat(descriptor_.get(), from.c_str(), descriptor_.get(), to.c_str()));
}

ErrorNumber OpenDirectory::remove(const std::string& name) {
  return errorOf(::unlinkat(descriptor_.get(), name.c_str(), 0));
}

ErrorNumber OpenDirectory::sync() {
  const ErrorNumber error = syncFile(descriptor_.get());
  // Some network file systems have no such call for directories: their renames are durable, or
  // nothing makes them so.
  return isUnsupported(error) ? 0 : error;
}

ErrorNumber syncFile(int descriptor) {
#if defined(__APPLE__)
  // fsync stops at the drive's own cache there.
  if (::fcntl(descriptor, F_FULLFSYNC) == 0) return 0;
#endif
  return errorOf(uninterrupted([&] { return ::fsync(descriptor); }));
}

}  // namespace tidemark::local
