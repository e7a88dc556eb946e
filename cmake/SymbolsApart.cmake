# fringix_symbols_apart(TARGET): what debuggers want to know of a Windows program is kept in a file beside it, because Windows, and Wine
# even more so, would read it at every start.
function(fringix_symbols_apart target)
  if(NOT WIN32)
    return()
  endif()
  set(program $<TARGET_FILE:${target}>)
  set(timeless ${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=0)  # what writes such a file anew would put the time into it
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${timeless} ${CMAKE_OBJCOPY} --only-keep-debug ${program} ${program}.debug
    COMMAND ${timeless} ${CMAKE_STRIP} ${program}
    COMMAND ${timeless} ${CMAKE_OBJCOPY} --add-gnu-debuglink=${program}.debug ${program}
    VERBATIM)
endfunction()
