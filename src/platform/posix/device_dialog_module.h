// What the library and its dialog module agree on: the one function of the module. The module is a file of its own, so that only
// programs that show the dialog need a window system's libraries.
#pragma once

#include <cstdint>

#include "platform/device_dialog.h"

namespace fringix::platform {

inline constexpr const char* deviceDialogModule = "libDAXFringix-dialog.so";
inline constexpr const char* deviceDialogFunction = "fringixRunDeviceDialog";

// Shows the dialog until it is closed. True: `code` tells with what it was ended; false: it could not be shown.
using DeviceDialogFunction = bool (*)(void* parent, DeviceDialogActions* actions, std::int32_t* code);

}  // namespace fringix::platform
