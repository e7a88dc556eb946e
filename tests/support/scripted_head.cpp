#include "support/scripted_head.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <stdexcept>
#include <utility>

#include "support/eventually.h"

namespace fringix::test {

namespace {

constexpr std::uint16_t commandPort = 44330;
constexpr std::chrono::seconds patience{60};  // longer than any time-out of the library: the head never hangs, nor does it give up first

bool sendAll(platform::Socket& connection, const Bytes& bytes) {
  std::size_t sent = 0;
  while (sent < bytes.size()) {
    const std::ptrdiff_t count = connection.send(bytes.data() + sent, bytes.size() - sent);
    if (count < 0) return false;
    sent += static_cast<std::size_t>(count);
  }
  return true;
}

bool sendByteByByte(platform::Socket& connection, const Bytes& bytes) {
  for (const char byte : bytes) {
    if (!sendAll(connection, Bytes(1, byte))) return false;
    std::this_thread::sleep_for(std::chrono::microseconds(200));
  }
  return true;
}

platform::Socket listenOn(const char* address) {
  platform::Socket listener = platform::Socket::openStream();
  listener.setReuseAddress(true);
  const bool listens = listener.bind({platform::parseIpv4(address), commandPort}) && listener.listen(16);
  return listens ? std::move(listener) : platform::Socket();
}

}  // namespace

Script operator+(Script first, const Script& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

ScriptedHead::ScriptedHead(std::vector<Script> scripts, const char* address) {
  // On Windows a port may be taken for a moment after the last socket there has been closed.
  const auto listens = [&] { return (listener_ = listenOn(address)).valid(); };
  if (!eventually(listens)) throw std::runtime_error(std::string("the scripted head cannot listen on ") + address);
  thread_ = std::thread([this, scripts = std::move(scripts)] { serveAll(scripts); });
}

ScriptedHead::~ScriptedHead() { received(); }

const Bytes& ScriptedHead::received() {
  letGo_.set();
  if (thread_.joinable()) thread_.join();
  return received_;
}

void ScriptedHead::serveAll(const std::vector<Script>& scripts) {
  for (const Script& script : scripts) {
    if (listener_.waitReadable(patience) != platform::Readiness::ready) return;
    platform::Socket connection = listener_.accept();
    connection.setNoDelay(true);
    serve(connection, script);
  }
}

void ScriptedHead::serve(platform::Socket& connection, const Script& script) {
  for (const Step& step : script) {
    if (!perform(connection, step)) return;
  }
  drain(connection);
}

bool ScriptedHead::perform(platform::Socket& connection, const Step& step) {
  switch (step.kind) {
    case Step::Kind::expect:
      return readExpected(connection, step.bytes);
    case Step::Kind::reply:
      return sendAll(connection, step.bytes);
    case Step::Kind::dribble:
      return sendByteByByte(connection, step.bytes);
    case Step::Kind::stall:
      drain(connection);
      return false;
    case Step::Kind::standStill:
      letGo_.wait(2 * patience);
      return false;
    case Step::Kind::cut:
      return false;
    case Step::Kind::reset:
      connection.setResetOnClose();
      return false;
  }
  return false;
}

bool ScriptedHead::readExpected(platform::Socket& connection, const Bytes& expected) {
  std::size_t matched = 0;
  std::array<char, 4096> buffer;
  while (matched < expected.size()) {
    if (connection.waitReadable(patience) != platform::Readiness::ready) return false;
    const std::ptrdiff_t count = connection.receive(buffer.data(), std::min(buffer.size(), expected.size() - matched));
    if (count <= 0) return false;
    const auto size = static_cast<std::size_t>(count);
    received_.append(buffer.data(), size);
    if (expected.compare(matched, size, buffer.data(), size) != 0) return false;
    matched += size;
  }
  return true;
}

void ScriptedHead::drain(platform::Socket& connection) {
  std::array<char, 4096> buffer;
  while (connection.waitReadable(patience) == platform::Readiness::ready) {
    const std::ptrdiff_t count = connection.receive(buffer.data(), buffer.size());
    if (count <= 0) return;
    received_.append(buffer.data(), static_cast<std::size_t>(count));
  }
}

}  // namespace fringix::test
