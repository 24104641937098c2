#include "store/local/items/retired_items.h"

#include <utility>

namespace tidemark::local {

void RetiredItems::retire(ItemList items) {
  const std::lock_guard lock(lock_);
  ++age_;
  // Without a hold nobody can see them: they end with this call.
  if (!holds_.empty()) retired_.push_back({age_, std::move(items)});
}

std::uint64_t RetiredItems::enter() {
  const std::lock_guard lock(lock_);
  holds_.insert(age_);
  return age_;
}

void RetiredItems::leave(std::uint64_t age) {
  // Freed after the lock is open again.
  std::vector<Retired> unseen;
  const std::lock_guard lock(lock_);
  holds_.erase(holds_.find(age));
  while (!retired_.empty() && (holds_.empty() || retired_.front().age <= *holds_.begin())) {
    unseen.push_back(std::move(retired_.front()));
    retired_.pop_front();
  }
}

}  // namespace tidemark::local
