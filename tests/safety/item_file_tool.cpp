// Changes item files as the bridge does, one operation a run, for the tests that kill and starve
// it.
//
//   item_file_tool create FOLDER NAME TITLE            a new file
//   item_file_tool add FOLDER NAME PROPERTY            puts a property into the file's component
//   item_file_tool add-many FOLDER NAME PROPERTY COUNT  the same with PROPERTY:1, PROPERTY:2, ...
//   and an answer each item_file_tool remove FOLDER NAME TITLE            removes the file; refuses
//   when it has another title
//
// Says "ok", or "failed: " and the sentence for the host.
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "store/local/files/item_file.h"

namespace {

using namespace tidemark;
using namespace tidemark::local;

constexpr std::string_view componentEnd = "END:VEVENT\r\n";

std::string eventText(std::string_view title) {
  return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nBEGIN:VEVENT\r\nUID:1\r\nSUMMARY:" +
         std::string(title) + "\r\n" + std::string(componentEnd) + "END:VCALENDAR\r\n";
}

Rewrite withProperty(std::string_view current, std::string_view property) {
  std::string text(current);
  const std::size_t end = text.find(componentEnd);
  if (end == std::string::npos) return {.text = {}, .refusal = "The file holds half an event."};
  text.insert(end, std::string(property) + "\r\n");
  return {.text = std::move(text), .refusal = {}};
}

StoreResult addProperty(const std::string& folder, const std::string& name,
                        const std::string& property) {
  return rewriteItemFile(folder, name,
                         [&](std::string_view current) { return withProperty(current, property); });
}

StoreResult removeTitled(const std::string& folder, const std::string& name,
                         const std::string& title) {
  return rewriteItemFile(folder, name, [&](std::string_view current) {
    if (current.find("SUMMARY:" + title + "\r\n") != std::string_view::npos) return Rewrite{};
    return Rewrite{.text = {}, .refusal = "The event has another title."};
  });
}

void answer(const StoreResult& result) {
  std::cout << (result ? "ok" : "failed: " + *result.error) << std::endl;
}

}  // namespace

int main(int count, char** values) {
  const std::vector<std::string> arguments(values + 1, values + count);
  if (arguments.size() < 4) return 2;
  const std::string &operation = arguments[0], &folder = arguments[1], &name = arguments[2],
                    &detail = arguments[3];
  if (operation == "create") {
    answer(createItemFile(folder, name, eventText(detail)));
  } else if (operation == "add") {
    answer(addProperty(folder, name, detail));
  } else if (operation == "remove") {
    answer(removeTitled(folder, name, detail));
  } else if (operation == "add-many" && arguments.size() == 5) {
    for (int number = 1; number <= std::stoi(arguments[4]); ++number) {
      answer(addProperty(folder, name, detail + ':' + std::to_string(number)));
    }
  } else {
    return 2;
  }
  return 0;
}
