// The bytes of one reply on their way to the client, with the damage that is done to them.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "head/wire/damage.h"

namespace fringix::head {

class DamagedReply {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;
  using Send = std::function<void(const std::uint8_t* bytes, std::size_t count)>;
  using Rest = std::function<void(TimePoint end)>;  // waits; throws when the head is being stopped

  DamagedReply(Damage damage, Send send, Rest rest);

  // All of these throw Disconnected or ConnectionReset when the damage is the end of the connection.
  void add(const std::uint8_t* bytes, std::size_t count);
  void end();

  std::int32_t status(std::int32_t own) const { return damage_.status.value_or(own); }
  void slowRequest(std::size_t count);  // waits as long as so many bytes of the client take

 private:
  std::size_t nextStep(std::size_t count);  // waits for its turn; how many of the bytes may pass then
  void pass(std::size_t count);
  void markMissing();
  void strike();

  Damage damage_;
  const Send send_;
  const Rest rest_;
  TimePoint nextStep_;
  std::vector<std::uint8_t> held_;
  std::uint64_t passed_ = 0;
};

}  // namespace fringix::head
