// The local zone of a test.
#pragma once

#include <cstdlib>
#include <ctime>

namespace tidemark::test {

// Sets the process's zone; before other threads exist. Each test runs in a process of its own.
inline void useTimeZone(const char* name) {
  ::setenv("TZ", name, 1);
  ::tzset();
}

}  // namespace tidemark::test
