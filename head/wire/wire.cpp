#include "head/wire/wire.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <utility>

#include "platform/clock.h"

namespace fringix::head {

namespace {

constexpr std::size_t bufferSize = 4096;
constexpr std::chrono::milliseconds stopInterval{100};  // how often a waiting session looks whether the head is being stopped
constexpr std::uint64_t slowestRate = 16384;            // bytes a second
constexpr std::size_t lengthDigits = 6;
constexpr std::size_t blockStep = std::size_t{64} << 10;

std::size_t parseLength(std::string_view field) {
  const std::string_view digits = field.substr(std::min(field.find_first_not_of(' '), field.size()));
  std::size_t length = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), length);
  if (error != std::errc{} || end != digits.data() + digits.size()) throw ProtocolError("a text without a readable length");
  return length;
}

std::string inWords(std::chrono::milliseconds time) {
  const bool whole = time % std::chrono::seconds(1) == std::chrono::milliseconds::zero();
  return whole ? std::to_string(time / std::chrono::seconds(1)) + " s" : std::to_string(time.count()) + " ms";
}

}  // namespace

Wire::Wire(platform::Socket& socket, const std::atomic<bool>& stopping) : socket_(socket), stopping_(stopping) {
  socket_.setNonBlocking(true);  // a send to a client that reads nothing must end when the head is stopped
  unsent_.reserve(bufferSize);
}

std::int32_t Wire::readInt() {
  std::array<std::uint8_t, 4> bytes{};
  readBytes(bytes.data(), bytes.size());
  std::uint32_t value = 0;
  for (std::size_t i = bytes.size(); i > 0; --i) value = value << 8 | bytes[i - 1];
  return static_cast<std::int32_t>(value);
}

std::string Wire::readText(std::size_t limit) {
  std::array<std::uint8_t, lengthDigits> field{};
  readBytes(field.data(), field.size());
  const std::size_t length = parseLength({reinterpret_cast<const char*>(field.data()), field.size()});
  if (length > limit) throw ProtocolError("a text of " + std::to_string(length) + " bytes where " + std::to_string(limit) + " are allowed");
  const auto bytes = readBlock(length);
  return {bytes.begin(), bytes.end()};
}

std::vector<std::uint8_t> Wire::readBlock(std::size_t size) {
  std::vector<std::uint8_t> block;
  while (block.size() < size) {
    const std::size_t done = block.size();
    if (done > 0) block.reserve(size);  // addresses for all of it: growing bit by bit would need room for two copies
    block.resize(done + std::min(size - done, blockStep));
    readBytes(block.data() + done, block.size() - done);
  }
  return block;
}

void Wire::readBytes(std::uint8_t* bytes, std::size_t count) {
  if (damaged_) {
    flush();
    damaged_->slowRequest(count);
  }
  std::size_t done = takeBuffered(bytes, count);
  while (done < count) {
    if (count - done >= bufferSize) {
      done += receive(bytes + done, count - done);
      continue;
    }
    received_.resize(bufferSize);
    received_.resize(receive(received_.data(), bufferSize));
    taken_ = 0;
    done += takeBuffered(bytes + done, count - done);
  }
}

void Wire::skip(std::uint64_t count) {
  std::array<std::uint8_t, bufferSize> bytes{};
  for (std::uint64_t step = 0; count > 0; count -= step) {
    step = std::min<std::uint64_t>(count, bytes.size());
    readBytes(bytes.data(), static_cast<std::size_t>(step));
  }
}

void Wire::writeInt(std::int32_t value) {
  std::array<std::uint8_t, 4> bytes{};
  auto rest = static_cast<std::uint32_t>(value);
  for (auto& byte : bytes) {
    byte = static_cast<std::uint8_t>(rest & 0xFFU);
    rest >>= 8;
  }
  writeBytes(bytes.data(), bytes.size());
}

void Wire::writeText(std::string_view text) {
  const std::string length = std::to_string(text.size());
  const std::string field = std::string(lengthDigits - length.size(), ' ') + length;
  writeBytes(reinterpret_cast<const std::uint8_t*>(field.data()), field.size());
  writeBytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
}

void Wire::writeBytes(const std::uint8_t* bytes, std::size_t count) {
  if (unsent_.size() + count > bufferSize) flush();
  if (count > bufferSize) return send(bytes, count);
  unsent_.insert(unsent_.end(), bytes, bytes + count);
}

void Wire::writeRepeated(std::uint8_t byte, std::uint64_t count) {
  std::array<std::uint8_t, bufferSize> bytes;
  bytes.fill(byte);
  for (std::uint64_t step = 0; count > 0; count -= step) {
    step = std::min<std::uint64_t>(count, bytes.size());
    writeBytes(bytes.data(), static_cast<std::size_t>(step));
  }
}

void Wire::flush() {
  send(unsent_.data(), unsent_.size());
  unsent_.clear();
}

void Wire::damageReply(Damage damage) {
  flush();  // what is left of other replies is not harmed
  damaged_.emplace(
      std::move(damage), [this](const std::uint8_t* bytes, std::size_t count) { transmit(bytes, count); },
      [this](std::chrono::steady_clock::time_point end) { rest(end); });
}

void Wire::endReply() {
  if (!damaged_) return;
  flush();
  damaged_->end();
  damaged_.reset();
}

void Wire::beginCommand() {
  waited_ = {};
  moved_ = 0;
}

std::chrono::steady_clock::duration Wire::patienceLeft() const {
  return 2 * patience_ + std::chrono::seconds(moved_ / slowestRate) - waited_;
}

void Wire::pauseUntil(std::chrono::steady_clock::time_point end) {
  flush();
  rest(end);
}

void Wire::rest(std::chrono::steady_clock::time_point end) {
  for (;;) {
    if (stopping_) throw Disconnected{};
    const auto rest = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
    if (rest <= std::chrono::milliseconds::zero()) return;
    platform::sleepFor(std::min(rest, stopInterval));
  }
}

std::size_t Wire::takeBuffered(std::uint8_t* bytes, std::size_t count) {
  const std::size_t size = std::min(count, received_.size() - taken_);
  if (size > 0) std::memcpy(bytes, received_.data() + taken_, size);
  taken_ += size;
  return size;
}

std::size_t Wire::receive(std::uint8_t* bytes, std::size_t size) {
  flush();
  waitUntil(&platform::Socket::waitReadable, "sent");
  const std::ptrdiff_t count = socket_.receive(bytes, size);
  if (count <= 0) throw Disconnected{};
  moved_ += static_cast<std::uint64_t>(count);
  return static_cast<std::size_t>(count);
}

void Wire::send(const std::uint8_t* bytes, std::size_t count) {
  if (damaged_)
    damaged_->add(bytes, count);
  else
    transmit(bytes, count);
}

void Wire::transmit(const std::uint8_t* bytes, std::size_t count) {
  for (std::size_t done = 0; done < count;) {
    std::ptrdiff_t sent = socket_.send(bytes + done, count - done);
    if (sent < 0) {  // no room just now, or the connection is gone: then the second try fails too
      waitUntil(&platform::Socket::waitWritable, "read");
      sent = socket_.send(bytes + done, count - done);
    }
    if (sent < 0) throw Disconnected{};
    done += static_cast<std::size_t>(sent);
    moved_ += static_cast<std::uint64_t>(sent);
  }
}

void Wire::waitUntil(platform::Readiness (platform::Socket::*ready)(std::chrono::milliseconds) const noexcept, const char* missing) {
  using Clock = std::chrono::steady_clock;
  const Clock::duration left = patienceLeft();
  const auto begin = Clock::now();
  auto readiness = platform::Readiness::timedOut;
  for (Clock::duration passed{}; readiness == platform::Readiness::timedOut && !stopping_; passed = Clock::now() - begin) {
    if (passed >= patience_) throw Stalled("the client has " + std::string(missing) + " nothing for " + inWords(patience_));
    if (passed >= left) throw Stalled("the client has been waited for too long, within one command");
    const auto rest = std::min<Clock::duration>(patience_, left) - passed;
    readiness = (socket_.*ready)(std::min(std::chrono::ceil<std::chrono::milliseconds>(rest), stopInterval));
  }
  waited_ += Clock::now() - begin;
  if (stopping_) throw Disconnected{};
}

}  // namespace fringix::head
