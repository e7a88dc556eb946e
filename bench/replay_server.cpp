#include "replay_server.h"

#include <arpa/inet.h>
#include <endian.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "descriptor.h"
#include "machine.h"

namespace fringix::bench {

namespace {

using Picture = std::vector<std::uint8_t>;

Picture preparedPicture(const Head& head) {
  Picture picture(head.pixels());
  std::uint32_t value = 1;
  for (auto& pixel : picture) pixel = static_cast<std::uint8_t>((value = value * 1664525U + 1013904223U) >> 24);
  picture[0] = 0xFF;  // never the two bytes that mean "no picture"
  return picture;
}

// One client. Requests are small and read through a buffer; what a client uploads is dropped unread.
class Connection {
 public:
  Connection(Descriptor socket, const Head& head, const Picture& picture) : socket_(std::move(socket)), head_(head), picture_(picture) {}

  void serve();

  const Head& head() const noexcept { return head_; }

  template <std::size_t count>
  std::array<std::uint32_t, count> integers() {
    std::array<std::uint32_t, count> values;
    read(reinterpret_cast<char*>(values.data()), sizeof values);
    for (auto& value : values) value = le32toh(value);
    return values;
  }

  template <class... Integers>
  void answer(Integers... values) {
    const std::array<std::uint32_t, sizeof...(values)> wire{htole32(static_cast<std::uint32_t>(values))...};
    send(wire.data(), sizeof wire);
  }

  void answerPicture(std::size_t size) {
    if (size > picture_.size()) throw std::runtime_error("a request for more than a picture");
    send(picture_.data(), size);
  }

  void drop(std::size_t size);

 private:
  std::string commandName();
  void read(char* out, std::size_t size);
  bool refill();
  void send(const void* data, std::size_t size);

  Descriptor socket_;
  const Head& head_;
  const Picture& picture_;
  std::array<char, 4096> input_;
  std::size_t begin_ = 0;  // of the unread bytes of input_
  std::size_t end_ = 0;
};

struct Command {
  std::string_view name;
  void (*run)(Connection&);
};

constexpr Command commands[] = {
    {"41MSG_SLGetLiveImage", [](Connection& c) { c.answerPicture(c.head().pixels()); }},
    {"43MSG_SLGetImageIndex",
     [](Connection& c) {
       c.integers<1>();
       c.answerPicture(c.head().pixels());
     }},
    {"42MSG_SLGetLiveImageROI",
     [](Connection& c) {
       const auto [x, y, width, height] = c.integers<4>();
       c.answerPicture(std::size_t{width} * height);
     }},
    {"225MSG_SLGetLiveImageLowRes",
     [](Connection& c) {
       const auto [factor, channel] = c.integers<2>();
       c.answerPicture(c.head().pixels() / factor / factor);
     }},
    {"12MSG_SLSeqPut",
     [](Connection& c) {
       const auto [sequence, index, width, height, stride] = c.integers<5>();
       c.drop(std::size_t{height} * stride);
       c.answer(0);
     }},
    {"40MSG_SLGetMaxImageSize", [](Connection& c) { c.answer(c.head().width, c.head().height, 0); }},
    {"45MSG_SLGetProjDimension", [](Connection& c) { c.answer(Head::projectorWidth, Head::projectorHeight, 0); }},
    {"20MSG_SLGetProtocolVersion", [](Connection& c) { c.answer(protocolVersion); }},
    {"100MSG_SLNOOP", [](Connection&) {}},
    {"ByeBye=", [](Connection&) {}},
};

void Connection::serve() {
  answer(protocolVersion);  // the greeting; any number will do
  integers<1>();            // the client's protocol version
  while (begin_ != end_ || refill()) {
    const std::string name = commandName();
    const auto* command = std::find_if(std::begin(commands), std::end(commands), [&](const Command& known) { return known.name == name; });
    if (command == std::end(commands)) throw std::runtime_error("unknown command " + name);
    command->run(*this);
  }
}

std::string Connection::commandName() {
  std::array<char, 7> length{};
  read(length.data(), 6);
  std::string name(std::stoul(length.data()), '\0');
  read(name.data(), name.size());
  return name;
}

void Connection::read(char* out, std::size_t size) {
  while (size > 0) {
    if (begin_ == end_ && !refill()) throw std::runtime_error("the client left in the middle of a command");
    const std::size_t taken = std::min(size, end_ - begin_);
    std::memcpy(out, input_.data() + begin_, taken);
    begin_ += taken;
    out += taken;
    size -= taken;
  }
}

// False: the client has closed the connection.
bool Connection::refill() {
  const ssize_t received = recv(socket_.get(), input_.data(), input_.size(), 0);
  if (received < 0) throwSystemError("recv");
  begin_ = 0;
  end_ = static_cast<std::size_t>(received);
  return received > 0;
}

void Connection::drop(std::size_t size) {
  const std::size_t buffered = std::min(size, end_ - begin_);
  begin_ += buffered;
  for (size -= buffered; size > 0;) {
    const ssize_t dropped = recv(socket_.get(), nullptr, size, MSG_TRUNC);  // TCP drops the bytes without a copy
    if (dropped <= 0) throwSystemError("recv");
    size -= static_cast<std::size_t>(dropped);
  }
}

void Connection::send(const void* data, std::size_t size) {
  const auto* next = static_cast<const char*>(data);
  while (size > 0) {
    const ssize_t sent = ::send(socket_.get(), next, size, MSG_NOSIGNAL);
    if (sent < 0) throwSystemError("send");
    next += sent;
    size -= static_cast<std::size_t>(sent);
  }
}

Descriptor openListener() {
  Descriptor listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0), "replay server: socket");
  const int on = 1;
  setsockopt(listener.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  setsockopt(listener.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);  // accepted sockets inherit it
  sockaddr_in local{};
  local.sin_family = AF_INET;
  local.sin_port = htons(commandPort);
  local.sin_addr.s_addr = inet_addr(headAddress);
  if (bind(listener.get(), reinterpret_cast<const sockaddr*>(&local), sizeof local) != 0)
    throwSystemError("replay server: bind to port 44330");
  if (listen(listener.get(), SOMAXCONN) != 0) throwSystemError("replay server: listen");
  return listener;
}

// A failure here ends the server at once; the client then sees its connection close.
void serveOne(Descriptor socket, const Head& head, const Picture& picture) {
  try {
    Connection(std::move(socket), head, picture).serve();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "replay server: %s\n", error.what());
    _exit(1);
  }
}

[[noreturn]] void serveForEver(const Descriptor& listener, const Head& head) {
  const Picture picture = preparedPicture(head);
  for (;;) {
    Descriptor socket(accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC), "accept");
    std::thread([&, client = std::move(socket)]() mutable { serveOne(std::move(client), head, picture); }).detach();
  }
}

[[noreturn]] void runChild(const Descriptor& listener, const Head& head, std::size_t core) noexcept {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  pinTo(core);
  serveForEver(listener, head);
}

}  // namespace

ReplayServer::ReplayServer(const Head& head, std::size_t core) {
  const Descriptor listener = openListener();
  process_ = fork();
  if (process_ < 0) throwSystemError("replay server: fork");
  if (process_ == 0) runChild(listener, head, core);
  if (clock_getcpuclockid(process_, &cpuClock_) != 0) throw std::runtime_error("replay server: no processor clock");
}

ReplayServer::~ReplayServer() {
  kill(process_, SIGKILL);
  waitpid(process_, nullptr, 0);
}

}  // namespace fringix::bench
