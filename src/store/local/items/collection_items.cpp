#include "store/local/items/collection_items.h"

#include <tuple>
#include <utility>

#include "absl/hash/hash.h"
#include "store/canonical_text.h"

namespace tidemark::local {

std::size_t CollectionItems::FileHash::operator()(std::string_view stem) const {
  return absl::Hash<std::string_view>()(stem);
}

std::size_t CollectionItems::FileHash::operator()(const std::unique_ptr<FileRecord>& file) const {
  return (*this)(file->stem());
}

std::size_t CollectionItems::GroupHash::operator()(const GroupName& name) const {
  return absl::Hash<std::string_view>()(name.uid) + static_cast<std::size_t>(name.kind);
}

std::size_t CollectionItems::GroupHash::operator()(const ItemGroup& group) const {
  return (*this)(GroupName{group.kind(), group.uid()});
}

bool CollectionItems::ShadowedOrder::operator()(const ItemGroup& a, const ItemGroup& b) const {
  return std::tuple(a.uid(), a.kind(), a.file().name()) <
         std::tuple(b.uid(), b.kind(), b.file().name());
}

bool CollectionItems::ShadowedOrder::operator()(const ItemGroup& a, const GroupName& b) const {
  return std::tuple(a.uid(), a.kind()) < std::tuple(b.uid, b.kind);
}

bool CollectionItems::ShadowedOrder::operator()(const GroupName& a, const ItemGroup& b) const {
  return std::tuple(a.uid, a.kind) < std::tuple(b.uid(), b.kind());
}

CollectionItems::~CollectionItems() {
  // What stood behind another file need not step in any more.
  shadowed_.clear();
  for (const ItemGroup& group : groups_) hide(group);
  groups_.clear();
  while (!files_.empty()) {
    index_.retired.retire(std::move(files_.extract(files_.begin()).value()->items));
  }
}

void CollectionItems::put(std::unique_ptr<FileRecord> file) {
  if (const auto former = files_.find(file); former != files_.end()) remove(former);
  const FileRecord& record = **files_.insert(std::move(file)).first;
  forEachGroup(record, [this](const ItemGroup& group) { addGroup(group); });
}

bool CollectionItems::remove(std::string_view fileName) {
  const auto found = files_.find(stemOf(fileName));
  if (found == files_.end()) return false;
  remove(found);
  return true;
}

void CollectionItems::remove(Files::const_iterator file) {
  forEachGroup(**file, [this](const ItemGroup& group) { removeGroup(group); });
  index_.retired.retire(std::move(files_.extract(file).value()->items));
}

const FileRecord* CollectionItems::file(std::string_view fileName) const {
  const auto found = files_.find(stemOf(fileName));
  return found == files_.end() ? nullptr : found->get();
}

std::optional<ItemGroup> CollectionItems::find(ItemKind kind, std::string_view uid) const {
  const auto found = groups_.find(GroupName{kind, uid});
  return found == groups_.end() ? std::nullopt : std::optional(*found);
}

std::optional<ItemGroup> CollectionItems::findEquivalent(ItemKind kind,
                                                         std::string_view uid) const {
  const std::string sought = canonicalForm(uid);
  for (const ItemGroup& group : groups_) {
    if (group.kind() == kind && canonicalForm(group.uid()) == sought) return group;
  }
  return std::nullopt;
}

void CollectionItems::addGroup(const ItemGroup& group) {
  const auto found = groups_.find(group);
  if (found == groups_.end()) {
    groups_.insert(group);
    show(group);
    return;
  }
  if (found->file().name() <= group.file().name()) {
    shadowed_.insert(group);
    return;
  }
  hide(*found);
  shadowed_.insert(*found);
  groups_.erase(found);
  groups_.insert(group);
  show(group);
}

void CollectionItems::removeGroup(const ItemGroup& group) {
  const auto found = groups_.find(group);
  if (found == groups_.end() || &found->file() != &group.file()) {
    shadowed_.erase(group);
    return;
  }
  hide(group);
  groups_.erase(found);
  const auto next = shadowed_.lower_bound(GroupName{group.kind(), group.uid()});
  if (next == shadowed_.end() || !SameGroup()(*next, group)) return;
  const ItemGroup successor = *next;
  shadowed_.erase(next);
  groups_.insert(successor);
  show(successor);
}

void CollectionItems::show(const ItemGroup& group) {
  ++countOf(group.kind());
  if (group.kind() == ItemKind::event) {
    index_.events.add(group, number_);
  } else {
    index_.reminders.add(group, number_);
  }
}

void CollectionItems::hide(const ItemGroup& group) {
  --countOf(group.kind());
  if (group.kind() == ItemKind::event) {
    index_.events.remove(group);
  } else {
    index_.reminders.remove(group);
  }
}

}  // namespace tidemark::local
