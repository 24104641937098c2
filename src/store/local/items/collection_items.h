// The files of one collection and the items that count: one group for each UID and kind. When two
// files hold the same, the one whose name is first in byte order counts, and the other one steps in
// when that is gone.
//
// One thread at a time.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "absl/container/flat_hash_set.h"
#include "store/local/items/item_groups.h"
#include "store/local/items/occurrence_blocks.h"
#include "store/local/items/reminder_dates.h"
#include "store/local/items/retired_items.h"

namespace tidemark::local {

// What all collections share. Outlives them.
struct ItemIndex {
  StoreOrder order;
  OccurrenceBlocks events{order};
  ReminderDates reminders{order};
  RetiredItems retired;
};

class CollectionItems {
 public:
  // `number` is the collection's in the order of `index`.
  CollectionItems(std::uint32_t number, ItemIndex& index) : number_(number), index_(index) {}
  // Takes everything out of the index.
  ~CollectionItems();
  CollectionItems(const CollectionItems&) = delete;
  CollectionItems& operator=(const CollectionItems&) = delete;

  // Makes room for so many more files.
  void expect(std::size_t files) { files_.reserve(files_.size() + files); }
  // In the place of what the file of that name held before; returns that without its items, null
  // when there was none.
  std::unique_ptr<const FileRecord> put(std::unique_ptr<FileRecord> file);
  // False when there was none.
  bool remove(std::string_view fileName);

  const FileRecord* file(std::string_view fileName) const;
  // In no order. `visit` must not change the collection.
  template <typename Visit>
  void forEachFile(const Visit& visit) const {
    for (const auto& file : files_) visit(*file);
  }

  std::optional<ItemGroup> find(ItemKind kind, std::string_view uid) const;
  // By NFC form, for identifiers that reach us in another one. Looks at every group.
  std::optional<ItemGroup> findEquivalent(ItemKind kind, std::string_view uid) const;

  bool isEmpty() const { return files_.empty(); }
  bool hasEvents() const { return events_ > 0; }
  bool hasTodos() const { return todos_ > 0; }

 private:
  // Both tables look up by stem or UID without a copy of it.
  struct FileHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view stem) const;
    std::size_t operator()(const std::unique_ptr<FileRecord>& file) const;
  };
  struct SameFile {
    using is_transparent = void;
    bool operator()(const std::unique_ptr<FileRecord>& a,
                    const std::unique_ptr<FileRecord>& b) const {
      return a->stem() == b->stem();
    }
    bool operator()(const std::unique_ptr<FileRecord>& a, std::string_view b) const {
      return a->stem() == b;
    }
  };
  struct GroupName {
    ItemKind kind;
    std::string_view uid;
  };
  struct GroupHash {
    using is_transparent = void;
    std::size_t operator()(const GroupName& name) const;
    std::size_t operator()(const ItemGroup& group) const;
  };
  struct SameGroup {
    using is_transparent = void;
    bool operator()(const ItemGroup& a, const ItemGroup& b) const {
      return a.kind() == b.kind() && a.uid() == b.uid();
    }
    bool operator()(const ItemGroup& a, const GroupName& b) const {
      return a.kind() == b.kind && a.uid() == b.uid;
    }
  };
  // By UID, kind and file name.
  struct ShadowedOrder {
    using is_transparent = void;
    bool operator()(const ItemGroup& a, const ItemGroup& b) const;
    bool operator()(const ItemGroup& a, const GroupName& b) const;
    bool operator()(const GroupName& a, const ItemGroup& b) const;
  };

  using Files = absl::flat_hash_set<std::unique_ptr<FileRecord>, FileHash, SameFile>;

  std::unique_ptr<FileRecord> take(Files::const_iterator file);
  std::optional<ItemGroup> shown(const GroupName& name) const;
  bool isShown(const ItemGroup& group) const;
  void addGroup(const ItemGroup& group);
  void removeGroup(const ItemGroup& group);
  void show(const ItemGroup& group);
  void hide(const ItemGroup& group);
  std::size_t& countOf(ItemKind kind) { return kind == ItemKind::event ? events_ : todos_; }

  std::uint32_t number_;
  ItemIndex& index_;
  Files files_;
  // The groups that count, but for those that their files are named after, as almost all are: these
  // are found by the file.
  absl::flat_hash_set<ItemGroup, GroupHash, SameGroup> groups_;
  // Groups that another file's stand before.
  std::set<ItemGroup, ShadowedOrder> shadowed_;
  std::size_t events_ = 0;
  std::size_t todos_ = 0;
};

}  // namespace tidemark::local
