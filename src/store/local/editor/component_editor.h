// Changes to the own lines of one component. Every line that is not set or removed keeps its bytes
// and its place.
//
// One thread at a time. Names of properties are given in upper case.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "store/local/editor/component_tree.h"

namespace tidemark::local {

// Bytes of a text and what stands there instead.
struct Replacement {
  std::size_t begin = 0;
  std::size_t end = 0;
  std::string text;
};

// The text from `begin` to `end` with the replacements made. They lie there and do not overlap;
// insertions at one place come in the order of the list.
std::string replaced(std::string_view text, std::size_t begin, std::size_t end,
                     std::vector<Replacement> replacements);

class ComponentEditor {
 public:
  // The component is closed. The tree must outlive the editor.
  ComponentEditor(const ComponentTree& tree, std::size_t component);

  // The line of that name that the reader goes by where there are several, as it stands in the
  // text; null when there is none.
  const ContentLine* find(std::string_view name) const;
  // All lines of that name.
  std::vector<const ContentLine*> findAll(std::string_view name) const;

  // Changes the value of the line that the reader goes by and keeps its parameters, or adds a line.
  // At most once for a name that the component lacks.
  void setValue(std::string_view name, std::string_view value);
  // The same with other parameters.
  void set(std::string_view name, std::string_view parameters, std::string_view value);
  // Puts another line in the place of this one, which may also stand in a subcomponent.
  void replace(const ContentLine& line, std::string_view name, std::string_view parameters,
               std::string_view value);
  // Takes this line out, which find gave.
  void remove(const ContentLine& line);
  // Takes every line of that name out.
  void removeAll(std::string_view name);
  // A new line before the first subcomponent, after those added before. It may be there already.
  void add(std::string_view name, std::string_view parameters, std::string_view value);

  bool isChanged() const { return !replacements_.empty() || !added_.empty(); }

  // The component from its BEGIN through the line end of its END.
  std::string text() const;
  // The same as a change to the whole text.
  Replacement replacement() const;

  const ComponentTree& tree() const { return tree_; }
  const Component& component() const { return component_; }

 private:
  std::vector<Replacement> replacements() const;

  const ComponentTree& tree_;
  const Component& component_;
  std::vector<std::size_t> ownLines_;
  // The line before which lines are added.
  std::size_t additionLine_;
  // What stands instead of lines, by where these begin.
  std::map<std::size_t, Replacement> replacements_;
  std::string added_;
};

}  // namespace tidemark::local
