#include "device/ICameraDevice.h"

namespace fringix {

std::int32_t ICameraDevice::GetCameraPixelCount() {
  // Unsigned, because the head may state any size: a product that does not fit wraps instead of being undefined.
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(GetCameraWidth()) * static_cast<std::uint32_t>(GetCameraHeight()));
}

}  // namespace fringix
