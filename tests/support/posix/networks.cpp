#include "support/posix/networks.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/if_tun.h>
#include <net/if.h>
#include <poll.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <thread>
#include <utility>

namespace fringix::test {

namespace {

void require(bool condition, const std::string& what) {
  if (!condition) throw std::runtime_error(what);
}

void run(const std::string& command) { require(std::system(command.c_str()) == 0, command); }

int thisNamespace() { return open("/proc/self/ns/net", O_RDONLY | O_CLOEXEC); }

// An Ethernet interface whose frames this process reads and writes; -1 where that is not permitted.
int openInterface(const std::string& name) {
  const int descriptor = open("/dev/net/tun", O_RDWR | O_NONBLOCK | O_CLOEXEC);
  ifreq request{};
  name.copy(request.ifr_name, IFNAMSIZ - 1);
  request.ifr_flags = IFF_TAP | IFF_NO_PI;
  return descriptor >= 0 && ioctl(descriptor, TUNSETIFF, &request) == 0 ? descriptor : -1;
}

bool writeFile(const char* path, const std::string& text) {
  std::ofstream file(path);
  file << text;
  return static_cast<bool>(file.flush());
}

// An ordinary user gets the rights for networks by being root in a user namespace.
bool enterNamespaces() {
  const std::string user = std::to_string(getuid());
  if (unshare(CLONE_NEWNET) == 0) return true;
  return unshare(CLONE_NEWUSER | CLONE_NEWNET) == 0 && writeFile("/proc/self/uid_map", "0 " + user + " 1");
}

bool mayMakeNetworks() {
  const int probe = enterNamespaces() ? openInterface("probe") : -1;
  return probe >= 0 && close(probe) == 0 && std::system("ip link set lo up 2>/dev/null") == 0;
}

Verdict verdictOf(const std::function<void()>& body) {
  if (!mayMakeNetworks()) return Verdict::notPermitted;
  try {
    body();
  } catch (const std::exception& failure) {
    ADD_FAILURE() << "failed: " << failure.what();
  }
  return testing::Test::HasFailure() ? Verdict::failed : Verdict::passed;
}

}  // namespace

// Carries frames between two interfaces until it is destroyed.
class Cable {
 public:
  Cable(int hostEnd, int headsEnd, CableFault fault)
      : ends_{hostEnd, headsEnd}, fault_(std::move(fault)), thread_([this] { carryAll(); }) {}
  ~Cable() {
    cut_ = true;
    thread_.join();
    for (const int end : ends_) close(end);
  }

 private:
  void carryAll() {
    constexpr int milliseconds = 20;  // how soon it notices that it is cut
    while (!cut_) {
      std::array<pollfd, 2> ready{pollfd{ends_[0], POLLIN, 0}, pollfd{ends_[1], POLLIN, 0}};
      if (poll(ready.data(), ready.size(), milliseconds) <= 0) continue;
      carry(ends_[0], ends_[1], false);
      carry(ends_[1], ends_[0], true);
    }
  }

  void carry(int from, int to, bool toHost) const {
    std::array<char, 2048> frame;
    const ssize_t size = read(from, frame.data(), frame.size());
    if (size <= 0 || (fault_.loses && fault_.loses({frame.data(), static_cast<std::size_t>(size)}, toHost))) return;
    if (fault_.bytesPerSecond > 0)
      std::this_thread::sleep_for(std::chrono::duration<double>(static_cast<double>(size) / fault_.bytesPerSecond));
    // A frame for an interface that is down is lost, as on any cable.
    static_cast<void>(write(to, frame.data(), static_cast<std::size_t>(size)) == size);
  }

  std::array<int, 2> ends_;
  const CableFault fault_;
  std::atomic<bool> cut_ = false;
  std::thread thread_;
};

Networks::Networks() : headsSide_(thisNamespace()) {
  require(unshare(CLONE_NEWNET) == 0, "a second network namespace");
  hostSide_ = thisNamespace();
  run("ip link set lo up");
}

Networks::~Networks() {
  cables_.clear();
  close(headsSide_);
  close(hostSide_);
}

void Networks::connect(const std::string& name, const std::string& hostAddress, const std::string& headsAddress, CableFault fault) {
  const auto interfaceAt = [&](const std::string& address) {
    const int descriptor = openInterface(name);
    require(descriptor >= 0, "the interface " + name);
    if (!address.empty()) run("ip address add " + address + " dev " + name);
    run("ip link set " + name + " up");
    return descriptor;
  };
  const int hostEnd = interfaceAt(hostAddress);
  onTheHeadsSide([&] { cables_.push_back(std::make_unique<Cable>(hostEnd, interfaceAt(headsAddress), std::move(fault))); });
}

void Networks::takeDown(const std::string& name) const {
  onTheHeadsSide([&] { run("ip link set " + name + " down"); });
}

void Networks::bringUp(const std::string& name) const {
  onTheHeadsSide([&] { run("ip link set " + name + " up"); });
}

void Networks::onTheHeadsSide(const std::function<void()>& action) const {
  require(setns(headsSide_, CLONE_NEWNET) == 0, "the heads' side");
  action();
  require(setns(hostSide_, CLONE_NEWNET) == 0, "the host's side");
}

Verdict inProcessWithNetworks(const std::function<void()>& body) {
  std::fflush(stdout);  // or the child writes it, too
  const pid_t child = fork();
  if (child == 0) {
    const Verdict verdict = verdictOf(body);
    std::fflush(stdout);
    _exit(static_cast<int>(verdict));
  }
  int status = 0;
  const bool ended = child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status);
  return ended ? static_cast<Verdict>(WEXITSTATUS(status)) : Verdict::failed;
}

}  // namespace fringix::test
