#include "fuzz/target.h"

#include <cstdio>
#include <cstdlib>

namespace fringix::fuzz {

std::vector<Target>& targets() {
  static std::vector<Target> all;
  return all;
}

void require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "this does not hold: %s\n", what);
  std::abort();
}

}  // namespace fringix::fuzz
