#include "store/local/tree/metadata.h"

#include <charconv>

#include "store/local/files/file_reader.h"
#include "store/local/text/content_line.h"
#include "store/local/text/value_text.h"
#include "store/local/tree/color_names.h"

namespace tidemark::local {
namespace {

// A title of more than this is none.
constexpr std::size_t maximumMetadataSize = 4096;

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
  if (text.starts_with(byteOrderMark)) text.remove_prefix(byteOrderMark.size());
  constexpr std::string_view space = " \t\r\n\v\f";
  const std::size_t begin = text.find_first_not_of(space);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(space) - begin + 1);
}

std::optional<std::uint32_t> parseHex(std::string_view digits) {
  std::uint32_t value = 0;
  const char* end = digits.data() + digits.size();
  const auto result = std::from_chars(digits.data(), end, value, 16);
  return result.ec == std::errc() && result.ptr == end ? std::optional(value) : std::nullopt;
}

Color colorOf(std::uint32_t rgb) {
  const auto component = [rgb](int shift) {
    return static_cast<double>((rgb >> shift) & 0xFF) / 255.0;
  };
  return {ColorSpace::sRGB, {component(16), component(8), component(0)}};
}

// Each digit counts for two.
std::uint32_t widened(std::uint32_t rgb) {
  return (rgb & 0xF00) * 0x1100 + (rgb & 0x0F0) * 0x110 + (rgb & 0x00F) * 0x11;
}

std::optional<std::int64_t> parseInteger(std::string_view text) {
  if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
  std::int64_t value = 0;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  return result.ec == std::errc() && result.ptr == end ? std::optional(value) : std::nullopt;
}

// Names between commas or white space.
void readComponents(std::string_view text, Metadata& metadata) {
  constexpr std::string_view separators = ", \t\r\n";
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of(separators), text.size());
    const std::string_view name = text.substr(0, end);
    if (equalsIgnoringCase(name, "VEVENT")) metadata.namesEvents = true;
    if (equalsIgnoringCase(name, "VTODO")) metadata.namesTodos = true;
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

}  // namespace

bool operator==(const Metadata& a, const Metadata& b) {
  const auto components = [](const Metadata& metadata) {
    return metadata.color ? metadata.color->components : std::vector<double>();
  };
  return a.displayName == b.displayName && components(a) == components(b) && a.order == b.order &&
         a.namesEvents == b.namesEvents && a.namesTodos == b.namesTodos;
}

Metadata readMetadata(int directory) {
  Metadata metadata;
  FileReader reader;
  const auto textOf = [&](const char* name) {
    const FileText file = reader.read(directory, name, FileReader::Changes::compared);
    const bool isUsable =
        file.outcome == FileText::Outcome::read && file.text.size() <= maximumMetadataSize;
    return isUsable ? trimmed(file.text) : std::string_view();
  };
  if (const std::string_view name = textOf("displayname"); !name.empty()) {
    metadata.displayName = readableText(name);
  }
  metadata.color = parseColor(textOf("color"));
  metadata.order = parseInteger(textOf("order"));
  readComponents(textOf("supported-calendar-component-set"), metadata);
  return metadata;
}

std::optional<Color> parseColor(std::string_view text) {
  if (!text.starts_with('#')) {
    const auto named = colorNamed(text);
    return named ? std::optional(colorOf(*named)) : std::nullopt;
  }
  text.remove_prefix(1);
  const auto value = parseHex(text);
  if (!value) return std::nullopt;
  if (text.size() == 3) return colorOf(widened(*value));
  if (text.size() == 6) return colorOf(*value);
  if (text.size() == 8) return colorOf(*value >> 8);
  return std::nullopt;
}

std::string readableText(std::string_view bytes) {
  std::string text(readableCapacity(bytes.size()), '\0');
  const char* end = writeReadable(bytes, Escapes::none, text.data());
  text.resize(static_cast<std::size_t>(end - text.data()));
  return text;
}

}  // namespace tidemark::local
