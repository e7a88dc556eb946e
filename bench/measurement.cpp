#include "measurement.h"

#include <algorithm>

#include "machine.h"

namespace fringix::bench {

namespace {

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
  for (auto& latency : results) {
    const double start = seconds(CLOCK_MONOTONIC);
    latency = call() - start;
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

void takeTurns(const Sides& sides, const Plan& plan, Measurement& measurement) {
  callsPerBatch(sides.library, plan.batchSeconds);
  const std::size_t calls = callsPerBatch(sides.byHand, plan.batchSeconds);
  const auto run = [&](const Call& call) { return runBatch(call, calls, sides.bytesPerCall, sides.serverClock); };
  for (std::size_t round = 0; round < plan.rounds; ++round) {
    if (round % 2 == 0) measurement.library.push_back(run(sides.library));
    measurement.byHand.push_back(run(sides.byHand));
    if (round % 2 != 0) measurement.library.push_back(run(sides.library));
  }
}

}  // namespace fringix::bench
