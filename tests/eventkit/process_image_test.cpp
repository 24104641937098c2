#include "host/process_image.h"

#include <gmock/gmock.h>

#include <array>
#include <filesystem>

namespace {

std::array<const char*, 3> arguments = {"./program", "", "caf\xE9"};  // not all of them are text
const char** first = arguments.data();
int count = 3;

}  // namespace

// As in macOS's <crt_externs.h>.
extern "C" {

char*** _NSGetArgv();
char*** _NSGetArgv() {
  return const_cast<char***>(&first);
}
int* _NSGetArgc();
int* _NSGetArgc() {
  return &count;
}

}  // extern "C"

namespace tidemark {
namespace {

TEST(ProcessImage, PathIsThatOfTheRunningProgram) {
  EXPECT_EQ(executablePath(), std::filesystem::read_symlink("/proc/self/exe").string());
}

TEST(ProcessImage, ArgumentsAreTheBytesThatWereGiven) {
  EXPECT_THAT(commandLine(), testing::ElementsAreArray(arguments));
}

}  // namespace
}  // namespace tidemark
