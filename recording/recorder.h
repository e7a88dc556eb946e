// Records what happens now, from any thread, without letting anybody wait for the disk: a thread of its own writes.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "recording/writer.h"

namespace fringix::recording {

class Recorder {
 public:
  // So many bytes may wait for the disk. When more would, or the disk takes no more, the recording ends there.
  static constexpr std::size_t usuallyWaiting = std::size_t{256} << 20;

  // Throws std::runtime_error when the file cannot be made.
  Recorder(const std::string& path, Header header, std::size_t mostWaiting = usuallyWaiting);
  ~Recorder();  // finishes
  Recorder(const Recorder&) = delete;
  Recorder& operator=(const Recorder&) = delete;

  // The order of the calls is that of the records. Payloads have largestPayload bytes at most.
  void add(Kind kind, std::uint32_t connection, std::span<const std::uint8_t> payload) noexcept;

  void finish() noexcept;       // writes what waits, and that the recording has ended in order
  std::string failure() const;  // why it ended early; empty: it did not
  bool failed() const noexcept { return failed_; }

 private:
  void run() noexcept;
  bool takeWaiting(std::vector<std::uint8_t>& records);
  void fail(const char* reason) noexcept;

  Writer writer_;
  const std::size_t mostWaiting_;
  const std::chrono::steady_clock::time_point start_;
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<std::uint8_t> waiting_;
  std::string failure_;
  std::atomic<bool> failed_ = false;
  bool writerIdles_ = false;
  bool finishing_ = false;
  std::thread thread_;
};

}  // namespace fringix::recording
