// What the names in a collection's directory mean. Pure functions; any thread.
#pragma once

#include <string_view>

namespace tidemark::local {

enum class NameKind {
  // Does not exist for this store: a dot name, or what sync tools and editors leave behind.
  ignored,
  // "*.ics": an item's file, if it is a regular one.
  item,
  // "displayname", "color", "order", "supported-calendar-component-set".
  metadata,
  // Nothing, unless it is a directory.
  other,
};

NameKind kindOfName(std::string_view name);

// A directory of that name exists for this store; only dot names do not.
bool isDirectoryName(std::string_view name);

}  // namespace tidemark::local
