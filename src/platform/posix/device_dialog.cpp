#include "platform/device_dialog.h"

#include <dlfcn.h>

#include <cinttypes>
#include <cstdio>
#include <fstream>
#include <string>

#include "platform/posix/device_dialog_module.h"

namespace fringix::platform {

namespace {

// The folder of the file that holds this code, with a slash at its end; empty when the system does not tell. The system's list of what is
// in memory has it in full: the name that the file was loaded by may depend on the folder that was the current one.
std::string ownFolder() {
  const auto own = reinterpret_cast<std::uintptr_t>(&runDeviceDialog);
  std::ifstream mappings("/proc/self/maps");
  for (std::string mapping; std::getline(mappings, mapping);) {
    std::uintptr_t first = 0;
    std::uintptr_t end = 0;
    if (std::sscanf(mapping.c_str(), "%" SCNxPTR "-%" SCNxPTR, &first, &end) != 2 || own < first || own >= end) continue;
    const std::size_t path = mapping.find('/');
    return path == std::string::npos ? std::string() : mapping.substr(path, mapping.rfind('/') + 1 - path);
  }
  return {};
}

// Looked for at every call; once found the module stays, for its window system cannot be unloaded.
DeviceDialogFunction loadModule() {
  const std::string folder = ownFolder();
  if (folder.empty()) return nullptr;  // a name without a folder would be looked for elsewhere
  void* const module = dlopen((folder + deviceDialogModule).c_str(), RTLD_NOW | RTLD_LOCAL);
  return module == nullptr ? nullptr : reinterpret_cast<DeviceDialogFunction>(dlsym(module, deviceDialogFunction));
}

std::optional<std::int32_t> runModule(void* parent, DeviceDialogActions& actions) {
  const DeviceDialogFunction run = loadModule();
  std::int32_t code = 0;
  if (run == nullptr || !run(parent, &actions, &code)) return std::nullopt;
  return code;
}

}  // namespace

std::optional<std::int32_t> runDeviceDialog(void* parent, DeviceDialogActions& actions) noexcept {
  try {
    return runModule(parent, actions);
  } catch (...) {  // no memory for the module's name
    return std::nullopt;
  }
}

}  // namespace fringix::platform
