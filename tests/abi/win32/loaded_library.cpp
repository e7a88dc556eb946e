#include "abi/loaded_library.h"

#include <windows.h>

#include <stdexcept>
#include <string>

namespace fringix::test {

LoadedLibrary::LoadedLibrary(const std::filesystem::path& file) : native_(LoadLibraryW(file.c_str())) {
  if (native_ == nullptr) throw std::runtime_error(file.string() + " cannot be loaded, error " + std::to_string(GetLastError()));
}

LoadedLibrary::~LoadedLibrary() { FreeLibrary(static_cast<HMODULE>(native_)); }

LoadedLibrary::Address LoadedLibrary::address(const char* name) const {
  const FARPROC found = GetProcAddress(static_cast<HMODULE>(native_), name);
  if (found == nullptr) throw std::runtime_error(std::string("there is no function ") + name);
  return reinterpret_cast<Address>(found);
}

bool isLoaded(const std::filesystem::path& file) { return GetModuleHandleW(file.c_str()) != nullptr; }

}  // namespace fringix::test
