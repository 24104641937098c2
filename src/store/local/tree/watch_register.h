// Which watch is for whom. One directory has one watch, however many paths and links lead to it.
//
// One thread at a time.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "store/local/tree/watcher.h"

namespace tidemark::local {

struct CollectionDirectory;

class WatchRegister {
 public:
  explicit WatchRegister(std::unique_ptr<Watcher> watcher) : watcher_(std::move(watcher)) {}

  Watcher& watcher() { return *watcher_; }

  // `user` may be null: somebody who need not be told what happened, only that something did.
  std::optional<WatchId> watch(const std::string& directory, Watcher::Interest interest,
                               CollectionDirectory* user);
  void release(WatchId watch, CollectionDirectory* user);
  // The watch is of no use any more; no user need release it.
  void end(WatchId watch);

  // The collections that the watch is for, null for others; empty when it is for nobody.
  const std::vector<CollectionDirectory*>& users(WatchId watch) const;

 private:
  std::unique_ptr<Watcher> watcher_;
  std::unordered_map<WatchId, std::vector<CollectionDirectory*>> users_;
};

}  // namespace tidemark::local
