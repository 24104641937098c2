// The components of calendar text (RFC 5545, 3.4 and 3.6) and where their lines stand in it, so
// that a change can be made to the very bytes it concerns.
//
// One thread at a time. Time and memory are linear in the text, whatever it nests.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "store/local/text/content_line.h"

namespace tidemark::local {

struct Component {
  std::string_view name;  // as written
  // Indexes of lines: its BEGIN, and one past its END (or past its last line where the END is
  // missing).
  std::size_t firstLine = 0;
  std::size_t endLine = 0;
  // Where it stands in the text, from its BEGIN through the line end of its END.
  std::size_t begin = 0;
  std::size_t end = 0;
  std::optional<std::size_t> parent;
  // The component after this one and all that it contains.
  std::size_t next = 0;
  bool isClosed = false;
};

class ComponentTree {
 public:
  // The text must outlive the tree.
  explicit ComponentTree(std::string_view text);

  std::string_view text() const { return text_; }
  const std::vector<ContentLine>& lines() const { return lines_; }
  // In the order of their BEGINs: a component stands right before those it contains.
  const std::vector<Component>& components() const { return components_; }

  // The indexes of a component's own lines, its BEGIN and END and all of its subcomponents' left
  // out.
  std::vector<std::size_t> ownLines(std::size_t component) const;
  // The first component that this one contains.
  std::optional<std::size_t> firstChild(std::size_t component) const;
  bool isNamed(std::size_t component, std::string_view upperName) const;
  // Whether `component` is `ancestor` or stands in it.
  bool isWithin(std::size_t component, std::size_t ancestor) const;

  // The line feed of a line, the carriage returns before it included; empty at the end of a text
  // without.
  std::string_view lineEndOf(const ContentLine& line) const;

 private:
  struct Stack;
  void begin(Stack& stack, std::size_t line);
  void end(Stack& stack, std::size_t line);
  void close(Stack& stack, std::size_t endLine, bool isClosed);

  std::string_view text_;
  ContentLineScanner scanner_;
  std::vector<ContentLine> lines_;
  std::vector<Component> components_;
};

}  // namespace tidemark::local
