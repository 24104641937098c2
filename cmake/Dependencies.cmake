# The libraries that the project calls, each behind one imported target; docs/dependencies.md says why these.
#
# With TIDEMARK_STATIC_DEPENDENCIES the archives are linked where the system has them: libical brings ICU along, and
# loading those shared objects alone takes longer than everything else that happens before the ready line.

if(TIDEMARK_STATIC_DEPENDENCIES AND NOT APPLE)
  set(CMAKE_FIND_LIBRARY_SUFFIXES .a .so)
endif()

function(tidemark_find_library target header library)
  find_path(${target}_INCLUDE ${header} REQUIRED)
  find_library(${target}_LIBRARY ${library} REQUIRED)
  add_library(${target} UNKNOWN IMPORTED)
  set_target_properties(${target} PROPERTIES
    IMPORTED_LOCATION "${${target}_LIBRARY}"
    INTERFACE_SYSTEM_INCLUDE_DIRECTORIES "${${target}_INCLUDE}")
endfunction()

find_path(RAPIDJSON_INCLUDE rapidjson/reader.h REQUIRED)
add_library(rapidjson INTERFACE IMPORTED)
set_target_properties(rapidjson PROPERTIES INTERFACE_SYSTEM_INCLUDE_DIRECTORIES "${RAPIDJSON_INCLUDE}")

tidemark_find_library(utf8proc utf8proc.h utf8proc)

tidemark_find_library(libical libical/ical.h ical)
if(libical_LIBRARY MATCHES "\\.a$")
  # The archive does not name what it needs.
  foreach(part icui18n icuuc icudata)
    find_library(TIDEMARK_${part} ${part} REQUIRED)
    set_property(TARGET libical APPEND PROPERTY INTERFACE_LINK_LIBRARIES "${TIDEMARK_${part}}")
  endforeach()
  set_property(TARGET libical APPEND PROPERTY INTERFACE_LINK_LIBRARIES ${CMAKE_DL_LIBS})
endif()

# tidemark_find_absl(TARGET MODULE): a module of Abseil, by the name that pkg-config has for it.
function(tidemark_find_absl target module)
  add_library(${target} INTERFACE IMPORTED GLOBAL)
  if(NOT TIDEMARK_STATIC_DEPENDENCIES OR APPLE)
    string(REPLACE absl_ absl:: cmake_module ${module})
    target_link_libraries(${target} INTERFACE ${cmake_module})
    return()
  endif()
  # The distribution's CMake package of Abseil names the shared objects; pkg-config names both.
  pkg_check_modules(${module} REQUIRED ${module})
  set(archives "")
  foreach(name IN LISTS ${module}_STATIC_LIBRARIES)
    if(name MATCHES "^absl_")
      find_library(TIDEMARK_${name} ${name} REQUIRED HINTS ${${module}_LIBRARY_DIRS})
      list(APPEND archives "${TIDEMARK_${name}}")
    endif()
  endforeach()
  set_target_properties(${target} PROPERTIES
    INTERFACE_SYSTEM_INCLUDE_DIRECTORIES "${${module}_INCLUDE_DIRS}"
    INTERFACE_LINK_LIBRARIES "-Wl,--start-group;${archives};-Wl,--end-group")
endfunction()

if(TIDEMARK_STATIC_DEPENDENCIES AND NOT APPLE)
  find_package(PkgConfig REQUIRED)
else()
  find_package(absl REQUIRED)
endif()
tidemark_find_absl(absl_time absl_time)
tidemark_find_absl(absl_containers absl_flat_hash_set)
tidemark_find_absl(absl_strings absl_strings)
