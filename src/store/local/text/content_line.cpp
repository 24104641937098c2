#include "store/local/text/content_line.h"

#include <algorithm>
#include <cstring>

namespace tidemark::local {
namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
// What one large text needed is not kept for all the small ones after it.
constexpr std::size_t largestKeptRoom = std::size_t{64} << 10;

bool isFoldMark(char byte) {
  return byte == ' ' || byte == '\t';
}

// The end of the physical line that starts at `from`, its line feed included.
std::size_t endOfPhysicalLine(std::string_view text, std::size_t from) {
  const void* feed = std::memchr(text.data() + from, '\n', text.size() - from);
  return feed ? static_cast<std::size_t>(static_cast<const char*>(feed) - text.data()) + 1
              : text.size();
}

std::string_view withoutLineEnd(std::string_view line) {
  if (!line.empty() && line.back() == '\n') line.remove_suffix(1);
  while (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  return line;
}

bool isBlank(std::string_view line) {
  return line.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

// Where the value's colon stands at or after `from`: the first one outside quotes, or the first one
// at all where a quote is left open. npos when there is none.
std::size_t findValueColon(std::string_view line, std::size_t from) {
  const std::size_t colon = line.find(':', from);
  if (colon == std::string_view::npos) return colon;
  // Few lines have quotes.
  if (line.substr(from, colon - from).find('"') == std::string_view::npos) return colon;
  bool isQuoted = false;
  for (std::size_t at = from; at < line.size(); ++at) {
    if (line[at] == '"') isQuoted = !isQuoted;
    if (line[at] == ':' && !isQuoted) return at;
  }
  return isQuoted ? line.find(':', from) : std::string_view::npos;
}

// Where the first parameter ends: at a semicolon outside quotes, or with the text.
std::size_t findParameterEnd(std::string_view parameters) {
  const std::size_t semicolon = std::min(parameters.find(';'), parameters.size());
  if (parameters.substr(0, semicolon).find('"') == std::string_view::npos) return semicolon;
  bool isQuoted = false;
  std::size_t end = 0;
  for (; end < parameters.size() && (isQuoted || parameters[end] != ';'); ++end) {
    if (parameters[end] == '"') isQuoted = !isQuoted;
  }
  return end;
}

void split(std::string_view text, ContentLine& line) {
  std::size_t nameBegin = 0;
  std::size_t nameEnd = 0;
  for (; nameEnd < text.size(); ++nameEnd) {
    const char byte = text[nameEnd];
    if (byte > ';') continue;  // as all letters are
    if (byte == ':' || byte == ';') break;
    // What stands before a dot is a group.
    if (byte == '.') nameBegin = nameEnd + 1;
  }
  line.name = text.substr(nameBegin, nameEnd - nameBegin);
  if (nameEnd == text.size()) return;
  std::size_t colon = nameEnd;
  if (text[nameEnd] == ';') {
    colon = findValueColon(text, nameEnd);
    line.parameters = text.substr(nameEnd, colon - nameEnd);
    if (colon == std::string_view::npos) return;
  }
  line.value = text.substr(colon + 1);
}

}  // namespace

void ContentLineScanner::restart(std::string_view text) {
  text_ = text;
  position_ = text.starts_with(byteOrderMark) ? byteOrderMark.size() : 0;
  unfoldedSize_ = 0;
  if (unfoldedCapacity_ < text.size() || unfoldedCapacity_ > largestKeptRoom) {
    unfolded_.reset();
    unfoldedCapacity_ = 0;
  }
}

std::optional<ContentLine> ContentLineScanner::next() {
  while (position_ < text_.size()) {
    ContentLine line;
    line.begin = position_;
    line.end = endOfPhysicalLine(text_, position_);
    std::string_view content = withoutLineEnd(text_.substr(line.begin, line.end - line.begin));
    if (content.empty() || (isFoldMark(content.front()) && isBlank(content))) {
      position_ = line.end;
      continue;
    }
    if (line.end < text_.size() && isFoldMark(text_[line.end])) {
      do {
        line.end = endOfPhysicalLine(text_, line.end);
      } while (line.end < text_.size() && isFoldMark(text_[line.end]));
      content = unfold(line.begin, line.end);
    }
    position_ = line.end;
    split(content, line);
    return line;
  }
  return std::nullopt;
}

void ContentLineScanner::skipToComponent() {
  constexpr std::string_view begin = "BEGIN:V";
  constexpr std::string_view end = "END:V";
  while (position_ < text_.size()) {
    const char first = text_[position_];
    if (first == 'E' || first == 'e' || first == 'B' || first == 'b') {
      if (equalsIgnoringCase(text_.substr(position_, begin.size()), begin)) return;
      if (equalsIgnoringCase(text_.substr(position_, end.size()), end)) return;
    }
    position_ = endOfPhysicalLine(text_, position_);
  }
}

std::string_view ContentLineScanner::unfold(std::size_t begin, std::size_t end) {
  if (!unfolded_) {
    unfoldedCapacity_ = text_.size();
    unfolded_ = std::make_unique_for_overwrite<char[]>(unfoldedCapacity_);
  }
  char* const target = unfolded_.get() + unfoldedSize_;
  std::size_t size = 0;
  for (std::size_t at = begin; at < end;) {
    const std::size_t lineEnd = endOfPhysicalLine(text_, at);
    const std::size_t skipped = at == begin ? 0 : 1;
    const std::string_view piece =
        withoutLineEnd(text_.substr(at + skipped, lineEnd - at - skipped));
    std::memcpy(target + size, piece.data(), piece.size());
    size += piece.size();
    at = lineEnd;
  }
  unfoldedSize_ += size;
  return {target, size};
}

bool equalsInAnyCase(std::string_view text, std::string_view upper) {
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char byte = text[at];
    const char raised = byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 'a' + 'A') : byte;
    if (raised != upper[at]) return false;
  }
  return true;
}

std::optional<std::string_view> parameterOf(std::string_view parameters,
                                            std::string_view upperName) {
  while (!parameters.empty()) {
    parameters.remove_prefix(1);  // the semicolon
    const std::size_t end = findParameterEnd(parameters);
    if (end > upperName.size() && parameters[upperName.size()] == '=' &&
        equalsIgnoringCase(parameters.substr(0, upperName.size()), upperName)) {
      std::string_view value = parameters.substr(upperName.size() + 1, end - upperName.size() - 1);
      if (value.size() >= 2 && value.front() == '"' && value.back() == '"') {
        value = value.substr(1, value.size() - 2);
      }
      return value;
    }
    parameters.remove_prefix(end);
  }
  return std::nullopt;
}

}  // namespace tidemark::local
