# Interface target `fringix_settings`: the warnings, hardening and sanitizers that every target of the project uses.
include(CheckPIESupported)
check_pie_supported()

add_library(fringix_settings INTERFACE)

target_compile_options(fringix_settings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wundef -Wcast-align -Wnull-dereference -Wimplicit-fallthrough -Werror
  $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast -Wextra-semi>
  -fstack-protector-strong)

# The fortified functions need optimisation; a sanitizer brings checks of its own and does not mix with them.
if(NOT FRINGIX_SANITIZE)
  target_compile_options(fringix_settings INTERFACE $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>)
endif()

if(WIN32)
  target_compile_definitions(fringix_settings INTERFACE WIN32_LEAN_AND_MEAN NOMINMAX UNICODE _UNICODE _WIN32_WINNT=0x0601 _WINSOCK_DEPRECATED_NO_WARNINGS)
  # The runtime goes in statically: no file but the DLL itself has to be shipped.
  target_link_options(fringix_settings INTERFACE -static -fstack-protector-strong -Wl,--high-entropy-va -Wl,--dynamicbase -Wl,--nxcompat
    -Wl,--no-insert-timestamp)
else()
  target_link_options(fringix_settings INTERFACE -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack -Wl,--as-needed)
  # A host whose system guards return addresses with a second stack would lose that guard with a library that does not say it is used to it.
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
    target_link_options(fringix_settings INTERFACE -Wl,-z,shstk)
  endif()
  target_compile_options(fringix_settings INTERFACE -fstack-clash-protection)
endif()

if(FRINGIX_SANITIZE)
  target_compile_options(fringix_settings INTERFACE -fsanitize=${FRINGIX_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  # What the checks add makes GCC 12 warn of things in its own headers. In the other builds warnings are errors.
  target_compile_options(fringix_settings INTERFACE -Wno-error)
  target_link_options(fringix_settings INTERFACE -fsanitize=${FRINGIX_SANITIZE})
endif()

# fringix_optimise_little(TARGET): for what waits for heads, files and people, and leaves the arithmetic to others.
function(fringix_optimise_little target)
  target_compile_options(${target} PRIVATE -Og)
  # MinGW's checked snprintf has to be inlined, and with so little optimising it is not where {fmt} takes its address.
  target_compile_definitions(${target} PRIVATE $<$<BOOL:${WIN32}>:_FORTIFY_VA_ARG=0>)
endfunction()

find_package(Threads REQUIRED)

# fringix_note_coverage(TARGET): in the build for that it notes which of its lines and branches run. What is precompiled has other options,
# and branches of the standard library would count as those of the line that they are inlined in.
function(fringix_note_coverage target)
  if(FRINGIX_COVERAGE)
    target_compile_options(${target} PRIVATE --coverage -Og -fno-inline -fprofile-update=atomic)
    target_link_options(${target} PUBLIC --coverage)
    set_target_properties(${target} PROPERTIES DISABLE_PRECOMPILE_HEADERS ON)
  endif()
endfunction()
