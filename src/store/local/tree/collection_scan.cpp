// How one directory is read, at first and when something in it changed.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <map>
#include <string_view>
#include <tuple>
#include <unordered_set>
#include <utility>

#include "store/local/tree/collection_tree.h"
#include "store/local/tree/directory_listing.h"
#include "store/local/tree/file_names.h"
#include "store/local/tree/root.h"

namespace tidemark::local {
namespace {

using FileNews = CollectionDirectory::FileNews;

// Of as many collections files are read at the same time; each holds a descriptor.
constexpr std::size_t maximumOpenDirectories = 64;

// For somebody, which makes `chmod a-w` mean something for the superuser too, and for this process.
bool mayBeWritten(int directory, const std::string& path) {
  struct stat status {};
  constexpr mode_t written = S_IWUSR | S_IWGRP | S_IWOTH;
  if (::fstat(directory, &status) != 0 || (status.st_mode & written) == 0) return false;
  return ::faccessat(AT_FDCWD, path.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

bool isLink(const std::string& path) {
  std::error_code ignored;
  return std::filesystem::is_symlink(path, ignored);
}

bool isMetadataBeingWritten(const CollectionDirectory& directory) {
  for (const std::string& name : directory.beingWritten) {
    if (kindOfName(name) == NameKind::metadata) return true;
  }
  return false;
}

// Still the file that was read, as far as its state tells.
bool isUnchanged(const FileRecord& file, int directory, const char* name) {
  struct stat status {};
  return !file.isYoung && !file.isUnreadable && ::fstatat(directory, name, &status, 0) == 0 &&
         tagOf(status) == file.tag;
}

// What a calendar says of its items.
std::tuple<bool, bool, bool> kindsIn(const CollectionItems& items) {
  return {items.isEmpty(), items.hasEvents(), items.hasTodos()};
}

bool isYoungFile(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && isYoung(status);
}

// Whether the file may be read now, as far as can be told without reading all of it.
bool isHalfWritten(const CollectionDirectory& directory, int opened, const std::string& name) {
  return directory.beingWritten.contains(name) && !FileReader::endsAsCalendar(opened, name.c_str());
}

}  // namespace

void CollectionTree::settle(CollectionDirectory& directory) {
  if (directory.needsScan) {
    scan(directory);
    return;
  }
  for (const std::string& name : std::exchange(directory.changedNames, {})) {
    checkName(directory, name);
  }
  if (directory.needsMetadata) {
    const Descriptor opened = openDirectory(directory.path);
    directory.needsMetadata = false;
    // It may be read again, or no more.
    if (static_cast<bool>(opened) != directory.isListed) {
      scan(directory);
      return;
    }
    if (opened) readOwnState(directory, opened.get());
  }
  if (!directory.changedFiles.empty()) checkFiles(directory);
}

void CollectionTree::scan(CollectionDirectory& directory) {
  directory.needsScan = false;
  directory.needsMetadata = false;
  directory.changedNames.clear();
  directory.changedFiles.clear();
  // Before the listing: what changes after it is told.
  watch(directory);
  Descriptor opened = openDirectory(directory.path);
  std::optional<DirectoryListing> listing;
  if (opened) listing = listDirectory(opened.get());
  if (!listing) {
    // Gone, or not ours to read: nothing to show. Anything else says nothing about what is there.
    if (errno != ENOENT && errno != ENOTDIR && errno != EACCES) {
      isSuspect_ = true;
      return;
    }
    if (directory.parent != nullptr) directory.parent->changedNames.insert(directory.name);
    listing.emplace();
  }
  for (const std::string& name : listing->directories) checkName(directory, name);
  const std::unordered_set<std::string_view> present(listing->directories.begin(),
                                                     listing->directories.end());
  directory.danglingLinks.clear();
  directory.danglingLinks.insert(listing->danglingLinks.begin(), listing->danglingLinks.end());
  std::vector<std::string> gone;
  for (const auto& [name, child] : directory.children) {
    if (!present.contains(name)) gone.push_back(name);
  }
  for (const std::string& name : directory.deeperDirectories) {
    if (!present.contains(name)) gone.push_back(name);
  }
  for (const std::string& name : gone) checkName(directory, name);
  const bool isListed = static_cast<bool>(opened);
  if (isListed) {
    readOwnState(directory, opened.get());
  } else if (std::exchange(directory.allowsContentModifications, false)) {
    calendars_.reset();
    isChanged_ = true;
  }
  if (directory.depth > 0) scanFiles(directory, std::move(opened), std::move(listing->items));
  directory.isListed = isListed;
}

void CollectionTree::scanFiles(CollectionDirectory& directory, Descriptor opened,
                               FileNames listed) {
  if (!directory.isListed) {
    for (std::size_t index = 0; index < listed.size(); ++index) {
      if (listed.isLinked(index)) watchTarget(directory, listed.name(index));
    }
    directory.items->expect(listed.size());
    order(directory, std::move(opened), std::move(listed), FileNews::contents);
    return;
  }
  std::unordered_set<std::string_view> present;
  FileNames names;
  for (std::size_t index = 0; index < listed.size(); ++index) {
    const char* name = listed.name(index);
    present.insert(name);
    const FileRecord* former = directory.items->file(name);
    if (former != nullptr && isUnchanged(*former, opened.get(), name)) continue;
    if (isHalfWritten(directory, opened.get(), name)) continue;
    if (listed.isLinked(index)) watchTarget(directory, name);
    names.add(name, listed.isLinked(index));
  }
  std::vector<std::string> gone;
  directory.items->forEachFile([&](const FileRecord& file) {
    if (std::string name = file.name(); !present.contains(name)) gone.push_back(std::move(name));
  });
  for (const std::string& name : gone) forget(directory, name);
  order(directory, std::move(opened), std::move(names), FileNews::suspected);
}

void CollectionTree::readOwnState(CollectionDirectory& directory, int opened) {
  if (directory.depth == 0) {
    const AuthorizationStatus status = rootStatus(candidates_);
    isChanged_ |= status != status_;
    status_ = status;
    return;
  }
  const bool allowsContentModifications = mayBeWritten(opened, directory.path);
  // Half of a title is none.
  Metadata metadata = isMetadataBeingWritten(directory) ? directory.metadata : readMetadata(opened);
  if (allowsContentModifications == directory.allowsContentModifications &&
      metadata == directory.metadata) {
    return;
  }
  directory.allowsContentModifications = allowsContentModifications;
  directory.metadata = std::move(metadata);
  calendars_.reset();
  isChanged_ = true;
}

void CollectionTree::checkName(CollectionDirectory& directory, const std::string& name) {
  if (!isDirectoryName(name)) return;
  const std::string path = directory.path + '/' + name;
  const auto identity = identityOf(path);
  if (!identity && isLink(path)) {
    directory.danglingLinks.insert(name);
  } else {
    directory.danglingLinks.erase(name);
  }
  if (directory.depth >= deepestCollection) {
    const bool isChanged = identity ? directory.deeperDirectories.insert(name).second
                                    : directory.deeperDirectories.erase(name) > 0;
    if (isChanged) calendars_.reset();
    isChanged_ |= isChanged;
    return;
  }
  const auto found = directory.children.find(name);
  if (found != directory.children.end()) {
    if (identity && *identity == found->second->identity) return;
    drop(std::move(found->second));
    directory.children.erase(found);
  }
  if (identity) addChild(directory, name, *identity);
}

void CollectionTree::checkFiles(CollectionDirectory& directory) {
  const auto changed = std::exchange(directory.changedFiles, {});
  const Descriptor opened = openDirectory(directory.path);
  std::map<FileNews, FileNames> names;
  for (const auto& [name, news] : changed) {
    const EntryKind kind = opened ? entryKindOf(opened.get(), name) : EntryKind::absent;
    if (kind == EntryKind::directory || directory.children.contains(name)) {
      directory.changedNames.insert(name);
    }
    const bool isLinked = kind == EntryKind::linkedItem || kind == EntryKind::danglingLink;
    if (kind != EntryKind::item && !isLinked) {
      forget(directory, name);
    } else if (isLinked || !isHalfWritten(directory, opened.get(), name)) {
      if (isLinked) watchTarget(directory, name);
      names[news].add(name, isLinked);
    }
  }
  for (auto& [news, files] : names) {
    Descriptor own(::fcntl(opened.get(), F_DUPFD_CLOEXEC, 0));
    order(directory, std::move(own), std::move(files), news);
  }
}

void CollectionTree::order(CollectionDirectory& directory, Descriptor opened, FileNames names,
                           FileNews news) {
  if (names.isEmpty()) return;
  LoadOrder order;
  order.directory = std::move(opened);
  order.names = std::move(names);
  const bool isTold = directory.watch && news == FileNews::contents;
  order.changes = isTold ? FileReader::Changes::toldByWatch : FileReader::Changes::compared;
  order.take = [this, &directory, news](LoadedFile loaded) {
    accept(directory, news, std::move(loaded));
  };
  loads_.push_back({&directory, std::move(order)});
  if (loads_.size() >= maximumOpenDirectories) load();
}

void CollectionTree::accept(CollectionDirectory& directory, FileNews news, LoadedFile loaded) {
  FileRecord& record = *loaded.record;
  const std::string_view name = loaded.name;
  // Of almost every file nothing is known but its items.
  if (!directory.unsettled.empty()) directory.unsettled.erase(std::string(name));
  switch (loaded.outcome) {
    case FileText::Outcome::absent:
    case FileText::Outcome::passedOver:
      remove(directory, name);
      return;
    case FileText::Outcome::unsteady:
      directory.unsettled.emplace(name);
      return;
    case FileText::Outcome::unreadable:
      record.isUnreadable = true;
      directory.hasUnreadable = true;
      break;
    case FileText::Outcome::read:
      break;
  }
  const bool isCutOff = loaded.outcome == FileText::Outcome::read && !loaded.isWhole;
  if (isCutOff && directory.beingWritten.contains(name)) return;
  const bool isTold = directory.watch && news == FileNews::contents;
  if (isCutOff && isTold && isYoungFile(directory.path + '/' + std::string(name))) {
    // Who wrote it was done; the next one may have begun since, of which the watch then tells.
    if (isLastRound_) {
      directory.unsettled.emplace(name);
    } else {
      directory.changedFiles.emplace(name, FileNews::cutOff);
      isCutOffFound_ = true;
    }
    return;
  }
  if (isCutOff && news == FileNews::suspected && record.isYoung) {
    // Its writer may not be done; one that pauses for longer than a file is young is.
    directory.unsettled.emplace(name);
    return;
  }
  const auto former = put(directory, std::move(loaded.record));
  const bool isSameFile =
      former != nullptr && former->tag == record.tag && record.tag != unknownTag;
  const bool isSameAccess = former != nullptr && former->isUnreadable == record.isUnreadable;
  isChanged_ |= news == FileNews::attributes ? !isSameAccess : !isSameFile || !isSameAccess;
}

// Returns what the file was before; null when there was none.
std::unique_ptr<const FileRecord> CollectionTree::put(CollectionDirectory& directory,
                                                      std::unique_ptr<FileRecord> record) {
  CollectionItems& items = *directory.items;
  const auto former = kindsIn(items);
  if (!record->isLinked && !directory.linkedFiles.empty()) {
    releaseTarget(directory, record->name());
  }
  auto replaced = items.put(std::move(record));
  if (kindsIn(items) != former) calendars_.reset();
  return replaced;
}

void CollectionTree::remove(CollectionDirectory& directory, std::string_view fileName) {
  CollectionItems& items = *directory.items;
  const auto former = kindsIn(items);
  if (!items.remove(fileName)) return;
  if (kindsIn(items) != former) calendars_.reset();
  isChanged_ = true;
}

// The name is gone, or stands for no file any more.
void CollectionTree::forget(CollectionDirectory& directory, const std::string& fileName) {
  releaseTarget(directory, fileName);
  directory.unsettled.erase(fileName);
  remove(directory, fileName);
}

// So that changes behind a link are told; what they are is seen by comparing. Before the file is
// read, so that none is missed.
void CollectionTree::watchTarget(CollectionDirectory& directory, const std::string& fileName) {
  const std::filesystem::path link(directory.path + '/' + fileName);
  std::error_code error;
  std::filesystem::path target = std::filesystem::canonical(link, error);
  // Of a link to nothing yet, where the first step leads.
  if (error) target = link.parent_path() / std::filesystem::read_symlink(link, error);
  const auto watch = watches_.watch(target.parent_path(), Watcher::Interest::contents, nullptr);
  auto& entry = directory.linkedFiles[fileName];
  // Only now, lest what happens between the two is told to nobody.
  if (entry) watches_.release(*entry, nullptr);
  entry = watch;
}

void CollectionTree::releaseTarget(CollectionDirectory& directory, const std::string& fileName) {
  const auto linked = directory.linkedFiles.find(fileName);
  if (linked == directory.linkedFiles.end()) return;
  if (linked->second) watches_.release(*linked->second, nullptr);
  directory.linkedFiles.erase(linked);
}

}  // namespace tidemark::local
