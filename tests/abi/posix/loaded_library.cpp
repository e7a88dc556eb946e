#include "abi/loaded_library.h"

#include <dlfcn.h>

#include <stdexcept>

namespace fringix::test {

LoadedLibrary::LoadedLibrary(const std::filesystem::path& file) : native_(dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL)) {
  if (native_ == nullptr) throw std::runtime_error(dlerror());
}

LoadedLibrary::~LoadedLibrary() { dlclose(native_); }

LoadedLibrary::Address LoadedLibrary::address(const char* name) const {
  void* const found = dlsym(native_, name);
  if (found == nullptr) throw std::runtime_error(dlerror());
  return reinterpret_cast<Address>(found);
}

bool isLoaded(const std::filesystem::path& file) {
  void* const again = dlopen(file.c_str(), RTLD_NOW | RTLD_NOLOAD);
  if (again != nullptr) dlclose(again);
  return again != nullptr;
}

}  // namespace fringix::test
