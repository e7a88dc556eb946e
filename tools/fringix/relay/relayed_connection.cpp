#include "relay/relayed_connection.h"

#include <exception>
#include <memory>
#include <new>
#include <utility>

#include "ports/command_port.h"

namespace fringix::tool {
namespace {

using platform::Readiness;
using recording::Ending;
using recording::Kind;

constexpr std::size_t mostAtOnce = std::size_t{256} << 10;
constexpr std::chrono::milliseconds stopInterval{50};

}  // namespace

RelayedConnection::RelayedConnection(platform::Socket client, platform::Ipv4Endpoint peer, std::uint32_t number, HeadPlace head,
                                     recording::Recorder& recorder)
    : client_(std::move(client)), peer_(peer), number_(number), head_(head), recorder_(recorder), thread_([this] { run(); }) {}

RelayedConnection::~RelayedConnection() {
  over_ = true;
  thread_.join();
}

void RelayedConnection::run() noexcept {
  recorder_.add(Kind::opened, number_, recording::encode(recording::Endpoint{peer_.address, peer_.port}));
  try {
    client_.setNonBlocking(true);
    client_.setNoDelay(true);
    if (connect()) {
      std::thread back([this] { pump(headSide_, client_, Kind::fromHead, Kind::closedByHead); });
      pump(client_, headSide_, Kind::fromClient, Kind::closedByClient);
      back.join();
    } else if (!over_) {
      end(Kind::closedByHead, Ending::notReached);
    }
  } catch (const std::exception&) {  // no thread for the way back
    end(Kind::closedByHead, Ending::notReached);
  }
  if (reset_) {
    client_.setResetOnClose();
    headSide_.setResetOnClose();
  }
  client_.close();
  headSide_.close();
  finished_ = true;
}

// A connection that fails shows that at the first receive.
bool RelayedConnection::connect() {
  headSide_ = platform::Socket::openStream();
  headSide_.setNonBlocking(true);
  headSide_.setNoDelay(true);
  if (headSide_.connect({head_.address, ports::commandPort})) return true;
  if (!platform::Socket::connectInProgress()) return false;
  const auto until = std::chrono::steady_clock::now() + head_.limit;
  while (!over_ && std::chrono::steady_clock::now() < until) {
    const Readiness readiness = headSide_.waitWritable(stopInterval);
    if (readiness != Readiness::timedOut) return readiness == Readiness::ready;
  }
  return false;
}

// What was received is recorded before it goes on, so that no answer stands before its question.
void RelayedConnection::pump(platform::Socket& from, platform::Socket& to, Kind kind, Kind closing) noexcept {
  const std::unique_ptr<std::uint8_t[]> buffer(new (std::nothrow) std::uint8_t[mostAtOnce]);
  if (!buffer) return end(closing, Ending::notReached);
  bool anything = false;
  while (!over_) {
    if (from.waitReadable(stopInterval) == Readiness::timedOut) continue;
    const std::ptrdiff_t count = from.receive(buffer.get(), mostAtOnce);
    if (over_) return;
    if (count <= 0) {
      const bool neverThere = count < 0 && !anything && kind == Kind::fromHead;
      return end(closing, count == 0 ? Ending::inOrder : neverThere ? Ending::notReached : Ending::reset);
    }
    anything = true;
    const std::span<const std::uint8_t> bytes(buffer.get(), static_cast<std::size_t>(count));
    recorder_.add(kind, number_, bytes);
    if (!sendAll(to, bytes) && !over_) {
      return end(closing == Kind::closedByHead ? Kind::closedByClient : Kind::closedByHead, Ending::reset);
    }
  }
}

bool RelayedConnection::sendAll(platform::Socket& to, std::span<const std::uint8_t> bytes) noexcept {
  while (!bytes.empty() && !over_) {
    const std::ptrdiff_t count = to.send(bytes.data(), bytes.size());
    if (count >= 0)
      bytes = bytes.subspan(static_cast<std::size_t>(count));
    else if (!platform::Socket::sendHadNoRoom() || to.waitWritable(stopInterval) == Readiness::failed)
      return false;
  }
  return bytes.empty();
}

// Both sides are told as the first one has told it.
void RelayedConnection::end(Kind kind, Ending ending) noexcept {
  if (over_.exchange(true)) return;
  const auto byte = static_cast<std::uint8_t>(ending);
  recorder_.add(kind, number_, {&byte, 1});
  if (ending == Ending::inOrder) {
    client_.shutdown();
    headSide_.shutdown();
  } else {
    reset_ = true;
  }
}

}  // namespace fringix::tool
