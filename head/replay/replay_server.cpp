#include "head/replay/replay_server.h"

#include <chrono>
#include <exception>
#include <utility>

#include "platform/clock.h"
#include "platform/datagram.h"
#include "ports/command_port.h"
#include "ports/search_port.h"
#include "ports/trigger_port.h"

namespace fringix::head {

namespace {

constexpr std::chrono::milliseconds stopInterval{50};
constexpr std::size_t mostSessions = 64;

}  // namespace

// One client, on a thread of its own.
class ReplayServer::Session {
 public:
  Session(ReplayServer& server, platform::Socket socket, platform::Ipv4Endpoint peer)
      : server_(server),
        socket_(std::move(socket)),
        peer_(peer),
        name_(platform::formatIpv4(peer.address) + ":" + std::to_string(peer.port)),
        thread_([this] { run(); }) {}

  ~Session() {
    stopping_ = true;
    thread_.join();
    if (reset_) socket_.setResetOnClose();
  }

  bool finished() const { return finished_; }

 private:
  void run() noexcept {
    try {
      tell(News::connected, "");
      reset_ = play();
    } catch (const Disconnected&) {
    } catch (const std::exception& error) {
      tell(News::trouble, error.what());
    }
    tell(News::disconnected, "");
    if (!reset_) socket_.shutdown();
    finished_ = true;
  }

  // Which of the recorded connections it is shows when the client speaks: many only look whether there is a head, and leave.
  bool play() {
    Wire wire(socket_, stopping_);
    Player player(
        server_.replay_, wire, [this](const std::string& text) { tell(News::difference, text); }, [this] { raiseTrigger(); });
    const RecordedConnection* connection = server_.next();
    if (connection == nullptr) return false;
    if (!connection->clientSpoke) return player.playRefusal(*server_.claim());
    player.greet(*connection);
    const std::int32_t version = wire.readInt();
    return player.play(*server_.claim(), version);
  }

  void raiseTrigger() const { ports::sendTrigger(socket_.localEndpoint().address, peer_.address); }

  void tell(News news, const std::string& text) const {
    if (stopping_) return;
    if (news == News::difference) ++server_.differences_;
    if (server_.observer_) server_.observer_(news, name_, text);
  }

  ReplayServer& server_;
  platform::Socket socket_;
  const platform::Ipv4Endpoint peer_;
  const std::string name_;
  std::atomic<bool> stopping_ = false;
  std::atomic<bool> reset_ = false;
  std::atomic<bool> finished_ = false;
  std::thread thread_;
};

ReplayServer::ReplayServer(Replay replay, std::string address, Observer observer)
    : replay_(std::move(replay)),
      address_(std::move(address)),
      observer_(std::move(observer)),
      survey_(fringix::head::survey(replay_.file)) {}

ReplayServer::~ReplayServer() { stop(); }

void ReplayServer::start() {
  listener_ = ports::listenOn(address_);
  if (!survey_.announcement.empty()) searches_ = ports::listenForSearches();
  threads_.emplace_back([this] { acceptClients(); });
  if (searches_.valid()) threads_.emplace_back([this] { answerSearches(); });
}

void ReplayServer::stop() noexcept {
  stopping_ = true;
  for (std::thread& thread : threads_) thread.join();
  threads_.clear();
  sessions_.clear();
}

void ReplayServer::acceptClients() noexcept {
  while (!stopping_) {
    const platform::Readiness readiness = listener_.waitReadable(stopInterval);
    sessions_.remove_if([](const auto& session) { return session->finished(); });
    try {
      if (readiness == platform::Readiness::ready) acceptClient();
    } catch (const std::exception&) {  // no thread or no memory for this client just now
      platform::sleepFor(stopInterval);
    }
  }
}

// Who comes when there are many waits, and so does whoever finds no descriptor free.
void ReplayServer::acceptClient() {
  if (sessions_.size() >= mostSessions) return platform::sleepFor(stopInterval);
  platform::Ipv4Endpoint peer;
  platform::Socket socket = listener_.accept(&peer);
  if (!socket.valid()) return platform::sleepFor(stopInterval);
  socket.setNoDelay(true);
  sessions_.push_back(std::make_unique<Session>(*this, std::move(socket), peer));
}

void ReplayServer::answerSearches() noexcept {
  const std::uint32_t address = platform::parseIpv4(address_.c_str());
  while (!stopping_) {
    if (searches_.waitReadable(stopInterval) != platform::Readiness::ready) continue;
    const auto client = ports::takeSearch(searches_);
    if (client && ports::shareANetwork(address, client->address))
      platform::sendDatagram(address, *client, survey_.announcement.data(), survey_.announcement.size());
  }
}

// The recorded connection whose turn it is; null when there is none at all.
const RecordedConnection* ReplayServer::next() {
  const std::lock_guard lock(mutex_);
  return survey_.connections.empty() ? nullptr : &survey_.connections[used_ % survey_.connections.size()];
}

const RecordedConnection* ReplayServer::claim() {
  const std::lock_guard lock(mutex_);
  return &survey_.connections[used_++ % survey_.connections.size()];
}

}  // namespace fringix::head
