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
