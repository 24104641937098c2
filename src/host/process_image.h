// What the system says of the running program.
#pragma once

#include <optional>
#include <span>
#include <string>

namespace tidemark {

// The file that was started, by its full path. Absent when the system does not tell. Main thread.
std::optional<std::string> executablePath();

// The command line, the program's name first, each as it was given. Valid to the end of the
// process. Any thread.
std::span<const char* const> commandLine();

}  // namespace tidemark
