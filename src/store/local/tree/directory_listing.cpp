#include "store/local/tree/directory_listing.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <memory>

#include "store/local/tree/file_names.h"

namespace tidemark::local {
namespace {

struct CloseDirectory {
  void operator()(DIR* directory) const { ::closedir(directory); }
};

// Spares a system call for almost every name.
EntryKind kindOfEntry(int directory, const dirent& entry) {
  if (entry.d_type == DT_REG) return EntryKind::item;
  if (entry.d_type == DT_DIR) return EntryKind::directory;
  if (entry.d_type == DT_LNK || entry.d_type == DT_UNKNOWN) {
    return entryKindOf(directory, entry.d_name);
  }
  return EntryKind::other;
}

}  // namespace

std::optional<DirectoryListing> listDirectory(int directory) {
  // The stream owns the descriptor that it reads; this one has a position of its own.
  const int own = ::openat(directory, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (own < 0) return std::nullopt;
  const std::unique_ptr<DIR, CloseDirectory> stream(::fdopendir(own));
  if (stream == nullptr) {
    ::close(own);
    return std::nullopt;
  }
  DirectoryListing listing;
  // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody else has this stream
  while (const dirent* entry = ::readdir(stream.get())) {
    const std::string_view name(entry->d_name);
    if (!isDirectoryName(name)) continue;
    const bool isItemName = kindOfName(name) == NameKind::item;
    if (!isItemName && entry->d_type == DT_REG) continue;
    const EntryKind kind = kindOfEntry(directory, *entry);
    if (kind == EntryKind::directory) {
      listing.directories.emplace_back(name);
    } else if (isItemName && kind == EntryKind::item) {
      listing.items.add(name, false);
    } else if (isItemName && (kind == EntryKind::linkedItem || kind == EntryKind::danglingLink)) {
      listing.items.add(name, true);
    } else if (kind == EntryKind::danglingLink) {
      listing.danglingLinks.emplace_back(name);
    }
  }
  return listing;
}

EntryKind entryKindOf(int directory, const std::string& name) {
  struct stat status {};
  if (::fstatat(directory, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
    return EntryKind::absent;
  }
  const bool isLink = S_ISLNK(status.st_mode);
  if (isLink && ::fstatat(directory, name.c_str(), &status, 0) != 0) return EntryKind::danglingLink;
  if (S_ISDIR(status.st_mode)) return EntryKind::directory;
  if (!S_ISREG(status.st_mode)) return EntryKind::other;
  return isLink ? EntryKind::linkedItem : EntryKind::item;
}

Descriptor openDirectory(const std::string& path) {
  return Descriptor(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

}  // namespace tidemark::local
