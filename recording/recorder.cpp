#include "recording/recorder.h"

#include <exception>
#include <new>
#include <stdexcept>
#include <utility>

namespace fringix::recording {

namespace {

constexpr std::chrono::milliseconds gathering{2};  // to wake the writer costs time on the way, so it is done seldom
constexpr std::size_t keptRoom = std::size_t{8} << 20;

Header startedNow(Header header) {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  header.startedAt = static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(now).count());
  return header;
}

}  // namespace

Recorder::Recorder(const std::string& path, Header header, std::size_t mostWaiting)
    : writer_(path, startedNow(header)), mostWaiting_(mostWaiting), start_(std::chrono::steady_clock::now()), thread_([this] { run(); }) {}

Recorder::~Recorder() { finish(); }

void Recorder::add(Kind kind, std::uint32_t connection, std::span<const std::uint8_t> payload) noexcept {
  if (failed_) return;
  bool wake = false;
  try {
    const std::lock_guard lock(mutex_);
    if (waiting_.size() + payload.size() > mostWaiting_)
      throw std::runtime_error("the disk does not keep up: " + std::to_string(waiting_.size() >> 20) + " MiB wait for it");
    const auto time = static_cast<std::uint64_t>(std::chrono::nanoseconds(std::chrono::steady_clock::now() - start_).count());
    appendRecord(waiting_, kind, connection, time, payload);
    wake = std::exchange(writerIdles_, false);
  } catch (const std::exception& error) {
    fail(error.what());
  }
  if (wake) changed_.notify_one();
}

void Recorder::finish() noexcept {
  if (!thread_.joinable()) return;
  add(Kind::end, 0, {});
  {
    const std::lock_guard lock(mutex_);
    finishing_ = true;
  }
  changed_.notify_one();
  thread_.join();
}

std::string Recorder::failure() const {
  const std::lock_guard lock(mutex_);
  return failure_;
}

void Recorder::fail(const char* reason) noexcept {
  const std::lock_guard lock(mutex_);
  if (failed_.exchange(true)) return;
  try {
    failure_ = reason;
  } catch (const std::bad_alloc&) {
    failure_ = "no memory";  // so short a text takes none
  }
}

void Recorder::run() noexcept {
  std::vector<std::uint8_t> records;
  try {
    while (takeWaiting(records)) {
      writer_.write(records);
      records.clear();
      if (records.capacity() > keptRoom) records = {};
    }
  } catch (const std::exception& error) {
    fail(error.what());
  }
}

// False: all has been written, and no more is to come.
bool Recorder::takeWaiting(std::vector<std::uint8_t>& records) {
  std::unique_lock lock(mutex_);
  if (waiting_.empty() && !finishing_) {
    writerIdles_ = true;
    while (writerIdles_ && !finishing_) changed_.wait_for(lock, std::chrono::hours(1));
    writerIdles_ = false;
    changed_.wait_for(lock, gathering, [this] { return finishing_; });
  }
  records.swap(waiting_);
  return !records.empty();
}

}  // namespace fringix::recording
