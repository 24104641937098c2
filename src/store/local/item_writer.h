// Saves and removals of single items, as changes of the files that hold them.
//
// Every function here is durable before it returns, and on failure has changed nothing. Failures of
// the system are in its own words. Called by one thread at a time; no lock is held.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "store/local/editor/calendar_editor.h"
#include "store/local/text/item.h"
#include "store/types.h"

namespace tidemark::local {

// Where an item is on disk.
struct ItemPlace {
  std::string directory;
  std::string fileName;
};

// A random UUID (RFC 9562, 5.4) in its text form.
std::string newUid();

StoreResult createItem(const std::string& directory, std::string_view uid,
                       const EventChange& event);
StoreResult createItem(const std::string& directory, std::string_view uid, const TodoChange& todo);

StoreResult changeItem(const ItemPlace& place, const ItemName& name, const EventChange& change);
// Completing a to-do that repeats also makes the to-do that carries its rule on.
StoreResult changeItem(const ItemPlace& place, const ItemName& name, const TodoChange& change);

// Where an item is moved to.
struct MoveTarget {
  std::string directory;
  // The file there that has an item of the same UID. A move goes on only when it is what an
  // interrupted one left.
  std::optional<std::string> existing;
};

// The whole item, changed on its way, goes to a file of its own: it is there before it is gone
// here.
StoreResult moveItem(const ItemPlace& place, const ItemName& name, const EventChange& change,
                     const MoveTarget& target);
StoreResult moveItem(const ItemPlace& place, const ItemName& name, const TodoChange& change,
                     const MoveTarget& target);

StoreResult removeItem(ItemKind kind, const ItemPlace& place, const ItemName& name);

}  // namespace tidemark::local
