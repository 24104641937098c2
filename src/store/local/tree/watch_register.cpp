#include "store/local/tree/watch_register.h"

#include <algorithm>

namespace tidemark::local {

std::optional<WatchId> WatchRegister::watch(const std::string& directory,
                                            Watcher::Interest interest, CollectionDirectory* user) {
  const auto watch = watcher_->watch(directory, interest);
  if (watch) users_[*watch].push_back(user);
  return watch;
}

void WatchRegister::release(WatchId watch, CollectionDirectory* user) {
  const auto found = users_.find(watch);
  if (found == users_.end()) return;
  const auto entry = std::find(found->second.begin(), found->second.end(), user);
  if (entry != found->second.end()) found->second.erase(entry);
  if (found->second.empty()) end(watch);
}

void WatchRegister::end(WatchId watch) {
  watcher_->unwatch(watch);
  users_.erase(watch);
}

const std::vector<CollectionDirectory*>& WatchRegister::users(WatchId watch) const {
  static const std::vector<CollectionDirectory*> nobody;
  const auto found = users_.find(watch);
  return found == users_.end() ? nobody : found->second;
}

}  // namespace tidemark::local
