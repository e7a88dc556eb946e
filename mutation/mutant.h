// Which of the changes in this build is taken: FRINGIX_MUTANT is its number. With FRINGIX_MUTANTS_REACHED, a file of a byte for each
// of them, all processes note there which ones they come by.
#pragma once

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <type_traits>

namespace fringix_mutation {

inline const int chosen = [] {
  const char* const number = std::getenv("FRINGIX_MUTANT");
  return number != nullptr ? std::atoi(number) : 0;
}();

inline volatile unsigned char* const reached = []() -> volatile unsigned char* {
  const char* const name = std::getenv("FRINGIX_MUTANTS_REACHED");
  if (name == nullptr) return nullptr;
  const int file = ::open(name, O_RDWR | O_CLOEXEC);
  struct stat facts = {};
  if (file < 0 || ::fstat(file, &facts) != 0) std::abort();
  void* const bytes = ::mmap(nullptr, static_cast<std::size_t>(facts.st_size), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  ::close(file);
  if (bytes == MAP_FAILED) std::abort();
  return static_cast<volatile unsigned char*>(bytes);
}();

}  // namespace fringix_mutation

inline bool fringix_mutant(int number) noexcept {
  if (fringix_mutation::reached != nullptr) fringix_mutation::reached[number] = 1;
  return number == fringix_mutation::chosen;
}
