#include "store/local/files/temporary_file.h"

#include <fcntl.h>
#include <sys/random.h>

#include <array>
#include <cstdlib>

namespace tidemark::local {
namespace {

constexpr mode_t permissionBits = 07777;

ErrorNumber writeAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written =
        uninterrupted([&] { return ::write(descriptor, text.data(), text.size()); });
    if (written < 0) return errno;
    // A disk that takes nothing and says nothing is full.
    if (written == 0) return ENOSPC;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return 0;
}

}  // namespace

std::string temporaryName() {
  constexpr std::string_view digits = "0123456789abcdef";
  std::array<unsigned char, 16> random;
  // Cannot fail for so few bytes on a system that has come up.
  if (::getentropy(random.data(), random.size()) != 0) std::abort();
  std::string name = ".";
  for (const unsigned char byte : random) {
    name += digits[byte >> 4];
    name += digits[byte & 15];
  }
  return name += ".tmp";
}

TemporaryFile::TemporaryFile(OpenDirectory& directory)
    : directory_(directory), name_(temporaryName()) {}

TemporaryFile::~TemporaryFile() {
  // Should this fail, the file stays as litter that nobody reads.
  if (isOwned_) (void)directory_.remove(name_);
}

ErrorNumber TemporaryFile::write(std::string_view text, const FileStatus* replaced) {
  constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  descriptor_ = Descriptor(
      uninterrupted([&] { return ::openat(directory_.descriptor(), name_.c_str(), flags, 0600); }));
  if (!descriptor_) return errno;
  isOwned_ = true;

  FileStatus own;
  if (::fstat(descriptor_.get(), &own) != 0) return errno;
  identity_ = identityOf(own);

  if (const ErrorNumber error = writeAll(descriptor_.get(), text)) return error;
  if (replaced != nullptr) {
    if (const ErrorNumber error = adopt(own, *replaced)) return error;
  }
  if (const ErrorNumber error = syncFile(descriptor_.get())) return error;
  // Closed while it still has the temporary name: a close after the rename would be told to whoever
  // watches as a second change of the item.
  descriptor_ = directory_.hold(name_);
  return descriptor_ ? 0 : errno;
}

ErrorNumber TemporaryFile::adopt(const FileStatus& own, const FileStatus& replaced) {
  constexpr uid_t sameOwner = static_cast<uid_t>(-1);
  const auto give = [&](uid_t owner) -> ErrorNumber {
    return ::fchown(descriptor_.get(), owner, replaced.st_gid) == 0 ? 0 : errno;
  };
  const auto isForbidden = [](ErrorNumber error) { return error == EPERM || isUnsupported(error); };

  if (own.st_uid != replaced.st_uid || own.st_gid != replaced.st_gid) {
    ErrorNumber error = give(replaced.st_uid);
    if (isForbidden(error)) error = give(sameOwner);
    if (error != 0 && !isForbidden(error)) return error;
  }
  // After the owner, since a change of owner may clear bits of the mode.
  const mode_t mode = replaced.st_mode & permissionBits;
  if (mode == (own.st_mode & permissionBits)) return 0;
  return ::fchmod(descriptor_.get(), mode) == 0 ? 0 : errno;
}

}  // namespace tidemark::local
