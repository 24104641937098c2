// What the tests of the editor ask about calendar text: what the reader finds in it, what another
// library makes of it, and which of its bytes a change has touched.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "store/local/text/calendar_reader.h"

namespace tidemark::local {

// Everything that the reader knows of an item, by name, as text to be compared.
using Fields = std::map<std::string, std::string>;
Fields fieldsOf(const Item& item);

// The starts of the first occurrences of an item, at most so many.
std::vector<UtcSeconds> startsOf(const Item& item, std::size_t limit);

// A logical line with its name in upper case, or the bytes between two lines.
struct RawLine {
  std::string name;
  std::string bytes;
  friend bool operator==(const RawLine&, const RawLine&) = default;
};
using RawLines = std::vector<RawLine>;
using Names = std::set<std::string>;

RawLines rawLinesOf(const std::string& text);
RawLines without(RawLines lines, const Names& names);
std::string textOf(const RawLines& lines);

// What is left of two texts without the lines that both begin and end with.
struct Difference {
  RawLines before;
  RawLines after;
};
Difference differenceOf(const std::string& before, const std::string& after);

}  // namespace tidemark::local
