// Cuts calendar text into content lines (RFC 5545, 3.1). Lenient: LF or CRLF, blank lines, a
// byte-order mark and folds in the middle of a character are all read; bytes are passed on as they
// are, whatever their encoding.
//
// One thread at a time. Time is linear in the text; memory is taken only when the text has folded
// lines, once, and never more than the text has bytes.
#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tidemark::local {

// One logical line. The views point into the text, or into the scanner where the line was folded.
struct ContentLine {
  // Where the line stands in the text, its folds and its line end included.
  std::size_t begin = 0;
  std::size_t end = 0;
  // As written, in any case and without a group ("home.TEL" is "TEL"). Compare with
  // equalsIgnoringCase.
  std::string_view name;
  // Between name and value, from the first semicolon (or empty): ";TZID=Europe/Berlin;X-A=b". See
  // parameterOf.
  std::string_view parameters;
  // After the colon. Its data() is null where the line has no colon.
  std::string_view value;
};

class ContentLineScanner {
 public:
  ContentLineScanner() = default;
  // The text must outlive the scanner.
  explicit ContentLineScanner(std::string_view text) { restart(text); }
  ContentLineScanner(const ContentLineScanner&) = delete;
  ContentLineScanner& operator=(const ContentLineScanner&) = delete;

  // Begins with another text, and keeps the room for folded lines. Views of lines end.
  void restart(std::string_view text);

  // The next line that is not blank; absent at the end of the text. Views of earlier lines stay
  // valid.
  std::optional<ContentLine> next();

  // Moves on to the next line that begins or ends a component whose name starts with V, as all do
  // but the parts of a VTIMEZONE. Much faster than reading the lines between.
  void skipToComponent();

 private:
  std::string_view unfold(std::size_t begin, std::size_t end);

  std::string_view text_;
  std::size_t position_ = 0;
  // Unfolded lines one after the other. Their bytes are fewer than the text's, so it never moves.
  std::unique_ptr<char[]> unfolded_;
  std::size_t unfoldedCapacity_ = 0;
  std::size_t unfoldedSize_ = 0;
};

// ASCII alone. `upper` is given in upper case and has the size of `text`.
bool equalsInAnyCase(std::string_view text, std::string_view upper);
// ASCII alone. `upper` is given in upper case, as almost every program writes names: where it is a
// literal, the comparison takes one or two instructions.
inline bool equalsIgnoringCase(std::string_view text, std::string_view upper) {
  if (text.size() != upper.size()) return false;
  return std::memcmp(text.data(), upper.data(), upper.size()) == 0 || equalsInAnyCase(text, upper);
}

// The raw value of the first parameter of that name (in upper case): without its quotes, with its
// caret escapes. Absent when there is none.
std::optional<std::string_view> parameterOf(std::string_view parameters,
                                            std::string_view upperName);

}  // namespace tidemark::local
