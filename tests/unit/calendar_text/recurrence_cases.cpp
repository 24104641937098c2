#include "tests/unit/calendar_text/recurrence_cases.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace tidemark::local::testing {
namespace {

std::vector<std::string> wordsOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

std::vector<RecurrenceCase> casesOf(const std::filesystem::path& path) {
  std::ifstream file(path);
  std::vector<RecurrenceCase> cases;
  RecurrenceCase current;
  bool isExpecting = false;
  const auto finish = [&] {
    if (!isExpecting) return;
    std::string stem = path.stem().string();
    std::replace(stem.begin(), stem.end(), '-', '_');
    current.name = stem + "_" + std::to_string(cases.size() + 1);
    cases.push_back(std::exchange(current, {}));
    isExpecting = false;
  };
  for (std::string line; std::getline(file, line);) {
    if (line.empty()) {
      finish();
    } else if (line.starts_with("# ")) {
      current.comment += line.substr(2) + " ";
    } else if (line.starts_with("window: ")) {
      const auto words = wordsOf(line.substr(8));
      current.from = words.at(0);
      current.to = words.at(1);
    } else if (line.starts_with("expect:")) {
      current.expected = wordsOf(line.substr(7));
      isExpecting = true;
    } else if (isExpecting && line.starts_with(" ")) {
      for (std::string& word : wordsOf(line)) current.expected.push_back(std::move(word));
    } else if (line.find(':') != std::string::npos) {
      current.lines.push_back(line);
    } else {
      throw std::runtime_error(path.string() + ": cannot read: " + line);
    }
  }
  finish();
  if (cases.empty()) throw std::runtime_error(path.string() + ": no case");
  return cases;
}

}  // namespace

std::string RecurrenceCase::calendarText() const {
  std::string text = "BEGIN:VCALENDAR\nBEGIN:VEVENT\n";
  for (const std::string& line : lines) text += line + "\n";
  return text + "END:VEVENT\nEND:VCALENDAR\n";
}

std::vector<RecurrenceCase> recurrenceCases() {
  std::vector<std::filesystem::path> paths;
  for (const auto& entry : std::filesystem::directory_iterator(TIDEMARK_TEST_DATA "/recurrence")) {
    if (entry.path().extension() == ".txt") paths.push_back(entry.path());
  }
  std::sort(paths.begin(), paths.end());
  std::vector<RecurrenceCase> cases;
  for (const auto& path : paths) {
    for (RecurrenceCase& example : casesOf(path)) cases.push_back(std::move(example));
  }
  return cases;
}

}  // namespace tidemark::local::testing
