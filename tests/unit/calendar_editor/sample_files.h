// The calendar files that stand in folders of the project.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "calendar_checks.h"

namespace tidemark::local {

// Stands in for a missing UID.
inline const std::string fileName = "name";

struct SampleFile {
  std::string path;
  std::string text;
  CalendarText calendar;
  std::vector<Fields> fields;  // of its items
};

// Every .ics file at or below these places, by path.
std::vector<SampleFile> readSampleFiles(const std::vector<std::filesystem::path>& places);

}  // namespace tidemark::local
