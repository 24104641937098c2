// Each step of the relaunch made to fail. The linker puts the functions below in the place of the
// system's (--wrap); they note the call, fail where the test asks for it, and else do the thing.
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <spawn.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "host/process_image.h"
#include "host/relaunch.h"
#include "tests/support/output_capture.h"

extern char** environ;  // NOLINT(readability-redundant-declaration)

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

struct Recorder {
  bool isOn = false;
  std::string failing;  // the step
  std::vector<std::string> calls;
  std::set<void*> copies;  // of arguments, not freed yet
  posix_spawnattr_t* attributes = nullptr;
  void* image = nullptr;
  std::vector<std::string> childArguments;
  std::string childFlag;
};
Recorder recorder;

// Notes the call; true when it is to fail.
bool fails(const char* step) {
  recorder.calls.emplace_back(step);
  return recorder.failing == step;
}

constexpr pid_t childProcess = 4711;

}  // namespace

extern "C" {

void* __real_dlopen(const char* path, int mode);
void* __real_dlsym(void* image, const char* name);
int __real_dlclose(void* image);
int __real_posix_spawnattr_init(posix_spawnattr_t* attributes);
int __real_posix_spawnattr_destroy(posix_spawnattr_t* attributes);
int __real_setenv(const char* name, const char* value, int overwrite);
char* __real_strdup(const char* text);
void __real_free(void* memory);

void* __wrap_dlopen(const char* path, int mode) {
  if (!recorder.isOn) return __real_dlopen(path, mode);
  EXPECT_EQ(path, nullptr);
  EXPECT_EQ(mode, 2);
  if (fails("dlopen")) return nullptr;
  return recorder.image = __real_dlopen(path, mode);
}

static int setDisclaim(posix_spawnattr_t* attributes, int disclaim) {
  EXPECT_EQ(attributes, recorder.attributes);
  EXPECT_EQ(disclaim, 1);
  return fails("setdisclaim") ? EINVAL : 0;
}

void* __wrap_dlsym(void* image, const char* name) {
  if (!recorder.isOn) return __real_dlsym(image, name);
  EXPECT_EQ(image, recorder.image);
  EXPECT_STREQ(name, "responsibility_spawnattrs_setdisclaim");
  return fails("dlsym") ? nullptr : reinterpret_cast<void*>(setDisclaim);
}

int __wrap_dlclose(void* image) {
  if (recorder.isOn) {
    EXPECT_EQ(image, recorder.image);
    recorder.calls.emplace_back("dlclose");
  }
  return __real_dlclose(image);
}

int __wrap_posix_spawnattr_init(posix_spawnattr_t* attributes) {
  if (fails("attributes")) return ENOMEM;
  recorder.attributes = attributes;
  return __real_posix_spawnattr_init(attributes);
}

int __wrap_posix_spawnattr_destroy(posix_spawnattr_t* attributes) {
  EXPECT_EQ(attributes, recorder.attributes);
  recorder.calls.emplace_back("destroy");
  return __real_posix_spawnattr_destroy(attributes);
}

int __wrap_setenv(const char* name, const char* value, int overwrite) {
  if (recorder.isOn && fails("setenv")) return -1;
  return __real_setenv(name, value, overwrite);
}

char* __wrap_strdup(const char* text) {
  if (!recorder.isOn) return __real_strdup(text);
  if (recorder.failing == "strdup" && !recorder.copies.empty()) return nullptr;
  char* copy = __real_strdup(text);
  recorder.copies.insert(copy);
  return copy;
}

void __wrap_free(void* memory) {
  if (recorder.isOn && recorder.copies.erase(memory) > 0 && recorder.copies.empty()) {
    recorder.calls.emplace_back("last copy freed");
  }
  __real_free(memory);
}

int __wrap_posix_spawn(pid_t* child, const char* path, const posix_spawn_file_actions_t* actions,
                       const posix_spawnattr_t* attributes, char* const* arguments,
                       char* const* environment) {
  if (fails("spawn")) return ENOENT;
  EXPECT_STREQ(path, "/the/program");
  EXPECT_EQ(actions, nullptr);
  EXPECT_EQ(attributes, recorder.attributes);
  EXPECT_EQ(environment, ::environ);
  const std::string flag = std::string(tidemark::disclaimFlag) + "=";
  for (char* const* variable = environment; *variable != nullptr; ++variable) {
    if (std::string_view(*variable).starts_with(flag)) recorder.childFlag = *variable;
  }
  for (; *arguments != nullptr; ++arguments) {
    EXPECT_EQ(recorder.copies.count(*arguments), 1u) << "not a copy: " << *arguments;
    recorder.childArguments.emplace_back(*arguments);
  }
  *child = childProcess;
  return 0;
}

}  // extern "C"

namespace {

struct Step {
  const char* failing;
  std::vector<std::string> calls;
  bool setsFlag;
};
void PrintTo(const Step& step, std::ostream* out) {
  *out << step.failing;
}

class FailingStep : public testing::TestWithParam<Step> {};

struct Outcome {
  std::optional<pid_t> child;
  std::string written;
};

Outcome spawn(const char* failing) {
  ::unsetenv(tidemark::disclaimFlag);
  recorder = {};
  recorder.failing = failing;
  tidemark::test::OutputCapture output;
  testing::internal::CaptureStderr();
  recorder.isOn = true;
  Outcome outcome;
  outcome.child = tidemark::spawnDisclaimed();
  recorder.isOn = false;
  outcome.written = testing::internal::GetCapturedStderr() + output.end();
  return outcome;
}

TEST_P(FailingStep, GivesBackWhatTheStepsBeforeTook) {
  const Step& step = GetParam();
  const Outcome outcome = spawn(step.failing);
  EXPECT_EQ(outcome.child, std::nullopt);
  EXPECT_EQ(outcome.written, "");
  EXPECT_THAT(recorder.calls, ElementsAreArray(step.calls));
  EXPECT_TRUE(recorder.copies.empty());
  const char* flag = std::getenv(tidemark::disclaimFlag);
  EXPECT_STREQ(flag, step.setsFlag ? "1" : nullptr);
}

const std::array<Step, 8> steps = {{
    {"dlopen", {"dlopen"}, false},
    {"dlsym", {"dlopen", "dlsym", "dlclose"}, false},
    {"attributes", {"dlopen", "dlsym", "attributes", "dlclose"}, false},
    {"setdisclaim", {"dlopen", "dlsym", "attributes", "setdisclaim", "destroy", "dlclose"}, false},
    {"path", {"dlopen", "dlsym", "attributes", "setdisclaim", "path", "destroy", "dlclose"}, false},
    {"setenv",
     {"dlopen", "dlsym", "attributes", "setdisclaim", "path", "setenv", "destroy", "dlclose"},
     false},
    {"strdup",
     {"dlopen", "dlsym", "attributes", "setdisclaim", "path", "setenv", "last copy freed",
      "destroy", "dlclose"},
     true},
    {"spawn",
     {"dlopen", "dlsym", "attributes", "setdisclaim", "path", "setenv", "spawn", "last copy freed",
      "destroy", "dlclose"},
     true},
}};
INSTANTIATE_TEST_SUITE_P(Relaunch, FailingStep, testing::ValuesIn(steps),
                         [](const auto& step) { return std::string(step.param.failing); });

TEST(RelaunchSteps, ChildHasTheArgumentsAndTheFlag) {
  const Outcome outcome = spawn("none");
  EXPECT_EQ(outcome.child, childProcess);
  EXPECT_EQ(outcome.written, "");
  EXPECT_THAT(recorder.calls,
              ElementsAre("dlopen", "dlsym", "attributes", "setdisclaim", "path", "setenv", "spawn",
                          "last copy freed", "destroy", "dlclose"));
  EXPECT_TRUE(recorder.copies.empty());
  EXPECT_THAT(recorder.childArguments, ElementsAre("./program", "", "two words"));
  EXPECT_EQ(recorder.childFlag, "TIDEMARK_CAL_DISCLAIMED=1");
}

TEST(RelaunchSteps, FlagIsSetOverAnyOtherValue) {
  ::setenv(tidemark::disclaimFlag, "", 1);
  recorder = {};
  recorder.isOn = true;
  EXPECT_TRUE(tidemark::spawnDisclaimed().has_value());
  recorder.isOn = false;
  EXPECT_STREQ(std::getenv(tidemark::disclaimFlag), "1");
}

}  // namespace

namespace tidemark {

std::optional<std::string> executablePath() {
  if (fails("path")) return std::nullopt;
  return "/the/program";
}

std::span<const char* const> commandLine() {
  static constexpr std::array<const char*, 3> arguments = {"./program", "", "two words"};
  return arguments;
}

}  // namespace tidemark
