#include "replay_server.h"

#include <arpa/inet.h>
#include <endian.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/mman.h>
#include <sys/sendfile.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "machine.h"

namespace fringix::bench {

namespace {

// A large picture leaves as pages of a file in memory, without a copy: how fast new pages for a copy are to be had differs by
// chance, and a slow server hides its client. A small one is quicker copied.
class Picture {
 public:
  explicit Picture(std::size_t size);

  std::size_t size() const noexcept { return pixels_.size(); }
  bool small() const noexcept { return size() <= 4096; }
  const std::uint8_t* pixels() const noexcept { return pixels_.data(); }
  int file() const noexcept { return file_.get(); }

 private:
  std::vector<std::uint8_t> pixels_;
  Descriptor file_;
};

Picture::Picture(std::size_t size) : pixels_(size), file_(memfd_create("picture", MFD_CLOEXEC), "memfd_create") {
  std::uint32_t value = 1;
  for (auto& pixel : pixels_) pixel = static_cast<std::uint8_t>((value = value * 1664525U + 1013904223U) >> 24);
  pixels_[0] = 0xFF;  // never the two bytes that mean "no picture"
  if (write(file_.get(), pixels_.data(), size) != static_cast<ssize_t>(size)) throwSystemError("write");
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

  void answerPicture(std::size_t size);
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
    {"80MSG_SLSaveDataToFile",
     [](Connection& c) {
       const auto [size, nameSize] = c.integers<2>();
       c.answer(0);
       c.drop(std::size_t{nameSize} + size);
       c.answer(0);
     }},
    {"81MSG_SLReadDataFromFile",
     [](Connection& c) {
       const auto [nameSize] = c.integers<1>();
       c.answer(0);
       c.drop(nameSize);
       c.answer(c.head().pixels());
       c.answerPicture(c.head().pixels());
       c.answer(0);
     }},
    {"40MSG_SLGetMaxImageSize", [](Connection& c) { c.answer(c.head().width, c.head().height, 0); }},
    {"45MSG_SLGetProjDimension", [](Connection& c) { c.answer(Head::projectorWidth, Head::projectorHeight, 0); }},
    {"21MSG_SLGetSerial", [](Connection& c) { c.answer(1001); }},
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

void Connection::answerPicture(std::size_t size) {
  if (size > picture_.size()) throw std::runtime_error("a request for more than a picture");
  if (picture_.small()) return send(picture_.pixels(), size);
  for (off_t offset = 0; offset < static_cast<off_t>(size);)
    if (sendfile(socket_.get(), picture_.file(), &offset, size - static_cast<std::size_t>(offset)) < 0) throwSystemError("sendfile");
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

[[noreturn]] void serveForEver(const Descriptor& listener, const Head& head, std::uint32_t bytesPerSecond) {
  const Picture picture(head.pixels());
  for (;;) {
    Descriptor socket(accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC), "accept");
    if (bytesPerSecond > 0) setsockopt(socket.get(), SOL_SOCKET, SO_MAX_PACING_RATE, &bytesPerSecond, sizeof bytesPerSecond);
    std::thread([&, client = std::move(socket)]() mutable { serveOne(std::move(client), head, picture); }).detach();
  }
}

}  // namespace

ReplayServer::ReplayServer(const Head& head, std::size_t core, std::uint32_t bytesPerSecond)
    : listener_(openListener()), process_([&] {
        pinTo(core);
        serveForEver(listener_, head, bytesPerSecond);
      }) {
  if (clock_getcpuclockid(process_.id(), &cpuClock_) != 0) throw std::runtime_error("replay server: no processor clock");
}

}  // namespace fringix::bench
