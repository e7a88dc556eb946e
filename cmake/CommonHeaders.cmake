# Precompiled: the headers of the standard library that most files name, because GCC takes most of the time of a typical file to read
# them. Every file still includes what it uses: the builds for the sanitizers do without, so that a missing include is noticed.
set(FRINGIX_COMMON_HEADERS algorithm atomic chrono condition_variable filesystem functional map memory mutex optional span stdexcept
  string thread variant vector)

# fringix_common_headers(TARGET [HEADER...]): precompiles them for the target, and the headers named in addition.
function(fringix_common_headers target)
  foreach(header ${FRINGIX_COMMON_HEADERS} ${ARGN})
    target_precompile_headers(${target} PRIVATE "$<$<COMPILE_LANGUAGE:CXX>:<${header}$<ANGLE-R>>")
  endforeach()
endfunction()

# fringix_share_headers(TARGET OWNER): takes what is precompiled for the owner, which has to be compiled with the same options: with others
# GCC 12 crashes at times. A file with options of its own does without (SKIP_PRECOMPILE_HEADERS).
function(fringix_share_headers target owner)
  target_precompile_headers(${target} REUSE_FROM ${owner})
endfunction()
