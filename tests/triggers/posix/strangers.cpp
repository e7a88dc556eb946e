#include "triggers/posix/strangers.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <map>
#include <stdexcept>
#include <utility>
#include <vector>

#include "platform/socket.h"
#include "support/posix/local_exchange.h"

namespace fringix::test {

namespace {

using platform::Socket;

constexpr std::uint32_t forgedHead = 0x7F000001;

void say(const std::string& line) {
  std::puts(line.c_str());
  std::fflush(stdout);
}

// Whether the input has ended, waited for so long.
bool isOver(int milliseconds, int other = -1) {
  pollfd entries[] = {{STDIN_FILENO, POLLIN, 0}, {other, POLLIN, 0}};
  poll(entries, 2, milliseconds);
  char byte;
  return entries[0].revents != 0 && read(STDIN_FILENO, &byte, 1) <= 0;
}

Socket bindName() {
  const ExchangeAddress address;
  Socket local = openLocal();
  if (bind(local.handle(), address.generic(), address.size) != 0) throw std::runtime_error("no name");
  return local;
}

Socket listenUnderName() {
  Socket local = bindName();
  local.listen(64);
  say("ready");
  return local;
}

// Whoever closes the last copy of it waits for a minute: its peer never takes what was sent.
class LingeringConnection {
 public:
  LingeringConnection() {
    Socket listener = Socket::openStream();
    listener.bind({0x7F000001, 0});
    listener.listen(1);
    connection_.connect(listener.localEndpoint());
    peer_ = listener.accept();
    connection_.setNonBlocking(true);
    const std::vector<char> filling(65536);
    while (connection_.send(filling.data(), filling.size()) > 0) {
    }
    const linger minute{1, 60};
    setsockopt(connection_.handle(), SOL_SOCKET, SO_LINGER, &minute, sizeof minute);
  }
  // Keeps no copy when it was taken.
  bool handOver(const Socket& receiver) {
    const bool taken = sendCopies(receiver, connection_.handle());
    if (!taken) connection_.setResetOnClose();
    connection_.close();
    return taken;
  }

 private:
  Socket connection_ = Socket::openStream();
  Socket peer_;
};

void haveTheName() {
  const Socket name = bindName();
  say("ready");
  while (!isOver(-1)) {
  }
}

void listenAndServeNobody() {
  const Socket name = listenUnderName();
  while (!isOver(-1)) {
  }
}

void forge() {
  Socket name = listenUnderName();
  std::vector<Socket> pipes;
  while (!isOver(5, name.handle())) {
    name.setNonBlocking(true);
    const Socket connection = name.accept();
    int ends[2];
    if (connection.valid() && pipe2(ends, O_CLOEXEC | O_NONBLOCK) == 0) {
      sendCopies(connection, ends[0]);
      close(ends[0]);
      pipes.emplace_back(ends[1]);
    }
    for (const Socket& pipe : pipes) {
      [[maybe_unused]] const ssize_t written = write(pipe.handle(), &forgedHead, sizeof forgedHead);
    }
  }
}

// A descriptor that lingers, for everybody who connects.
void handOutLingering() {
  Socket name = listenUnderName();
  std::vector<LingeringConnection> handed;
  handed.reserve(1000);
  while (!isOver(-1, name.handle())) {
    LingeringConnection& next = handed.emplace_back();
    if (next.handOver(name.accept())) say("handed");
  }
}

Socket connectAsFollower() {
  const ExchangeAddress address;
  Socket connection = openLocal();
  if (connect(connection.handle(), address.generic(), address.size) != 0) throw std::runtime_error("nobody receives");
  return connection;
}

void leaveLingering() {
  std::vector<LingeringConnection> left(3);
  int taken = 0;
  for (LingeringConnection& one : left) taken += one.handOver(connectAsFollower()) ? 1 : 0;
  say("left " + std::to_string(taken));
  while (!isOver(-1)) {
  }
}

Socket receivePipe(const Socket& connection) {
  char byte = 0;
  iovec content{&byte, 1};
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))]{};
  msghdr message{};
  message.msg_iov = &content;
  message.msg_iovlen = 1;
  message.msg_control = control;
  message.msg_controllen = sizeof control;
  if (recvmsg(connection.handle(), &message, MSG_CMSG_CLOEXEC) != 1 || CMSG_FIRSTHDR(&message) == nullptr) return {};
  int descriptor = -1;
  std::memcpy(&descriptor, CMSG_DATA(CMSG_FIRSTHDR(&message)), sizeof descriptor);
  return Socket(descriptor);
}

// Follows as often as it can, and never reads.
void crowd() {
  constexpr int attempts = 900;
  std::vector<Socket> pipes;
  for (int i = 0; i < attempts; ++i) {
    Socket pipe = receivePipe(connectAsFollower());
    if (pipe.valid()) pipes.push_back(std::move(pipe));
  }
  say("pipes " + std::to_string(pipes.size()));
  while (!isOver(-1)) {
  }
}

bool bindPortBeside(std::uint32_t address, int option) {
  static std::vector<Socket> bound;
  const int on = 1;
  Socket port = Socket::openDatagram();
  setsockopt(port.handle(), SOL_SOCKET, option, &on, sizeof on);
  const bool succeeded = port.bind({address, 44331});
  if (succeeded) bound.push_back(std::move(port));
  return succeeded;
}

void bindBeside() {
  int bound = 0;
  for (const int option : {SO_REUSEADDR, SO_REUSEPORT}) {
    for (const std::uint32_t address : {0x00000000U, 0x7F000001U}) bound += bindPortBeside(address, option) ? 1 : 0;
  }
  say("bound " + std::to_string(bound));
  while (!isOver(-1)) {
  }
}

void takePort() {
  Socket port = Socket::openDatagram();
  if (!port.bind({0, 44331})) throw std::runtime_error("no port");
  say("ready");
  while (!isOver(-1)) {
  }
}

const std::map<std::string, void (*)()> attacks{
    {"have-the-name", haveTheName},
    {"listen-and-serve-nobody", listenAndServeNobody},
    {"forge", forge},
    {"hand-out-lingering", handOutLingering},
    {"leave-lingering", leaveLingering},
    {"crowd", crowd},
    {"bind-beside", bindBeside},
    {"take-port", takePort},
};

}  // namespace

bool attack(const std::string& name) {
  const auto found = attacks.find(name);
  if (found == attacks.end()) return false;
  signal(SIGPIPE, SIG_IGN);
  found->second();
  return true;
}

}  // namespace fringix::test
