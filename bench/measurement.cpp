#include "measurement.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>

#include "library_session.h"
#include "machine.h"
#include "replay_server.h"
#include "wakefulness.h"

namespace fringix::bench {

namespace {

using Call = std::function<void()>;
using Buffer = std::vector<std::uint8_t>;

Call callByHand(const Comparison& comparison, Buffer& buffer) {
  return [&comparison, client = std::make_shared<MinimalClient>(), &buffer] { comparison.byHand(*client, comparison.head, buffer.data()); };
}

Call callLibrary(const Comparison& comparison, Buffer& buffer) {
  return [&comparison, session = std::make_shared<LibrarySession>(), &buffer] {
    requireSuccess(comparison.library(session->handle(), comparison.head, buffer.data()));
  };
}

Buffer resultOf(const Call& call, Buffer& buffer) {
  std::fill(buffer.begin(), buffer.end(), std::uint8_t{0});
  call();
  return buffer;
}

double medianOf(std::vector<double>& values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

class Stopwatch {
 public:
  explicit Stopwatch(clockid_t clock) : clock_(clock), start_(seconds(clock)) {}
  double elapsed() const { return seconds(clock_) - start_; }

 private:
  clockid_t clock_;
  double start_;
};

std::vector<double> latencies(const Call& call, std::size_t calls) {
  std::vector<double> results(calls);
  double start = seconds(CLOCK_MONOTONIC);
  for (auto& latency : results) {
    call();
    const double end = seconds(CLOCK_MONOTONIC);
    latency = end - start;
    start = end;
  }
  return results;
}

Batch runBatch(const Call& call, std::size_t calls, std::size_t bytesPerCall, clockid_t serverClock) {
  const Stopwatch wall(CLOCK_MONOTONIC);
  const Stopwatch processor(CLOCK_PROCESS_CPUTIME_ID);
  const Stopwatch server(serverClock);
  std::vector<double> each = latencies(call, calls);
  Batch batch{calls, bytesPerCall, wall.elapsed(), processor.elapsed(), server.elapsed(), 0};
  batch.medianLatency = medianOf(each);
  return batch;
}

// Also the warm-up: connections reach their full window, memory its pages, the processor its clock rate.
std::size_t callsPerBatch(const Call& call, double batchSeconds) {
  const Stopwatch wall(CLOCK_MONOTONIC);
  std::size_t calls = 0;
  for (; wall.elapsed() < batchSeconds; ++calls) call();
  return calls;
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

  callsPerBatch(library, plan.batchSeconds);
  const std::size_t calls = callsPerBatch(byHand, plan.batchSeconds);
  const auto run = [&](const Call& call) { return runBatch(call, calls, comparison.bytes, server.cpuClock()); };
  Measurement measurement{&comparison, {}, {}};
  for (std::size_t round = 0; round < plan.rounds; ++round) {
    if (round % 2 == 0) measurement.library.push_back(run(library));
    measurement.byHand.push_back(run(byHand));
    if (round % 2 != 0) measurement.library.push_back(run(library));
  }
  return measurement;
}

}  // namespace fringix::bench
