# What the libraries are to programs of others: their exports, their version, and what is installed for those who build with them.
include(CMakePackageConfigHelpers)

if(WIN32)
  find_program(DLLTOOL NAMES llvm-dlltool llvm-dlltool-14)
  if(NOT DLLTOOL)
    message(STATUS "llvm-dlltool not found: the import libraries for MSVC are not made")
  endif()
endif()

# The import library that MSVC links, made from the same list of exports.
function(fringix_msvc_import_library target exports)
  set(import_library ${CMAKE_CURRENT_BINARY_DIR}/${target}.lib)
  add_custom_command(OUTPUT ${import_library}
    COMMAND ${DLLTOOL} -m i386:x86-64 -D ${target}.dll -d ${exports} -l ${import_library}
    DEPENDS ${exports} VERBATIM)
  add_custom_target(${target}_msvc_import_library ALL DEPENDS ${import_library})
  install(FILES ${import_library} DESTINATION lib COMPONENT development)
endfunction()

function(fringix_export_from_dll target)
  set(exports ${CMAKE_CURRENT_SOURCE_DIR}/resources/${target}.def)
  target_sources(${target} PRIVATE ${exports})
  if(MINGW)
    target_sources(${target} PRIVATE ${CMAKE_SOURCE_DIR}/src/platform/win32/runtime_memory.cpp)
  endif()
  set_target_properties(${target} PROPERTIES PREFIX "" IMPORT_PREFIX "lib" IMPORT_SUFFIX ".dll.a")
  if(DLLTOOL)
    fringix_msvc_import_library(${target} ${exports})
  endif()
endfunction()

# docs/versions.md tells what the number in the SONAME stands for.
function(fringix_export_from_so target)
  set(exports ${CMAKE_CURRENT_SOURCE_DIR}/resources/${target}.map)
  target_link_options(${target} PRIVATE -Wl,-Bsymbolic -Wl,-z,defs -Wl,--version-script=${exports})
  set_target_properties(${target} PROPERTIES LINK_DEPENDS ${exports} VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
endfunction()

# fringix_public_library(TARGET NAME DESCRIPTION): exports exactly the functions named in resources/. Others link it as Fringix::NAME with
# CMake, as TARGET with pkg-config.
function(fringix_public_library target name description)
  if(WIN32)
    fringix_export_from_dll(${target})
  else()
    fringix_export_from_so(${target})
  endif()
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${name})
  fringix_symbols_apart(${target})
  target_include_directories(${target} INTERFACE $<BUILD_INTERFACE:${CMAKE_SOURCE_DIR}/include> $<INSTALL_INTERFACE:include>)
  install(TARGETS ${target} EXPORT FringixTargets
    RUNTIME DESTINATION bin COMPONENT runtime
    LIBRARY DESTINATION lib COMPONENT runtime NAMELINK_COMPONENT development
    ARCHIVE DESTINATION lib COMPONENT development)
  configure_file(${CMAKE_SOURCE_DIR}/cmake/library.pc.in ${target}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${target}.pc DESTINATION lib/pkgconfig COMPONENT development)
endfunction()

# find_package(Fringix), for both.
function(fringix_install_cmake_package)
  set(folder lib/cmake/Fringix)
  write_basic_package_version_file(${CMAKE_BINARY_DIR}/FringixConfigVersion.cmake COMPATIBILITY SameMajorVersion)
  install(EXPORT FringixTargets NAMESPACE Fringix:: DESTINATION ${folder} COMPONENT development)
  install(FILES ${CMAKE_SOURCE_DIR}/cmake/FringixConfig.cmake ${CMAKE_BINARY_DIR}/FringixConfigVersion.cmake
    DESTINATION ${folder} COMPONENT development)
endfunction()
