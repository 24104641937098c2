// Keeps items that left the store alive as long as an answer that was given out still shows them.
//
// An answer takes a hold before it is handed out; what is retired later lives until every hold
// taken before is gone. So an answer costs one hold, however many items it has.
// Any thread.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <set>
#include <vector>

#include "absl/container/inlined_vector.h"
#include "store/local/text/item.h"

namespace tidemark::local {

// Most files hold one item.
using ItemList = absl::InlinedVector<std::unique_ptr<Item>, 1>;

class RetiredItems {
 public:
  // Keeps what is in the store now alive. Must not outlive the RetiredItems it came from.
  class Hold {
   public:
    explicit Hold(RetiredItems& owner) : owner_(owner), age_(owner.enter()) {}
    ~Hold() { owner_.leave(age_); }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

   private:
    RetiredItems& owner_;
    std::uint64_t age_;
  };

  void retire(ItemList items);

 private:
  struct Retired {
    std::uint64_t age;
    ItemList items;
  };

  std::uint64_t enter();
  void leave(std::uint64_t age);

  std::mutex lock_;
  // Counts retirements: a hold of age n was taken after n of them.
  std::uint64_t age_ = 0;
  std::multiset<std::uint64_t> holds_;
  std::deque<Retired> retired_;
};

}  // namespace tidemark::local
