#include <array>
#include <cstdio>
#include <random>

#include "files/native_file.h"

namespace fringix::files {

std::filesystem::path uniqueName() {
  std::random_device random;
  std::array<char, 40> name;
  std::snprintf(name.data(), name.size(), ".fringix-%08x%08x.part", random(), random());
  return name.data();
}

}  // namespace fringix::files
