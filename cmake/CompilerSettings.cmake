# C++20, warnings and sanitizers for every target of the project, through one interface target.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_OBJCXX_STANDARD 20)
set(CMAKE_OBJCXX_STANDARD_REQUIRED ON)
set(CMAKE_C_STANDARD 11)

add_library(tidemark_settings INTERFACE)
target_compile_options(tidemark_settings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wnon-virtual-dtor)
if(APPLE)
  target_compile_options(tidemark_settings INTERFACE $<$<COMPILE_LANGUAGE:OBJCXX>:-fobjc-arc>)
endif()
if(TIDEMARK_WERROR)
  target_compile_options(tidemark_settings INTERFACE -Werror)
endif()
if(TIDEMARK_SANITIZE)
  target_compile_options(tidemark_settings INTERFACE
    -fsanitize=${TIDEMARK_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -O1)
  target_link_options(tidemark_settings INTERFACE -fsanitize=${TIDEMARK_SANITIZE})
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # Where code is optimized or instrumented, GCC 12 does not see that an empty std::optional is not read, and it fears
  # overlaps in the library's own strings.
  target_compile_options(tidemark_settings INTERFACE
    -Wno-maybe-uninitialized $<$<CONFIG:Release>:-Wno-restrict>)
endif()
target_include_directories(tidemark_settings INTERFACE "${PROJECT_SOURCE_DIR}/src")

if(TIDEMARK_STATIC_DEPENDENCIES AND NOT APPLE)
  # Loading the C++ library is a third of the time until the ready line.
  target_link_options(tidemark_settings INTERFACE -static-libstdc++ -static-libgcc)
endif()

find_package(Threads REQUIRED)
target_link_libraries(tidemark_settings INTERFACE Threads::Threads)

# tidemark_library(NAME SOURCES... LINK libraries...): a static library of one layer.
function(tidemark_library name)
  cmake_parse_arguments(arg "" "" "SOURCES;LINK" ${ARGN})
  add_library(${name} STATIC ${arg_SOURCES})
  target_link_libraries(${name} PUBLIC tidemark_settings ${arg_LINK})
endfunction()
