#include "store/local/zones/zone_name.h"

#include <cstddef>

#include "store/local/zones/windows_zones.h"

namespace tidemark::local {
namespace {

constexpr std::size_t longestZoneName = 64;

bool isLetter(char byte) {
  return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
}

bool isNameByte(char byte) {
  return isLetter(byte) || (byte >= '0' && byte <= '9') || byte == '_' || byte == '-' ||
         byte == '+';
}

// Entries of the database's folder that are zones of no place: the machine's own zone, the copies
// that count leap seconds, and what is there for old programs.
bool isSpecialEntry(std::string_view first) {
  return first == "localtime" || first == "posixrules" || first == "posix" || first == "right" ||
         first == "Factory";
}

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t\"");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\"") - first + 1);
}

}  // namespace

bool isZoneName(std::string_view name) {
  if (name.empty() || name.size() > longestZoneName) return false;
  if (isSpecialEntry(name.substr(0, name.find('/')))) return false;
  bool startsSegment = true;
  for (const char byte : name) {
    if (byte == '/') {
      if (startsSegment) return false;
      startsSegment = true;
    } else if (startsSegment ? !isLetter(byte) : !isNameByte(byte)) {
      return false;
    } else {
      startsSegment = false;
    }
  }
  return !startsSegment;
}

void forEachZoneName(std::string_view tzid, const std::function<bool(std::string_view)>& accept) {
  const std::string_view name = trimmed(tzid);
  if (isZoneName(name) && accept(name)) return;
  for (std::size_t slash = name.find('/'); slash != std::string_view::npos;
       slash = name.find('/', slash + 1)) {
    const std::string_view suffix = name.substr(slash + 1);
    // A single word may well be the vendor's own name for a zone that the file describes.
    const bool isPlace = suffix.find('/') != std::string_view::npos;
    if ((isPlace || suffix == "UTC" || suffix == "GMT") && isZoneName(suffix) && accept(suffix)) {
      return;
    }
  }
  if (const auto place = zoneNameOfWindowsName(name)) accept(*place);
}

}  // namespace tidemark::local
