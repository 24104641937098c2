# Compiling Objective-C++ with ARC on Linux: clang, GNUstep's Foundation, GCC's Objective-C runtime, and what these lack
# in tests/eventkit/. Sets TIDEMARK_EVENTKIT_ON_LINUX when all is there.
find_program(TIDEMARK_CLANG NAMES clang clang-14)
find_program(TIDEMARK_CLANGXX NAMES clang++ clang++-14)
find_path(GNUSTEP_INCLUDE Foundation/Foundation.h PATH_SUFFIXES GNUstep)
find_library(GNUSTEP_BASE gnustep-base)
find_library(LIBOBJC libobjc.so.4)

set(TIDEMARK_EVENTKIT_ON_LINUX OFF)
if(TIDEMARK_CLANG AND TIDEMARK_CLANGXX AND GNUSTEP_INCLUDE AND GNUSTEP_BASE AND LIBOBJC)
  set(TIDEMARK_EVENTKIT_ON_LINUX ON)
  # Whatever compiles the C++ beside it.
  set(CMAKE_OBJC_COMPILER "${TIDEMARK_CLANG}")
  set(CMAKE_OBJCXX_COMPILER "${TIDEMARK_CLANGXX}")
endif()
