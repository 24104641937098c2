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
  for (const auto& file : files_) {
    forEachGroup(*file, [this](const ItemGroup& group) {
      if (isShown(group)) hide(group);
    });
  }
  // What stood behind another file need not step in any more.
  shadowed_.clear();
  groups_.clear();
  while (!files_.empty()) {
    index_.retired.retire(std::move(files_.extract(files_.begin()).value()->items));
  }
}

std::unique_ptr<const FileRecord> CollectionItems::put(std::unique_ptr<FileRecord> file) {
  const FileRecord& record = *file;
  const auto place =
      files_.lazy_emplace(file, [&](const auto& emplace) { emplace(std::move(file)); });
  std::unique_ptr<FileRecord> former;
  // Where the place was taken, the file is still here.
  if (file) {
    former = take(place);
    files_.insert(std::move(file));
  }
  forEachGroup(record, [this](const ItemGroup& group) { addGroup(group); });
  return former;
}

bool CollectionItems::remove(std::string_view fileName) {
  const auto found = files_.find(stemOf(fileName));
  if (found == files_.end()) return false;
  take(found);
  return true;
}

std::unique_ptr<FileRecord> CollectionItems::take(Files::const_iterator file) {
  forEachGroup(**file, [this](const ItemGroup& group) { removeGroup(group); });
  std::unique_ptr<FileRecord> taken = std::move(files_.extract(file).value());
  index_.retired.retire(std::move(taken->items));
  return taken;
}

const FileRecord* CollectionItems::file(std::string_view fileName) const {
  const auto found = files_.find(stemOf(fileName));
  return found == files_.end() ? nullptr : found->get();
}

std::optional<ItemGroup> CollectionItems::find(ItemKind kind, std::string_view uid) const {
  return shown({kind, uid});
}

std::optional<ItemGroup> CollectionItems::findEquivalent(ItemKind kind,
                                                         std::string_view uid) const {
  const std::string sought = canonicalForm(uid);
  std::optional<ItemGroup> found;
  for (const auto& file : files_) {
    forEachGroup(*file, [&](const ItemGroup& group) {
      const bool isSought = group.kind() == kind && canonicalForm(group.uid()) == sought;
      if (isSought && isShown(group)) found = group;
    });
    if (found) break;
  }
  return found;
}

// The group of that name that counts.
std::optional<ItemGroup> CollectionItems::shown(const GroupName& name) const {
  if (const auto found = groups_.find(name); found != groups_.end()) return *found;
  const auto file = files_.find(name.uid);
  if (file == files_.end() || (*file)->items.empty()) return std::nullopt;
  const ItemGroup group(**file, 0);
  return group.namesFile() && group.kind() == name.kind ? std::optional(group) : std::nullopt;
}

bool CollectionItems::isShown(const ItemGroup& group) const {
  const auto found = groups_.find(group);
  return found == groups_.end() ? group.namesFile() : &found->file() == &group.file();
}

void CollectionItems::addGroup(const ItemGroup& group) {
  if (isShown(group)) {
    show(group);
    return;
  }
  const auto other = shown({group.kind(), group.uid()});
  if (other && other->file().name() <= group.file().name()) {
    shadowed_.insert(group);
    return;
  }
  if (other) {
    hide(*other);
    shadowed_.insert(*other);
    groups_.erase(*other);
  }
  if (!group.namesFile()) groups_.insert(group);
  show(group);
}

void CollectionItems::removeGroup(const ItemGroup& group) {
  if (!isShown(group)) {
    shadowed_.erase(group);
    return;
  }
  hide(group);
  groups_.erase(group);
  const auto next = shadowed_.lower_bound(GroupName{group.kind(), group.uid()});
  if (next == shadowed_.end() || !SameGroup()(*next, group)) return;
  const ItemGroup successor = *next;
  shadowed_.erase(next);
  if (!successor.namesFile()) groups_.insert(successor);
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
