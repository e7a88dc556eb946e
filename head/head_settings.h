// What a simulated head is: fixed when it is made.
#pragma once

#include <cstdint>
#include <string>

namespace fringix::head {

struct Size {
  std::int32_t width = 0;
  std::int32_t height = 0;
  bool operator==(const Size&) const = default;
};

struct HeadSettings {
  std::string address = "127.0.0.2";  // where it listens: one of this machine's IPv4 addresses, or 0.0.0.0 for all of them
  std::int32_t serial = 1001;
  Size camera{1280, 1024};
  Size projector{1280, 800};
  std::int32_t protocolVersion = 3300;  // commands that came with a later version are unknown to the head
};

}  // namespace fringix::head
