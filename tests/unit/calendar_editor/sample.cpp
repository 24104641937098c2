#include "sample.h"

#include <absl/time/time.h>

#include <cstdlib>

#include "store/local/text/content_line.h"

namespace tidemark::local {
namespace {

// Before anything asks for the local zone, which is looked up once.
const int zoneIsSet = setenv("TZ", "Europe/Berlin", 1);

std::string itemWith(const std::string& component, const std::vector<std::string>& lines) {
  return crlf({"BEGIN:VCALENDAR", "VERSION:2.0", "PRODID:-//Example//Sample//EN",
               "BEGIN:" + component, "UID:one", "DTSTAMP:20250101T000000Z"}) +
         crlf(lines) + crlf({"END:" + component, "END:VCALENDAR"});
}

}  // namespace

std::string crlf(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\r\n";
  return text;
}

std::string eventWith(const std::vector<std::string>& lines) {
  return itemWith("VEVENT", lines);
}

std::string todoWith(const std::vector<std::string>& lines) {
  return itemWith("VTODO", lines);
}

UtcSeconds at(const std::string& time) {
  absl::Time instant;
  std::string error;
  const bool isUtc = time.ends_with('Z');
  const absl::TimeZone zone = isUtc ? absl::UTCTimeZone() : absl::LocalTimeZone();
  EXPECT_TRUE(absl::ParseTime(isUtc ? "%Y-%m-%dT%H:%M:%SZ" : "%Y-%m-%dT%H:%M:%S", time, zone,
                              &instant, &error))
      << error;
  return absl::ToUnixSeconds(instant);
}

std::vector<std::string> linesOf(const std::string& text, const std::string& name) {
  std::vector<std::string> found;
  ContentLineScanner scanner(text);
  while (const auto line = scanner.next()) {
    if (line->name != name) continue;
    found.push_back(std::string(line->name) + std::string(line->parameters) + ":" +
                    std::string(line->value));
  }
  return found;
}

std::string lineOf(const std::string& text, const std::string& name) {
  const std::vector<std::string> found = linesOf(text, name);
  EXPECT_EQ(found.size(), 1U) << name << " in\n" << text;
  return found.empty() ? std::string() : found.front();
}

std::string componentOf(const std::string& text, const std::string& name, int index) {
  std::size_t begin = text.find("BEGIN:" + name);
  for (; index > 0 && begin != std::string::npos; --index) {
    begin = text.find("BEGIN:" + name, begin + 1);
  }
  if (begin == std::string::npos) {
    ADD_FAILURE() << "no such " << name << " in\n" << text;
    return {};
  }
  const std::string last = "END:" + name + "\r\n";
  return text.substr(begin, text.find(last, begin) + last.size() - begin);
}

std::string changed(const std::string& text, const EventChange& change,
                    std::optional<UtcSeconds> occurrence) {
  const Edit edit = changeEvent(text, fileName, {"one", occurrence}, change, now);
  EXPECT_EQ(edit.outcome, Edit::Outcome::changed);
  return edit.text;
}

std::string changed(const std::string& text, const TodoChange& change) {
  const Edit edit = changeTodo(text, fileName, {"one", {}}, change, now);
  EXPECT_EQ(edit.outcome, Edit::Outcome::changed);
  return edit.text;
}

std::string withoutOccurrence(const std::string& text, UtcSeconds occurrence) {
  const Edit edit = removeEvent(text, fileName, {"one", occurrence}, now);
  EXPECT_EQ(edit.outcome, Edit::Outcome::changed);
  return edit.text;
}

}  // namespace tidemark::local
