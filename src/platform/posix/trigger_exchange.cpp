// One abstract local socket: who has bound its name is the receiver, every follower is connected to it and reads the senders' addresses.
// The system frees the name and ends the connections when the receiver goes, however it goes.
#include "platform/trigger_exchange.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <utility>
#include <vector>

namespace fringix::platform {

namespace {

constexpr char exchangeName[] = "C5128585-87BE-4b48-9F65-9A4CAC572E59";

// While the name is bound but nobody listens: that lasts as long as the other side's next call, or for ever if it is a stranger's.
constexpr int shortestRetryPause = 1;  // milliseconds
constexpr int longestRetryPause = 64;
// While no descriptor is left to take another follower in.
constexpr int crowdedPause = 100;  // milliseconds

constexpr int withoutLimit = -1;

struct ExchangeAddress {
  sockaddr_un name{};
  socklen_t size = 0;

  ExchangeAddress() noexcept {
    name.sun_family = AF_UNIX;
    std::memcpy(name.sun_path + 1, exchangeName, sizeof exchangeName - 1);  // the zero before it makes the name abstract
    size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + sizeof exchangeName);
  }
  const sockaddr* generic() const noexcept { return reinterpret_cast<const sockaddr*>(&name); }
};

Socket openLocal() noexcept { return Socket(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)); }

int pollAll(pollfd* entries, std::size_t count, int limit) noexcept {
  int ready = poll(entries, count, limit);
  while (ready < 0 && errno == EINTR) ready = poll(entries, count, limit);
  return ready;
}

bool isReady(const pollfd& entry) noexcept { return entry.revents != 0; }

pollfd watch(int descriptor) noexcept { return {descriptor, POLLIN, 0}; }

}  // namespace

struct TriggerExchange::Native {
  Socket local;  // follower: the connection to the receiver; receiver: the listening socket
  bool receiver = false;
  bool crowded = false;
  std::uint32_t sender = 0;
  std::vector<Socket> followers;
  std::vector<pollfd> entries;

  bool becomeReceiver() noexcept;
  bool follow() noexcept;
  bool takeSender() noexcept;
  void takeFollowersIn() noexcept;
  void dropFollowersThatLeft() noexcept;
};

TriggerExchange::TriggerExchange() : native_(std::make_unique<Native>()) {}
TriggerExchange::~TriggerExchange() { resign(); }

TriggerExchange::Block TriggerExchange::openBlock() noexcept { return Block::ready; }
bool TriggerExchange::openLock() noexcept { return openLocal().valid(); }
bool TriggerExchange::openNotification() noexcept { return true; }
std::uint32_t TriggerExchange::lastError() const noexcept { return 0; }
bool TriggerExchange::hasView() const noexcept { return true; }

bool TriggerExchange::Native::becomeReceiver() noexcept {
  const ExchangeAddress address;
  Socket bound = openLocal();
  if (bind(bound.handle(), address.generic(), address.size) != 0) return false;
  if (listen(bound.handle(), SOMAXCONN) != 0) return false;
  local = std::move(bound);
  receiver = true;
  return true;
}

bool TriggerExchange::Native::follow() noexcept {
  const ExchangeAddress address;
  Socket connection = openLocal();
  if (connect(connection.handle(), address.generic(), address.size) != 0) return false;
  local = std::move(connection);
  return true;
}

// The next address from the receiver; without one, there is no receiver any more.
bool TriggerExchange::Native::takeSender() noexcept {
  if (recv(local.handle(), &sender, sizeof sender, MSG_DONTWAIT) == sizeof sender) return true;
  local.close();
  return false;
}

TriggerExchange::Turn TriggerExchange::waitForTurn(const ManualResetEvent& stop) noexcept {
  for (int pause = shortestRetryPause;; pause = std::min(pause * 2, longestRetryPause)) {
    const bool following = native_->local.valid() || native_->follow();
    if (!following && native_->becomeReceiver()) return Turn::receiver;
    pollfd entries[] = {watch(native_->local.handle()), watch(static_cast<int>(stop.native()))};  // poll passes over -1
    const int ready = pollAll(entries, 2, following ? withoutLimit : pause);
    if (ready < 0) return Turn::failed;
    if (ready == 0) continue;
    if (isReady(entries[0]) && !native_->takeSender() && native_->becomeReceiver()) return Turn::receiver;
    if (isReady(entries[1])) return Turn::stop;
    if (isReady(entries[0]) && native_->local.valid()) return Turn::trigger;
  }
}

bool TriggerExchange::readSender(std::uint32_t* address) noexcept {
  *address = native_->sender;
  return true;
}

bool TriggerExchange::openArrival() noexcept { return true; }

void TriggerExchange::Native::takeFollowersIn() noexcept {
  for (;;) {
    Socket follower(accept4(local.handle(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    crowded = !follower.valid() && errno != EAGAIN && errno != ECONNABORTED && errno != EINTR;
    if (!follower.valid()) return;
    try {
      followers.push_back(std::move(follower));
    } catch (...) {
      crowded = true;  // the follower sees its connection end, and tries again
      return;
    }
  }
}

// Followers say nothing: one that can be read from has left, or is none.
void TriggerExchange::Native::dropFollowersThatLeft() noexcept {
  constexpr std::size_t firstFollower = 3;
  for (std::size_t entry = entries.size(); entry > firstFollower; --entry) {
    if (isReady(entries[entry - 1])) followers.erase(followers.begin() + static_cast<std::ptrdiff_t>(entry - 1 - firstFollower));
  }
}

TriggerExchange::Arrival TriggerExchange::waitForDatagram(const ManualResetEvent& stop, const Socket& socket) noexcept {
  auto& [local, receiver, crowded, sender, followers, entries] = *native_;
  for (;;) {
    try {
      entries = {watch(static_cast<int>(stop.native())), watch(socket.handle()), watch(crowded ? -1 : local.handle())};
      for (const Socket& follower : followers) entries.push_back(watch(follower.handle()));
    } catch (...) {
      return Arrival::failed;
    }
    const int ready = pollAll(entries.data(), entries.size(), crowded ? crowdedPause : withoutLimit);
    if (ready < 0) return Arrival::failed;
    if (isReady(entries[0])) return Arrival::stop;
    const bool newcomers = isReady(entries[2]);
    const bool datagram = isReady(entries[1]);
    native_->dropFollowersThatLeft();
    crowded = false;
    if (newcomers) native_->takeFollowersIn();
    if (datagram) return Arrival::datagram;
  }
}

void TriggerExchange::resetArrival() noexcept {}

// A follower that takes no more is one that does not run: it misses triggers, and nobody waits for it.
bool TriggerExchange::announce(std::uint32_t address) noexcept {
  for (const Socket& follower : native_->followers) send(follower.handle(), &address, sizeof address, MSG_DONTWAIT | MSG_NOSIGNAL);
  return true;
}

void TriggerExchange::settle() noexcept {}

void TriggerExchange::resign() noexcept {
  if (!native_->receiver) return;
  native_->local.close();  // first: the name is free when the followers see their connections end
  native_->followers.clear();
  native_->receiver = false;
}

}  // namespace fringix::platform
