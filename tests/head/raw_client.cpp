#include "raw_client.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <stdexcept>

namespace fringix::head {

namespace {

constexpr std::chrono::seconds limit{20};
constexpr std::uint16_t port = 44330;

}  // namespace

RawClient::RawClient(const std::string& address, const std::string& own) : socket_(platform::Socket::openStream()) {
  socket_.setNoDelay(true);
  if (!socket_.bind({platform::parseIpv4(own.c_str()), 0})) throw std::runtime_error(own + " is no address of this machine");
  if (!socket_.connect({platform::parseIpv4(address.c_str()), port})) throw std::runtime_error("no head answers at " + address);
}

std::int32_t RawClient::greet() {
  const std::int32_t greeting = receiveInt();
  sendInts({3300});
  return greeting;
}

void RawClient::sendBytes(std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const std::ptrdiff_t sent = socket_.send(bytes.data(), bytes.size());
    if (sent <= 0) throw std::runtime_error("the head has closed");
    bytes = bytes.subspan(static_cast<std::size_t>(sent));
  }
}

void RawClient::sendRaw(std::string_view bytes) { sendBytes({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}); }

void RawClient::sendText(std::string_view text) {
  std::array<char, 16> length{};
  std::snprintf(length.data(), length.size(), "%6d", static_cast<int>(text.size()));
  sendRaw(length.data() + std::string(text));
}

void RawClient::sendInts(std::initializer_list<std::int32_t> values) {
  for (const std::int32_t value : values) {
    std::array<std::uint8_t, 4> bytes{};
    for (std::size_t i = 0; i < 4; ++i) bytes[i] = static_cast<std::uint8_t>(static_cast<std::uint32_t>(value) >> (8 * i) & 0xFFU);
    sendBytes(bytes);
  }
}

std::int32_t RawClient::receiveInt() {
  const auto bytes = receiveBytes(4);
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) value |= static_cast<std::uint32_t>(bytes[i]) << (8 * i);
  return static_cast<std::int32_t>(value);
}

std::string RawClient::receiveText() {
  const auto field = receiveBytes(6);
  const auto text = receiveBytes(std::stoul(std::string(field.begin(), field.end())));
  return {text.begin(), text.end()};
}

std::vector<std::uint8_t> RawClient::receiveBytes(std::size_t count) {
  std::vector<std::uint8_t> bytes(count);
  for (std::size_t done = 0; done < count;) {
    if (socket_.waitReadable(limit) != platform::Readiness::ready) throw std::runtime_error("the head says nothing");
    const std::ptrdiff_t received = socket_.receive(bytes.data() + done, count - done);
    if (received <= 0) throw std::runtime_error("the head has closed");
    done += static_cast<std::size_t>(received);
  }
  return bytes;
}

bool RawClient::closedByHead() {
  std::uint8_t byte = 0;
  return socket_.waitReadable(limit) == platform::Readiness::ready && socket_.receive(&byte, 1) <= 0;
}

}  // namespace fringix::head
