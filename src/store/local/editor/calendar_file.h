// A calendar file that is about to be changed: its components as bytes and, beside them, as the
// reader understands them.
//
// One thread at a time. The text must outlive everything made from it.
#pragma once

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "store/local/editor/calendar_editor.h"
#include "store/local/editor/component_editor.h"
#include "store/local/editor/component_tree.h"
#include "store/local/editor/item_family.h"
#include "store/local/text/calendar_reader.h"

namespace tidemark::local {

class CalendarFile {
 public:
  CalendarFile(std::string_view text, std::string_view fileName);

  const ComponentTree& tree() const { return tree_; }
  // Only what can be edited: components that end. Of several masters the one that counts.
  ItemFamily family(ItemKind kind, std::string_view uid) const;
  // Every event, to-do and journal entry of that UID, or those of one kind, also those that the
  // reader passes over.
  std::vector<std::size_t> componentsOf(std::string_view uid, std::optional<ItemKind> kind) const;

 private:
  std::string uidOf(std::size_t component) const;
  bool isItem(std::size_t component, std::optional<ItemKind> kind) const;
  void findInterrupted();

  ComponentTree tree_;
  // Items, by component, that another item stands in: they were never ended, and whatever they seem
  // to end with is another one's.
  std::vector<bool> isInterrupted_;
  CalendarText calendar_;
  // By where their components begin.
  std::unordered_map<std::size_t, const Item*> itemAt_;
  std::string_view fileName_;
};

// Gathers the changes to one file and makes its new text.
class FileEdit {
 public:
  explicit FileEdit(const ComponentTree& tree) : tree_(tree) {}

  void replace(const ComponentEditor& editor);
  void remove(std::size_t component);
  // A component's text right after another component.
  void insertAfter(std::size_t component, std::string text);
  // Sees to it that a time of that zone in `component` can be read by others: adds the VTIMEZONE if
  // the file has none.
  void requireZone(std::size_t component, const std::string& tzid, UtcSeconds instant);

  // Outcome::empty when only the frame is left: calendars, their properties and time zones.
  Edit finish() const;

 private:
  bool isFrameAlone() const;

  const ComponentTree& tree_;
  std::vector<Replacement> replacements_;
  std::set<std::size_t> removed_;
};

// A file of its own that holds `texts` (each from BEGIN through END), which were made from
// `components` of the tree: framed as there, with the time zones that these name.
std::string fileOf(const ComponentTree& tree, const std::vector<std::size_t>& components,
                   const std::vector<std::string>& texts);

// The product that new files name.
inline constexpr std::string_view productIdentifier = "-//Tidemark//tidemark-cal//EN";

}  // namespace tidemark::local
