// What goes wrong with a reply on its way to the client.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>

namespace fringix::head {

// The client has gone, or the head is being stopped, or it goes itself, on purpose: the session ends without a word.
struct Disconnected {};

// The session ends, and its connection is reset.
struct ConnectionReset {};

// A stall is over after its time, and the reply goes on; silence ends with the connection.
enum class Ending { none, stall, silence, cut, reset };

struct Damage {
  Ending ending = Ending::none;
  std::uint64_t endsAt = 0;  // byte of the reply, or its end, whichever comes first
  std::chrono::milliseconds endingTime{0};

  std::uint64_t stepSize = 0;  // bytes at a time; 0: as it comes
  std::chrono::milliseconds stepTime{0};
  bool slowsRequest = false;  // what the client still sends is read in such steps, too

  std::optional<std::int32_t> status;  // in place of the reply's own
  std::int64_t surplus = 0;            // bytes more than it has; negative: so many of its last ones are missing
  bool noPicture = false;

  std::function<bool()> lasts = [] { return true; };  // false: waits are over
};

}  // namespace fringix::head
