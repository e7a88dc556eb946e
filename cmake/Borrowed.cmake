# Header-only libraries from the system's packages, for both targets: a folder of links in the build tree holds just the
# headers named, because /usr/include as a whole on the cross compiler's path would shadow the headers of its own system.
set(FRINGIX_BORROWED_DIR ${CMAKE_BINARY_DIR}/borrowed)

function(fringix_borrow target header_folder)
  if(NOT TARGET ${target})
    file(MAKE_DIRECTORY ${FRINGIX_BORROWED_DIR}/${target})
    file(CREATE_LINK /usr/include/${header_folder} ${FRINGIX_BORROWED_DIR}/${target}/${header_folder} SYMBOLIC)
    add_library(${target} INTERFACE)
    target_include_directories(${target} SYSTEM INTERFACE ${FRINGIX_BORROWED_DIR}/${target})
  endif()
endfunction()

# Libraries whose packages hold no sources: `variable` becomes the folder with those that the package is built from. All presets
# share it.
function(fringix_fetch variable)
  cmake_parse_arguments(PARSE_ARGV 1 source "" "PACKAGE;FILE;SHA256" "")
  set(folder ${CMAKE_SOURCE_DIR}/build/sources/${source_FILE})
  string(REGEX REPLACE "[.]orig[.].*$" "" folder ${folder})
  if(NOT EXISTS ${folder})
    execute_process(COMMAND ${CMAKE_SOURCE_DIR}/scripts/fetch-source ${source_PACKAGE} ${source_FILE} ${source_SHA256} ${folder}
      COMMAND_ERROR_IS_FATAL ANY)
  endif()
  set(${variable} ${folder} PARENT_SCOPE)
endfunction()
