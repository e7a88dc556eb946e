#include "comparisons.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <stdexcept>

#include "library_session.h"
#include "machine.h"
#include "replay_server.h"
#include "wakefulness.h"

namespace fringix::bench {

namespace {

using Buffer = std::vector<std::uint8_t>;

Call callByHand(const Comparison& comparison, Buffer& buffer) {
  return [&comparison, client = std::make_shared<MinimalClient>(), &buffer] {
    comparison.byHand(*client, comparison.head, buffer.data());
    return seconds(CLOCK_MONOTONIC);
  };
}

Call callLibrary(const Comparison& comparison, Buffer& buffer) {
  return [&comparison, session = std::make_shared<LibrarySession>(), &buffer] {
    requireSuccess(comparison.library(session->handle(), comparison.head, buffer.data()));
    return seconds(CLOCK_MONOTONIC);
  };
}

Buffer resultOf(const Call& call, Buffer& buffer) {
  std::fill(buffer.begin(), buffer.end(), std::uint8_t{0});
  call();
  return buffer;
}

}  // namespace

Measurement measure(const Comparison& comparison, const Plan& plan) {
  pinTo(plan.clientCore);
  const bool twoCores = comparison.cores == Cores::two;
  const ReplayServer server(comparison.head, twoCores ? plan.serverCore : plan.clientCore);
  std::optional<Wakefulness> clientCore;
  std::optional<Wakefulness> serverCore;
  if (twoCores) {
    clientCore.emplace(plan.clientCore);
    serverCore.emplace(plan.serverCore);
  }
  Buffer buffer(bufferSize);
  const Call byHand = callByHand(comparison, buffer);
  const Call library = plan.againstItself ? callByHand(comparison, buffer) : callLibrary(comparison, buffer);
  if (resultOf(byHand, buffer) != resultOf(library, buffer)) throw std::runtime_error("the two clients received different bytes");
  Measurement measurement = measurementOf(comparison);
  takeTurns({library, byHand, comparison.bytes, server.cpuClock()}, plan, measurement);
  return measurement;
}

}  // namespace fringix::bench
