#include "store/local/editor/content_line_writer.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "store/local/text/civil.h"
#include "store/local/text/content_line.h"

namespace tidemark::local {
namespace {

bool isContinuation(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// RFC 5545, 3.1: no control character but the tab stands in a line.
bool isForbidden(char byte) {
  const auto code = static_cast<unsigned char>(byte);
  return (code < 0x20 && byte != '\t') || code == 0x7F;
}

// How much of `rest` fits on a line that has room for `room` octets, without cutting a character.
// Bytes that are no UTF-8 are cut anywhere.
std::size_t fittingSize(std::string_view rest, std::size_t room) {
  if (rest.size() <= room) return rest.size();
  std::size_t size = room;
  while (size > room - 3 && isContinuation(rest[size])) --size;
  return isContinuation(rest[size]) ? room : size;
}

WallSeconds withinFourDigits(WallSeconds wall) {
  return std::clamp(wall, firstWall, lastWall);
}

}  // namespace

std::string contentLine(std::string_view name, std::string_view parameters, std::string_view value,
                        std::string_view lineEnd) {
  std::string line;
  line.reserve(name.size() + parameters.size() + 1 + value.size());
  line.append(name).append(parameters).append(":").append(value);
  std::string_view rest = line;
  std::string folded;
  folded.reserve(line.size() + (line.size() / (longestLine - 1) + 1) * (lineEnd.size() + 1));
  std::size_t room = longestLine;
  while (true) {
    const std::size_t size = fittingSize(rest, room);
    folded.append(rest.substr(0, size)).append(lineEnd);
    rest.remove_prefix(size);
    if (rest.empty()) return folded;
    folded.push_back(' ');
    room = longestLine - 1;
  }
}

std::string textValue(std::string_view text) {
  std::string value;
  value.reserve(text.size() + text.size() / 8);
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char byte = text[at];
    switch (byte) {
      case '\\':
      case ';':
      case ',':
        value.append({'\\', byte});
        break;
      case '\r':
        if (at + 1 < text.size() && text[at + 1] == '\n') break;
        [[fallthrough]];
      case '\n':
        value.append("\\n");
        break;
      default:
        if (!isForbidden(byte)) value.push_back(byte);
    }
  }
  return value;
}

std::string plainValue(std::string_view text) {
  std::string value(text);
  std::erase_if(value, isForbidden);
  return value;
}

std::string withoutParameter(std::string_view parameters, std::string_view upperName) {
  std::string kept;
  for (std::size_t at = 0; at < parameters.size();) {
    bool isQuoted = false;
    std::size_t end = at + 1;
    while (end < parameters.size() && (isQuoted || parameters[end] != ';')) {
      if (parameters[end++] == '"') isQuoted = !isQuoted;
    }
    const std::string_view one = parameters.substr(at, end - at);
    if (!parameterOf(one, upperName)) kept.append(one);
    at = end;
  }
  return kept;
}

std::string dateText(WallSeconds wall) {
  const CivilDate date = dateOf(dayOf(withinFourDigits(wall)));
  char text[16];
  std::snprintf(text, sizeof text, "%04d%02u%02u", date.year, date.month, date.day);
  return text;
}

std::string dateTimeText(WallSeconds wall) {
  wall = withinFourDigits(wall);
  const auto second = static_cast<int>(wall - dayOf(wall) * secondsPerDay);
  char text[16];
  std::snprintf(text, sizeof text, "T%02d%02d%02d", second / 3600, second / 60 % 60, second % 60);
  return dateText(wall) + text;
}

std::string utcText(UtcSeconds utc) {
  return dateTimeText(utc) + "Z";
}

std::string offsetText(int seconds) {
  const int size = std::abs(seconds);
  char text[16];
  std::snprintf(text, sizeof text, "%c%02d%02d", seconds < 0 ? '-' : '+', size / 3600 % 100,
                size / 60 % 60);
  std::string offset(text);
  if (size % 60 != 0) {
    std::snprintf(text, sizeof text, "%02d", size % 60);
    offset.append(text);
  }
  return offset;
}

}  // namespace tidemark::local
