// What libFuzzer calls: the one target of the program.
#include <cstdlib>
#include <fstream>

#include "fuzz/target.h"

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

using fringix::fuzz::Target;

// FRINGIX_SEEDS is a folder: the target's own seeds go there first.
int LLVMFuzzerInitialize(int*, char***) {
  const Target& target = fringix::fuzz::targets().at(0);
  const char* const folder = std::getenv("FRINGIX_SEEDS");
  if (folder == nullptr || target.seeds == nullptr) return 0;
  int number = 0;
  for (const std::string& seed : target.seeds()) {
    std::ofstream(std::string(folder) + "/seed-" + std::to_string(number++), std::ios::binary) << seed;
  }
  return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fringix::fuzz::Run run = fringix::fuzz::targets().at(0).run;
  run({data, size});
  return 0;
}
