// One abstract local socket: who has bound its name is the receiver. A follower connects to it and is handed a pipe, from which it reads
// the senders' addresses; a pipe because it wakes its reader a third sooner than a socket does. The system frees the name and ends the
// pipes when the receiver goes, however it goes.
#include "platform/trigger_exchange.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
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

// While the name is bound but nobody listens or hands out pipes: that lasts as long as the other side's next call, or for ever if it is
// a stranger's.
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

// One byte that carries a descriptor to another process.
class Envelope {
 public:
  Envelope() noexcept {
    message_.msg_iov = &content_;
    message_.msg_iovlen = 1;
    message_.msg_control = control_;
    message_.msg_controllen = CMSG_LEN(sizeof(int));  // for one descriptor: the system drops what comes beyond
  }
  Envelope(const Envelope&) = delete;
  Envelope& operator=(const Envelope&) = delete;

  bool send(int connection, int descriptor) noexcept {
    cmsghdr* const header = CMSG_FIRSTHDR(&message_);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof descriptor);
    std::memcpy(CMSG_DATA(header), &descriptor, sizeof descriptor);
    return sendmsg(connection, &message_, MSG_DONTWAIT | MSG_NOSIGNAL) == 1;
  }

  // Invalid when nothing like that came.
  Socket receive(int connection) noexcept {
    if (recvmsg(connection, &message_, MSG_DONTWAIT | MSG_CMSG_CLOEXEC) <= 0) return {};
    const cmsghdr* const header = CMSG_FIRSTHDR(&message_);
    if (header == nullptr || header->cmsg_type != SCM_RIGHTS || header->cmsg_len != CMSG_LEN(sizeof(int))) return {};
    int descriptor = -1;
    std::memcpy(&descriptor, CMSG_DATA(header), sizeof descriptor);
    return Socket(descriptor);
  }

 private:
  char byte_ = 0;
  iovec content_{&byte_, 1};
  alignas(cmsghdr) char control_[CMSG_SPACE(sizeof(int))]{};
  msghdr message_{};
};

}  // namespace

// Pipes are kept as sockets: what both need is to be closed.
struct TriggerExchange::Native {
  Socket local;  // receiver: the listening socket; follower: the connection until the pipe has come
  Socket pipe;   // follower: from the receiver
  bool receiver = false;
  bool crowded = false;
  std::uint32_t sender = 0;
  std::vector<Socket> followers;  // receiver: the pipes to them
  std::vector<pollfd> entries;

  bool becomeReceiver() noexcept;
  bool connect() noexcept;
  bool follows() const noexcept { return pipe.valid() || local.valid(); }
  int source() const noexcept { return pipe.valid() ? pipe.handle() : local.handle(); }
  bool hear() noexcept;
  void takePipe() noexcept;
  bool takeFollowerIn(const Socket& connection);
  void takeFollowersIn() noexcept;
  void dropFollowersThatLeft() noexcept;
  void watchAll(const ManualResetEvent& stop, const Socket& socket);
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

bool TriggerExchange::Native::connect() noexcept {
  const ExchangeAddress address;
  Socket connection = openLocal();
  if (::connect(connection.handle(), address.generic(), address.size) != 0) return false;
  local = std::move(connection);
  return true;
}

// Whoever has the name may hand out what he likes: another file than a pipe might never end.
void TriggerExchange::Native::takePipe() noexcept {
  pipe = Envelope().receive(local.handle());
  local.close();
  struct stat file;
  if (pipe.valid() && (fstat(pipe.handle(), &file) != 0 || !S_ISFIFO(file.st_mode))) pipe.close();
}

// Whether it was a sender's address. When it was the end of what comes from the receiver, nothing is followed any more.
bool TriggerExchange::Native::hear() noexcept {
  if (!pipe.valid()) {
    takePipe();
    return false;
  }
  if (read(pipe.handle(), &sender, sizeof sender) == sizeof sender) return true;
  pipe.close();
  return false;
}

TriggerExchange::Turn TriggerExchange::waitForTurn(const ManualResetEvent& stop) noexcept {
  bool rebuffed = false;  // by who has the name: asking again at once would be no use
  for (int pause = shortestRetryPause;; pause = std::min(pause * 2, longestRetryPause)) {
    const bool following = native_->follows() || (!rebuffed && native_->connect());
    if (!following && native_->becomeReceiver()) return Turn::receiver;
    pollfd entries[] = {watch(native_->source()), watch(static_cast<int>(stop.native()))};  // poll passes over -1
    const int ready = pollAll(entries, 2, following ? withoutLimit : pause);
    if (ready < 0) return Turn::failed;
    const bool trigger = isReady(entries[0]) && native_->hear();
    rebuffed = following && !native_->follows();
    if (rebuffed && native_->becomeReceiver()) return Turn::receiver;
    if (isReady(entries[1])) return Turn::stop;
    if (trigger) return Turn::trigger;
  }
}

bool TriggerExchange::readSender(std::uint32_t* address) noexcept {
  *address = native_->sender;
  return true;
}

bool TriggerExchange::openArrival() noexcept { return true; }

// False: there is no room for another one.
bool TriggerExchange::Native::takeFollowerIn(const Socket& connection) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) return false;
  const Socket reading(ends[0]);
  Socket writing(ends[1]);
  if (Envelope().send(connection.handle(), reading.handle())) followers.push_back(std::move(writing));
  return true;
}

// A follower that is not taken in sees its connection end, and tries again.
void TriggerExchange::Native::takeFollowersIn() noexcept {
  while (!crowded) {
    const Socket connection(accept4(local.handle(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!connection.valid()) {
      crowded = errno != EAGAIN && errno != ECONNABORTED && errno != EINTR;
      return;
    }
    try {
      crowded = !takeFollowerIn(connection);
    } catch (...) {
      crowded = true;
    }
  }
}

// The pipe of one that has left is broken.
void TriggerExchange::Native::dropFollowersThatLeft() noexcept {
  constexpr std::size_t firstFollower = 3;
  for (std::size_t entry = entries.size(); entry > firstFollower; --entry) {
    if (isReady(entries[entry - 1])) followers.erase(followers.begin() + static_cast<std::ptrdiff_t>(entry - 1 - firstFollower));
  }
}

void TriggerExchange::Native::watchAll(const ManualResetEvent& stop, const Socket& socket) {
  entries = {watch(static_cast<int>(stop.native())), watch(socket.handle()), watch(crowded ? -1 : local.handle())};
  for (const Socket& follower : followers) entries.push_back(watch(follower.handle()));
}

TriggerExchange::Arrival TriggerExchange::waitForDatagram(const ManualResetEvent& stop, const Socket& socket) noexcept {
  Native& native = *native_;
  for (;;) {
    try {
      native.watchAll(stop, socket);
    } catch (...) {
      return Arrival::failed;
    }
    const int ready = pollAll(native.entries.data(), native.entries.size(), native.crowded ? crowdedPause : withoutLimit);
    if (ready < 0) return Arrival::failed;
    if (isReady(native.entries[0])) return Arrival::stop;
    const bool datagram = isReady(native.entries[1]);
    const bool newcomers = isReady(native.entries[2]);
    native.dropFollowersThatLeft();
    native.crowded = false;
    if (newcomers) native.takeFollowersIn();
    if (datagram) return Arrival::datagram;
  }
}

void TriggerExchange::resetArrival() noexcept {}

bool TriggerExchange::writeSender(std::uint32_t address) noexcept {
  native_->sender = address;
  return true;
}

// A follower that takes no more is one that does not run: it misses triggers, and nobody waits for it. The signal of a broken pipe is
// blocked in worker threads.
void TriggerExchange::announce() noexcept {
  for (const Socket& follower : native_->followers) {
    [[maybe_unused]] const ssize_t written = write(follower.handle(), &native_->sender, sizeof native_->sender);
  }
}

void TriggerExchange::settle() noexcept {}

void TriggerExchange::resign() noexcept {
  if (!native_->receiver) return;
  native_->local.close();  // first: the name is free when the followers see their connections end
  native_->followers.clear();
  native_->receiver = false;
}

}  // namespace fringix::platform
