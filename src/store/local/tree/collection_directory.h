// One directory of the tree below the root: a collection, an account, or both.
//
// Guarded by the store's lock, as the whole tree is.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "store/local/items/collection_items.h"
#include "store/local/tree/collections.h"
#include "store/local/tree/metadata.h"
#include "store/local/tree/watcher.h"

namespace tidemark::local {

// Which directory a name stands for, whatever its path.
struct DirectoryIdentity {
  dev_t device = 0;
  ino_t inode = 0;
  bool isLink = false;  // the name is a symbolic link to it
  friend bool operator==(const DirectoryIdentity&, const DirectoryIdentity&) = default;
};

// Absent when there is no directory of that path.
std::optional<DirectoryIdentity> identityOf(const std::string& path);

// Collections stand one or two levels below the root; deeper directories are only known to be
// there.
inline constexpr int deepestCollection = 2;

struct CollectionDirectory {
  // What is known of a file that is to be read.
  enum class FileNews {
    attributes,  // its permissions may be others
    suspected,   // it looks different; nobody told whether its writer is done
    contents,    // it was told, or it is read for the first time
    cutOff,      // it was read and had no end, and nothing was told of it since
  };

  std::string name;
  std::string path;
  int depth = 0;  // 0: the root itself
  CollectionDirectory* parent = nullptr;
  DirectoryIdentity identity;

  bool isListed = false;       // what is below stands for what was there
  bool hasUnreadable = false;  // files that the system refused
  Metadata metadata;
  bool allowsContentModifications = false;
  std::map<std::string, std::unique_ptr<CollectionDirectory>> children;
  std::set<std::string> deeperDirectories;  // below the deepest collections
  std::set<std::string> danglingLinks;      // that may come to be directories
  std::unique_ptr<CollectionItems> items;   // null for the root
  std::uint32_t number = 0;

  // Absent: everything is compared at every query.
  std::optional<WatchId> watch;
  // Files that somebody writes to and has not closed yet: until then, or until their text is whole,
  // they count as they were before.
  std::set<std::string, std::less<>> beingWritten;
  // Read again at every query: they kept changing, or may still be written by somebody unseen.
  std::set<std::string> unsettled;
  // Files behind symbolic links, or links to nothing yet, and the watch on where each of them is.
  std::map<std::string, std::optional<WatchId>> linkedFiles;

  // What is to be done before the next answer.
  bool needsScan = false;
  bool needsMetadata = false;
  std::set<std::string> changedNames;  // that may be directories
  std::map<std::string, FileNews> changedFiles;

  bool isCollection() const {
    return depth > 0 && (!items->isEmpty() || (children.empty() && deeperDirectories.empty()));
  }
  bool hasWork() const {
    return needsScan || needsMetadata || !changedNames.empty() || !changedFiles.empty();
  }
  // What is checked at every query, whatever the watches tell.
  bool needsChecks() const {
    return !watch || identity.isLink || !unsettled.empty() || !linkedFiles.empty() ||
           !danglingLinks.empty();
  }
};

// The path below the root, as text.
std::string identifierOf(const CollectionDirectory& collection);

// The calendar that a collection is.
LocalCalendarRef calendarOf(const CollectionDirectory& collection);

}  // namespace tidemark::local
