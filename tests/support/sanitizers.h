// Whether the tests are built with checks that bring libraries of their own and keep freed memory for a while.
#pragma once

namespace fringix::test {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool builtWithSanitizers = true;
#else
inline constexpr bool builtWithSanitizers = false;
#endif

}  // namespace fringix::test
