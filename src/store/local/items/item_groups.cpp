#include "store/local/items/item_groups.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <tuple>

namespace tidemark::local {
namespace {

// Masters before all overrides.
UtcSeconds placeInGroup(const Item& item) {
  return item.recurrenceId ? item.recurrenceId->toUtc() : std::numeric_limits<UtcSeconds>::min();
}

bool isSamePlace(const Item& a, const Item& b) {
  return a.kind == b.kind && a.uid() == b.uid() && placeInGroup(a) == placeInGroup(b);
}

auto newness(const Item& item) {
  return std::tuple(item.sequence, item.lastModified);
}

bool comesBefore(const std::unique_ptr<Item>& a, const std::unique_ptr<Item>& b) {
  if (const int order = a->uid().compare(b->uid()); order != 0) return order < 0;
  if (a->kind != b->kind) return a->kind < b->kind;
  const UtcSeconds placeOfA = placeInGroup(*a);
  const UtcSeconds placeOfB = placeInGroup(*b);
  if (placeOfA != placeOfB) return placeOfA < placeOfB;
  // The newest first: the others are dropped.
  return newness(*a) > newness(*b);
}

void order(std::vector<std::unique_ptr<Item>>& items) {
  if (items.size() < 2) return;
  std::stable_sort(items.begin(), items.end(), comesBefore);
  const auto isDuplicate = [](const auto& a, const auto& b) { return isSamePlace(*a, *b); };
  items.erase(std::unique(items.begin(), items.end(), isDuplicate), items.end());
}

}  // namespace

std::string_view stemOf(std::string_view fileName) {
  constexpr std::string_view suffix = ".ics";
  if (fileName.ends_with(suffix)) fileName.remove_suffix(suffix.size());
  return fileName;
}

std::unique_ptr<FileRecord> makeFileRecord(std::string_view fileName,
                                           std::vector<std::unique_ptr<Item>> items) {
  order(items);
  auto file = std::make_unique<FileRecord>();
  const std::string_view stem = stemOf(fileName);
  if (items.empty() || items.front()->uid() != stem) {
    file->ownStem = std::make_unique<const std::string>(stem);
  }
  file->items.assign(std::move_iterator(items.begin()), std::move_iterator(items.end()));
  return file;
}

ItemSpan ItemGroup::items() const {
  const ItemSpan all(file_->items);
  std::size_t end = first_ + 1;
  while (end < all.size() && all[end]->kind == kind() && all[end]->uid() == uid()) ++end;
  return all.subspan(first_, end - first_);
}

}  // namespace tidemark::local
