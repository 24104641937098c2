#include "store/local/zones/file_time_zones.h"

#include <utility>

#include "store/local/text/content_line.h"
#include "store/local/text/value_text.h"

namespace tidemark::local {
namespace {

// The property is a TEXT with escapes, the parameter that refers to it is not.
std::string unescaped(std::string_view text) {
  std::string result(readableCapacity(text.size()), '\0');
  const char* const end = writeReadable(text, Escapes::text, result.data());
  result.resize(static_cast<std::size_t>(end - result.data()));
  return result;
}

}  // namespace

const Zone* FileTimeZones::find(std::string_view tzid) {
  if (lastTzid_.data() && tzid == lastTzid_) return lastZone_;
  const Zone* zone = systemZone(tzid);
  if (!zone) zone = findInFile(tzid);
  lastTzid_ = tzid;
  lastZone_ = zone;
  return zone;
}

const Zone* FileTimeZones::findInFile(std::string_view tzid) {
  if (!descriptions_) descriptions_ = findDescriptions(text_);
  const auto found = descriptions_->find(std::string(tzid));
  if (found == descriptions_->end()) return nullptr;
  Description& description = found->second;
  if (!description.zone) description.zone = fileZone(description.component);
  return *description.zone;
}

FileTimeZones::Descriptions FileTimeZones::findDescriptions(std::string_view text) {
  Descriptions descriptions;
  ContentLineScanner scanner(text);
  bool isOpen = false;
  std::size_t begin = 0;
  std::string tzid;
  while (const auto line = scanner.next()) {
    if (equalsIgnoringCase(line->name, "BEGIN") && equalsIgnoringCase(line->value, "VTIMEZONE")) {
      isOpen = true;
      begin = line->begin;
      tzid.clear();
    } else if (isOpen && tzid.empty() && equalsIgnoringCase(line->name, "TZID")) {
      tzid = unescaped(line->value);
    } else if (isOpen && equalsIgnoringCase(line->name, "END") &&
               equalsIgnoringCase(line->value, "VTIMEZONE")) {
      descriptions.try_emplace(std::move(tzid),
                               Description{text.substr(begin, line->end - begin), std::nullopt});
      isOpen = false;
    }
  }
  return descriptions;
}

}  // namespace tidemark::local
