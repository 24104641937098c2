# What `cmake --install` lays out besides the programs, and the packages made of it. docs/tidemark-cal.1.md is the one source
# of the man page.
include(GNUInstallDirs)

install(FILES docs/protocol.schema.json DESTINATION "${CMAKE_INSTALL_DATADIR}/tidemark-cal")
install(FILES README.md CHANGELOG.md CONTRIBUTING.md DESTINATION "${CMAKE_INSTALL_DOCDIR}")
install(DIRECTORY docs examples DESTINATION "${CMAKE_INSTALL_DOCDIR}" USE_SOURCE_PERMISSIONS
  PATTERN "__pycache__" EXCLUDE
  PATTERN "tidemark-cal.1.md" EXCLUDE)

find_program(TIDEMARK_GO_MD2MAN go-md2man)
if(TIDEMARK_GO_MD2MAN)
  configure_file(docs/tidemark-cal.1.md tidemark-cal.1.md @ONLY)
  add_custom_command(OUTPUT tidemark-cal.1
    COMMAND "${TIDEMARK_GO_MD2MAN}" -in tidemark-cal.1.md -out tidemark-cal.1
    DEPENDS "${CMAKE_CURRENT_BINARY_DIR}/tidemark-cal.1.md"
    VERBATIM)
  add_custom_target(man_page ALL DEPENDS tidemark-cal.1)
  file(WRITE "${CMAKE_CURRENT_BINARY_DIR}/tidemark-cal-sim.1" ".so man1/tidemark-cal.1\n")
  install(FILES "${CMAKE_CURRENT_BINARY_DIR}/tidemark-cal.1" "${CMAKE_CURRENT_BINARY_DIR}/tidemark-cal-sim.1"
    DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
else()
  message(STATUS "go-md2man was not found: no man page will be installed")
endif()

# The notices of libraries whose code the programs hold, as their licences ask: headers always, archives where they are linked.
set(notices "")
set(held_packages rapidjson-dev)
if(TIDEMARK_STATIC_DEPENDENCIES)
  list(APPEND held_packages libabsl-dev libical-dev libicu-dev libutf8proc-dev libstdc++6)
endif()
foreach(package IN LISTS held_packages)
  set(notice "/usr/share/doc/${package}/copyright")
  if(EXISTS "${notice}")
    file(READ "${notice}" text)
    string(APPEND notices "This program holds code of what Debian packages as ${package}:\n\n${text}\n")
  endif()
endforeach()
if(notices)
  file(WRITE "${CMAKE_CURRENT_BINARY_DIR}/copyright" "${notices}")
  install(FILES "${CMAKE_CURRENT_BINARY_DIR}/copyright" DESTINATION "${CMAKE_INSTALL_DOCDIR}")
endif()

set(CPACK_PACKAGE_CONTACT "tidemark-cal maintainers <maintainers@tidemark-cal.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
find_program(TIDEMARK_DPKG_SHLIBDEPS dpkg-shlibdeps)
if(TIDEMARK_DPKG_SHLIBDEPS)
  set(CPACK_GENERATOR DEB)
else()
  set(CPACK_GENERATOR TGZ)
endif()
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
# The time zones are read at run time; the libraries are found in the programs.
set(CPACK_DEBIAN_PACKAGE_DEPENDS tzdata)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "khal, todoman, vdirsyncer, python3, nodejs")
# CPack puts the project's description above it.
string(CONCAT CPACK_DEBIAN_PACKAGE_DESCRIPTION
  "The user's calendars, events, reminder lists and reminders for any program that can start a process: a JSON request a line, "
  "a JSON answer a line. The store is the directories of iCalendar files that khal, todoman and vdirsyncer share.")
include(CPack)
