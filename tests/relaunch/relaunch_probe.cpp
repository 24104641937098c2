// The bridge's start-up, relaunch and all, and in the place of a store what the command line says:
//
//   report          writes what this process is, one line for each thing
//   exit N          ends with that status
//   signal N        is ended by that signal
//   copy            copies standard input to standard output
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string_view>

#include "host/bridge.h"
#include "host/relaunch.h"

namespace {

void report(std::span<char*> arguments) {
  const char* flag = std::getenv(tidemark::disclaimFlag);
  std::printf("process %d\n", static_cast<int>(::getpid()));
  std::printf("parent %d\n", static_cast<int>(::getppid()));
  std::printf("disclaimed %d\n", ::getpgrp() == ::getpid() ? 1 : 0);
  std::printf("flag %s\n", flag == nullptr ? "(none)" : flag);
  for (const char* argument : arguments) std::printf("argument %s\n", argument);
}

void copy() {
  std::array<char, 4096> bytes{};
  ssize_t size = 0;
  while ((size = ::read(STDIN_FILENO, bytes.data(), bytes.size())) > 0) {
    std::fwrite(bytes.data(), 1, static_cast<std::size_t>(size), stdout);
  }
}

}  // namespace

int main(int argc, char** argv) {
  return tidemark::runBridge([&]() -> std::unique_ptr<tidemark::Store> {
    const std::string_view action = argc > 1 ? argv[1] : "";
    const int number = argc > 2 ? std::atoi(argv[2]) : 0;
    if (action == "report") report({argv, static_cast<std::size_t>(argc)});
    if (action == "copy") copy();
    if (action == "signal") std::raise(number);
    std::exit(action == "exit" ? number : EXIT_SUCCESS);
  });
}
