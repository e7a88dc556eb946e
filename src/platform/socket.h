// IPv4 sockets. One owning type for both systems; the rules of the wire live a floor above.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace fringix::platform {

// Holds one reference on the system's socket library while it lives. Sockets need one on Windows; elsewhere it does nothing.
class SocketLibrary {
 public:
  SocketLibrary() noexcept;
  ~SocketLibrary();
  SocketLibrary(const SocketLibrary&) = delete;
  SocketLibrary& operator=(const SocketLibrary&) = delete;

  bool usable() const noexcept { return usable_; }  // whether the system has it in the version that is asked for

 private:
  bool usable_ = true;
};

// An IPv4 address and a port, both in host byte order: 127.0.0.1 is 0x7F000001.
struct Ipv4Endpoint {
  std::uint32_t address = 0;
  std::uint16_t port = 0;
  bool operator==(const Ipv4Endpoint&) const = default;
};

// Reads an address text as the system's inet_addr does ("127.0.1" is 127.0.0.1); what is none becomes 255.255.255.255.
std::uint32_t parseIpv4(const char* text) noexcept;
std::string formatIpv4(std::uint32_t address);

enum class Readiness { ready, timedOut, failed };

// When a connection on which nothing arrives is probed, and when it is given up: `probes` of them have to stay unanswered. Where the
// system chooses their number itself it is 10.
struct KeepAlive {
  std::chrono::seconds silence;
  std::chrono::seconds interval;
  int probes;
};

inline constexpr std::chrono::milliseconds waitForever{-1};

// Owns one socket handle, or none. Movable, closed on destruction, never inherited by child processes.
// Calls on one object from two threads at once are not safe, except shutdown().
// Interrupted system calls are taken up again with the time that remains; sends raise no signal.
class Socket {
 public:
#ifdef _WIN32
  using Handle = std::uintptr_t;
  static constexpr Handle invalidHandle = ~Handle{0};
#else
  using Handle = int;
  static constexpr Handle invalidHandle = -1;
#endif

  Socket() noexcept = default;
  explicit Socket(Handle handle) noexcept;  // owns it from now on
  ~Socket() { close(); }
  Socket(Socket&& other) noexcept : handle_(other.release()) {}
  Socket& operator=(Socket&& other) noexcept;
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;

  // Both give an invalid socket on failure.
  static Socket openStream() noexcept;
  static Socket openDatagram() noexcept;

  bool valid() const noexcept { return handle_ != invalidHandle; }
  Handle handle() const noexcept { return handle_; }
  void close() noexcept;

  // All of these give true on success.
  bool connect(Ipv4Endpoint peer) noexcept;  // blocks until the system gives up
  bool bind(Ipv4Endpoint local) noexcept;
  bool listen(int backlog) noexcept;
  bool setNonBlocking(bool on) noexcept;
  bool setNoDelay(bool on) noexcept;
  bool setKeepAlive(const KeepAlive& times) noexcept;
  bool setBroadcast(bool on) noexcept;        // lets datagrams go to broadcast addresses
  bool setReceiveBuffer(int bytes) noexcept;  // what may wait unread; the system may grant less
  bool setReuseAddress(bool on) noexcept;     // lets several sockets share a port (Windows), or a port in transition be bound again
  bool setSoleListener() noexcept;            // the port can be bound again soon after its last owner has gone, but has one owner at a time
  bool setResetOnClose() noexcept;            // the next close() resets the connection instead of ending it in order
  bool shutdown() noexcept;                   // ends both directions; whether a blocked receive() returns is up to the system

  // Whether the last failed connect() is still under way (a non-blocking socket).
  static bool connectInProgress() noexcept;

  Socket accept(Ipv4Endpoint* peer = nullptr) noexcept;  // blocks for the next connection; invalid on failure
  Ipv4Endpoint localEndpoint() const noexcept;

  // Bytes sent, 0 or more, perhaps fewer than asked for; -1 on an error. Blocks until there is room; a non-blocking socket fails then.
  std::ptrdiff_t send(const void* data, std::size_t size) noexcept;
  // Whether the last failed send() has only found no room.
  static bool sendHadNoRoom() noexcept;
  // Whether the peer's system has yet to confirm bytes that were sent; false where the system does not tell.
  bool hasUnconfirmed() const noexcept;
  // Bytes received; 0 when the peer has closed; -1 on an error. Blocks until something is there; a non-blocking socket fails then.
  std::ptrdiff_t receive(void* buffer, std::size_t size) noexcept;

  // One datagram. Bytes sent, or -1 on an error.
  std::ptrdiff_t sendTo(const void* data, std::size_t size, Ipv4Endpoint receiver) noexcept;
  // One datagram. Bytes received, 0 for an empty one; -1 on an error. One that is larger than the buffer is gone: it counts as an error
  // or fills the buffer, as the system likes.
  std::ptrdiff_t receiveFrom(void* buffer, std::size_t size, Ipv4Endpoint* sender) noexcept;

  // Blocks up to `limit`; `waitForever` has none.
  Readiness waitReadable(std::chrono::milliseconds limit) const noexcept;
  Readiness waitWritable(std::chrono::milliseconds limit) const noexcept;

 private:
  Handle release() noexcept;

  Handle handle_ = invalidHandle;
};

}  // namespace fringix::platform
