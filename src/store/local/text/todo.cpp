#include "store/local/text/todo.h"

#include "store/local/text/civil.h"

namespace tidemark::local {

bool isCompleted(const Todo& todo) {
  return todo.status == TodoStatus::completed || todo.completed || todo.percentComplete >= 100;
}

bool isOpen(const Todo& todo) {
  return !isCompleted(todo) && todo.status != TodoStatus::cancelled;
}

std::optional<Moment> dueOfOccurrence(const Item& master, const Moment& start) {
  std::optional<Moment> due = master.todo->due;
  const auto anchor = anchorOf(master);
  if (!due || !anchor) return due;
  due->wall = due->zone == anchor->zone
                  ? due->wall + (start.wall - anchor->wall)
                  : due->zone->toWall(due->toUtc() + (start.toUtc() - anchor->toUtc()));
  if (due->isDate) due->wall = dayOf(due->wall) * secondsPerDay;
  return due;
}

}  // namespace tidemark::local
