#include "sample_files.h"

#include <algorithm>
#include <fstream>
#include <iterator>

namespace tidemark::local {
namespace {

SampleFile readSampleFile(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  SampleFile file;
  file.path = path.string();
  file.text.assign(std::istreambuf_iterator<char>(stream), {});
  file.calendar = readCalendar(file.text, fileName);
  for (const auto& item : file.calendar.items) file.fields.push_back(fieldsOf(*item));
  return file;
}

}  // namespace

std::vector<SampleFile> readSampleFiles(const std::vector<std::filesystem::path>& places) {
  std::vector<std::filesystem::path> paths;
  for (const auto& place : places) {
    if (std::filesystem::is_regular_file(place)) paths.push_back(place);
    if (!std::filesystem::is_directory(place)) continue;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(place)) {
      if (entry.path().extension() == ".ics") paths.push_back(entry.path());
    }
  }
  std::sort(paths.begin(), paths.end());
  std::vector<SampleFile> files;
  for (const auto& path : paths) files.push_back(readSampleFile(path));
  return files;
}

}  // namespace tidemark::local
