// The zones of the TZIDs in one file. A VTIMEZONE is read only when an item needs it.
//
// One thread at a time; the text must outlive it.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "store/local/zones/zone.h"

namespace tidemark::local {

class FileTimeZones {
 public:
  explicit FileTimeZones(std::string_view text) : text_(text) {}

  // The system's zone, else the one that the file describes; null when neither knows the TZID.
  const Zone* find(std::string_view tzid);

 private:
  struct Description {
    std::string_view component;  // from BEGIN:VTIMEZONE through END:VTIMEZONE
    std::optional<const Zone*> zone;
  };
  using Descriptions = std::unordered_map<std::string, Description>;

  static Descriptions findDescriptions(std::string_view text);
  const Zone* findInFile(std::string_view tzid);

  std::string_view text_;
  std::string_view lastTzid_;
  const Zone* lastZone_ = nullptr;
  std::optional<Descriptions> descriptions_;
};

}  // namespace tidemark::local
