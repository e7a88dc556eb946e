#include "recordings.h"

#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <thread>

#include "child_process.h"
#include "machine.h"
#include "minimal_client.h"
#include "relay/relay.h"
#include "replay_server.h"

namespace fringix::bench {

namespace {

constexpr const char* recorderAddress = "127.0.0.3";
constexpr std::uint32_t gigabit = 125'000'000;

// Records into a file that has no name any more.
void recordForEver() {
  const std::string file = std::filesystem::temp_directory_path() / ("fringix-bench-" + std::to_string(getpid()) + ".fxr");
  tool::Relay relay({headAddress, recorderAddress, std::chrono::seconds(5)}, [](const std::string&) {});
  recording::Recorder recorder(file, relay.header());
  std::filesystem::remove(file);
  relay.start(recorder);
  while (!recorder.failed()) std::this_thread::sleep_for(std::chrono::milliseconds(50));
  throw std::runtime_error(recorder.failure());
}

std::shared_ptr<MinimalClient> connect(const char* address) {
  for (int tries = 0;; ++tries) {
    try {
      return std::make_shared<MinimalClient>(address);
    } catch (const std::runtime_error&) {
      if (tries == 100) throw;
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
  }
}

Call livePicture(const char* address, const Head& head, std::vector<std::uint8_t>& buffer) {
  return [client = connect(address), pixels = head.pixels(), &buffer] {
    client->command("41MSG_SLGetLiveImage");
    client->receive(buffer.data(), pixels);
    return seconds(CLOCK_MONOTONIC);
  };
}

}  // namespace

const std::vector<RecordingComparison>& recordingComparisons() {
  static const std::vector<RecordingComparison> table = {
      {"recorded 16x16", {16, 16}, Cores::one, 0, {{Metric::medianLatency, std::nullopt, 30}}},
      {"recorded, 1 Gbit/s", {1280, 1024}, Cores::two, gigabit, {{Metric::throughput, 0.90}}},
      {"recorded, loopback", {1280, 1024}, Cores::two, 0, {{Metric::throughput, std::nullopt}}},
  };
  return table;
}

Measurement measure(const RecordingComparison& comparison, const Plan& plan) {
  const bool twoCores = comparison.cores == Cores::two;
  if (!twoCores) pinTo(plan.clientCore);
  const ChildProcess recorder(recordForEver);
  pinTo(plan.clientCore);
  const ReplayServer server(comparison.head, twoCores ? plan.serverCore : plan.clientCore, comparison.bytesPerSecond);
  std::vector<std::uint8_t> buffer(comparison.head.pixels());
  const Call direct = livePicture(headAddress, comparison.head, buffer);
  const Call recorded = livePicture(recorderAddress, comparison.head, buffer);
  direct();
  const std::vector<std::uint8_t> expected = buffer;
  recorded();
  if (buffer != expected) throw std::runtime_error("the two clients received different bytes");
  Measurement measurement = measurementOf(comparison);
  takeTurns({recorded, direct, comparison.head.pixels(), server.cpuClock()}, plan, measurement);
  return measurement;
}

}  // namespace fringix::bench
