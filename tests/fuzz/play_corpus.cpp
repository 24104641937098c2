// Plays the files of a folder through a fuzz target, once each, in builds that cannot search.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz_check.h"

int main(int count, char** arguments) {
  LLVMFuzzerInitialize(&count, &arguments);
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(arguments[1])) {
    files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  tidemark::check(!files.empty(), "there is a corpus");
  for (const auto& file : files) {
    std::fprintf(stderr, "%s\n", file.c_str());
    std::ifstream stream(file, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(stream), {}};
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
  }
  return 0;
}
