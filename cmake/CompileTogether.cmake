# fringix_compile_together(TARGET): up to six neighbours of a room are compiled as one file, in two thirds of the time, because most of it goes
# into headers and templates that they have in common. Presets say whether (FRINGIX_TOGETHER): sanitizers and clang-tidy see each file
# by itself, so that one that leans on its neighbour is noticed.
function(fringix_compile_together target)
  if(NOT FRINGIX_TOGETHER)
    return()
  endif()
  get_target_property(sources ${target} SOURCES)
  list(FILTER sources EXCLUDE REGEX "^(/|.*commands/.*_commands)")  # what the build made; and files whose tables have one name
  foreach(source IN LISTS sources)
    cmake_path(GET source PARENT_PATH room)
    string(REPLACE "/" "-" room "room-${room}")
    list(APPEND ${room} ${source})
    list(LENGTH ${room} count)
    math(EXPR part "(${count} - 1) / 6")
    set_source_files_properties(${source} PROPERTIES UNITY_GROUP ${room}-${part})
  endforeach()
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
endfunction()

# fringix_compile_alone(TARGET FILE...): files that have a name in common with a neighbour.
function(fringix_compile_alone target)
  set_source_files_properties(${ARGN} TARGET_DIRECTORY ${target} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()
