#include "platform/posix/local_name.h"

#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <cstddef>
#include <cstring>
#include <memory>
#include <utility>

#include "platform/process_wide.h"
#include "platform/worker.h"

namespace fringix::platform {

namespace {

constexpr char exchangeName[] = "C5128585-87BE-4b48-9F65-9A4CAC572E59";

// SO_PASSRIGHTS, known to Linux since 6.16: whether descriptors can be sent to a socket, and to those that connect to it.
constexpr int passRights = 83;

constexpr int mostClosing = 16;
std::atomic<int> closing{0};

[[maybe_unused]] const bool told = inForkedChildren([] { closing = 0; });

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

bool connectLocal(const Socket& local) noexcept {
  const ExchangeAddress address;
  return connect(local.handle(), address.generic(), address.size) == 0;
}

void receiveNoMore(const Socket& local) noexcept { shutdown(local.handle(), SHUT_RD); }

// A connection to which nothing can ever be sent.
bool someoneBelievedListens() noexcept {
  const Socket deaf = openLocal();
  receiveNoMore(deaf);
  return connectLocal(deaf) && isBelieved(userOf(deaf));
}

bool takesDescriptors(const Socket& local) noexcept {
  int takes = 1;
  socklen_t size = sizeof takes;
  return getsockopt(local.handle(), SOL_SOCKET, passRights, &takes, &size) != 0 || takes != 0;
}

bool holdsNothing(const Socket& connection) noexcept {
  int waiting = 0;
  return ioctl(connection.handle(), FIONREAD, &waiting) == 0 && waiting == 0;
}

struct Closing {
  explicit Closing(Socket closed) noexcept : socket(std::move(closed)) { ++closing; }
  ~Closing() {
    socket.close();
    --closing;
  }
  Closing(const Closing&) = delete;
  Closing& operator=(const Closing&) = delete;

  Socket socket;
};

void closeAside(Socket connection) noexcept try {
  auto share = std::make_shared<Closing>(std::move(connection));
  Worker worker;
  if (worker.start([](void*) { return std::int32_t{0}; }, nullptr, std::move(share)) == 0) worker.end(std::chrono::milliseconds(0));
} catch (...) {  // no memory: it was closed on the way out
}

// One byte that carries a descriptor.
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

uid_t userOf(const Socket& local) noexcept {
  ucred peer{};
  socklen_t size = sizeof peer;
  return getsockopt(local.handle(), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 ? peer.uid : static_cast<uid_t>(-1);
}

bool isBelieved(uid_t user) noexcept { return user == root || user == geteuid(); }

Socket listenUnderTheName() noexcept {
  const ExchangeAddress address;
  const int refused = 0;
  Socket local = openLocal();
  if (bind(local.handle(), address.generic(), address.size) != 0) return {};
  setsockopt(local.handle(), SOL_SOCKET, passRights, &refused, sizeof refused);  // where it is not known, see closeUnread()
  return local.listen(SOMAXCONN) ? std::move(local) : Socket();
}

Socket connectToTheName() noexcept {
  if (!someoneBelievedListens()) return {};
  Socket connection = openLocal();
  if (!connectLocal(connection)) return {};
  if (isBelieved(userOf(connection))) return connection;
  closeUnread(std::move(connection));  // another one has the name since
  return {};
}

bool sendDescriptor(const Socket& connection, const Socket& descriptor) noexcept {
  return Envelope().send(connection.handle(), descriptor.handle());
}

Socket receiveDescriptor(const Socket& connection) noexcept { return Envelope().receive(connection.handle()); }

void closeUnread(Socket connection) noexcept {
  receiveNoMore(connection);
  if (takesDescriptors(connection) && !holdsNothing(connection)) closeAside(std::move(connection));
}

bool manyAreClosing() noexcept { return closing >= mostClosing; }

// Those that have connected and were not taken in are closed with it.
void closeListening(Socket listening) noexcept {
  receiveNoMore(listening);  // nobody connects any more
  for (;;) {
    Socket connection(accept4(listening.handle(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!connection.valid()) return;
    closeUnread(std::move(connection));
  }
}

}  // namespace fringix::platform
