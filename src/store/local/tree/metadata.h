// What small files in a directory say about it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "store/types.h"

namespace tidemark::local {

struct Metadata {
  std::optional<std::string> displayName;  // never empty
  std::optional<Color> color;
  std::optional<std::int64_t> order;
  // What supported-calendar-component-set names; both absent when it says nothing of use.
  bool namesEvents = false;
  bool namesTodos = false;

  bool saysComponents() const { return namesEvents || namesTodos; }
};

bool operator==(const Metadata& a, const Metadata& b);

// Reads the files of the directory that is open as `directory`. What is absent, unreadable or makes
// no sense is absent.
Metadata readMetadata(int directory);

// "#RRGGBB", "#RRGGBBAA", "#RGB", or a colour name of CSS Color Module Level 4, 6.1, in any case.
std::optional<Color> parseColor(std::string_view text);

// Valid UTF-8, whatever bytes a name or a file has.
std::string readableText(std::string_view bytes);

}  // namespace tidemark::local
