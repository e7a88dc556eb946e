# What cpack makes of the build for Linux: Debian packages, one for each component but for the licences, which are in all of them.
# packaging/windows packs the build for Windows.
if(WIN32 OR FRINGIX_SANITIZE)
  return()
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PACKAGE_NAME fringix)
set(CPACK_PACKAGE_VENDOR Fringix)
set(CPACK_PACKAGE_CONTACT "Fringix developers <fringix@example.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE none)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR}/bin)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY >=)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_DEBUGINFO_PACKAGE ON)
set(CPACK_COMPONENTS_ALL "")

# fringix_package(COMPONENT PACKAGE SECTION DESCRIPTION)
macro(fringix_package component package section description)
  string(TOUPPER ${component} upper)
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${package})
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
  set(CPACK_COMPONENT_${upper}_DESCRIPTION "${description}")
  if(NOT ${component} STREQUAL runtime)
    set(CPACK_COMPONENT_${upper}_DEPENDS runtime)
  endif()
  install(FILES ${CMAKE_BINARY_DIR}/THIRD-PARTY-NOTICES.txt DESTINATION share/doc/${package} RENAME copyright COMPONENT ${component}
    EXCLUDE_FROM_ALL)
endmacro()

set(library libfringix${PROJECT_VERSION_MAJOR})
fringix_package(runtime ${library} libs
  "Client library for structured-light sensor heads\nThe libraries that talk to heads and turn their pictures into points.")
fringix_package(development libfringix-dev libdevel
  "Headers and examples for programs that use structured-light sensor heads\nWith what CMake and pkg-config need to find the libraries.")
fringix_package(tools fringix science
  "Tool for structured-light sensor heads, and a simulated head\nfringix finds, shows and scans with heads; fringix-head stands in for one.")
if(TARGET fringix_dialog)
  fringix_package(dialog ${library}-dialog libs
    "Dialog in which a user picks a structured-light sensor head\nThe library shows it when a program asks for it.")
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_SUGGESTS ${library}-dialog)
endif()
include(CPack)
