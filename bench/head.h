// The head that a comparison talks to: what it says of itself, and where it listens.
#pragma once

#include <cstddef>
#include <cstdint>

namespace fringix::bench {

inline constexpr const char* headAddress = "127.0.0.1";
inline constexpr std::uint16_t commandPort = 44330;
inline constexpr std::uint16_t triggerPort = 44331;  // of the host
inline constexpr std::uint16_t announcePort = 44332;
inline constexpr std::int32_t protocolVersion = 3300;

struct Head {
  std::uint32_t width = 0;  // of the camera, in pixels
  std::uint32_t height = 0;

  static constexpr std::uint32_t projectorWidth = 1280;
  static constexpr std::uint32_t projectorHeight = 800;

  constexpr std::size_t pixels() const { return std::size_t{width} * height; }
};

}  // namespace fringix::bench
