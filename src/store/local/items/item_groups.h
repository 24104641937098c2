// The components of one file, ordered so that those that belong together stand together: by UID and
// kind; of each the master first, then the overrides by the instant that they stand for.
//
// Pure functions; any thread.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "store/local/files/file_reader.h"
#include "store/local/items/retired_items.h"
#include "store/local/text/item.h"

namespace tidemark::local {

using ItemSpan = std::span<const std::unique_ptr<Item>>;

// Without the ".ics" that all items' files have.
std::string_view stemOf(std::string_view fileName);

// What a file of a collection holds.
struct FileRecord {
  std::string_view stem() const { return ownStem ? *ownStem : items.front()->uid(); }
  std::string name() const { return std::string(stem()) += ".ics"; }

  // The file's name without ".ics"; null where it is the UID of the first item, as almost always.
  std::unique_ptr<const std::string> ownStem;
  FileTag tag : fileTagBits = unknownTag;
  bool isYoung : 1 = false;
  // Reached through a symbolic link: no watch on the directory tells when it changes.
  bool isLinked : 1 = false;
  bool isUnreadable : 1 = false;
  // Ordered, and without what can never be shown: of two masters with one UID the one with the
  // lower SEQUENCE, then with the earlier LAST-MODIFIED; of two overrides of one occurrence
  // likewise.
  ItemList items;
};

// `items` in any order.
std::unique_ptr<FileRecord> makeFileRecord(std::string_view fileName,
                                           std::vector<std::unique_ptr<Item>> items);

// One UID's components of one kind in one file: a master, overrides, or both.
class ItemGroup {
 public:
  // `first` is where the group begins in the file's items. The file stays where it is.
  ItemGroup(const FileRecord& file, std::size_t first)
      : file_(&file), first_(static_cast<std::uint32_t>(first)) {}

  const FileRecord& file() const { return *file_; }
  std::string_view uid() const { return first().uid(); }
  ItemKind kind() const { return first().kind; }
  ItemSpan items() const;
  // The file's name is the UID, and this is the first group in it.
  bool namesFile() const { return first_ == 0 && file_->ownStem == nullptr; }
  // Null when all are overrides.
  const Item* master() const { return first().recurrenceId ? nullptr : &first(); }
  ItemSpan overrides() const { return items().subspan(master() == nullptr ? 0 : 1); }

 private:
  const Item& first() const { return *file_->items[first_]; }

  const FileRecord* file_;
  std::uint32_t first_;
};

// Calls `visit` with each group of the file.
template <typename Visit>
void forEachGroup(const FileRecord& file, const Visit& visit) {
  for (std::size_t first = 0; first < file.items.size();) {
    const ItemGroup group(file, first);
    first += group.items().size();
    visit(group);
  }
}

}  // namespace tidemark::local
