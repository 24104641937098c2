#include "store/local/editor/component_tree.h"

#include <string>
#include <unordered_map>
#include <utility>

namespace tidemark::local {
namespace {

std::string upperCase(std::string_view text) {
  std::string upper(text);
  for (char& byte : upper) {
    if (byte >= 'a' && byte <= 'z') byte = static_cast<char>(byte - 'a' + 'A');
  }
  return upper;
}

std::string_view withoutTrailingBlanks(std::string_view value) {
  return value.substr(0, value.find_last_not_of(" \t") + 1);
}

bool isItemName(std::string_view upperName) {
  return upperName == "VEVENT" || upperName == "VTODO";
}

}  // namespace

// What is open while the text is read.
struct ComponentTree::Stack {
  struct Open {
    std::size_t component;
    std::string upperName;
    bool isInItem;  // an event or a to-do, or inside one
  };
  std::vector<Open> open;
  // How many there are of each name, so that an END without a BEGIN costs no search through them
  // all.
  std::unordered_map<std::string, std::size_t> names;
};

ComponentTree::ComponentTree(std::string_view text) : text_(text), scanner_(text) {
  Stack stack;
  while (auto line = scanner_.next()) {
    const std::size_t index = lines_.size();
    lines_.push_back(*line);
    if (equalsIgnoringCase(line->name, "BEGIN")) {
      begin(stack, index);
    } else if (equalsIgnoringCase(line->name, "END")) {
      end(stack, index);
    }
  }
  while (!stack.open.empty()) close(stack, lines_.size(), false);
}

void ComponentTree::begin(Stack& stack, std::size_t line) {
  Component component;
  component.name = withoutTrailingBlanks(lines_[line].value);
  component.firstLine = line;
  component.begin = lines_[line].begin;
  if (!stack.open.empty()) component.parent = stack.open.back().component;
  std::string upperName = upperCase(component.name);
  const bool isInItem =
      isItemName(upperName) || (!stack.open.empty() && stack.open.back().isInItem);
  ++stack.names[upperName];
  stack.open.push_back({components_.size(), std::move(upperName), isInItem});
  components_.push_back(component);
}

void ComponentTree::end(Stack& stack, std::size_t line) {
  const std::string name = upperCase(withoutTrailingBlanks(lines_[line].value));
  const bool isInItem = !stack.open.empty() && stack.open.back().isInItem;
  if (isInItem && !isItemName(name) && name != "VCALENDAR") {
    // Within an item names are not compared, as the reader does not.
    if (!isItemName(stack.open.back().upperName)) close(stack, line + 1, true);
    return;
  }
  if (stack.names[name] == 0) return;
  while (stack.open.back().upperName != name) close(stack, line, false);
  close(stack, line + 1, true);
}

void ComponentTree::close(Stack& stack, std::size_t endLine, bool isClosed) {
  Component& closed = components_[stack.open.back().component];
  closed.endLine = endLine;
  closed.end = lines_[endLine - 1].end;
  closed.next = components_.size();
  closed.isClosed = isClosed;
  --stack.names[stack.open.back().upperName];
  stack.open.pop_back();
}

std::vector<std::size_t> ComponentTree::ownLines(std::size_t component) const {
  const Component& owner = components_[component];
  const std::size_t end = owner.isClosed ? owner.endLine - 1 : owner.endLine;
  std::vector<std::size_t> own;
  std::size_t child = component + 1;
  for (std::size_t line = owner.firstLine + 1; line < end;) {
    if (child < owner.next && components_[child].firstLine == line) {
      line = components_[child].endLine;
      child = components_[child].next;
    } else {
      own.push_back(line++);
    }
  }
  return own;
}

std::optional<std::size_t> ComponentTree::firstChild(std::size_t component) const {
  if (components_[component].next == component + 1) return std::nullopt;
  return component + 1;
}

bool ComponentTree::isNamed(std::size_t component, std::string_view upperName) const {
  return equalsIgnoringCase(components_[component].name, upperName);
}

bool ComponentTree::isWithin(std::size_t component, std::size_t ancestor) const {
  return ancestor <= component && component < components_[ancestor].next;
}

std::string_view ComponentTree::lineEndOf(const ContentLine& line) const {
  const std::string_view bytes = text_.substr(line.begin, line.end - line.begin);
  if (!bytes.ends_with('\n')) return {};
  std::size_t begin = bytes.size() - 1;
  while (begin > 0 && bytes[begin - 1] == '\r') --begin;
  return bytes.substr(begin);
}

}  // namespace tidemark::local
