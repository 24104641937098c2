// The directories below the root and their items, kept equal to the disk: by what the watches tell,
// and where they tell nothing by comparing.
//
// Guarded by the store's lock.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "store/local/items/collection_items.h"
#include "store/local/tree/collection_directory.h"
#include "store/local/tree/collections.h"
#include "store/local/tree/file_loader.h"
#include "store/local/tree/watch_register.h"

namespace tidemark::local {

class CollectionTree {
 public:
  // `index` outlives the tree. Reads nothing yet.
  CollectionTree(std::vector<std::string> rootCandidates, std::unique_ptr<Watcher> watcher,
                 ItemIndex& index);
  ~CollectionTree();
  CollectionTree(const CollectionTree&) = delete;
  CollectionTree& operator=(const CollectionTree&) = delete;

  // Sets the watches: what changes from now on is announced. Reads little more than the names below
  // the root.
  void beginWatching();
  // Takes in what the watches tell and counts the notices that are certainly due, without acting on
  // it: quick, whatever happened. False when none of it was of interest.
  bool takeNews();
  // Makes everything as it is on disk. What happened before the call is in.
  void refresh();
  // Reads again what the system refused to let us read before.
  void retryUnreadable();

  // The notifications due since the last call.
  std::size_t takeNotices();

  std::shared_ptr<const Calendars> calendars();
  // Null when there is no collection of that number.
  const CollectionItems* items(std::uint32_t number) const;
  // Readable when takeNews has something to take; -1 when it never is.
  int watchDescriptor() { return watches_.watcher().descriptor(); }

 private:
  struct PendingLoad {
    CollectionDirectory* directory;
    LoadOrder order;
  };

  // collection_tree.cpp
  bool isCertain(const WatchEvent& event) const;
  void route(const WatchEvent& event);
  void note(CollectionDirectory& directory, const WatchEvent& event);
  void checkRoot();
  bool isRootSame() const;
  void watchCandidates();
  void check(CollectionDirectory& directory);
  bool finishBatch();
  bool settleAll();
  bool settleTree(CollectionDirectory& directory);
  static bool hasWorkBelow(const CollectionDirectory& directory);
  void load();
  std::uint32_t takeNumber(CollectionDirectory& directory);
  void addChild(CollectionDirectory& parent, const std::string& name,
                const DirectoryIdentity& identity);
  void watch(CollectionDirectory& directory);
  void drop(std::unique_ptr<CollectionDirectory> directory);

  // collection_scan.cpp
  void settle(CollectionDirectory& directory);
  void scan(CollectionDirectory& directory);
  void scanFiles(CollectionDirectory& directory, Descriptor opened, FileNames listed);
  void readOwnState(CollectionDirectory& directory, int opened);
  void checkName(CollectionDirectory& directory, const std::string& name);
  void checkFiles(CollectionDirectory& directory);
  void order(CollectionDirectory& directory, Descriptor opened, FileNames names,
             CollectionDirectory::FileNews news);
  void accept(CollectionDirectory& directory, CollectionDirectory::FileNews news,
              LoadedFile loaded);
  std::unique_ptr<const FileRecord> put(CollectionDirectory& directory,
                                        std::unique_ptr<FileRecord> record);
  void remove(CollectionDirectory& directory, std::string_view fileName);
  void forget(CollectionDirectory& directory, const std::string& fileName);
  void watchTarget(CollectionDirectory& directory, const std::string& fileName);
  void releaseTarget(CollectionDirectory& directory, const std::string& fileName);

  const std::vector<std::string> candidates_;
  ItemIndex& index_;
  WatchRegister watches_;
  // On what must change before a better root appears.
  std::vector<WatchId> candidateWatches_;
  std::unique_ptr<CollectionDirectory> root_;
  // By number; null for numbers that are free.
  std::vector<CollectionDirectory*> numbered_;
  std::vector<PendingLoad> loads_;

  std::shared_ptr<const Calendars> calendars_;  // null when they have to be made again
  AuthorizationStatus status_ = notDetermined;  // of the root, when it was last looked at
  bool isRead_ = false;                         // the disk was read at least once
  bool isSuspect_ = false;                      // anything may have changed
  bool hasCandidateNews_ = true;
  bool isCutOffFound_ = false;  // see FileNews::cutOff
  bool isLastRound_ = false;    // of those that one answer is worth
  bool isChanged_ = false;      // an answer would be another one now
  bool isAnnounced_ = false;    // and a notice was counted for it
  std::size_t notices_ = 0;
};

}  // namespace tidemark::local
