// Every reminder of the store by the date that its query asks for: the incomplete ones by due date,
// the completed ones by completion date. Cancelled to-dos are in neither.
//
// A repeating to-do is one reminder: its first occurrence that is still open, with what an override
// says of it. Overrides that were completed are reminders of their own.
//
// One thread at a time.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "store/local/items/item_groups.h"
#include "store/local/items/store_order.h"
#include "store/types.h"

namespace tidemark::local {

// One reminder as it is shown.
struct PlacedTodo {
  const Item* item = nullptr;
  // The due date; of an occurrence of a series, that occurrence's.
  OptionalMoment due;
  // Where the occurrence that is shown was meant to be; absent where the to-do does not repeat.
  OptionalSeconds occurrence;
  std::uint32_t collection = 0;
};

// COMPLETED, else LAST-MODIFIED, of a to-do that is completed.
std::optional<UtcSeconds> completionDateOf(const Item& todo);

// The reminder that the group's identifier names: a series' open occurrence, else the first there
// is.
PlacedTodo placeTodo(const ItemGroup& group, std::uint32_t collection);
// Every reminder of the group.
std::vector<PlacedTodo> placeTodos(const ItemGroup& group, std::uint32_t collection);

class ReminderDates {
 public:
  explicit ReminderDates(const StoreOrder& order) : order_(order) {}

  // As OccurrenceBlocks: items stay where they are between the two.
  void add(const ItemGroup& group, std::uint32_t collection);
  void remove(const ItemGroup& group);

  // Whether a collection, by its number, is in the answer.
  using Selection = std::vector<bool>;
  // From <= date < to, an absent `from` is no bound; by date, then identifier.
  std::vector<PlacedTodo> findIncomplete(std::optional<Instant> from, Instant to,
                                         const Selection& selection);
  std::vector<PlacedTodo> findCompleted(std::optional<Instant> from, Instant to,
                                        const Selection& selection);

 private:
  struct Dated {
    UtcSeconds date;
    PlacedTodo todo;
  };
  // Sorted, but for what came since it was last asked.
  struct List {
    std::vector<Dated> sorted;
    std::vector<Dated> added;
    std::vector<const Item*> removed;
  };

  void settle(List& list) const;
  std::vector<PlacedTodo> find(List& list, std::optional<Instant> from, Instant to,
                               const Selection& selection) const;

  const StoreOrder& order_;
  List incomplete_;
  List completed_;
};

}  // namespace tidemark::local
