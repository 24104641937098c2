// The running program as Linux tells of it, where the relaunch is run without a Mac.
#include <unistd.h>

#include <array>
#include <fstream>
#include <iterator>
#include <vector>

#include "host/process_image.h"

namespace tidemark {

std::optional<std::string> executablePath() {
  std::array<char, 4096> path{};
  const ssize_t size = ::readlink("/proc/self/exe", path.data(), path.size());
  if (size < 0) return std::nullopt;
  return std::string(path.data(), static_cast<std::size_t>(size));
}

std::span<const char* const> commandLine() {
  // Each argument is followed by a zero byte.
  static const std::string texts = [] {
    std::ifstream file("/proc/self/cmdline", std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
  }();
  static const std::vector<const char*> arguments = [] {
    std::vector<const char*> result;
    for (std::size_t at = 0; at < texts.size(); at = texts.find('\0', at) + 1) {
      result.push_back(&texts[at]);
    }
    return result;
  }();
  return arguments;
}

}  // namespace tidemark
