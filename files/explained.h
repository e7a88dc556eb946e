// Failures of the system as people are told of them.
#pragma once

#include <filesystem>
#include <new>
#include <string>
#include <system_error>

namespace fringix::files {

[[noreturn]] void refuse(const char* verb, const std::string& path, const std::string& reason);

// The same words on all systems, where they have the same reason.
template <typename Call>
auto explained(const char* verb, const std::string& path, Call call) {
  try {
    return call();
  } catch (const std::system_error& error) {
    refuse(verb, path, error.code().default_error_condition().message());
  } catch (const std::bad_alloc&) {
    refuse(verb, path, "there is not enough memory");
  }
}

// Names are UTF-8 on all systems; a path made of plain characters would take them for those of the process's code page.
inline std::filesystem::path pathOf(const std::string& name) { return std::u8string(name.begin(), name.end()); }

}  // namespace fringix::files
