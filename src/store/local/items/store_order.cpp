#include "store/local/items/store_order.h"

#include <algorithm>

namespace tidemark::local {

void StoreOrder::name(std::uint32_t collection, std::string_view identifier) {
  if (prefixes_.size() <= collection) prefixes_.resize(collection + 1);
  prefixes_[collection] = std::string(identifier) + ':';
}

int StoreOrder::compareIdentifiers(std::uint32_t collectionOfA, const Item& a,
                                   std::uint32_t collectionOfB, const Item& b) const {
  if (collectionOfA == collectionOfB) return a.uid().compare(b.uid());
  const std::string_view prefixOfA = prefixes_[collectionOfA];
  const std::string_view prefixOfB = prefixes_[collectionOfB];
  const std::size_t common = std::min(prefixOfA.size(), prefixOfB.size());
  if (const int order = prefixOfA.substr(0, common).compare(prefixOfB.substr(0, common))) {
    return order;
  }
  // A directory's name may hold a colon, so that one prefix begins with the other.
  return (std::string(prefixOfA) += a.uid()).compare(std::string(prefixOfB) += b.uid());
}

}  // namespace tidemark::local
