// What a session remembers of its head; -1 is unknown. Written under the session lock, read without it.
#pragma once

#include <atomic>
#include <cstdint>

namespace fringix {

struct HeadFacts {
  static constexpr std::int32_t unknown = -1;
  using Fact = std::atomic<std::int32_t>;

  Fact cameraWidth{unknown}, cameraHeight{unknown};        // pixels
  Fact projectorWidth{unknown}, projectorHeight{unknown};  // pixels
  Fact gainMinimum{unknown}, gainMaximum{unknown};
  Fact protocolVersion{unknown};
  Fact pixelDepth{unknown};  // bits
  Fact serial{unknown};

  void forget() noexcept {
    for (Fact* fact : {&cameraWidth, &cameraHeight, &projectorWidth, &projectorHeight, &gainMinimum, &gainMaximum, &protocolVersion,
                       &pixelDepth, &serial}) {
      *fact = unknown;
    }
  }
};

}  // namespace fringix
