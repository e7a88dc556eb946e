// Who has bound the port is the receiver. It listens under the name of a local socket; a follower connects to it and is handed a pipe,
// from which it reads the senders' addresses; a pipe because it wakes its reader a third sooner than a socket does. The system frees port
// and name and ends the pipes when the receiver goes, however it goes. Other users are strangers: see local_name.h.
#include "platform/trigger_exchange.h"

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <utility>
#include <vector>

#include "platform/posix/followers.h"
#include "platform/posix/local_name.h"
#include "platform/posix/retry_pause.h"

namespace fringix::platform {

namespace {

constexpr int withoutLimit = -1;

int pollAll(pollfd* entries, std::size_t count, int limit) noexcept {
  int ready = poll(entries, count, limit);
  while (ready < 0 && errno == EINTR) ready = poll(entries, count, limit);
  return ready;
}

bool isReady(const pollfd& entry) noexcept { return entry.revents != 0; }

pollfd watch(int descriptor) noexcept { return {descriptor, POLLIN, 0}; }

pollfd watch(const ManualResetEvent& event) noexcept { return watch(static_cast<int>(event.native())); }

}  // namespace

// Pipes are kept as sockets: what both need is to be closed.
struct TriggerExchange::Native {
  Socket connection;      // to the receiver, until the pipe has come
  Socket pipe;            // from the receiver
  bool rebuffed = false;  // by who has the name: asking again at once would be no use
  int pause = shortestRetryPause;
  bool told = false;  // the listener, of what it lacks
  Socket port;        // until the listener fetches it
  std::uint32_t sender = 0;
  Followers followers;
  std::vector<pollfd> entries;

  bool follows() const noexcept { return pipe.valid() || connection.valid(); }
  int source() const noexcept { return pipe.valid() ? pipe.handle() : connection.handle(); }
  bool connect() noexcept;
  bool takePort() noexcept;
  bool hear() noexcept;
  void takePipe() noexcept;
  bool tellOnce(bool lacking) noexcept { return lacking && !std::exchange(told, true); }
};

TriggerExchange::TriggerExchange() : native_(std::make_unique<Native>()) {}
TriggerExchange::~TriggerExchange() { resign(); }

TriggerExchange::Block TriggerExchange::openBlock() noexcept { return Block::ready; }
bool TriggerExchange::openLock() noexcept { return true; }
bool TriggerExchange::openNotification() noexcept { return true; }
std::uint32_t TriggerExchange::lastError() const noexcept { return 0; }
bool TriggerExchange::hasView() const noexcept { return true; }

bool TriggerExchange::Native::connect() noexcept {
  connection = connectToTheName();
  return connection.valid();
}

// Without any option that lets others bind it, too: SO_REUSEADDR gives the datagrams to the last of all users that set it.
bool TriggerExchange::Native::takePort() noexcept {
  Socket bound = Socket::openDatagram();
  if (!bound.bind({0, triggerPort}) || !bound.setNonBlocking(true)) return false;
  port = std::move(bound);
  connection.close();
  told = false;
  return true;
}

// Another file than a pipe might never end.
void TriggerExchange::Native::takePipe() noexcept {
  pipe = receiveDescriptor(connection);
  connection.close();
  struct stat file;
  if (pipe.valid() && (fstat(pipe.handle(), &file) != 0 || !S_ISFIFO(file.st_mode))) pipe.close();
}

// Whether it was a sender's address. When it was the end of what comes from the receiver, nothing is followed any more.
bool TriggerExchange::Native::hear() noexcept {
  if (!pipe.valid()) {
    takePipe();
    return false;
  }
  if (read(pipe.handle(), &sender, sizeof sender) == sizeof sender) {
    pause = shortestRetryPause;
    told = false;
    return true;
  }
  pipe.close();
  return false;
}

// Whoever connects and gets no pipe tries the port now and then: who has the name may never hand one out.
TriggerExchange::Turn TriggerExchange::waitForTurn(const ManualResetEvent& stop) noexcept {
  Native& native = *native_;
  for (;;) {
    const bool connected = native.follows() || (!native.rebuffed && native.connect());
    if (!connected && native.takePort()) return Turn::receiver;
    if (native.tellOnce(!connected && native.pause == longestRetryPause)) return Turn::noPort;
    pollfd entries[] = {watch(native.source()), watch(stop)};  // poll passes over -1
    const int ready = pollAll(entries, 2, native.pipe.valid() ? withoutLimit : native.pause);
    if (ready < 0) return Turn::failed;
    const bool trigger = isReady(entries[0]) && native.hear();
    native.rebuffed = connected && !native.follows();
    const bool waitsInVain = connected && ready == 0;
    if ((native.rebuffed || waitsInVain) && native.takePort()) return Turn::receiver;
    if (isReady(entries[1])) return Turn::stop;
    if (trigger) return Turn::trigger;
    native.pause = longerPause(native.pause);
  }
}

bool TriggerExchange::readSender(std::uint32_t* address) noexcept {
  *address = native_->sender;
  return true;
}

TriggerExchange::Port TriggerExchange::openPort(const SocketLibrary&, Socket* port) noexcept {
  *port = std::move(native_->port);
  return port->valid() ? Port::open : Port::refused;
}

bool TriggerExchange::openArrival() noexcept { return true; }

TriggerExchange::Arrival TriggerExchange::waitForDatagram(const ManualResetEvent& stop, const Socket& socket) noexcept {
  Native& native = *native_;
  for (;;) {
    try {
      native.entries = {watch(stop), watch(socket.handle())};
      native.followers.prepare(native.entries);
    } catch (...) {
      return Arrival::failed;
    }
    if (native.tellOnce(native.followers.nameIsTaken())) return Arrival::alone;
    if (pollAll(native.entries.data(), native.entries.size(), native.followers.pollLimit()) < 0) return Arrival::failed;
    if (isReady(native.entries[0])) return Arrival::stop;
    native.followers.look(native.entries.data() + 2);
    if (isReady(native.entries[1])) return Arrival::datagram;
  }
}

void TriggerExchange::resetArrival() noexcept {}

bool TriggerExchange::writeSender(std::uint32_t address) noexcept {
  native_->sender = address;
  return true;
}

void TriggerExchange::announce() noexcept { native_->followers.tell(native_->sender); }

void TriggerExchange::settle() noexcept {}

void TriggerExchange::resign() noexcept { native_->followers.leave(); }

}  // namespace fringix::platform
