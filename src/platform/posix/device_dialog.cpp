#include "platform/device_dialog.h"

#include <dlfcn.h>

#include <string>

#include "platform/posix/device_dialog_module.h"

namespace fringix::platform {

namespace {

// The folder of the file that holds this code, with a slash at its end; empty when there is none in its name.
std::string ownFolder() {
  Dl_info information = {};
  if (dladdr(reinterpret_cast<const void*>(&runDeviceDialog), &information) == 0) return {};
  const std::string file = information.dli_fname;
  return file.substr(0, file.rfind('/') + 1);
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
