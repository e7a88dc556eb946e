// The exchange of trigger listeners between processes: the receiver with any followers, and what a follower takes from a receiver. With
// the system's sockets and pipes, in a network of its own: the name of the exchange is fixed.
//
// An input is a row of steps: a byte that chooses one, and one that chooses whose.
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <vector>

#include "fuzz/input.h"
#include "fuzz/target.h"
#include "platform/posix/followers.h"
#include "platform/posix/local_name.h"
#include "tests/support/posix/local_exchange.h"

namespace fringix::fuzz::exchange_target {

namespace {

using platform::Socket;
using test::sendCopies;

constexpr std::size_t mostSteps = 48;
constexpr std::size_t mostCopies = 3;

bool isPipe(const Socket& descriptor) {
  struct stat file {};
  return fstat(descriptor.handle(), &file) == 0 && S_ISFIFO(file.st_mode);
}

// A program on the other side: a connection, and the pipe that it was handed.
struct Stranger {
  Socket connection;
  Socket pipe;
  std::uint32_t last = 0;  // that it was told
};

class Host {
 public:
  void step(Input& in) {
    const std::uint8_t what = in.byte();
    Stranger& one = strangers_[in.byte() % strangers_.size()];
    switch (what % 8) {
      case 0:
        one.connection = platform::connectToTheName();
        break;
      case 1:
        sendCopies(one.connection, STDERR_FILENO, in.byte() % (mostCopies + 1), in.text(in.byte() % 16));
        break;
      case 2:
        one.connection.close();
        break;
      case 3:
        one.pipe.close();
        break;
      case 4:
        take(one);
        break;
      case 5:
        hear(one);
        break;
      case 6:
        tell();
        break;
      default:
        turn();
    }
  }

  void turn() {
    std::vector<pollfd> entries;
    followers_.prepare(entries);
    require(poll(entries.data(), entries.size(), 0) >= 0, "what is watched can be watched");
    followers_.look(entries.data());
    require(followers_.pollLimit() >= -1, "a pause is a time");
  }

 private:
  void take(Stranger& one) {
    if (!one.connection.valid()) return;
    Socket taken = platform::receiveDescriptor(one.connection);
    if (!taken.valid()) return;
    require(isPipe(taken), "a receiver hands out pipes");
    one.pipe = std::move(taken);
    one.last = 0;
  }

  // What is told arrives whole and in its order.
  static void hear(Stranger& one) {
    std::uint32_t sender = 0;
    while (one.pipe.valid()) {
      const ssize_t size = read(one.pipe.handle(), &sender, sizeof sender);
      if (size <= 0) return;
      require(size == sizeof sender, "a sender arrives whole");
      require(sender > one.last, "senders arrive in their order, and once");
      one.last = sender;
    }
  }

  void tell() { followers_.tell(++told_); }

  platform::Followers followers_;
  std::array<Stranger, 6> strangers_;
  std::uint32_t told_ = 0;
};

// What a stranger hands to a follower that believes him.
void receiveAnything(Input& in) {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) != 0) return;
  const Socket receiver(ends[0]);
  const Socket follower(ends[1]);
  const std::size_t copies = in.byte() % (mostCopies + 1);
  const std::string bytes = in.text(in.byte() % 4);
  sendCopies(receiver, STDERR_FILENO, copies, bytes);
  const Socket taken = platform::receiveDescriptor(follower);
  require(taken.valid() == (copies > 0 && !bytes.empty()), "a descriptor that came is taken, and no other");
  require(!taken.valid() || taken.handle() > STDERR_FILENO, "it has a number of its own");
}

int nextDescriptor() {
  const Socket next(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3));
  return next.handle();
}

void run(Bytes input) {
  static const bool ignored = std::signal(SIGPIPE, SIG_IGN) != SIG_ERR;  // workers block it
  static const int most = nextDescriptor() + 64;                         // some are closed by threads of their own
  Input in(input);
  receiveAnything(in);
  {
    Host host;
    host.turn();
    for (std::size_t i = 0; i < mostSteps && !in.empty(); ++i) host.step(in);
  }
  require(ignored && nextDescriptor() < most, "no descriptor is left");
}

const Registered target("exchange", run);

}  // namespace

}  // namespace fringix::fuzz::exchange_target
