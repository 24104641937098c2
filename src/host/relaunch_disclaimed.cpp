// macOS, where a permission belongs to the process that answers for a whole chain of processes:
// mostly the terminal or the application that was started first. A disclaimed child answers for
// itself, so that the system asks for, and remembers, this program's own permission.
//
// No header declares the call for it. It is looked up, and without it all works as before.
#include <dlfcn.h>
#include <spawn.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "host/process_image.h"
#include "host/relaunch.h"

extern char** environ;  // NOLINT(readability-redundant-declaration): not every system declares it

namespace tidemark {
namespace {

using SetDisclaim = int (*)(posix_spawnattr_t* attributes, int disclaim);

struct CloseImage {
  void operator()(void* image) const { ::dlclose(image); }
};
using Image = std::unique_ptr<void, CloseImage>;

struct DestroyAttributes {
  void operator()(posix_spawnattr_t* attributes) const { ::posix_spawnattr_destroy(attributes); }
};
using Attributes = std::unique_ptr<posix_spawnattr_t, DestroyAttributes>;

struct Free {
  void operator()(char* text) const { ::free(text); }
};
using Text = std::unique_ptr<char, Free>;

// Copies, since posix_spawn takes texts that it could write to. Absent without the memory for them:
// a child must not be started with fewer.
std::optional<std::vector<Text>> copiesOf(std::span<const char* const> texts) {
  std::vector<Text> copies;
  copies.reserve(texts.size());
  for (const char* text : texts) {
    copies.emplace_back(::strdup(text));
    if (!copies.back()) return std::nullopt;
  }
  return copies;
}

std::vector<char*> nullTerminated(const std::vector<Text>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (const Text& text : texts) pointers.push_back(text.get());
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace

// What was made goes in the reverse order, whichever step is the last.
std::optional<pid_t> spawnDisclaimed() {
  const Image image(::dlopen(nullptr, RTLD_NOW));
  if (!image) return std::nullopt;
  const auto setDisclaim =
      reinterpret_cast<SetDisclaim>(::dlsym(image.get(), "responsibility_spawnattrs_setdisclaim"));
  if (setDisclaim == nullptr) return std::nullopt;

  posix_spawnattr_t values;
  if (::posix_spawnattr_init(&values) != 0) return std::nullopt;
  const Attributes attributes(&values);
  if (setDisclaim(attributes.get(), 1) != 0) return std::nullopt;

  const std::optional<std::string> path = executablePath();
  if (!path) return std::nullopt;
  // NOLINTNEXTLINE(concurrency-mt-unsafe): one thread
  if (::setenv(disclaimFlag, "1", 1) != 0) return std::nullopt;

  const std::optional<std::vector<Text>> arguments = copiesOf(commandLine());
  if (!arguments) return std::nullopt;
  pid_t child = 0;
  // Without file actions the child has every descriptor of this process.
  const int error = ::posix_spawn(&child, path->c_str(), nullptr, attributes.get(),
                                  nullTerminated(*arguments).data(), environ);
  if (error != 0) return std::nullopt;
  return child;
}

}  // namespace tidemark
