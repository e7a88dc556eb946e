// A library that the running program loads and unloads itself.
#pragma once

#include <filesystem>

namespace fringix::test {

class LoadedLibrary {
 public:
  explicit LoadedLibrary(const std::filesystem::path& file);  // throws std::runtime_error when it cannot be loaded
  ~LoadedLibrary();                                           // unloads it, as far as the system does
  LoadedLibrary(const LoadedLibrary&) = delete;
  LoadedLibrary& operator=(const LoadedLibrary&) = delete;

  // An exported function, as `declared` in a header.
  template <class Function>
  Function* function(const char* name, const Function&) const {
    return reinterpret_cast<Function*>(address(name));
  }

 private:
  using Address = void (*)();

  Address address(const char* name) const;  // throws std::runtime_error when there is none

  void* native_;
};

// Whether a library of this file is in the process.
bool isLoaded(const std::filesystem::path& file);

}  // namespace fringix::test
