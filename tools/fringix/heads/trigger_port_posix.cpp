#include <pwd.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <charconv>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "heads/trigger_port.h"
#include "heads/udp_table.h"

namespace fringix::tool {
namespace {

namespace fs = std::filesystem;

// The abstract local socket on which the listener that has the port serves the others.
constexpr char exchangeName[] = "C5128585-87BE-4b48-9F65-9A4CAC572E59";

struct Credentials {
  pid_t process = 0;
  uid_t user = 0;
};

// Whose process serves the listeners of this one: they believe those of their own user and of root.
std::optional<Credentials> trustedServer() {
  sockaddr_un name{};
  name.sun_family = AF_UNIX;
  std::memcpy(name.sun_path + 1, exchangeName, sizeof exchangeName - 1);
  constexpr auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + sizeof exchangeName);
  const int connection = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  shutdown(connection, SHUT_RD);  // a stranger can send nothing into this process
  ucred peer{};
  socklen_t peerSize = sizeof peer;
  const bool known = connect(connection, reinterpret_cast<const sockaddr*>(&name), size) == 0 &&
                     getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &peerSize) == 0;
  close(connection);
  if (!known || (peer.uid != geteuid() && peer.uid != 0)) return {};
  return Credentials{peer.pid, peer.uid};
}

bool holds(const fs::path& process, std::uint64_t inode) {
  const std::string wanted = "socket:[" + std::to_string(inode) + "]";
  std::error_code error;
  for (fs::directory_iterator entry(process / "fd", error), end; !error && entry != end; entry.increment(error)) {
    std::error_code unreadable;
    if (fs::read_symlink(entry->path(), unreadable) == wanted) return true;
  }
  return false;
}

std::int64_t processNumber(const std::string& name) {
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
  return error == std::errc{} && end == name.data() + name.size() ? number : 0;
}

// Of the processes whose descriptors this one may see; 0 when it is none of them.
std::int64_t processThatHolds(std::uint64_t inode) {
  if (holds("/proc/self", inode)) return getpid();
  std::error_code error;
  for (fs::directory_iterator entry("/proc", error), end; !error && entry != end; entry.increment(error)) {
    const std::int64_t process = processNumber(entry->path().filename().string());
    if (process != 0 && holds(entry->path(), inode)) return process;
  }
  return 0;
}

std::string programOf(std::int64_t process) {
  std::ifstream file(fs::path("/proc") / std::to_string(process) / "comm");
  std::string name;
  std::getline(file, name);
  return name;
}

std::string nameOf(uid_t user) {
  passwd entry{};
  passwd* found = nullptr;
  char buffer[4096];
  const bool known = getpwuid_r(user, &entry, buffer, sizeof buffer, &found) == 0 && found != nullptr;
  return known ? found->pw_name : std::to_string(user);
}

bool passesOn(const UdpSocket& socket, std::int64_t process, const std::optional<Credentials>& server) {
  if (process == getpid()) return true;
  if (!server) return false;
  return process != 0 && server->process != 0 ? process == server->process : socket.user == server->user;
}

PortHolder describe(const UdpSocket& socket, const std::optional<Credentials>& server) {
  const std::int64_t process = processThatHolds(socket.inode);
  return {process, process == 0 ? "" : programOf(process), nameOf(socket.user), passesOn(socket, process, server)};
}

}  // namespace

// A socket for both families has the port, too; one for the newer alone does not, and then there is one of the older beside it.
std::optional<std::vector<PortHolder>> triggerPortHolders() {
  std::ifstream table("/proc/net/udp");
  if (!table) return {};
  std::vector<UdpSocket> sockets = readUdpTable(table, triggerPort);
  std::ifstream newerTable("/proc/net/udp6");
  if (sockets.empty()) sockets = readUdpTable(newerTable, triggerPort);
  const std::optional<Credentials> server = trustedServer();
  std::vector<PortHolder> holders;
  for (const UdpSocket& socket : sockets) holders.push_back(describe(socket, server));
  return holders;
}

}  // namespace fringix::tool
