// The store's order of events: by start, then identifier (in byte order), then where the occurrence
// was meant to be. Reading in parallel must not show in it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "store/local/items/event_series.h"

namespace tidemark::local {

class StoreOrder {
 public:
  // What the identifiers of the collection's items begin with, its own and a colon.
  void name(std::uint32_t collection, std::string_view identifier);
  std::string_view prefix(std::uint32_t collection) const { return prefixes_[collection]; }

  bool operator()(const PlacedEvent& a, const PlacedEvent& b) const {
    if (a.start != b.start) return a.start < b.start;
    if (const int order = compareIdentifiers(a.collection, *a.item, b.collection, *b.item)) {
      return order < 0;
    }
    return a.occurrence < b.occurrence;
  }

  // Negative, zero or positive, as the identifiers' bytes compare.
  int compareIdentifiers(std::uint32_t collectionOfA, const Item& a, std::uint32_t collectionOfB,
                         const Item& b) const;

 private:
  std::vector<std::string> prefixes_;
};

}  // namespace tidemark::local
