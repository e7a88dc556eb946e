// Services of the platform room that neither wait nor do anything outside of the process.
#include <cstdio>

#include "fuzz/platform/network.h"
#include "platform/block_memory.h"
#include "platform/clock.h"
#include "platform/debug_output.h"
#include "platform/event.h"
#include "platform/ipv4_table.h"
#include "platform/worker.h"

namespace fringix::platform {

std::int64_t secondsSinceEpoch() noexcept { return 1'700'000'000; }
void sleepFor(std::chrono::milliseconds) noexcept {}

std::vector<Ipv4Row> ipv4Table() { return fuzz::network().addresses; }

ManualResetEvent::ManualResetEvent() : native_(0) {}
ManualResetEvent::~ManualResetEvent() = default;
void ManualResetEvent::set() noexcept { native_ = 1; }
void ManualResetEvent::reset() noexcept { native_ = 0; }
bool ManualResetEvent::wait(std::chrono::milliseconds) const noexcept { return native_ != 0; }

// No thread is to be had: the library says that it goes on without.
struct Worker::Thread {};
Worker::Worker() noexcept = default;
Worker::~Worker() = default;
std::uint32_t Worker::start(Body, void*, std::shared_ptr<void>) noexcept { return 11; }
bool Worker::end(std::chrono::milliseconds) noexcept { return true; }
bool Worker::isEndedByForce() noexcept { return false; }
bool thisWorkerIsAbandoned() noexcept { return false; }

void writeDebugOutput(const char*) noexcept { ++fuzz::network().traceLines; }

int formatBounded(char* buffer, std::size_t limit, const char* format, std::va_list arguments) noexcept {
  const int length = std::vsnprintf(buffer, limit + 1, format, arguments);
  return length > static_cast<int>(limit) ? -1 : length;
}

}  // namespace fringix::platform
