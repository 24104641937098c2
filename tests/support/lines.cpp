#include "tests/support/lines.h"

#include <unistd.h>

#include <algorithm>

#include "host/json_writer.h"

namespace tidemark::test {
namespace {

void sortKeys(Json& json) {
  if (auto* array = std::get_if<JsonArray>(&json.value)) {
    for (Json& element : *array) sortKeys(element);
  } else if (auto* object = std::get_if<JsonObject>(&json.value)) {
    auto& members = object->members;
    for (auto& [key, value] : members) sortKeys(value);
    std::stable_sort(members.begin(), members.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
  }
}

}  // namespace

std::string normalized(std::string_view text) {
  std::optional<Json> json = parseJson(text);
  if (!json) return "not JSON: " + std::string(text);
  sortKeys(*json);
  TextBuffer buffer;
  JsonWriter writer(buffer);
  writer.value(*json);
  return std::string(buffer.view());
}

LineCollector::LineCollector(int descriptor)
    : descriptor_(descriptor), thread_([this] { collect(); }) {}

LineCollector::~LineCollector() {
  thread_.join();
  ::close(descriptor_);
}

void LineCollector::collect() {
  char bytes[4096];
  while (true) {
    const ssize_t size = ::read(descriptor_, bytes, sizeof bytes);
    if (size < 0 && errno == EINTR) continue;
    const std::lock_guard lock(lock_);
    if (size <= 0) ended_ = true;
    if (size > 0) text_.append(bytes, static_cast<std::size_t>(size));
    arrived_.notify_all();
    if (size <= 0) return;
  }
}

std::optional<std::string> LineCollector::next() {
  std::unique_lock lock(lock_);
  std::size_t length = std::string::npos;
  arrived_.wait_for(lock, patience, [&] {
    length = text_.find('\n');
    return length != std::string::npos || ended_;
  });
  if (length == std::string::npos) return std::nullopt;
  std::string line = text_.substr(0, length);
  text_.erase(0, length + 1);
  return line;
}

std::string LineCollector::rest() {
  std::unique_lock lock(lock_);
  if (!arrived_.wait_for(lock, patience, [&] { return ended_; }))
    return "the input did not end; so far: " + text_;
  return std::exchange(text_, {});
}

}  // namespace tidemark::test
