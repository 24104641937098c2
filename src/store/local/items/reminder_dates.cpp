#include "store/local/items/reminder_dates.h"

#include <algorithm>

#include "store/local/items/prefetch.h"
#include "store/local/recurrence/recurrence.h"
#include "store/local/text/instants.h"
#include "store/local/text/todo.h"
#include "store/range.h"

namespace tidemark::local {
namespace {

// Lists that nobody asks for do not grow by what happens to them, and are not searched again and
// again for what goes.
constexpr std::size_t maximumNotedChanges = 1000;

PlacedTodo placeItself(const Item& item, std::uint32_t collection) {
  PlacedTodo todo{&item, item.todo->due, {}, collection};
  if (item.recurrenceId) todo.occurrence = item.recurrenceId->toUtc();
  return todo;
}

bool isSeries(const Item* master) {
  return master != nullptr && master->series != nullptr;
}

// Absent when every occurrence is completed, cancelled or excepted.
std::optional<PlacedTodo> openOccurrence(const Item& master, ItemSpan overrides,
                                         std::uint32_t collection) {
  std::optional<PlacedTodo> open;
  // Each occurrence that is passed over has an override, so the walk is bounded by the file.
  auto next = overrides.begin();
  forEachOccurrence(master, firstWall, lastWall, [&](const Occurrence& occurrence) {
    const UtcSeconds meant = occurrence.start.toUtc();
    while (next != overrides.end() && (*next)->recurrenceId->toUtc() < meant) ++next;
    if (next == overrides.end() || (*next)->recurrenceId->toUtc() != meant) {
      open = {&master, dueOfOccurrence(master, occurrence.start), meant, collection};
    } else if (isOpen(*(*next)->todo)) {
      open = placeItself(**next, collection);
    }
    return !open;
  });
  return open;
}

// Of a master that does not repeat, the override that stands for it, if there is one.
bool isReplaced(const Item& master, ItemSpan overrides) {
  const auto anchor = anchorOf(master);
  if (!anchor) return false;
  const UtcSeconds start = anchor->toUtc();
  return std::any_of(overrides.begin(), overrides.end(),
                     [&](const auto& item) { return item->recurrenceId->toUtc() == start; });
}

}  // namespace

std::optional<UtcSeconds> completionDateOf(const Item& todo) {
  return todo.todo->completed ? todo.todo->completed : todo.lastModified;
}

PlacedTodo placeTodo(const ItemGroup& group, std::uint32_t collection) {
  return placeTodos(group, collection).front();
}

std::vector<PlacedTodo> placeTodos(const ItemGroup& group, std::uint32_t collection) {
  const Item* master = group.master();
  const ItemSpan overrides = group.overrides();
  std::vector<PlacedTodo> todos;
  if (isSeries(master)) {
    const auto open = isOpen(*master->todo) ? openOccurrence(*master, overrides, collection)
                                            : std::optional(placeItself(*master, collection));
    if (open) todos.push_back(*open);
    for (const auto& item : overrides) {
      if (isCompleted(*item->todo)) todos.push_back(placeItself(*item, collection));
    }
    // A series whose every occurrence was excepted or cancelled still has a name.
    if (todos.empty()) todos.push_back(placeItself(*master, collection));
    return todos;
  }
  if (master != nullptr && !isReplaced(*master, overrides)) {
    todos.push_back(placeItself(*master, collection));
  }
  for (const auto& item : overrides) todos.push_back(placeItself(*item, collection));
  return todos;
}

void ReminderDates::add(const ItemGroup& group, std::uint32_t collection) {
  for (const PlacedTodo& todo : placeTodos(group, collection)) {
    if (isOpen(*todo.item->todo)) {
      if (todo.due) incomplete_.added.push_back({todo.due->toUtc(), todo});
    } else if (todo.item->todo->status != TodoStatus::cancelled) {
      const auto date = completionDateOf(*todo.item);
      if (date) completed_.added.push_back({*date, todo});
    }
  }
}

void ReminderDates::remove(const ItemGroup& group) {
  for (List* list : {&incomplete_, &completed_}) {
    if (list->added.size() > maximumNotedChanges) settle(*list);
    for (const auto& item : group.items()) {
      std::erase_if(list->added, [&](const Dated& dated) { return dated.todo.item == item.get(); });
      if (!list->sorted.empty()) list->removed.push_back(item.get());
    }
    if (list->removed.size() > maximumNotedChanges) settle(*list);
  }
}

void ReminderDates::settle(List& list) const {
  if (!list.removed.empty()) {
    std::sort(list.removed.begin(), list.removed.end());
    std::erase_if(list.sorted, [&](const Dated& dated) {
      return std::binary_search(list.removed.begin(), list.removed.end(), dated.todo.item);
    });
    list.removed.clear();
  }
  if (list.added.empty()) return;
  const auto comesBefore = [this](const Dated& a, const Dated& b) {
    if (a.date != b.date) return a.date < b.date;
    return order_.compareIdentifiers(a.todo.collection, *a.todo.item, b.todo.collection,
                                     *b.todo.item) < 0;
  };
  std::sort(list.added.begin(), list.added.end(), comesBefore);
  const auto middle = static_cast<std::ptrdiff_t>(list.sorted.size());
  list.sorted.insert(list.sorted.end(), list.added.begin(), list.added.end());
  std::inplace_merge(list.sorted.begin(), list.sorted.begin() + middle, list.sorted.end(),
                     comesBefore);
  list.added = {};
}

std::vector<PlacedTodo> ReminderDates::findIncomplete(std::optional<Instant> from, Instant to,
                                                      const Selection& selection) {
  return find(incomplete_, from, to, selection);
}

std::vector<PlacedTodo> ReminderDates::findCompleted(std::optional<Instant> from, Instant to,
                                                     const Selection& selection) {
  return find(completed_, from, to, selection);
}

std::vector<PlacedTodo> ReminderDates::find(List& list, std::optional<Instant> from, Instant to,
                                            const Selection& selection) const {
  settle(list);
  auto dated = list.sorted.begin();
  if (from) {
    dated = std::partition_point(list.sorted.begin(), list.sorted.end(),
                                 [&](const Dated& other) { return instantOf(other.date) < *from; });
  }
  std::vector<PlacedTodo> found;
  for (; dated != list.sorted.end() && rangeHoldsDate(from, to, instantOf(dated->date)); ++dated) {
    if (!selection[dated->todo.collection]) continue;
    prefetch(*dated->todo.item, mostOfItem);
    found.push_back(dated->todo);
  }
  return found;
}

}  // namespace tidemark::local
