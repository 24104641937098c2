# What a program on macOS needs beside its code so that the system lets it ask for permission.
set(TIDEMARK_BUNDLE_IDENTIFIER "org.tidemark.tidemark-cal" CACHE STRING
  "The identifier under which macOS remembers the program's permissions")
set(TIDEMARK_SIGNING_IDENTITY "-" CACHE STRING "The identity that codesign signs with; - signs ad hoc")

# tidemark_mac_program(TARGET): embeds the Info.plist, and signs the program once it is linked.
function(tidemark_mac_program target)
  set(folder "${PROJECT_SOURCE_DIR}/packaging/macos")
  set(plist "${CMAKE_CURRENT_BINARY_DIR}/Info.plist")
  set(entitlements "${folder}/tidemark-cal.entitlements")
  configure_file("${folder}/Info.plist.in" "${plist}" @ONLY)
  target_link_options(${target} PRIVATE "LINKER:-sectcreate,__TEXT,__info_plist,${plist}")
  # Installing must not change the program any more: that would break the signature.
  set_target_properties(${target} PROPERTIES BUILD_WITH_INSTALL_RPATH ON INSTALL_RPATH_USE_LINK_PATH ON)
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS "${plist}" "${entitlements}")

  # The hardened runtime only takes libraries of the same signer, and an ad hoc signature names none.
  set(runtime --options runtime --timestamp)
  if(TIDEMARK_SIGNING_IDENTITY STREQUAL "-")
    set(runtime "")
  endif()
  add_custom_command(TARGET ${target} POST_BUILD VERBATIM
    COMMENT "Signing ${target}"
    COMMAND codesign --force --sign "${TIDEMARK_SIGNING_IDENTITY}" ${runtime}
            --identifier "${TIDEMARK_BUNDLE_IDENTIFIER}" --entitlements "${entitlements}" "$<TARGET_FILE:${target}>")
endfunction()
