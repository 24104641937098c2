#include "store/local/editor/component_editor.h"

#include <algorithm>
#include <utility>

#include "store/local/editor/content_line_writer.h"
#include "store/local/text/date_value.h"

namespace tidemark::local {
namespace {

// What lines are folded with that end in `lineEnd`, which the end of a text may leave out.
std::string_view foldEnd(std::string_view lineEnd) {
  return lineEnd == "\n" ? "\n" : "\r\n";
}

// A line that ends as the one in whose place it stands.
std::string lineEndingWith(std::string_view lineEnd, std::string_view name,
                           std::string_view parameters, std::string_view value) {
  std::string line = contentLine(name, parameters, value, foldEnd(lineEnd));
  line.resize(line.size() - foldEnd(lineEnd).size());
  return line.append(lineEnd);
}

enum class Duplicates { firstCounts, firstReadableTimeCounts, lastCounts };

// Which of several lines of a property the reader goes by.
Duplicates duplicatesOf(std::string_view name) {
  for (const std::string_view time : {"DTSTART", "DTEND", "DUE", "RECURRENCE-ID"}) {
    if (name == time) return Duplicates::firstReadableTimeCounts;
  }
  for (const std::string_view state :
       {"COMPLETED", "DURATION", "LAST-MODIFIED", "PERCENT-COMPLETE", "SEQUENCE", "STATUS",
        "TRANSP", "X-MICROSOFT-CDO-BUSYSTATUS"}) {
    if (name == state) return Duplicates::lastCounts;
  }
  return Duplicates::firstCounts;
}

}  // namespace

std::string replaced(std::string_view text, std::size_t begin, std::size_t end,
                     std::vector<Replacement> replacements) {
  std::stable_sort(replacements.begin(), replacements.end(),
                   [](const auto& one, const auto& other) {
                     return std::pair(one.begin, one.end) < std::pair(other.begin, other.end);
                   });
  std::string result;
  result.reserve(end - begin + 512);
  for (const Replacement& replacement : replacements) {
    result.append(text.substr(begin, replacement.begin - begin)).append(replacement.text);
    begin = replacement.end;
  }
  return result.append(text.substr(begin, end - begin));
}

ComponentEditor::ComponentEditor(const ComponentTree& tree, std::size_t component)
    : tree_(tree), component_(tree.components()[component]), ownLines_(tree.ownLines(component)) {
  const auto child = tree.firstChild(component);
  additionLine_ = child ? tree.components()[*child].firstLine : component_.endLine - 1;
}

const ContentLine* ComponentEditor::find(std::string_view name) const {
  const std::vector<const ContentLine*> all = findAll(name);
  if (all.empty()) return nullptr;
  switch (duplicatesOf(name)) {
    case Duplicates::firstCounts:
      return all.front();
    case Duplicates::lastCounts:
      return all.back();
    case Duplicates::firstReadableTimeCounts:
      for (const ContentLine* const line : all) {
        if (parseDateValue(line->value)) return line;
      }
      return all.front();
  }
  return nullptr;
}

std::vector<const ContentLine*> ComponentEditor::findAll(std::string_view name) const {
  std::vector<const ContentLine*> found;
  for (const std::size_t line : ownLines_) {
    if (equalsIgnoringCase(tree_.lines()[line].name, name)) found.push_back(&tree_.lines()[line]);
  }
  return found;
}

void ComponentEditor::setValue(std::string_view name, std::string_view value) {
  const ContentLine* const line = find(name);
  set(name, line ? line->parameters : std::string_view(), value);
}

void ComponentEditor::set(std::string_view name, std::string_view parameters,
                          std::string_view value) {
  if (const ContentLine* const line = find(name)) {
    const bool isSame =
        line->value.data() && line->parameters == parameters && line->value == value;
    if (!isSame) replace(*line, line->name, parameters, value);
  } else {
    add(name, parameters, value);
  }
}

void ComponentEditor::replace(const ContentLine& line, std::string_view name,
                              std::string_view parameters, std::string_view value) {
  replacements_[line.begin] = {line.begin, line.end,
                               lineEndingWith(tree_.lineEndOf(line), name, parameters, value)};
}

void ComponentEditor::remove(const ContentLine& line) {
  replacements_[line.begin] = {line.begin, line.end, {}};
}

void ComponentEditor::removeAll(std::string_view name) {
  for (const ContentLine* const line : findAll(name)) remove(*line);
}

void ComponentEditor::add(std::string_view name, std::string_view parameters,
                          std::string_view value) {
  const std::string_view lineEnd = foldEnd(tree_.lineEndOf(tree_.lines()[additionLine_ - 1]));
  added_.append(contentLine(name, parameters, value, lineEnd));
}

std::vector<Replacement> ComponentEditor::replacements() const {
  std::vector<Replacement> all;
  all.reserve(replacements_.size() + 1);
  for (const auto& [begin, replacement] : replacements_) all.push_back(replacement);
  const std::size_t addition = tree_.lines()[additionLine_].begin;
  all.push_back({addition, addition, added_});
  return all;
}

std::string ComponentEditor::text() const {
  return replaced(tree_.text(), component_.begin, component_.end, replacements());
}

Replacement ComponentEditor::replacement() const {
  return {component_.begin, component_.end, text()};
}

}  // namespace tidemark::local
